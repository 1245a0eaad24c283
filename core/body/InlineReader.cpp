#include "core/body/InlineReader.h"

#include "base/Text.h"
#include "core/body/HTMLSerializer.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tesserine {
namespace {

constexpr std::array inlineElements{
    HTMLElement::a,
    HTMLElement::br,
    HTMLElement::code,
    HTMLElement::em,
    HTMLElement::img,
    HTMLElement::mark,
    HTMLElement::s,
    HTMLElement::span,
    HTMLElement::strong,
    HTMLElement::sub,
    HTMLElement::sup,
    HTMLElement::u};

/// Characters that mean something else in a note being edited.
constexpr std::u16string_view reserved = u"\u2028\u2029\uFFFC\n";

bool isInlineItself(const HTMLNode& node) {
    if (node.kind() == HTMLNode::Kind::text) return true;
    return node.kind() == HTMLNode::Kind::element
           && std::ranges::find(inlineElements, node.element()) != inlineElements.end();
}

/// What an editor shows but does not change: pictures, attachments, what could not be kept, and
/// elements without content.
bool isObject(const HTMLNode& element) {
    if (element.element() == HTMLElement::br) return !element.attributes().empty();
    return element.firstChild() == nullptr || element.attribute("data-ts-attachment")
           || element.attribute("class");
}

}  // namespace

/// Recursive, as everything here: a parser bounds the depth of its trees.
bool isInline(const HTMLNode& node) { return isInlineItself(node) && holdsLinesOnly(node); }

bool holdsLinesOnly(const HTMLNode& node) {
    for (const HTMLNode& child : node.children()) {
        if (!isInline(child)) return false;
    }
    return true;
}

void InlineReader::read(const HTMLNode& node, LineBreaks lineBreaks) {
    if (node.kind() == HTMLNode::Kind::text) {
        readText(node.text(), lineBreaks);
    } else if (isObject(node)) {
        addObject(HTMLSerializer::serialize(node));
    } else if (node.element() == HTMLElement::br) {
        addText(std::u16string_view(&AttributedText::lineBreak, 1));
    } else {
        readElement(node, lineBreaks);
    }
}

void InlineReader::readElement(const HTMLNode& node, LineBreaks lineBreaks) {
    marks_.push_back(markFor(node));
    for (const HTMLNode& child : node.children()) {
        read(child, lineBreaks);
    }
    marks_.pop_back();
}

void InlineReader::readText(std::string_view text, LineBreaks lineBreaks) {
    const std::u16string units = text::toUTF16(text);
    std::u16string_view rest(units);
    const std::u16string_view special =
        reserved.substr(0, reserved.size() - (lineBreaks == LineBreaks::asTheyAre ? 1 : 0));
    while (!rest.empty()) {
        const std::u16string_view plain = rest.substr(0, rest.find_first_of(special));
        addText(plain);
        rest.remove_prefix(plain.size());
        if (rest.empty()) return;
        addObject(text::fromUTF16(rest.substr(0, 1)));
        rest.remove_prefix(1);
    }
}

void InlineReader::addText(std::u16string_view units) {
    if (units.empty()) return;
    if (!marks_.empty()) {
        auto& runs = target_.runs;
        const bool isSame = continuesLastRun() && runs.back().style.object.empty()
                            && runs.back().style.marks == marks_;
        if (!isSame) runs.push_back({.start = target_.text.size(), .style = {.marks = marks_}});
        runs.back().length += units.size();
    }
    target_.text += units;
}

void InlineReader::addObject(std::string html) {
    target_.runs.push_back(
        {.start = target_.text.size(),
         .length = 1,
         .style = {.marks = marks_, .object = std::move(html)}});
    target_.text += AttributedText::objectCharacter;
}

InlineMark InlineReader::markFor(const HTMLNode& element) const {
    InlineMark mark{.element = element.element(), .attributes = owned(element.attributes())};
    if (!continuesLastRun()) return mark;
    const auto& before = target_.runs.back().style.marks;
    const std::size_t depth = marks_.size();
    const bool wouldJoin = before.size() > depth && before[depth].element == mark.element
                           && before[depth].attributes == mark.attributes;
    mark.isApart = wouldJoin && !before[depth].isApart;
    return mark;
}

bool InlineReader::continuesLastRun() const {
    return !target_.runs.empty() && target_.runs.back().end() == target_.text.size();
}

}  // namespace tesserine
