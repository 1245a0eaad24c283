#include "app/editor/NoteDocument.h"

#include "app/editor/BlockLook.h"
#include "base/Text.h"
#include "core/body/AttributedTextWriter.h"
#include "core/body/HTMLSerializer.h"

#include <QTextBlock>
#include <QTextCursor>

#include <algorithm>
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

/// Adds a stretch of a block; neighbours of one style become one run.
void addPiece(AttributedText& text, std::u16string_view piece, const InlineStyle& style) {
    for (const char16_t unit : piece) {
        const bool isObject = unit == AttributedText::objectCharacter && !style.object.empty();
        const bool continues = !text.runs.empty() && text.runs.back().end() == text.text.size()
                               && text.runs.back().style.object.empty()
                               && text.runs.back().style.marks == style.marks;
        if (isObject) {
            text.runs.push_back({.start = text.text.size(), .length = 1, .style = style});
        } else if (!style.marks.empty()) {
            if (!continues) {
                text.runs.push_back({.start = text.text.size(), .style = {.marks = style.marks}});
            }
            ++text.runs.back().length;
        }
        text.text += unit;
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

}  // namespace

NoteDocument::NoteDocument(QObject* parent) : QTextDocument(parent) {
    setDocumentMargin(0);
    setIndentWidth(look::indentWidth);
}

void NoteDocument::setContent(const AttributedText& text) {
    setUndoRedoEnabled(false);
    clear();
    containers_ = text.containers;
    isVoid_ = text.paragraphs.empty();
    QTextCursor cursor(this);
    cursor.beginEditBlock();
    if (isVoid_) {
        cursor.setBlockFormat(formats_.blockFormat({.style = BlockStyle{}}));
    } else {
        write(cursor, text);
    }
    cursor.endEditBlock();
    setUndoRedoEnabled(true);
    setModified(false);
}

AttributedText NoteDocument::content() const {
    AttributedText result;
    result.containers = containers_;
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
    cursor.setBlockCharFormat(charFormat({}, paragraph));
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
    QTextCursor cursor(this);
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
    result.text += u'\n';
    paragraph.length = result.text.size() - start;
    result.paragraphs.push_back(std::move(paragraph));
}

/// Writes `text` from the cursor's block on, which takes the style of its first paragraph.
void NoteDocument::write(QTextCursor& cursor, const AttributedText& text) {
    std::size_t start = 0;
    std::size_t run = 0;
    for (const Paragraph& paragraph : text.paragraphs) {
        const QTextBlockFormat format = formats_.blockFormat(paragraph);
        const QTextCharFormat words = charFormat({}, paragraph);
        if (start == 0) {
            cursor.setBlockFormat(format);
            cursor.setBlockCharFormat(words);
        } else {
            cursor.insertBlock(format, words);
        }
        const std::size_t next = start + paragraph.length;
        const bool hasEnding = paragraph.length > 0 && text.text[next - 1] == u'\n';
        forEachPiece(
            text,
            start,
            next - (hasEnding ? 1 : 0),
            run,
            [&](std::u16string_view piece, const InlineStyle& style) {
                writePiece(cursor, piece, style, paragraph);
            });
        start = next;
    }
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
