#pragma once

#include "core/body/AttributedText.h"

#include <string>
#include <string_view>
#include <vector>

class QTextBlock;
class QTextCursor;

/// Changes of how the selection of a note looks and what its paragraphs are. Each is one step to
/// undo. Objects, such as tables, stay as they are.
namespace tesserine::app::editing {

/// The blocks that the selection touches, at least that of the cursor.
std::vector<QTextBlock> selectedBlocks(const QTextCursor& cursor);

void removeMark(InlineStyle& style, HTMLElement element);
/// Puts `mark` in the place of every other mark of its element.
void setMark(InlineStyle& style, InlineMark mark);
/// Sets or takes away a mark without attributes; what is above the line cannot be below it.
void setMark(InlineStyle& style, HTMLElement element, bool isOn);

/// Of words, or of the ground behind them.
enum class ColorUse { text, highlight };
/// `color` is "#rrggbb"; an empty one takes away what was chosen.
void setColor(InlineStyle& style, ColorUse use, std::string_view color);

}  // namespace tesserine::app::editing

namespace tesserine::app {

class NoteDocument;

namespace editing {

/// Whether all of the selection has the mark; without one, what stands before the cursor.
bool hasMark(const NoteDocument& document, const QTextCursor& cursor, HTMLElement element);
/// Makes the selection a link; an empty address takes links away.
void setLink(NoteDocument& document, const QTextCursor& selection, std::string_view address);
/// Takes everything but links away.
void clearMarks(NoteDocument& document, const QTextCursor& selection);

/// Selects the whole link that the cursor stands in, and gives its address; nothing happens to the
/// cursor where there is none.
std::string selectLink(const NoteDocument& document, QTextCursor& cursor);

/// What becomes of a paragraph that takes another style: it keeps its place and its alignment.
AttributedText::Paragraph restyled(const AttributedText::Paragraph& paragraph, BlockStyle style);
/// Gives the selected paragraphs a style, or makes them plain when all of them have it.
void toggleBlockStyle(NoteDocument& document, const QTextCursor& cursor, BlockStyle style);
void setBlockStyle(NoteDocument& document, const QTextCursor& cursor, BlockStyle style);
/// Aligns the selected paragraphs, but for code.
void setAlignment(
    NoteDocument& document, const QTextCursor& cursor, AttributedText::Alignment alignment);
/// Puts a dividing line behind the cursor's paragraph, and an empty paragraph behind it.
void insertDivider(NoteDocument& document, QTextCursor& cursor);

}  // namespace editing
}  // namespace tesserine::app
