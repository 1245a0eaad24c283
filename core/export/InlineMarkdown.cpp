#include "core/export/InlineMarkdown.h"

#include "base/Text.h"
#include "base/UTF8.h"
#include "core/export/BodyHTML.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <utility>

namespace tesserine::markdown {
namespace {

using Element = HTMLElement;

bool isSpace(char32_t c) {
    return c == ' ' || c == '\n' || u_isUWhiteSpace(static_cast<UChar32>(c)) != 0;
}
/// Readers disagree about symbols: one counts as a word here and as no mark there.
bool isWord(char32_t c) { return u_isalnum(static_cast<UChar32>(c)) != 0; }
bool isPunctuation(char32_t c) { return u_ispunct(static_cast<UChar32>(c)) != 0; }

/// Whether a mark between two characters can begin (or, told the other way round, end) something.
bool faces(char32_t outside, char32_t inside) {
    return !isSpace(inside) && (isWord(inside) || isSpace(outside) || isPunctuation(outside));
}

char32_t lastCharacter(std::string_view text) {
    std::size_t start = text.size() - 1;
    while (start > 0 && (static_cast<unsigned char>(text[start]) & 0xC0) == 0x80) {
        --start;
    }
    return utf8::first(text.substr(start)).value;
}

/// The marks for an element, the preferred one first.
std::vector<std::string_view> marksFor(Element element) {
    if (element == Element::strong) return {"**"};
    if (element == Element::s) return {"~~"};
    return {"*", "_"};
}

struct TextCollector {
    void enter(const HTMLNode& node) {
        text += node.kind() == HTMLNode::Kind::text ? node.text() : "";
    }
    void leave(const HTMLNode& /*node*/) {}

