#include "app/editor/ForeignHTML.h"

#include "app/editor/ForeignLists.h"
#include "app/editor/ForeignMarks.h"
#include "app/editor/ForeignStyles.h"
#include "app/editor/ForeignSurvey.h"
#include "app/editor/InlineStyle.h"
#include "base/Text.h"
#include "core/body/HTMLSerializer.h"
#include "core/body/HTMLTreeBuilder.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace tesserine::app::paste {
namespace {

using Element = HTMLElement;
using Attributes = std::span<const HTMLAttribute>;

constexpr const char* bullet = "• ";

bool leadsAnywhere(std::string_view address) {
    const std::size_t colon = address.find(':');
    return colon != std::string_view::npos && colon < address.find_first_of("/?#");
}

/// A picture that is not meant to be seen.
bool isPixel(Attributes attributes) {
    const auto side = [&](std::string_view name) {
        return leadingNumber(attribute(attributes, name));
    };
    return side("width").value_or(2) <= 1 && side("height").value_or(2) <= 1;
}

/// Whether the element holds lines in a note, where other programs put paragraphs.
bool holdsLines(Element element) {
    return element == Element::td || element == Element::th || element == Element::li;
}

bool isCell(Element element) { return element == Element::td || element == Element::th; }

bool isHidden(std::string_view style) { return declared(style, "display") == "none"; }

bool isPartOfTable(Element element) {
    switch (element) {
    case Element::tbody:
    case Element::thead:
    case Element::tfoot:
    case Element::tr:
    case Element::col:
    case Element::colgroup:
    case Element::caption: return true;
    default: return isCell(element);
    }
}

/// A picture that only the other program can show: part of its message, or a file of its own.
bool isUnreachable(std::string_view address) {
    return address.starts_with("cid:") || address.starts_with("file:");
}

/// Whether an attribute only says how the other program lays out its page.
bool isLayout(const HTMLAttribute& attribute) {
    const bool isUsualDirection = attribute.name == "dir" && attribute.value == "ltr";
    return isUsualDirection || attribute.name == "style" || attribute.name == "align"
           || attribute.name == "lang";
}

bool isMark(Element element) {
    switch (element) {
    case Element::del:
    case Element::ins: return true;
    default: return html::has(element, html::isFormatting);
    }
}

/// Rewrites a tree while it is read.
///
/// What is quoted becomes paragraphs of a quotation, whatever it was: those a note can edit.
class Rewriter final : public HTMLSink {
public:
    explicit Rewriter(Survey survey) : survey_(std::move(survey)) {}

    void open(Element element, std::string_view name, Attributes attributes) override;
    void close() override;
    void text(std::string_view text) override;
    void comment(std::string_view /*text*/) override {}

    PlainHTML finish() {
        endLists();
        return {output_.html(), unreachable_};
    }

private:
    /// One element of the source, and what stands for it in the result.
    struct Open {
        Element element;
        std::size_t marks = 0;
        bool isWritten = false;
        std::size_t paragraphs = 0;       // that became lines of it
        std::size_t items = 0;            // of a quoted list
        std::size_t suspendedQuotes = 0;  // that go on behind it
    };

    void openElement(Element element, std::string_view name, Attributes attributes);
    bool leavesOut(std::string_view style);
    void openItem(const ItemMark& mark);
    void endLists();
    void openTable(std::string_view name, Attributes attributes);
    void openBlock(Element element, std::string_view name, Attributes attributes);
    void openInQuote(Element element, std::string_view name, Attributes attributes);
    void openInline(Element element, std::string_view name, Attributes attributes);
    void openPicture(std::string_view name, Attributes attributes);
    void openMarks(Element element, std::string_view name, Attributes attributes);
    void openMark(Element mark, std::string_view name, Attributes attributes);
    void write(Element element, std::string_view name, Attributes attributes);
    void beginLine();
    void beginWords();
    void endLine();
    void endQuote();
    std::string itemPrefix();
    bool isIn(Element element) const;

    // Fixed after construction.
    const Survey survey_;

