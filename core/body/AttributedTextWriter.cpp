#include "core/body/AttributedTextWriter.h"

#include "core/body/HTMLSerializer.h"
#include "core/body/InlineWriter.h"

#include <algorithm>
#include <array>
#include <vector>

namespace tesserine {
namespace {

using Kind = BlockStyle::Kind;
using Alignment = AttributedText::Alignment;
using Holder = AttributedText::Holder;
using Paragraph = AttributedText::Paragraph;

constexpr std::array headings{
    HTMLElement::h1,
    HTMLElement::h2,
    HTMLElement::h3,
    HTMLElement::h4,
    HTMLElement::h5,
    HTMLElement::h6};

HTMLElement headingOf(const Paragraph& paragraph) {
    const int level = paragraph.style ? paragraph.style->level : 1;
    return headings[static_cast<std::size_t>(std::clamp(level, 1, 6)) - 1];
}

/// The attributes of a paragraph's own element.
OwnedAttributes attributesOf(const Paragraph& paragraph) {
    OwnedAttributes attributes;
    if (kindOf(paragraph) == Kind::checklist) {
        attributes.push_back({"data-checked", paragraph.isChecked ? "true" : "false"});
    }
    attributes.insert(attributes.end(), paragraph.attributes.begin(), paragraph.attributes.end());
    if (paragraph.alignment != Alignment::natural) {
        attributes.push_back({"style", alignmentStyle(paragraph.alignment)});
    }
    return attributes;
}

OwnedAttributes listAttributesOf(const Paragraph& first) {
    OwnedAttributes attributes;
    if (kindOf(first) == Kind::checklist) attributes.push_back({"class", "ts-checklist"});
    if (kindOf(first) == Kind::numbered && first.startNumber) {
        attributes.push_back({"start", std::to_string(*first.startNumber)});
    }
    const auto& further = first.frameAttributes;
    attributes.insert(attributes.end(), further.begin(), further.end());
    return attributes;
}

/// Writes paragraph after paragraph; those that stand in one list, quote or code block at once.
class BlockWriter {
public:
    BlockWriter(const AttributedText& source, const ParagraphPlace& first)
        : source_(source), at_(first), inline_(source, output_, first.run) {}

    bool isAtEnd() const { return at_.paragraph == source_.paragraphs.size(); }
    const Paragraph& current() const { return source_.paragraphs[at_.paragraph]; }
    /// Writes the current paragraph and those that belong to it, and goes on behind them.
    void writeBlock();
    HTMLSerializer& output() { return output_; }
    /// What follows stands beside nothing that was written.
    void beginContent() { isAfterBareText_ = false; }

private:
    struct Rule {
        Kind kind;
        void (BlockWriter::*write)();
    };
    static const std::array<Rule, 10> rules;

    void writeParagraph();
    void writeHeading();
    void writeCode();
    void writeList();
    void writeQuote();
    void writeDivider();
    void writeObjects();

    void writeHeld();
    void writeLines();
    void writeItem();
    void openList();
    void closeList();
    void writeElement(HTMLElement element, const OwnedAttributes& attributes);
    void writeText(InlineWriter::Spaces spaces = InlineWriter::Spaces::shown);

    std::size_t textEnd() const;
    bool isEmpty() const { return textEnd() == at_.offset; }
    void advance();
    bool continuesBlock() const;

