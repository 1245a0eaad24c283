#include "core/import/MarkdownHTML.h"

#include "base/Text.h"
#include "core/body/BodyError.h"
#include "core/body/Limits.h"
#include "core/import/InlineText.h"
#include "core/import/RawHTML.h"

#include <md4c.h>

#include <algorithm>
#include <array>
#include <exception>
#include <optional>

namespace tesserine {
namespace {

/// References and tables can make much HTML of little Markdown; nothing longer than this can become
/// a note.
constexpr std::size_t mostHTMLBytes = 2 * limits::canonicalBodyBytes;

std::string_view viewOf(const MD_CHAR* text, MD_SIZE size) {
    return size == 0 ? std::string_view{} : std::string_view(text, size);
}

/// Whether an address may be left as it is.
bool isPlainAddress(std::string_view address) {
    const std::string begin = text::asciiLowercased(address.substr(0, 8));
    return begin.starts_with("http://") || begin.starts_with("https://")
           || begin.starts_with("mailto:") || begin.starts_with('#');
}

/// A list that is open: the element that stands for its present run of items.
struct OpenList {
    enum class Run { none, plain, checklist };
    bool isOrdered = false;
    unsigned nextNumber = 1;
    Run run = Run::none;
};

/// Receives what MD4C reads, in order, and writes HTML.
class HTMLWriter {
public:
    HTMLWriter(std::string_view source, const MarkdownReading& reading)
        : reading_(reading), inline_(source, reading.recognisesTags) {
        result_.html.reserve(source.size() + source.size() / 4);
    }

    void enterBlock(MD_BLOCKTYPE type, const void* detail);
    void leaveBlock(MD_BLOCKTYPE type, const void* detail);
    void enterSpan(MD_SPANTYPE type, const void* detail);
    void leaveSpan(MD_SPANTYPE type, const void* detail);
    void text(MD_TEXTTYPE type, std::string_view text);

    MarkdownHTML take() {
        result_.tags = inline_.takeTags();
        return std::move(result_);
    }
    bool isTooLong() const { return out().size() > mostHTMLBytes; }

private:
    std::string& out() { return result_.html; }
    const std::string& out() const { return result_.html; }
    void write(std::string_view html) { out() += html; }

    void enterItem(const MD_BLOCK_LI_DETAIL& item);
    void closeRun(OpenList& list);
    void enterParagraph();
    void enterHeading(unsigned level);
    void leaveHeading(unsigned level);
    void enterCell(const char* name, MD_ALIGN alignment);
    void leaveCode();
    void writeAttribute(const MD_ATTRIBUTE& attribute);
    void endPictureText();
    void enterLink(const MD_ATTRIBUTE& address);
    void writeTitle(const MD_ATTRIBUTE& title);
    void writeRawHTML(std::string_view html);