    HTMLSerializer output_;
    ForeignMarks marks_{output_};
    ForeignLists lists_{output_};
    std::vector<Open> open_;
    std::vector<bool> layouts_;     // of the tables that are open
    std::size_t tables_ = 0;        // that have begun
    std::size_t items_ = 0;         // paragraphs of lists that have begun
    std::size_t listDepth_ = 0;     // of what holds the items
    std::size_t leftOutDepth_ = 0;  // elements open in one that is left out, itself included
    std::size_t breaks_ = 0;        // that are written if something follows on their line
    std::size_t unreachable_ = 0;
    // Quotations: how many are open, one in another, and what is open in the result.
    std::size_t quotes_ = 0;
    bool isQuoteOpen_ = false;
    bool isLineOpen_ = false;
    std::string linePrefix_;  // stands before the words of the next line
};

void Rewriter::open(Element element, std::string_view name, Attributes attributes) {
    const std::string_view style = attribute(attributes, "style");
    const auto mark = element == Element::p ? itemMark(style) : std::nullopt;
    if (mark) ++items_;
    if (element == Element::table) ++tables_;
    if (leavesOut(style)) return;
    if (mark && quotes_ == 0) return openItem(*mark);

    if (lists_.isOpen() && open_.size() == listDepth_) endLists();
    const bool isInCell = !open_.empty() && holdsLines(open_.back().element) && quotes_ == 0;
    const bool isLine = element == Element::p && isInCell;
    if (isLine && open_.back().paragraphs++ > 0) ++breaks_;
    open_.push_back({element});
    if (!isLine) openElement(element, name, attributes);
}

void Rewriter::openElement(Element element, std::string_view name, Attributes attributes) {
    const bool isInLayout = !layouts_.empty() && layouts_.back();
    if (isInLayout && isCell(element)) {
        open_.back().element = Element::div;
        openBlock(Element::div, "div", {});
    } else if (isInLayout && isPartOfTable(element)) {
        return;
    } else if (element == Element::table) {
        openTable(name, attributes);
    } else if (element == Element::br) {
        ++breaks_;
    } else if (html::has(element, html::isBlock)) {
        openBlock(element, name, attributes);
    } else {
        openInline(element, name, attributes);
    }
}

/// Whether the element goes with all it holds: what is not to be seen, and labels of items.
bool Rewriter::leavesOut(std::string_view style) {
    const bool isLabel = lists_.isOpen() && isItemLabel(style);
    const bool isMeant = leftOutDepth_ > 0 || isLabel || isHidden(style);
    if (isMeant) ++leftOutDepth_;
    return isMeant;
}

void Rewriter::openItem(const ItemMark& mark) {
    breaks_ = 0;
    if (lists_.isOpen() && open_.size() != listDepth_) endLists();
    listDepth_ = open_.size();
    marks_.interrupt();
    lists_.beginItem(mark, survey_.labels[items_ - 1]);
    open_.push_back({Element::p});
}

void Rewriter::endLists() {
    if (!lists_.isOpen()) return;
    marks_.interrupt();
    lists_.end();
}

void Rewriter::close() {
    if (leftOutDepth_ > 0) {
        --leftOutDepth_;
        return;
    }
    if (lists_.isOpen() && open_.size() == listDepth_) endLists();
    const Open closed = open_.back();
    open_.pop_back();
    for (std::size_t i = 0; i < closed.marks; ++i) {
        marks_.close();
    }
    if (closed.element == Element::table) layouts_.pop_back();
    if (closed.element == Element::li) linePrefix_.clear();
    const bool isBlock = html::has(closed.element, html::isBlock);
    const bool isItem = lists_.isOpen() && open_.size() == listDepth_;
    if (isItem || (isBlock && closed.isWritten)) breaks_ = 0;
    if (closed.isWritten) {
        marks_.interrupt();
        output_.close();
    }
    if (isBlock && quotes_ > 0) endLine();
    if (closed.element == Element::blockquote && --quotes_ == 0) endQuote();
    if (closed.suspendedQuotes > 0) quotes_ = closed.suspendedQuotes;
}

void Rewriter::text(std::string_view text) {
    if (leftOutDepth_ > 0) return;
    const bool isSpace = html::isSpaceOnly(text);
    // White space behind a paragraph that became a line or an item is layout of the source.
    const bool isBehindItem = lists_.isOpen() && open_.size() == listDepth_;
    const bool isBehindLine = !open_.empty() && open_.back().paragraphs > 0;
    const bool isBetweenLines = quotes_ > 0 && !isLineOpen_;
    if (isSpace && (isBehindItem || isBehindLine || isBetweenLines)) return;
    if (isBehindItem) endLists();
    const bool isQuotedMail = quotes_ > 0 && isIn(Element::pre);
    if (!isQuotedMail) {
        if (!isSpace) beginWords();
        return output_.text(text);
    }
    while (true) {
        const std::string_view line = text.substr(0, text.find('\n'));
        if (!line.empty()) beginWords();
        output_.text(line);
        if (line.size() == text.size()) return;
        ++breaks_;
        text.remove_prefix(line.size() + 1);
    }
}

// Blocks

void Rewriter::openTable(std::string_view name, Attributes attributes) {
    layouts_.push_back(survey_.isLayout[tables_ - 1]);
    if (!layouts_.back()) openBlock(Element::table, name, attributes);
}

void Rewriter::openBlock(Element element, std::string_view name, Attributes attributes) {
    breaks_ = 0;
    if (quotes_ > 0 || element == Element::blockquote) {
        return openInQuote(element, name, attributes);
    }
    const std::string_view style = attribute(attributes, "style");
    std::vector<HTMLAttribute> kept;
    std::ranges::remove_copy_if(attributes, std::back_inserter(kept), isLayout);
    std::string alignment = declared(style, "text-align");
    if (alignment.empty()) alignment = text::asciiLowercased(attribute(attributes, "align"));
    const bool isAligned = (alignment == "center" || alignment == "right") && !isCell(element);
    alignment.insert(0, "text-align: ");
    if (isAligned) kept.push_back({"style", alignment});
    write(element, name, kept);
    if (element != Element::p) return;
    for (const Element meant : elementsOf(style)) {
        const bool isOfLetters = meant == Element::strong || meant == Element::em;
        if (isOfLetters) openMark(meant, html::nameOf(meant), {});
    }
}

/// Every block is a line of the quotation; a table and a rule stand between two of them.
void Rewriter::openInQuote(Element element, std::string_view name, Attributes attributes) {
    endLine();
    if (element == Element::blockquote) {
        ++quotes_;
    } else if (element == Element::table || element == Element::hr) {
        endQuote();
        open_.back().suspendedQuotes = std::exchange(quotes_, 0);
        openBlock(element, name, attributes);
    } else if (element == Element::li) {
        linePrefix_ = itemPrefix();
    }
}

/// What stands before the item that has just begun.
std::string Rewriter::itemPrefix() {
    const auto list = std::find_if(open_.rbegin(), open_.rend(), [](const Open& open) {
        return open.element == Element::ul || open.element == Element::ol;
    });
    if (list == open_.rend() || list->element == Element::ul) return bullet;
    return std::to_string(++list->items) + ". ";
}

void Rewriter::beginLine() {
    if (quotes_ > 0 && !isQuoteOpen_) {
        marks_.interrupt();
        output_.open(Element::blockquote, "blockquote", {});
        isQuoteOpen_ = true;
    }
    if (quotes_ > 0 && !isLineOpen_) {
        marks_.interrupt();
        output_.open(Element::p, "p", {});
        output_.text(std::exchange(linePrefix_, {}));
        isLineOpen_ = true;
    }
    for (; breaks_ > 0; --breaks_) {
        output_.open(Element::br, "br", {});
        output_.close();
    }
}

void Rewriter::endLine() {
    breaks_ = 0;
    if (!isLineOpen_) return;
    marks_.interrupt();
    output_.close();
    isLineOpen_ = false;
}

void Rewriter::endQuote() {
    endLine();
    if (isQuoteOpen_) output_.close();
    isQuoteOpen_ = false;
}

// What stands in a line

void Rewriter::openInline(Element element, std::string_view name, Attributes attributes) {
    if (element == Element::img) return openPicture(name, attributes);
    if (isMark(element)) return openMarks(element, name, attributes);
    beginLine();
    write(element, name, attributes);
}

void Rewriter::openPicture(std::string_view name, Attributes attributes) {
    if (isPixel(attributes)) return;
    if (isUnreachable(attribute(attributes, "src"))) {
        ++unreachable_;
        return;
    }
    beginWords();
    output_.open(Element::img, name, attributes);
    output_.close();
}

void Rewriter::openMarks(Element element, std::string_view name, Attributes attributes) {
    const std::string_view style = attribute(attributes, "style");
    const bool isIdle = element == Element::span || element == Element::font
                        || (element == Element::a && !leadsAnywhere(attribute(attributes, "href")))
                        || isTakenBack(element, style);
    if (!isIdle) openMark(element, name, attributes);
    const bool isInHeading = std::ranges::any_of(
        open_, [](const Open& each) { return html::has(each.element, html::isHeading); });
    for (const Element meant : elementsOf(style)) {
        if (meant == element || (isInHeading && meant == Element::strong)) continue;
        openMark(meant, html::nameOf(meant), {});
    }
}

/// Until the element that is open last is closed.
void Rewriter::openMark(Element mark, std::string_view name, Attributes attributes) {
    marks_.open(mark, name, attributes);
    ++open_.back().marks;
}

void Rewriter::write(Element element, std::string_view name, Attributes attributes) {
    marks_.interrupt();
    output_.open(element, name, attributes);
    open_.back().isWritten = true;
}

void Rewriter::beginWords() {
    beginLine();
    marks_.begin();
}

bool Rewriter::isIn(Element element) const {
    return std::ranges::find(open_, element, &Open::element) != open_.end();
}

}  // namespace

PlainHTML plainHTML(std::string_view foreign) {
    Rewriter rewriter(surveyed(foreign));
    parseHTML(foreign, rewriter);
    return rewriter.finish();
}

}  // namespace tesserine::app::paste