    std::string text;
};

bool holdsTextOnly(const HTMLNode& node) {
    for (const HTMLNode& child : node.children()) {
        if (child.kind() != HTMLNode::Kind::text) return false;
    }
    return true;
}

/// Whether an address may stand between angle brackets alone.
bool isAutolink(std::string_view address) {
    const std::size_t reference = address.find('&');
    const bool hasReference =
        address.find(';', std::min(reference, address.size())) != std::string_view::npos;
    return address.find(':') != std::string_view::npos
           && address.find_first_of(" <>\\`") == std::string_view::npos && !hasReference;
}

}  // namespace

std::string textOf(const HTMLNode& node) {
    TextCollector collector;
    walk(node, collector);
    return std::move(collector.text);
}

void InlineMarkdown::add(const HTMLNode& node) {
    if (node.kind() == HTMLNode::Kind::text) {
        texts_.back() += node.text();
    } else if (node.kind() == HTMLNode::Kind::element) {
        addElement(node);
    }
}

std::string InlineMarkdown::take() {
    if (!options_.readBack) {
        moveSpacesOut();
        dropEmptyMarks();
    }
    chooseMarks();
    return written();
}

void InlineMarkdown::addElement(const HTMLNode& node) {
    if (const auto attachment = node.attribute("data-ts-attachment");
        attachment && options_.addressOf) {
        return addFile(node, *attachment);
    }
    switch (node.element()) {
    case Element::strong:
    case Element::em:
    case Element::s: return node.attributes().empty() ? addMarked(node) : addTagged(node);
    case Element::code: return addCode(node);
    case Element::a: return addLink(node);
    case Element::img: return addImage(node);
    case Element::br: return addMark({.kind = Mark::Kind::lineBreak});
    case Element::span:
        if (node.attributes().empty() && !options_.readBack) return addChildren(node);
        break;
    default: break;
    }
    addTagged(node);
}

void InlineMarkdown::addChildren(const HTMLNode& node) {
    for (const HTMLNode& child : node.children()) {
        add(child);
    }
}

void InlineMarkdown::addMarked(const HTMLNode& node) {
    const std::size_t open = marks_.size();
    addMark({.kind = Mark::Kind::open, .element = node.element()});
    addChildren(node);
    marks_[open].partner = marks_.size();
    addMark({.kind = Mark::Kind::close, .element = node.element(), .partner = open});
}

void InlineMarkdown::addVerbatim(std::string written) {
    addMark({.kind = Mark::Kind::verbatim, .written = std::move(written), .isChosen = true});
}

/// Writes the HTML element around its content.
void InlineMarkdown::addTagged(const HTMLNode& node) {
    std::string tag;
    for (const char c : onOneLine(startTagOf(node, options_.addressOf))) {
        if (isCell() && c == '|') {
            tag += "&#124;";
        } else {
            tag += c;
        }
    }
    addVerbatim(std::move(tag));
    if (html::has(node.element(), html::isVoid)) return;
    addChildren(node);
    addVerbatim("</" + std::string(node.name()) + ">");
}

void InlineMarkdown::addCode(const HTMLNode& node) {
    const std::string text = textOf(node);
    const bool isPlain = node.attributes().empty() && holdsTextOnly(node) && !text.empty();
    // Readers disagree about a vertical bar in the code of a cell.
    const std::string_view special = isCell() ? "\n|" : "\n";
    if (!isPlain || text.find_first_of(special) != std::string::npos) return addTagged(node);
    addVerbatim(codeSpan(text));
}

void InlineMarkdown::addLink(const HTMLNode& node) {
    const auto href = node.attribute("href");
    if (!href) return addTagged(node);
    const std::string address = options_.addressOf ? options_.addressOf(*href) : std::string(*href);
    if (address.empty()) return addChildren(node);
    const auto title = node.attribute("title");
    if (node.attributes().size() > (title ? 2U : 1U)) return addTagged(node);
    if (!title && holdsTextOnly(node) && textOf(node) == address && isAutolink(address)) {
        return addVerbatim("<" + address + ">");
    }
    hasLinks_ = true;
    addVerbatim("[");
    addChildren(node);
    addVerbatim("]" + destination(address, title.value_or(""), isCell()));
}

void InlineMarkdown::addFile(const HTMLNode& node, std::string_view attachment) {
    const std::string address =
        options_.addressOf(std::string(attachmentAddress).append(attachment));
    if (address.empty()) return addChildren(node);
    addVerbatim("[");
    texts_.back() += textOf(node);
    addVerbatim("]" + destination(address, "", isCell()));
}

void InlineMarkdown::addImage(const HTMLNode& node) {
    const std::string source(node.attribute("src").value_or(""));
    const std::string_view text = node.attribute("alt").value_or("");
    const std::string address = options_.addressOf ? options_.addressOf(source) : source;
    if (address.empty()) {
        addVerbatim("<span class=\"ts-unsupported\">");
        texts_.back() += text::isBlank(text) ? "Image" : text;
        return addVerbatim("</span>");
    }
    const bool hasMore = std::ranges::any_of(node.attributes(), [](const HTMLAttribute& attribute) {
        return attribute.name != "src" && attribute.name != "alt" && attribute.name != "title";
    });
    if (hasMore && options_.readBack) return addTagged(node);
    std::string alternative;
    appendEscaped(alternative, text, {.isCell = isCell(), .hasTildes = true});
    addVerbatim(
        "![" + onOneLine(alternative) + "]"
        + destination(address, node.attribute("title").value_or(""), isCell()));
}

void InlineMarkdown::addMark(Mark mark) {
    marks_.push_back(std::move(mark));
    texts_.emplace_back();
}

/// Marks stand beside no space on their inner side: it goes to the outer one.
void InlineMarkdown::moveSpacesOut() {
    for (std::size_t i = marks_.size(); i-- > 0;) {
        if (marks_[i].kind != Mark::Kind::open || !texts_[i + 1].starts_with(' ')) continue;
        texts_[i + 1].erase(0, texts_[i + 1].find_first_not_of(' '));
        if (!texts_[i].ends_with(' ')) texts_[i] += ' ';
    }
    for (std::size_t i = 0; i < marks_.size(); ++i) {
        if (marks_[i].kind != Mark::Kind::close || !texts_[i].ends_with(' ')) continue;
        texts_[i].resize(texts_[i].find_last_not_of(' ') + 1);
        if (!texts_[i + 1].starts_with(' ')) texts_[i + 1].insert(0, 1, ' ');
    }
}

/// Takes away the marks around nothing.
void InlineMarkdown::dropEmptyMarks() {
    for (std::size_t i = marks_.size(); i-- > 0;) {
        if (marks_[i].kind != Mark::Kind::open || !isEmpty(i)) continue;
        marks_[i].isChosen = true;
        marks_[marks_[i].partner].isChosen = true;
    }
}

bool InlineMarkdown::isEmpty(std::size_t open) const {
    for (std::size_t i = open + 1; texts_[i].empty(); ++i) {
        if (i == marks_[open].partner) return true;
        if (!marks_[i].isChosen || !marks_[i].written.empty()) return false;
    }
    return false;
}

void InlineMarkdown::chooseMarks() {
    // Emphasis comes last: it has two marks, of which one differs from its neighbour's.
    for (const bool isEmphasis : {false, true}) {
        for (std::size_t i = 0; i < marks_.size(); ++i) {
            const Mark& mark = marks_[i];
            const bool isTurn = (mark.element == Element::em) == isEmphasis;
            if (mark.kind == Mark::Kind::open && !mark.isChosen && isTurn) choose(i);
        }
    }
}

void InlineMarkdown::choose(std::size_t open) {
    Mark& opening = marks_[open];
    Mark& closing = marks_[opening.partner];
    const std::string name(html::nameOf(opening.element));
    opening.written = "<" + name + ">";
    closing.written = "</" + name + ">";
    for (const std::string_view mark : marksFor(opening.element)) {
        if (!works(open, mark)) continue;
        opening.written = mark;
        closing.written = mark;
        break;
    }
    opening.isChosen = true;
    closing.isChosen = true;
}

/// Whether `mark` around what opens here is read as what it is.
bool InlineMarkdown::works(std::size_t open, std::string_view mark) const {
    const std::size_t close = marks_[open].partner;
    if (isBesideMark(open, mark[0]) || isBesideMark(close, mark[0])) return false;
    if (!faces(before(open), after(open)) || !faces(after(close), before(close))) return false;
    // Inside a word "_" is a character like any other.
    return mark != "_" || (!isWord(before(open)) && !isWord(after(close)));
}

/// The character before a mark; a line break where the paragraph begins.
char32_t InlineMarkdown::before(std::size_t mark) const {
    for (std::size_t i = mark;; --i) {
        if (!texts_[i].empty()) return lastCharacter(texts_[i]);
        if (i == 0 || marks_[i - 1].kind == Mark::Kind::lineBreak) return '\n';
        const bool isDropped = marks_[i - 1].isChosen && marks_[i - 1].written.empty();
        if (!isDropped) return '*';
    }
}

/// The character after a mark; a line break where the paragraph ends.
char32_t InlineMarkdown::after(std::size_t mark) const {
    for (std::size_t i = mark + 1;; ++i) {
        if (!texts_[i].empty()) return utf8::first(texts_[i]).value;
        if (i == marks_.size()) return '\n';
        const bool isDropped = marks_[i].isChosen && marks_[i].written.empty();
        if (!isDropped) return '*';
    }
}

/// Whether a mark of the same character stands right before or after.
bool InlineMarkdown::isBesideMark(std::size_t mark, char character) const {
    for (std::size_t i = mark; i > 0 && texts_[i].empty(); --i) {
        const std::string& other = marks_[i - 1].written;
        if (!other.empty()) {
            if (other.back() == character) return true;
            break;
        }
    }
    for (std::size_t i = mark + 1; i < marks_.size() && texts_[i].empty(); ++i) {
        const std::string& other = marks_[i].written;
        if (other.empty()) continue;
        return other.front() == character;
    }
    return false;
}

/// How many marks stand before the end of what shows.
std::size_t InlineMarkdown::shownMarks() const {
    std::size_t count = marks_.size();
    while (count > 0 && texts_[count].find_first_not_of(' ') == std::string::npos
           && marks_[count - 1].kind == Mark::Kind::lineBreak) {
        --count;
    }
    return count;
}

std::string InlineMarkdown::written() {
    std::size_t tildes = 0;
    for (const std::string& text : texts_) {
        tildes += static_cast<std::size_t>(std::ranges::count(text, '~'));
    }
    hasTildes_ = tildes > 1;
    shownMarks_ = shownMarks();
    std::string output;
    for (std::size_t i = 0; i < texts_.size(); ++i) {
        writeText(output, i);
        if (i < marks_.size()) writeMark(output, i);
    }
    return withoutOuterSpaces(output);
}

/// Readers drop spaces at both ends, unless they are written as references.
std::string InlineMarkdown::withoutOuterSpaces(const std::string& output) const {
    const std::size_t end = output.find_last_not_of(' ') + 1;
    const std::size_t begin = std::min(output.find_first_not_of(' '), end);
    const bool areKept = options_.readBack && end > begin;
    const std::string space = areKept ? "&#32;" : "";
    return (begin > 0 ? space : "") + output.substr(begin, end - begin)
           + (end < output.size() ? space : "");
}

void InlineMarkdown::writeText(std::string& output, std::size_t index) const {
    const std::string& text = texts_[index];
    const bool isAfterBreak = output.ends_with('\n');
    appendEscaped(
        output,
        text,
        {.isLineStart = place_ == Place::paragraph && (isAfterBreak || output.empty()),
         .isAfterBreak = isAfterBreak,
         .isCell = isCell(),
         .hasTildes = hasTildes_,
         .hidesAddresses = hasLinks_ || options_.readBack});
    // What a heading ends in, and what makes a picture of a link, are markup too.
    const bool isLast = index == marks_.size();
    const bool endsHeading = isLast && place_ == Place::heading && text.ends_with('#');
    const bool precedesLink =
        !isLast && text.ends_with('!') && marks_[index].written.starts_with('[');
    if (endsHeading || precedesLink) output.insert(output.size() - 1, 1, '\\');
}

void InlineMarkdown::writeMark(std::string& output, std::size_t index) const {
    const Mark& mark = marks_[index];
    if (mark.kind != Mark::Kind::lineBreak) {
        output += mark.written;
        return;
    }
    // One that nothing follows would be a backslash.
    const bool isInside = place_ == Place::paragraph && index < shownMarks_;
    output += isInside ? "\\\n" : "<br>";
}

}  // namespace tesserine::markdown
