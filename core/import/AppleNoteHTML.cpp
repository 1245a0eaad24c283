#include "core/import/AppleNoteHTML.h"

#include "base/Text.h"
#include "base/Uuid.h"
#include "core/body/HTMLSerializer.h"

#include <array>
#include <vector>

namespace tesserine {
namespace {

using Style = AppleParagraph::Style;

constexpr std::u16string_view lineSeparator = u"\u2028";

bool isListItem(Style style) {
    switch (style) {
    case Style::bulleted:
    case Style::dashed:
    case Style::numbered:
    case Style::checkbox: return true;
    case Style::body:
    case Style::title:
    case Style::heading:
    case Style::subheading:
    case Style::monospace: break;
    }
    return false;
}

HTMLElement elementOf(Style style) {
    switch (style) {
    case Style::title: return HTMLElement::h1;
    case Style::heading: return HTMLElement::h2;
    case Style::subheading: return HTMLElement::h3;
    case Style::numbered: return HTMLElement::ol;
    case Style::bulleted:
    case Style::dashed:
    case Style::checkbox: return HTMLElement::ul;
    case Style::body:
    case Style::monospace: break;
    }
    return HTMLElement::p;
}

class Writer {
public:
    explicit Writer(AppleNoteReferences& references) : references_(references) {}

    void write(const AppleParagraph& paragraph) {
        if (!isListItem(paragraph.style)) closeLists(0);
        setQuote(paragraph.isQuoted);
        if (paragraph.style == Style::monospace) return writeCode(paragraph);
        endCode();
        isListItem(paragraph.style) ? writeItem(paragraph) : writeBlock(paragraph);
    }
    const std::string& finish() {
        closeLists(0);
        setQuote(false);
        return html_.html();
    }

private:
    struct List {
        std::size_t indent;
        Style style;
    };

    void open(HTMLElement element) { html_.open(element, html::nameOf(element), {}); }
    void open(HTMLElement element, std::string_view name, std::string_view value) {
        const std::array<HTMLAttribute, 1> attributes{{{name, value}}};
        html_.open(element, html::nameOf(element), attributes);
    }

    void setQuote(bool isQuoted) {
        if (isQuoted == isInQuote_) return;
        closeLists(0);
        endCode();
        isQuoted ? open(HTMLElement::blockquote) : html_.close();
        isInQuote_ = isQuoted;
    }
    void writeCode(const AppleParagraph& paragraph) {
        if (!isInCode_) open(HTMLElement::pre);
        if (isInCode_) html_.text("\n");
        isInCode_ = true;
        writeSpans(paragraph);
    }
    void endCode() {
        if (isInCode_) html_.close();
        isInCode_ = false;
    }
    void writeBlock(const AppleParagraph& paragraph) {
        open(elementOf(paragraph.style));
        if (paragraph.spans.empty()) {
            open(HTMLElement::br);
            html_.close();
        }
        writeSpans(paragraph);
        html_.close();
    }
    /// An item that is indented deeper stands in a list inside the item before it.
    void writeItem(const AppleParagraph& paragraph) {
        while (!lists_.empty() && lists_.back().indent > paragraph.indent) {
            closeLists(lists_.size() - 1);
        }
        const bool isSameLevel = !lists_.empty() && lists_.back().indent == paragraph.indent;
        if (isSameLevel && lists_.back().style != paragraph.style) closeLists(lists_.size() - 1);
        if (!lists_.empty() && lists_.back().indent == paragraph.indent) {
            html_.close();  // the item before
        } else {
            openList(paragraph);
        }
        if (paragraph.style == Style::checkbox) {
            open(HTMLElement::li, "data-checked", paragraph.isChecked ? "true" : "false");
        } else {
            open(HTMLElement::li);
        }
        writeSpans(paragraph);
    }
    void openList(const AppleParagraph& paragraph) {
        if (paragraph.style == Style::checkbox) {
            open(HTMLElement::ul, "class", "ts-checklist");
        } else {
            open(elementOf(paragraph.style));
        }
        lists_.push_back({paragraph.indent, paragraph.style});
    }
    /// Leaves so many lists open.
    void closeLists(std::size_t count) {
        for (; lists_.size() > count; lists_.pop_back()) {
            html_.close();  // the item
            html_.close();
        }
    }

    void writeSpans(const AppleParagraph& paragraph) {
        for (const AppleSpan& span : paragraph.spans) {
            if (span.attachment.empty()) {
                writeSpan(span);
            } else {
                html_.storedForm(references_.attachment(span));
            }
        }
    }
    void writeSpan(const AppleSpan& span) {
        std::vector<HTMLElement> marks;
        if (span.isBold) marks.push_back(HTMLElement::strong);
        if (span.isItalic) marks.push_back(HTMLElement::em);
        if (span.isUnderlined) marks.push_back(HTMLElement::u);
        if (span.isStruck) marks.push_back(HTMLElement::s);
        if (span.baseline > 0) marks.push_back(HTMLElement::sup);
        if (span.baseline < 0) marks.push_back(HTMLElement::sub);
        const bool isLink = openLink(span.link);
        for (const HTMLElement mark : marks) {
            open(mark);
        }
        writeLines(span.text);
        for (std::size_t i = 0; i < marks.size() + (isLink ? 1 : 0); ++i) {
            html_.close();
        }
    }
    /// A line separator breaks the line, not the paragraph.
    void writeLines(std::string_view text) {
        static const std::string separator = text::fromUTF16(lineSeparator);
        for (std::size_t end = text.find(separator); end != std::string_view::npos;
             end = text.find(separator)) {
            html_.text(text.substr(0, end));
            open(HTMLElement::br);
            html_.close();
            text.remove_prefix(end + separator.size());
        }
        html_.text(text);
    }
    bool openLink(const std::string& address) {
        if (address.empty()) return false;
        const std::string note = linkedAppleNote(address);
        const auto known = note.empty() ? std::optional(address) : references_.noteAddress(note);
        if (!known) return false;
        open(HTMLElement::a, "href", *known);
        return true;
    }

    AppleNoteReferences& references_;
    HTMLSerializer html_;
    std::vector<List> lists_;  // open ones, each with an open item
    bool isInQuote_ = false;
    bool isInCode_ = false;
};

}  // namespace

std::string linkedAppleNote(std::string_view address) {
    const bool isOwn = address.starts_with("applenotes:") || address.starts_with("mobilenotes:");
    constexpr std::size_t length = 36;
    for (std::size_t at = 0; isOwn && at + length <= address.size(); ++at) {
        if (const auto id = Uuid::parse(address.substr(at, length))) return id->text();
    }
    return {};
}

std::string appleNoteHTML(
    std::span<const AppleParagraph> paragraphs, AppleNoteReferences& references) {
    Writer writer(references);
    for (const AppleParagraph& paragraph : paragraphs) {
        writer.write(paragraph);
    }
    return writer.finish();
}

}  // namespace tesserine