    const MarkdownReading reading_;
    MarkdownHTML result_;
    InlineText inline_;
    std::vector<OpenList> lists_;
    std::vector<bool> paragraphs_;  // whether each open one has its tags
    std::optional<std::string> htmlBlock_;
    std::size_t itemBegin_ = std::string::npos;  // where the text of the newest item begins
    std::size_t depth_ = 0;                      // of open blocks
    std::size_t pictureDepth_ = 0;
    std::size_t linkDepth_ = 0;
    std::optional<std::size_t> headingBegin_;
};

void HTMLWriter::enterBlock(MD_BLOCKTYPE type, const void* detail) {
    inline_.finish(out());
    ++depth_;
    switch (type) {
    case MD_BLOCK_DOC: break;
    case MD_BLOCK_QUOTE: write("<blockquote>"); break;
    case MD_BLOCK_UL: lists_.push_back({}); break;
    case MD_BLOCK_OL:
        lists_.push_back(
            {.isOrdered = true,
             .nextNumber = static_cast<const MD_BLOCK_OL_DETAIL*>(detail)->start});
        break;
    case MD_BLOCK_LI: enterItem(*static_cast<const MD_BLOCK_LI_DETAIL*>(detail)); break;
    case MD_BLOCK_HR: write("<hr>"); break;
    case MD_BLOCK_H: enterHeading(static_cast<const MD_BLOCK_H_DETAIL*>(detail)->level); break;
    case MD_BLOCK_CODE: write("<pre><code>"); break;
    case MD_BLOCK_HTML: htmlBlock_.emplace(); break;
    case MD_BLOCK_P: enterParagraph(); break;
    case MD_BLOCK_TABLE: write("<table>"); break;
    case MD_BLOCK_THEAD: write("<thead>"); break;
    case MD_BLOCK_TBODY: write("<tbody>"); break;
    case MD_BLOCK_TR: write("<tr>"); break;
    case MD_BLOCK_TH: enterCell("th", static_cast<const MD_BLOCK_TD_DETAIL*>(detail)->align); break;
    case MD_BLOCK_TD: enterCell("td", static_cast<const MD_BLOCK_TD_DETAIL*>(detail)->align); break;
    }
}

void HTMLWriter::leaveBlock(MD_BLOCKTYPE type, const void* detail) {
    inline_.finish(out());
    --depth_;
    switch (type) {
    case MD_BLOCK_DOC:
    case MD_BLOCK_HR: break;
    case MD_BLOCK_QUOTE: write("</blockquote>"); break;
    case MD_BLOCK_UL:
    case MD_BLOCK_OL:
        closeRun(lists_.back());
        lists_.pop_back();
        break;
    case MD_BLOCK_LI: write("</li>"); break;
    case MD_BLOCK_H: leaveHeading(static_cast<const MD_BLOCK_H_DETAIL*>(detail)->level); break;
    case MD_BLOCK_CODE: leaveCode(); break;
    case MD_BLOCK_HTML:
        write(rawhtml::closed(*htmlBlock_));
        htmlBlock_.reset();
        break;
    case MD_BLOCK_P:
        if (paragraphs_.back()) write("</p>");
        paragraphs_.pop_back();
        break;
    case MD_BLOCK_TABLE: write("</table>"); break;
    case MD_BLOCK_THEAD: write("</thead>"); break;
    case MD_BLOCK_TBODY: write("</tbody>"); break;
    case MD_BLOCK_TR: write("</tr>"); break;
    case MD_BLOCK_TH: write("</th>"); break;
    case MD_BLOCK_TD: write("</td>"); break;
    }
}

void HTMLWriter::enterItem(const MD_BLOCK_LI_DETAIL& item) {
    OpenList& list = lists_.back();
    const auto run = item.is_task != 0 ? OpenList::Run::checklist : OpenList::Run::plain;
    if (list.run != run) {
        closeRun(list);
        list.run = run;
        if (run == OpenList::Run::checklist) {
            write("<ul class=\"ts-checklist\">");
        } else if (!list.isOrdered) {
            write("<ul>");
        } else if (list.nextNumber == 1) {
            write("<ol>");
        } else {
            write("<ol start=\"" + std::to_string(list.nextNumber) + "\">");
        }
    }
    ++list.nextNumber;
    if (run == OpenList::Run::plain) {
        write("<li>");
    } else {
        write(item.task_mark == ' ' ? "<li data-checked=\"false\">" : "<li data-checked=\"true\">");
    }
    itemBegin_ = out().size();
}

void HTMLWriter::closeRun(OpenList& list) {
    if (list.run == OpenList::Run::none) return;
    const bool isOl = list.isOrdered && list.run == OpenList::Run::plain;
    write(isOl ? "</ol>" : "</ul>");
    list.run = OpenList::Run::none;
}

void HTMLWriter::enterParagraph() {
    // A block at the beginning of an item would leave the bullet alone on its line.
    const bool hasTags = out().size() != itemBegin_;
    paragraphs_.push_back(hasTags);
    if (hasTags) write("<p>");
}

void HTMLWriter::enterHeading(unsigned level) {
    headingBegin_ = out().size();
    write("<h" + std::to_string(level) + ">");
}

void HTMLWriter::leaveHeading(unsigned level) {
    constexpr std::size_t tagLength = 4;
    const std::size_t textBegin = *headingBegin_ + tagLength;
    const bool isEmpty = text::isBlank(std::string_view(out()).substr(textBegin));
    write("</h" + std::to_string(level) + ">");
    const bool isAtTop = depth_ == 1;
    if (level != 1 || !isAtTop || isEmpty || result_.hasHeading()) return;
    result_.headingBegin = *headingBegin_;
    result_.headingEnd = out().size();
}

void HTMLWriter::enterCell(const char* name, MD_ALIGN alignment) {
    constexpr std::array<std::string_view, 4> styles = {
        "",
        " style=\"text-align: left\"",
        " style=\"text-align: center\"",
        " style=\"text-align: right\"",
    };
    write("<");
    write(name);
    write(styles.at(alignment));
    write(">");
}

void HTMLWriter::leaveCode() {
    if (out().ends_with('\n')) out().pop_back();
    write("</code></pre>");
}

void HTMLWriter::enterSpan(MD_SPANTYPE type, const void* detail) {
    if (pictureDepth_ > 0) {  // the spans of a picture's text are not shown
        if (type == MD_SPAN_IMG) ++pictureDepth_;
        return;
    }
    inline_.enterSpan();
    switch (type) {
    case MD_SPAN_EM: write("<em>"); break;
    case MD_SPAN_STRONG: write("<strong>"); break;
    case MD_SPAN_DEL: write("<s>"); break;
    case MD_SPAN_U: write("<u>"); break;
    case MD_SPAN_LATEXMATH:
    case MD_SPAN_LATEXMATH_DISPLAY:
    case MD_SPAN_CODE: write("<code>"); break;
    case MD_SPAN_A: {
        const auto& link = *static_cast<const MD_SPAN_A_DETAIL*>(detail);
        enterLink(link.href);
        writeTitle(link.title);
        write(">");
        ++linkDepth_;
        break;
    }
    case MD_SPAN_WIKILINK:
        result_.hasReferences = true;
        write("<a href=\"" + std::string(wikiLinkScheme));
        writeAttribute(static_cast<const MD_SPAN_WIKILINK_DETAIL*>(detail)->target);
        write("\">");
        ++linkDepth_;
        break;
    case MD_SPAN_IMG:
        result_.hasReferences = true;
        write("<img src=\"");
        writeAttribute(static_cast<const MD_SPAN_IMG_DETAIL*>(detail)->src);
        write("\" alt=\"");
        ++pictureDepth_;
        break;
    }
}

void HTMLWriter::leaveSpan(MD_SPANTYPE type, const void* detail) {
    if (pictureDepth_ > 0 && (type != MD_SPAN_IMG || --pictureDepth_ > 0)) return;
    inline_.leaveSpan();
    switch (type) {
    case MD_SPAN_EM: write("</em>"); break;
    case MD_SPAN_STRONG: write("</strong>"); break;
    case MD_SPAN_DEL: write("</s>"); break;
    case MD_SPAN_U: write("</u>"); break;
    case MD_SPAN_LATEXMATH:
    case MD_SPAN_LATEXMATH_DISPLAY:
    case MD_SPAN_CODE: write("</code>"); break;
    case MD_SPAN_A:
    case MD_SPAN_WIKILINK:
        write("</a>");
        --linkDepth_;
        break;
    case MD_SPAN_IMG:
        endPictureText();
        writeTitle(static_cast<const MD_SPAN_IMG_DETAIL*>(detail)->title);
        write(">");
        break;
    }
}

/// Ends the "alt" of a picture, which one without a text does not have.
void HTMLWriter::endPictureText() {
    constexpr std::string_view begin = " alt=\"";
    if (out().ends_with(begin)) {
        out().resize(out().size() - begin.size());
    } else {
        write("\"");
    }
}

void HTMLWriter::enterLink(const MD_ATTRIBUTE& address) {
    if (!isPlainAddress(viewOf(address.text, address.size))) result_.hasReferences = true;
    write("<a href=\"");
    writeAttribute(address);
    write("\"");
}

void HTMLWriter::writeTitle(const MD_ATTRIBUTE& title) {
    if (title.size == 0) return;
    write(" title=\"");
    writeAttribute(title);
    write("\"");
}

void HTMLWriter::writeAttribute(const MD_ATTRIBUTE& attribute) {
    if (attribute.size == 0) return;
    for (std::size_t i = 0; attribute.substr_offsets[i] < attribute.size; ++i) {
        const MD_OFFSET begin = attribute.substr_offsets[i];
        const MD_OFFSET end = attribute.substr_offsets[i + 1];
        const std::string_view part(attribute.text + begin, end - begin);
        if (attribute.substr_types[i] == MD_TEXT_ENTITY) {
            write(part);
        } else {
            rawhtml::appendAttributeEscaped(out(), part);
        }
    }
}

void HTMLWriter::text(MD_TEXTTYPE type, std::string_view text) {
    if (pictureDepth_ > 0) {
        if (type == MD_TEXT_ENTITY) {
            write(text);
        } else if (type == MD_TEXT_BR || type == MD_TEXT_SOFTBR) {
            write(" ");
        } else if (type != MD_TEXT_HTML) {
            rawhtml::appendAttributeEscaped(out(), text);
        }
        return;
    }
    switch (type) {
    case MD_TEXT_NORMAL:
        if (inline_.write(out(), text, linkDepth_ > 0)) result_.hasReferences = true;
        break;
    case MD_TEXT_NULLCHAR: break;
    case MD_TEXT_BR: write("<br>"); break;
    case MD_TEXT_SOFTBR: write(reading_.isPlainText ? "<br>" : "\n"); break;
    case MD_TEXT_ENTITY: write(text); break;
    case MD_TEXT_LATEXMATH:
    case MD_TEXT_CODE: rawhtml::appendEscaped(out(), text); break;
    case MD_TEXT_HTML: writeRawHTML(text); break;
    }
}

void HTMLWriter::writeRawHTML(std::string_view html) {
    result_.hasReferences = true;
    if (htmlBlock_) {
        *htmlBlock_ += html;
    } else {
        inline_.writeTag(out(), html);
    }
}

/// MD4C's way to call an `HTMLWriter`. It is a C library: no exception may pass through it.
class Parse {
public:
    explicit Parse(HTMLWriter& writer) : writer_(writer) {}

