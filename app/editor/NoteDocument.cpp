#include "app/editor/NoteDocument.h"

#include "app/editor/BlockLook.h"
#include "base/Text.h"
#include "core/body/AttributedTextWriter.h"
#include "core/body/HTMLSerializer.h"

#include <QTextBlock>
#include <QTextCursor>

#include <algorithm>
#include <iterator>
#include <utility>

namespace tesserine::app {
namespace {

using Kind = BlockStyle::Kind;
using Paragraph = AttributedText::Paragraph;

/// Units at which a `QTextDocument` would end a paragraph, or which it keeps for itself.
constexpr std::u16string_view refusedUnits = u"\r\n\u2029\uFDD0\uFDD1";

QString toQString(std::u16string_view units) {
    return QString::fromUtf16(units.data(), static_cast<qsizetype>(units.size()));
}

std::u16string_view unitsOf(const QString& text) {
    return {reinterpret_cast<const char16_t*>(text.utf16()), static_cast<std::size_t>(text.size())};
}

bool isObjectKind(Kind kind) { return kind == Kind::preserved || kind == Kind::encrypted; }

/// Adds words; neighbours of one style become one run.
void addWords(
    AttributedText& text, std::u16string_view words, const std::vector<InlineMark>& marks) {
    if (!marks.empty()) {
        const bool continues = !text.runs.empty() && text.runs.back().end() == text.text.size()
                               && text.runs.back().style.object.empty()
                               && text.runs.back().style.marks == marks;
        if (!continues) text.runs.push_back({.start = text.text.size(), .style = {.marks = marks}});
        text.runs.back().length += words.size();
    }
    text.text += words;
}

/// Adds a stretch of a block. What is typed beside an object has its format, but is none.
void addPiece(AttributedText& text, std::u16string_view piece, const InlineStyle& style) {
    if (style.object.empty()) return addWords(text, piece, style.marks);
    for (std::size_t i = 0; i < piece.size(); ++i) {
        if (piece[i] != AttributedText::objectCharacter) {
            addWords(text, piece.substr(i, 1), style.marks);
            continue;
        }
        text.runs.push_back({.start = text.text.size(), .length = 1, .style = style});
        text.text += piece[i];
    }
}

/// Calls `take(piece, style)` for the stretches between `start` and `end`; `run` goes along.
template <class Take>
void forEachPiece(
    const AttributedText& text, std::size_t start, std::size_t end, std::size_t& run, Take take) {
    static const InlineStyle plain;
    const std::u16string_view units(text.text);
    while (start < end) {
        while (run < text.runs.size() && text.runs[run].end() <= start) {
            ++run;
        }
        const std::size_t runStart = run < text.runs.size() ? text.runs[run].start : end;
        const bool isStyled = runStart <= start;
        const std::size_t stop = std::min(end, isStyled ? text.runs[run].end() : runStart);
        take(units.substr(start, stop - start), isStyled ? text.runs[run].style : plain);
        start = stop;
    }
}

/// The style of the line break before `offset`: an element may reach over several lines of code.
InlineStyle breakStyle(const AttributedText& text, std::size_t offset) {
    const auto after = std::ranges::lower_bound(text.runs, offset, {}, &AttributedText::Run::start);
    const bool isStyled = after != text.runs.begin() && std::prev(after)->end() >= offset;
    return isStyled ? InlineStyle{.marks = std::prev(after)->style.marks} : InlineStyle{};
}

/// Whether it ends with a paragraph of which there is nothing but its beginning.
bool hasEmptyEnd(const AttributedText& text) {
    if (text.paragraphs.size() < 2) return false;
    const Paragraph& last = text.paragraphs.back();
    return last.length == 1 && kindOf(last) != Kind::divider;
}

AttributedText withoutEnd(AttributedText text) {
    text.text.resize(text.text.size() - text.paragraphs.back().length);
    text.paragraphs.pop_back();
    return text;
}

/// Has everything that changes meanwhile laid out later, as far as it is seen.
class LayoutPause {
public:
    explicit LayoutPause(QTextDocument& document)
        : document_(document), page_(document.pageSize()) {
        document_.setPageSize({});  // nothing is laid out as long as there is no page
    }
    LayoutPause(const LayoutPause&) = delete;
    LayoutPause& operator=(const LayoutPause&) = delete;
    ~LayoutPause() { document_.setPageSize(page_); }

private:
    QTextDocument& document_;
    QSizeF page_;
};

}  // namespace

NoteDocument::NoteDocument(QObject* parent) : QTextDocument(parent), colors_(*this) {
    setDocumentMargin(0);
    setIndentWidth(look::indentWidth);
}

/// The colours are taken off behind this, after which nothing needs to be laid out anew.
NoteDocument::~NoteDocument() { setPageSize({}); }

void NoteDocument::setContent(AttributedText text) {
    beginContent(std::move(text));
    completeContent();
}

void NoteDocument::beginContent(AttributedText text) {
    missing_.reset();
    setUndoRedoEnabled(false);
    emit aboutToBeReplaced();
    clear();
    containers_ = text.containers;
    isVoid_ = text.paragraphs.empty();
    QTextCursor(this).setBlockFormat(formats_.blockFormat({.style = BlockStyle{}}));
    setModified(false);
    missing_ = Missing{.text = std::move(text)};
}

void NoteDocument::addContent(std::size_t units) {
    if (!missing_) return;
    const bool wasModified = isModified();
    const AttributedText& text = missing_->text;
    ParagraphPlace& next = missing_->next;
    const std::size_t rest = text.text.size() - next.offset;
    const std::size_t end = next.offset + std::min(units, rest);
    QTextCursor cursor(this);
    cursor.movePosition(QTextCursor::End);
    cursor.beginEditBlock();
    while (next.paragraph < text.paragraphs.size() && next.offset < end) {
        writeParagraph(cursor, text, next);
    }
    cursor.endEditBlock();
    if (next.paragraph == text.paragraphs.size()) {
        missing_.reset();
        setUndoRedoEnabled(true);
    }
    setModified(wasModified);
}

void NoteDocument::completeContent() {
    if (!missing_) return;
    const LayoutPause pause(*this);
    addContent(missing_->text.text.size());
}

void NoteDocument::followTheme() {
    const LayoutPause pause(*this);
    colors_.rehighlight();
}

AttributedText NoteDocument::content() const {
    AttributedText result;
    result.containers = containers_;
    result.text.reserve(static_cast<std::size_t>(characterCount()));
    const bool isStillVoid = isVoid_ && isEmpty() && kind(begin()) == Kind::paragraph;
    if (isStillVoid) return result;
    for (QTextBlock block = begin(); block.isValid(); block = block.next()) {
        read(result, block, 0, block.length() - 1);
    }
    return result;
}

AttributedText NoteDocument::content(const QTextCursor& selection) const {
    AttributedText result;
    result.containers = containers_;
    const int start = selection.selectionStart();
    const int end = selection.selectionEnd();
    for (QTextBlock block = findBlock(start); block.isValid() && block.position() <= end;
         block = block.next()) {
        const int from = std::max(start - block.position(), 0);
        read(result, block, from, std::min(end - block.position(), block.length() - 1));
    }
    return result;
}

std::string NoteDocument::html() const { return canonicalHTML(content()); }

const Paragraph& NoteDocument::paragraph(const QTextBlock& block) const {
    return formats_.paragraph(block.blockFormat());
}

BlockStyle::Kind NoteDocument::kind(const QTextBlock& block) const {
    return kindOf(paragraph(block));
}

bool NoteDocument::isObjectBlock(const QTextBlock& block) const {
    return isObjectKind(kind(block));
}

void NoteDocument::setParagraph(const QTextBlock& block, const Paragraph& paragraph) {
    QTextCursor cursor(block);
    cursor.beginEditBlock();
    cursor.setBlockFormat(formats_.blockFormat(paragraph));
    const bool isCode = kindOf(paragraph) == Kind::codeBlock;
    cursor.setBlockCharFormat(
        charFormat(isCode ? style(block.charFormat()) : InlineStyle{}, paragraph));
    struct Stretch {
        int start;
        int end;
        QTextCharFormat format;
    };
    std::vector<Stretch> stretches;
    for (auto place = block.begin(); !place.atEnd(); ++place) {
        const QTextFragment fragment = place.fragment();
        stretches.push_back(
            {fragment.position(),
             fragment.position() + fragment.length(),
             charFormat(style(fragment.charFormat()), paragraph)});
    }
    for (const Stretch& stretch : stretches) {
        cursor.setPosition(stretch.start);
        cursor.setPosition(stretch.end, QTextCursor::KeepAnchor);
        cursor.setCharFormat(stretch.format);
    }
    cursor.endEditBlock();
}

void NoteDocument::splitParagraph(QTextCursor& cursor, const Paragraph& next) {
    cursor.beginEditBlock();
    cursor.insertBlock(formats_.blockFormat(next), charFormat({}, next));
    setParagraph(cursor.block(), next);
    cursor.endEditBlock();
}

const InlineStyle& NoteDocument::styleAt(int position) const {
    static const InlineStyle plain;
    const QTextBlock block = findBlock(position);
    for (auto place = block.begin(); !place.atEnd(); ++place) {
        if (place.fragment().contains(position)) return style(place.fragment().charFormat());
    }
    return plain;
}

void NoteDocument::changeStyles(
    const QTextCursor& selection, const std::function<void(InlineStyle&)>& change) {
    const int start = selection.selectionStart();
    const int end = selection.selectionEnd();
    QTextCursor cursor(selection);  // where undoing leads back to
    cursor.beginEditBlock();
    for (QTextBlock block = findBlock(start); block.isValid() && block.position() < end;
         block = block.next()) {
        std::vector<QTextFragment> fragments;
        for (auto place = block.begin(); !place.atEnd(); ++place) {
            fragments.push_back(place.fragment());
        }
        for (const QTextFragment& fragment : fragments) {
            const int from = std::max(start, fragment.position());
            const int to = std::min(end, fragment.position() + fragment.length());
            if (from >= to) continue;
            InlineStyle changed = style(fragment.charFormat());
            change(changed);
            cursor.setPosition(from);
            cursor.setPosition(to, QTextCursor::KeepAnchor);
            cursor.setCharFormat(charFormat(changed, paragraph(block)));
        }
    }
    cursor.endEditBlock();
}

void NoteDocument::insertText(QTextCursor& cursor, const QString& text, const InlineStyle& style) {
    cursor.beginEditBlock();
    cursor.removeSelectedText();
    QString line = text;
    line.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    line.replace(u'\n', QChar::LineSeparator);
    writePiece(cursor, unitsOf(line), {.marks = style.marks}, paragraph(cursor.block()));
    cursor.endEditBlock();
}

void NoteDocument::insertObject(QTextCursor& cursor, const std::string& html) {
    cursor.beginEditBlock();
    cursor.removeSelectedText();
    const InlineStyle style{.object = html};
    writePiece(
        cursor,
        std::u16string_view(&AttributedText::objectCharacter, 1),
        style,
        paragraph(cursor.block()));
    cursor.endEditBlock();
}

void NoteDocument::insert(QTextCursor& cursor, const AttributedText& text) {
    if (hasEmptyEnd(text)) return insertParagraphs(cursor, withoutEnd(text));
    const bool isLine =
        text.paragraphs.size() == 1 && kindOf(text.paragraphs.front()) == Kind::paragraph;
    if (!isLine || isObjectBlock(cursor.block())) return insertParagraphs(cursor, text);
    cursor.beginEditBlock();
    cursor.removeSelectedText();
    const Paragraph host = paragraph(cursor.block());
    const std::size_t end = text.text.size() - (text.text.ends_with(u'\n') ? 1 : 0);
    std::size_t run = 0;
    forEachPiece(text, 0, end, run, [&](std::u16string_view piece, const InlineStyle& style) {
        writePiece(cursor, piece, style, host);
    });
    cursor.endEditBlock();
}

void NoteDocument::insertParagraphs(QTextCursor& cursor, const AttributedText& text) {
    if (text.paragraphs.empty()) return;
    cursor.beginEditBlock();
    cursor.removeSelectedText();
    const Paragraph host = paragraph(cursor.block());
    AttributedText placed = text;
    for (Paragraph& paragraph : placed.paragraphs) {
        paragraph.container = host.container;
    }
    const bool isBehindText = !cursor.atBlockStart();
    if (!cursor.atBlockEnd()) {
        Paragraph tail = host;
        if (isBehindText) tail.startNumber.reset();
        splitParagraph(cursor, tail);
        cursor.movePosition(QTextCursor::PreviousCharacter);
    }
    if (isBehindText) splitParagraph(cursor, placed.paragraphs.front());
    write(cursor, placed);
    cursor.endEditBlock();
}

void NoteDocument::replaceParagraphs(int first, int count, const AttributedText& text) {
    const QTextBlock last = findBlockByNumber(first + count - 1);
    QTextCursor cursor(findBlockByNumber(first));
    cursor.beginEditBlock();
    cursor.setPosition(last.position() + last.length() - 1, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    write(cursor, text);
    cursor.endEditBlock();
}

/// Adds what stands in `block` between two places in it, as one more paragraph.
void NoteDocument::read(AttributedText& result, const QTextBlock& block, int from, int to) const {
    Paragraph paragraph = this->paragraph(block);
    const std::size_t start = result.text.size();
    for (auto place = block.begin(); !place.atEnd(); ++place) {
        const QTextFragment fragment = place.fragment();
        const int first = std::max(from, fragment.position() - block.position());
        const int last = std::min(to, fragment.position() - block.position() + fragment.length());
        if (first >= last) continue;
        const QString text =
            fragment.text().mid(first - (fragment.position() - block.position()), last - first);
        addPiece(result, unitsOf(text), style(fragment.charFormat()));
    }
    const QTextBlock next = block.next();
    const bool isInCode =
        kindOf(paragraph) == Kind::codeBlock && next.isValid() && kind(next) == Kind::codeBlock;
    addWords(result, u"\n", isInCode ? style(next.charFormat()).marks : std::vector<InlineMark>());
    paragraph.length = result.text.size() - start;
    result.paragraphs.push_back(std::move(paragraph));
}

/// Writes `text` from the cursor's block on, which takes the style of its first paragraph.
void NoteDocument::write(QTextCursor& cursor, const AttributedText& text) {
    for (ParagraphPlace place; place.paragraph < text.paragraphs.size();) {
        writeParagraph(cursor, text, place);
    }
}

/// Writes the paragraph at `place`, the first one into the cursor's block, and goes on to the next.
void NoteDocument::writeParagraph(
    QTextCursor& cursor, const AttributedText& text, ParagraphPlace& place) {
    const Paragraph& paragraph = text.paragraphs[place.paragraph];
    const QTextBlockFormat format = formats_.blockFormat(paragraph);
    if (place.paragraph == 0) {
        cursor.setBlockFormat(format);
        cursor.setBlockCharFormat(charFormat({}, paragraph));
    } else {
        cursor.insertBlock(format, charFormat(breakStyle(text, place.offset), paragraph));
    }
    const std::size_t next = place.offset + paragraph.length;
    const bool hasEnding = paragraph.length > 0 && text.text[next - 1] == u'\n';
    forEachPiece(
        text,
        place.offset,
        next - (hasEnding ? 1 : 0),
        place.run,
        [&](std::u16string_view piece, const InlineStyle& style) {
            writePiece(cursor, piece, style, paragraph);
        });
    ++place.paragraph;
    place.offset = next;
}

/// Units that the document refuses become objects.
void NoteDocument::writePiece(
    QTextCursor& cursor,
    std::u16string_view piece,
    const InlineStyle& style,
    const Paragraph& paragraph) {
    while (!piece.empty()) {
        const std::u16string_view accepted = piece.substr(0, piece.find_first_of(refusedUnits));
        if (!accepted.empty()) {
            cursor.insertText(toQString(accepted), charFormat(style, paragraph));
            piece.remove_prefix(accepted.size());
            continue;
        }
        std::string object;
        html::appendEscapedText(object, text::fromUTF16(piece.substr(0, 1)));
        cursor.insertText(
            QString(QChar::ObjectReplacementCharacter),
            charFormat({.marks = style.marks, .object = object}, paragraph));
        piece.remove_prefix(1);
    }
}

}  // namespace tesserine::app
