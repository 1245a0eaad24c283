#include "core/body/AttributedTextReader.h"

#include "core/body/AttributedTextWriter.h"
#include "core/body/HTMLNode.h"
#include "core/body/HTMLSerializer.h"
#include "core/body/InlineReader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>
#include <vector>

namespace tesserine {
namespace {

using Kind = BlockStyle::Kind;
using Holder = AttributedText::Holder;
using Paragraph = AttributedText::Paragraph;

bool isLocked(const HTMLNode& division) { return division.attribute("data-ts-cipher").has_value(); }

/// A div around blocks; one around text is a paragraph.
bool isContainer(const HTMLNode& node) {
    return node.element() == HTMLElement::div && !isLocked(node) && !holdsLinesOnly(node);
}

bool isList(const HTMLNode& node) {
    return node.element() == HTMLElement::ul || node.element() == HTMLElement::ol;
}

Kind kindOfList(const HTMLNode& list) {
    if (list.element() == HTMLElement::ol) return Kind::numbered;
    return list.attribute("class") == "ts-checklist" ? Kind::checklist : Kind::bullet;
}

/// Those of a paragraph's own element.
void takeAttributes(const HTMLNode& node, Paragraph& paragraph) {
    for (const HTMLAttribute& attribute : node.attributes()) {
        const auto alignment =
            attribute.name == "style" ? alignmentOf(attribute.value) : std::nullopt;
        if (alignment) {
            paragraph.alignment = *alignment;
        } else if (attribute.name == "data-checked" && kindOf(paragraph) == Kind::checklist) {
            paragraph.isChecked = attribute.value == "true";
        } else {
            paragraph.attributes.push_back(owned(attribute));
        }
    }
}

std::optional<int> integer(std::string_view digits) {
    int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return error == std::errc{} ? std::optional(number) : std::nullopt;
}

/// Those of a list, with the first of its items.
void takeListAttributes(const HTMLNode& list, Paragraph& first) {
    const bool isChecklist = kindOf(first) == Kind::checklist;
    for (const HTMLAttribute& attribute : list.attributes()) {
        if (attribute.name == "start") {
            first.startNumber = integer(attribute.value);
        } else if (attribute.name != "class" || !isChecklist) {
            first.frameAttributes.push_back(owned(attribute));
        }
    }
}

/// Reads block after block. One that cannot be written back to the letter is preserved whole.
class BlockReader {
public:
    explicit BlockReader(const HTMLNode& root) : root_(root), inline_(text_) {}

    AttributedText read();

private:
    /// Reads one block; false when it holds what cannot be edited.
    using Read = bool (BlockReader::*)(const HTMLNode& node);
    struct Rule {
        HTMLElement element;
        Read read;
    };
    static const std::array<Rule, 13> rules;

    const HTMLNode* readBareText(const HTMLNode& first);
    void readBlock(const HTMLNode& node);
    void enter(const HTMLNode& container);

    bool readParagraph(const HTMLNode& node);
    bool readDivision(const HTMLNode& node);
    bool readHeading(const HTMLNode& node);
    bool readCode(const HTMLNode& node);
    bool readTopList(const HTMLNode& node) { return readList(node, 0); }
    bool readList(const HTMLNode& list, int indent);
    bool readItem(const HTMLNode& item, Kind kind, int indent);
    bool readQuote(const HTMLNode& node);
    bool readDivider(const HTMLNode& node);

    const HTMLNode* readLine(const HTMLNode* node);
    bool readLineOf(const HTMLNode& node);
    void endParagraph(Paragraph paragraph);
    void splitLines(Paragraph line);

    void keepOrPreserve(bool isRead, const std::string& html);
    void preserve(const std::string& html, Kind kind);
    void startUnit();
    void forgetUnit();

