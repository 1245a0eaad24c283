#include "core/body/HTMLTreeBuilder.h"

#include "core/body/SanitizerTables.h"

#include <string>
#include <utility>

namespace tesserine {

using html::has;

namespace {

using Element = HTMLElement;

bool isForeign(Element element) { return element == Element::svg || element == Element::math; }

std::size_t byteCount(std::string_view name, std::span<const HTMLAttribute> attributes) {
    std::size_t count = name.size() + 2;
    for (const HTMLAttribute& attribute : attributes) {
        count += attribute.name.size() + attribute.value.size() + 4;
    }
    return count;
}

}  // namespace

void HTMLTreeBuilder::build() {
    HTMLToken token;
    while (tokenizer_.next(token)) {
        take(token);
    }
    closeFrom(0);
}

void HTMLTreeBuilder::take(const HTMLToken& token) {
    const bool dropsNewline = std::exchange(dropsNewline_, false);
    switch (token.kind) {
    case HTMLToken::Kind::text:
        takeText(dropsNewline && token.text.starts_with('\n') ? token.text.substr(1) : token.text);
        return;
    case HTMLToken::Kind::comment: sink_.comment(token.text); return;
    case HTMLToken::Kind::doctype: return;
    case HTMLToken::Kind::startTag: takeStart(token); break;
    case HTMLToken::Kind::endTag: takeEnd(token); break;
    }
    isAfterText_ = false;
}

void HTMLTreeBuilder::takeText(std::string_view text) {
    if (text.empty()) return;
    if (!html::isSpaceOnly(text)) {
        reopenFormatting();
    } else if (!isAfterText_ && has(open_.elements().innermost(), html::isTableFrame)) {
        return;
    }
    sink_.text(text);
    isAfterText_ = true;
}

void HTMLTreeBuilder::takeStart(const HTMLToken& token) {
    const HTMLElement element = token.element;
    if (element == Element::a) open_.forgetWaitingLinks();
    if (const auto closed = open_.elements().closedByStart(element)) closeFrom(*closed);
    if (html::continuesLine(element)) reopenFormatting();
    if (endsAtOnce(token)) return writeEmpty(token);
    if (has(element, html::isRawText)) tokenizer_.readRawText(element);
    dropsNewline_ = element == Element::pre || element == Element::textarea;
    if (open_.size() < maximumDepth) {
        push(element, token.text, token.attributes);
    } else {
        takeStartBelowLimit(token);
    }
}

/// What is never note text must not become text for want of depth: one such element is opened below
/// the limit, and its end is found by counting.
void HTMLTreeBuilder::takeStartBelowLimit(const HTMLToken& token) {
    if (open_.size() == maximumDepth) {
        if (html::policyFor(token.element).isDropped) {
            push(token.element, token.text, token.attributes);
        }
    } else if (token.element == open_.elements().innermost()) {
        ++leftOut_;
    }
}

void HTMLTreeBuilder::takeEnd(const HTMLToken& token) {
    const HTMLElement element = token.element;
    if (element == Element::br) return writeEmpty(token);
    if (leftOut_ > 0 && element == open_.elements().innermost()) {
        --leftOut_;
        return;
    }
    const auto isSame = [element](HTMLElement waiting, const Detail&) {
        return waiting == element;
    };
    if (has(element, html::isFormatting) && open_.forgetWaiting(isSame)) return;
    const auto match = element == Element::other ? open_.elements().closedByOtherEnd(
                           [&](std::size_t i) { return open_[i].name == token.text; })
                                                 : open_.elements().closedByEnd(element);
    if (match) return closeFrom(*match);
    if (element == Element::p) writeEmpty(token);
}

void HTMLTreeBuilder::writeEmpty(const HTMLToken& token) {
    sink_.open(token.element, token.text, token.attributes);
    sink_.close();
}

void HTMLTreeBuilder::push(
    HTMLElement element, std::string_view name, std::span<const HTMLAttribute> attributes) {
    sink_.open(element, name, attributes);
    Detail detail{name, {}};
    if (has(element, html::isFormatting)) {
        detail.attributes.assign(attributes.begin(), attributes.end());
    }
    open_.push(element, std::move(detail));
}

void HTMLTreeBuilder::closeFrom(std::size_t first) {
    open_.closeFrom(first, [this] { sink_.close(); });
    leftOut_ = 0;
}

void HTMLTreeBuilder::reopenFormatting() {
    open_.reopenWaiting([this](HTMLElement element, const Detail& detail) {
        const std::size_t count = byteCount(detail.name, detail.attributes);
        if (reopenedBytes_ + count > maximumReopenedBytes || open_.size() >= maximumDepth) return;
        if (open_.elements().closedByStart(element)) return;
        reopenedBytes_ += count;
        push(element, detail.name, detail.attributes);
    });
}

/// Whether the start tag is the whole element. HTML ignores "/>" on its own elements; on those of
/// others it is meant, and taking it for a start would nest all that follows.
bool HTMLTreeBuilder::endsAtOnce(const HTMLToken& token) const {
    if (has(token.element, html::isVoid)) return true;
    if (!token.isSelfClosing) return false;
    const bool isInForeignContent =
        open_.elements().contains(Element::svg) || open_.elements().contains(Element::math);
    return token.element == Element::other || isForeign(token.element) || isInForeignContent;
}

void parseHTML(std::string_view html, HTMLSink& sink) {
    const bool isReady =
        html.find('\r') == std::string_view::npos && html.find('\0') == std::string_view::npos;
    if (isReady) return HTMLTreeBuilder(html, sink).build();
    std::string normalized(html);
    normalizeNewlines(normalized);
    HTMLTreeBuilder(normalized, sink).build();
}

}  // namespace tesserine