    const AttributedText& source_;
    ParagraphPlace at_;
    HTMLSerializer output_;
    InlineWriter inline_;
    std::vector<Kind> lists_;  // open, outermost first, each with an item
    bool isAfterBareText_ = false;
};

const std::array<BlockWriter::Rule, 10> BlockWriter::rules{
    Rule{Kind::heading, &BlockWriter::writeHeading},
    Rule{Kind::codeBlock, &BlockWriter::writeCode},
    Rule{Kind::bullet, &BlockWriter::writeList},
    Rule{Kind::numbered, &BlockWriter::writeList},
    Rule{Kind::checklist, &BlockWriter::writeList},
    Rule{Kind::preserved, &BlockWriter::writeObjects},
    Rule{Kind::encrypted, &BlockWriter::writeObjects},
    Rule{Kind::paragraph, &BlockWriter::writeParagraph},
    Rule{Kind::quote, &BlockWriter::writeQuote},
    Rule{Kind::divider, &BlockWriter::writeDivider}};

void BlockWriter::writeBlock() {
    const auto* const rule = std::ranges::find(rules, kindOf(current()), &Rule::kind);
    (this->*rule->write)();
}

void BlockWriter::writeParagraph() {
    writeHeld();
    advance();
}

void BlockWriter::writeHeading() {
    writeElement(headingOf(current()), attributesOf(current()));
    advance();
}

void BlockWriter::writeCode() {
    const bool isInCode = current().holder == Holder::code;
    openElement(output_, HTMLElement::pre, current().frameAttributes);
    if (isInCode) openElement(output_, HTMLElement::code, current().attributes);
    writeLines();
    inline_.finish();
    if (isInCode) output_.close();
    output_.close();
    beginContent();
}

/// The lines of one code block, with the line breaks between them.
void BlockWriter::writeLines() {
    writeText(InlineWriter::Spaces::asTheyAre);
    while (continuesBlock()) {
        const std::size_t end = at_.offset + current().length;
        inline_.write(textEnd(), end, InlineWriter::Spaces::asTheyAre);
        advance();
        writeText(InlineWriter::Spaces::asTheyAre);
    }
    advance();
}

/// Items nest by their indent, never more than one level at a time.
void BlockWriter::writeList() {
    bool continues = true;
    while (continues) {
        const auto indent = static_cast<std::size_t>(std::max(current().indent, 0));
        const std::size_t depth = std::min(indent, lists_.size());
        while (lists_.size() > depth + 1) {
            closeList();
        }
        const bool isInside = lists_.size() == depth + 1;
        if (isInside && (lists_.back() != kindOf(current()) || current().beginsBlock)) closeList();
        if (lists_.size() == depth) {
            openList();
        } else {
            output_.close();  // the item before
        }
        writeItem();
        continues = continuesBlock();
        advance();
    }
    while (!lists_.empty()) {
        closeList();
    }
    beginContent();
}

void BlockWriter::openList() {
    const Kind kind = kindOf(current());
    const HTMLElement list = kind == Kind::numbered ? HTMLElement::ol : HTMLElement::ul;
    openElement(output_, list, listAttributesOf(current()));
    lists_.push_back(kind);
}

void BlockWriter::closeList() {
    output_.close();  // its last item
    output_.close();
    lists_.pop_back();
}

/// Leaves the item open: a list may follow in it.
void BlockWriter::writeItem() {
    openElement(output_, HTMLElement::li, attributesOf(current()));
    switch (current().holder) {
    case Holder::paragraph: return writeElement(HTMLElement::p, {});
    case Holder::division: return writeElement(HTMLElement::div, {});
    case Holder::usual:
    case Holder::none:
    case Holder::code: break;
    }
    writeText();
    inline_.finish();
}

void BlockWriter::writeQuote() {
    openElement(output_, HTMLElement::blockquote, current().frameAttributes);
    beginContent();
    bool continues = true;
    while (continues) {
        writeHeld();
        continues = continuesBlock();
        advance();
    }
    output_.close();
    beginContent();
}

/// A paragraph in its element, or without one where it can be told from what stands before it.
void BlockWriter::writeHeld() {
    const OwnedAttributes attributes = attributesOf(current());
    const bool mayBeBare = attributes.empty() && !isEmpty() && !isAfterBareText_;
    const bool isBare = current().holder == Holder::none && mayBeBare;
    if (isBare) {
        writeText();
        inline_.finish();
    } else {
        const bool isDivision = current().holder == Holder::division;
        writeElement(isDivision ? HTMLElement::div : HTMLElement::p, attributes);
    }
    isAfterBareText_ = isBare;
}

void BlockWriter::writeDivider() {
    openElement(output_, HTMLElement::hr, attributesOf(current()));
    output_.close();
    if (!isEmpty()) writeElement(HTMLElement::p, {});
    beginContent();
    advance();
}

/// Objects that are blocks of their own; text that was put beside them becomes paragraphs.
void BlockWriter::writeObjects() {
    const std::size_t end = textEnd();
    std::size_t start = at_.offset;
    const auto writeTextUpTo = [&](std::size_t stop) {
        if (start == stop) return;
        openElement(output_, HTMLElement::p);
        inline_.write(start, stop);
        inline_.finish();
        output_.close();
    };
    for (std::size_t i = inline_.runAt(start); i < source_.runs.size(); ++i) {
        const AttributedText::Run& run = source_.runs[i];
        if (run.start >= end) break;
        if (run.style.object.empty()) continue;
        writeTextUpTo(run.start);
        output_.storedForm(run.style.object);
        start = run.end();
    }
    writeTextUpTo(end);
    beginContent();
    advance();
}

void BlockWriter::writeElement(HTMLElement element, const OwnedAttributes& attributes) {
    openElement(output_, element, attributes);
    writeText();
    inline_.finish();
    output_.close();
    beginContent();
}

void BlockWriter::writeText(InlineWriter::Spaces spaces) {
    inline_.write(at_.offset, textEnd(), spaces);
}

/// Where the current paragraph's text ends, without its ending.
std::size_t BlockWriter::textEnd() const {
    const std::size_t end = at_.offset + current().length;
    const bool hasEnding = current().length > 0 && source_.text[end - 1] == u'\n';
    return hasEnding ? end - 1 : end;
}

void BlockWriter::advance() {
    at_.offset += current().length;
    ++at_.paragraph;
}

/// Whether the next paragraph belongs to the same list, quote or code block as the current one.
bool BlockWriter::continuesBlock() const {
    if (at_.paragraph + 1 >= source_.paragraphs.size()) return false;
    const Paragraph& next = source_.paragraphs[at_.paragraph + 1];
    const bool isInner = isListItem(next) && next.indent > 0;
    return areAlike(current(), next) && (isInner || !next.beginsBlock);
}

/// Opens and closes the containers between the blocks.
class ContainerWriter {
public:
    ContainerWriter(const AttributedText& source, HTMLSerializer& output)
        : source_(source), output_(output) {}