    void run(std::string_view markdown, unsigned flags) {
        const MD_PARSER parser{
            .abi_version = 0,
            .flags = flags,
            .enter_block =
                [](MD_BLOCKTYPE type, void* detail, void* parse) {
                    return on(parse, [&](HTMLWriter& to) { to.enterBlock(type, detail); });
                },
            .leave_block =
                [](MD_BLOCKTYPE type, void* detail, void* parse) {
                    return on(parse, [&](HTMLWriter& to) { to.leaveBlock(type, detail); });
                },
            .enter_span =
                [](MD_SPANTYPE type, void* detail, void* parse) {
                    return on(parse, [&](HTMLWriter& to) { to.enterSpan(type, detail); });
                },
            .leave_span =
                [](MD_SPANTYPE type, void* detail, void* parse) {
                    return on(parse, [&](HTMLWriter& to) { to.leaveSpan(type, detail); });
                },
            .text =
                [](MD_TEXTTYPE type, const MD_CHAR* text, MD_SIZE size, void* parse) {
                    return on(parse, [&](HTMLWriter& to) { to.text(type, viewOf(text, size)); });
                },
            .debug_log = nullptr,
            .syntax = nullptr,
        };
        const int result =
            md_parse(markdown.data(), static_cast<MD_SIZE>(markdown.size()), &parser, this);
        if (failure_) std::rethrow_exception(failure_);
        if (result != 0) throw BodyError::tooLarge();  // too much HTML, or no memory for it
    }

private:
    template <class Call>
    static int on(void* parse, const Call& call) {
        auto& self = *static_cast<Parse*>(parse);
        try {
            call(self.writer_);
        } catch (...) {
            self.failure_ = std::current_exception();
            return 1;
        }
        return self.writer_.isTooLong() ? 1 : 0;
    }