    const HTMLNode& root_;
    AttributedText text_;
    InlineReader inline_;
    std::size_t paragraphStart_ = 0;
    std::uint32_t container_ = 0;
    ParagraphPlace unit_;  // where the block being read begins
};

const std::array<BlockReader::Rule, 13> BlockReader::rules{
    Rule{HTMLElement::p, &BlockReader::readParagraph},
    Rule{HTMLElement::div, &BlockReader::readDivision},
    Rule{HTMLElement::h1, &BlockReader::readHeading},
    Rule{HTMLElement::h2, &BlockReader::readHeading},
    Rule{HTMLElement::h3, &BlockReader::readHeading},
    Rule{HTMLElement::h4, &BlockReader::readHeading},
    Rule{HTMLElement::h5, &BlockReader::readHeading},
    Rule{HTMLElement::h6, &BlockReader::readHeading},
    Rule{HTMLElement::pre, &BlockReader::readCode},
    Rule{HTMLElement::ul, &BlockReader::readTopList},
    Rule{HTMLElement::ol, &BlockReader::readTopList},
    Rule{HTMLElement::blockquote, &BlockReader::readQuote},
    Rule{HTMLElement::hr, &BlockReader::readDivider}};

AttributedText BlockReader::read() {
    const HTMLNode* node = root_.firstChild();
    const HTMLNode* parent = &root_;
    while (node != nullptr || parent != &root_) {
        if (node == nullptr) {
            container_ = text_.containers[container_ - 1].parent;
            node = parent->nextSibling();
            parent = parent->parent();
        } else if (isContainer(*node)) {
            enter(*node);
            parent = node;
            node = node->firstChild();
        } else if (isInline(*node)) {
            node = readBareText(*node);
        } else {
            readBlock(*node);
            node = node->nextSibling();
        }
    }
    return std::move(text_);
}

void BlockReader::enter(const HTMLNode& container) {
    text_.containers.push_back({.parent = container_, .attributes = owned(container.attributes())});
    container_ = static_cast<std::uint32_t>(text_.containers.size());
}

/// Text beside blocks, up to the next block, which is the result.
const HTMLNode* BlockReader::readBareText(const HTMLNode& first) {
    startUnit();
    const HTMLNode* const end = readLine(&first);
    endParagraph({.style = BlockStyle{Kind::paragraph}, .holder = Holder::none});
    std::string html;
    for (const HTMLNode* node = &first; node != end; node = node->nextSibling()) {
        html += HTMLSerializer::serialize(*node);
    }
    keepOrPreserve(true, html);
    return end;
}

void BlockReader::readBlock(const HTMLNode& node) {
    startUnit();
    const std::string html = HTMLSerializer::serialize(node);
    if (node.element() == HTMLElement::div && isLocked(node)) {
        return preserve(html, Kind::encrypted);
    }
    const auto* const rule = std::ranges::find(rules, node.element(), &Rule::element);
    keepOrPreserve(rule != rules.end() && (this->*rule->read)(node), html);
}

bool BlockReader::readParagraph(const HTMLNode& node) {
    if (!readLineOf(node)) return false;
    Paragraph paragraph{.style = BlockStyle{Kind::paragraph}};
    takeAttributes(node, paragraph);
    endParagraph(std::move(paragraph));
    return true;
}

bool BlockReader::readDivision(const HTMLNode& node) {
    if (node.attribute("data-ts-attachment") || !readParagraph(node)) return false;
    text_.paragraphs.back().holder = Holder::division;
    return true;
}

bool BlockReader::readHeading(const HTMLNode& node) {
    if (!readLineOf(node)) return false;
    const int level = node.name().back() - '0';
    Paragraph paragraph{.style = BlockStyle{Kind::heading, level}};
    takeAttributes(node, paragraph);
    endParagraph(std::move(paragraph));
    return true;
}

bool BlockReader::readCode(const HTMLNode& node) {
    const HTMLNode* const first = node.firstChild();
    const bool isInCode = first != nullptr && first->element() == HTMLElement::code
                          && first->nextSibling() == nullptr && first->firstChild() != nullptr;
    const HTMLNode& lines = isInCode ? *first : node;
    if (!holdsLinesOnly(lines)) return false;
    for (const HTMLNode& piece : lines.children()) {
        inline_.read(piece, InlineReader::LineBreaks::asTheyAre);
    }
    Paragraph line{
        .style = BlockStyle{Kind::codeBlock}, .holder = isInCode ? Holder::code : Holder::usual};
    if (isInCode) line.attributes = owned(lines.attributes());
    line.frameAttributes = owned(node.attributes());
    splitLines(std::move(line));
    return true;
}

/// Makes a paragraph of each line that was read.
void BlockReader::splitLines(Paragraph line) {
    line.container = container_;
    std::size_t end = text_.text.find(u'\n', paragraphStart_);
    for (; end != std::u16string::npos; end = text_.text.find(u'\n', paragraphStart_)) {
        line.length = end + 1 - paragraphStart_;
        text_.paragraphs.push_back(line);
        paragraphStart_ = end + 1;
        line.attributes.clear();
        line.frameAttributes.clear();
    }
    endParagraph(std::move(line));
}

/// Recursive: indents are bounded.
bool BlockReader::readList(const HTMLNode& list, int indent) {
    if (indent > AttributedText::deepestIndent) return false;
    const std::size_t first = text_.paragraphs.size();
    const Kind kind = kindOfList(list);
    for (const HTMLNode& item : list.children()) {
        if (item.element() != HTMLElement::li || !readItem(item, kind, indent)) return false;
    }
    if (first == text_.paragraphs.size()) return false;
    takeListAttributes(list, text_.paragraphs[first]);
    return true;
}

/// A line, which may stand in an element of its own, and lists below it.
bool BlockReader::readItem(const HTMLNode& item, Kind kind, int indent) {
    Paragraph paragraph{.style = BlockStyle{kind}, .indent = indent};
    takeAttributes(item, paragraph);
    const HTMLNode* child = item.firstChild();
    if (child != nullptr
        && (child->element() == HTMLElement::p || child->element() == HTMLElement::div)) {
        const bool isDivision = child->element() == HTMLElement::div;
        paragraph.holder = isDivision ? Holder::division : Holder::paragraph;
        if (!readLineOf(*child)) return false;
        child = child->nextSibling();
    } else {
        child = readLine(child);
    }
    endParagraph(std::move(paragraph));
    for (bool isFirst = true; child != nullptr; child = child->nextSibling(), isFirst = false) {
        const std::size_t inner = text_.paragraphs.size();
        if (!isList(*child) || !readList(*child, indent + 1)) return false;
        text_.paragraphs[inner].beginsBlock = !isFirst;
    }
    return true;
}

bool BlockReader::readQuote(const HTMLNode& node) {
    const std::size_t first = text_.paragraphs.size();
    for (const HTMLNode* child = node.firstChild(); child != nullptr;) {
        if (isInline(*child)) {
            child = readLine(child);
            endParagraph({.holder = Holder::none});
            continue;
        }
        const bool isParagraph = child->element() == HTMLElement::p;
        const bool isDivision = child->element() == HTMLElement::div && !isLocked(*child);
        if (!(isParagraph && readParagraph(*child)) && !(isDivision && readDivision(*child))) {
            return false;
        }
        child = child->nextSibling();
    }
    if (first == text_.paragraphs.size()) return false;
    for (std::size_t i = first; i < text_.paragraphs.size(); ++i) {
        text_.paragraphs[i].style = BlockStyle{Kind::quote};
    }
    text_.paragraphs[first].frameAttributes = owned(node.attributes());
    return true;
}

bool BlockReader::readDivider(const HTMLNode& node) {
    Paragraph paragraph{.style = BlockStyle{Kind::divider}};
    takeAttributes(node, paragraph);
    endParagraph(std::move(paragraph));
    return true;
}

/// Reads from `node` on what stands in a line; the result is the first that does not.
const HTMLNode* BlockReader::readLine(const HTMLNode* node) {
    for (; node != nullptr && isInline(*node); node = node->nextSibling()) {
        inline_.read(*node);
    }
    return node;
}

bool BlockReader::readLineOf(const HTMLNode& node) {
    return readLine(node.firstChild()) == nullptr;
}

void BlockReader::endParagraph(Paragraph paragraph) {
    text_.text += u'\n';
    paragraph.length = text_.text.size() - paragraphStart_;
    paragraph.container = container_;
    text_.paragraphs.push_back(std::move(paragraph));
    paragraphStart_ = text_.text.size();
}

void BlockReader::startUnit() {
    unit_ = {text_.paragraphs.size(), text_.text.size(), text_.runs.size()};
}

void BlockReader::forgetUnit() {
    text_.paragraphs.resize(unit_.paragraph);
    text_.text.resize(unit_.offset);
    text_.runs.resize(unit_.run);
    paragraphStart_ = unit_.offset;
}

void BlockReader::keepOrPreserve(bool isRead, const std::string& html) {
    if (!isRead || htmlFrom(text_, unit_) != html) {
        forgetUnit();
        return preserve(html, Kind::preserved);
    }
    if (unit_.paragraph == 0 || unit_.paragraph == text_.paragraphs.size()) return;
    Paragraph& first = text_.paragraphs[unit_.paragraph];
    first.beginsBlock = areAlike(text_.paragraphs[unit_.paragraph - 1], first);
}

void BlockReader::preserve(const std::string& html, Kind kind) {
    text_.runs.push_back({.start = text_.text.size(), .length = 1, .style = {.object = html}});
    text_.text += AttributedText::objectCharacter;
    endParagraph({.style = BlockStyle{kind}});
}

}  // namespace

AttributedText attributedText(std::string_view canonicalBody) {
    const HTMLDocument document = HTMLDocument::parse(canonicalBody);
    return BlockReader(document.root()).read();
}

}  // namespace tesserine