    /// Goes over into `container`; tells whether that is another one.
    bool enter(std::uint32_t container) {
        if (container == (open_.empty() ? 0 : open_.back())) return false;
        const std::vector<std::uint32_t> path = pathTo(container);
        const auto [differs, wanted] =
            std::mismatch(open_.begin(), open_.end(), path.begin(), path.end());
        for (auto closing = open_.end(); closing != differs; --closing) {
            output_.close();
        }
        for (auto opening = wanted; opening != path.end(); ++opening) {
            openElement(output_, HTMLElement::div, source_.containers[*opening - 1].attributes);
        }
        open_ = path;
        return true;
    }

private:
    /// The outermost first.
    std::vector<std::uint32_t> pathTo(std::uint32_t container) const {
        std::vector<std::uint32_t> path;
        while (container != 0) {
            path.push_back(container);
            container = source_.containers[container - 1].parent;
        }
        std::ranges::reverse(path);
        return path;
    }

    const AttributedText& source_;
    HTMLSerializer& output_;
    std::vector<std::uint32_t> open_;
};

}  // namespace

std::string canonicalHTML(const AttributedText& edited) {
    BlockWriter blocks(edited, {});
    ContainerWriter containers(edited, blocks.output());
    while (!blocks.isAtEnd()) {
        if (containers.enter(blocks.current().container)) blocks.beginContent();
        blocks.writeBlock();
    }
    containers.enter(0);
    return blocks.output().html();
}

std::string htmlFrom(const AttributedText& edited, const ParagraphPlace& first) {
    BlockWriter blocks(edited, first);
    while (!blocks.isAtEnd()) {
        blocks.writeBlock();
    }
    return blocks.output().html();
}

}  // namespace tesserine