    HTMLWriter& writer_;
    std::exception_ptr failure_;
};

/// MD4C looks for bare addresses in time that grows with the square of their number in one block.
/// Where there are too many for that, only addresses in angle brackets become links.
bool hasTooManyBareAddresses(std::string_view markdown) {
    constexpr std::size_t mostInBlock = 10'000;
    std::size_t inBlock = 0;
    for (std::size_t begin = 0; begin < markdown.size();) {
        const std::size_t end = std::min(markdown.find('\n', begin), markdown.size());
        const std::string_view line = text::trimmed(markdown.substr(begin, end - begin));
        begin = end + 1;
        const bool beginsBlock = line.empty() || line.starts_with("- ") || line.starts_with("* ")
                                 || line.starts_with("+ ") || line.starts_with("# ");
        if (beginsBlock) inBlock = 0;
        for (const std::string_view mark : {"://", "www."}) {
            for (std::size_t i = line.find(mark); i != std::string_view::npos;
                 i = line.find(mark, i + mark.size())) {
                ++inBlock;
            }
        }
        if (inBlock > mostInBlock) return true;
    }
    return false;
}

}  // namespace

std::string_view MarkdownHTML::heading() const {
    constexpr std::size_t openTag = 4;
    constexpr std::size_t closeTag = 5;
    return std::string_view(html).substr(
        headingBegin + openTag, headingEnd - headingBegin - openTag - closeTag);
}

void MarkdownHTML::removeHeading() {
    html.erase(headingBegin, headingEnd - headingBegin);
    headingEnd = headingBegin;
}

MarkdownHTML markdownToHTML(std::string_view markdown, const MarkdownReading& reading) {
    unsigned flags = MD_DIALECT_GITHUB | MD_FLAG_WIKILINKS;
    if (reading.isPlainText) flags |= MD_FLAG_NOHTML;
    if (hasTooManyBareAddresses(markdown)) {
        flags &= ~static_cast<unsigned>(MD_FLAG_PERMISSIVEAUTOLINKS);
    }
    HTMLWriter writer(markdown, reading);
    Parse(writer).run(markdown, flags);
    return writer.take();
}

}  // namespace tesserine
