#pragma once

class QTextBlock;
class QTextCursor;

namespace tesserine::app {

class NoteDocument;

/// What Enter, Backspace, Tab and ticks do to paragraphs. Each is one step to undo.
namespace editing {

/// Enter: ends the paragraph. An empty item goes one level out, and at last leaves its list; quotes
/// and code are left in the same way.
void newLine(NoteDocument& document, QTextCursor& cursor);
/// Backspace at the start of a paragraph: takes its style away, a level at a time. False where
/// there is nothing to take away, so that the paragraph is to be joined to the one before.
bool backspaceAtStart(NoteDocument& document, QTextCursor& cursor);
/// Delete at the end of a paragraph: false where the next one is to be joined to it.
bool deleteAtEnd(NoteDocument& document, QTextCursor& cursor);
/// Moves the selected items `levels` (-1 or 1) inwards; false when no item is selected.
bool changeIndent(NoteDocument& document, const QTextCursor& cursor, int levels);

void toggleChecked(NoteDocument& document, const QTextBlock& item);
/// Ticks the selected items of checklists, or takes their ticks away when all have one; other
/// paragraphs become items first.
void tick(NoteDocument& document, const QTextCursor& cursor);

/// The number that an item of a numbered list shows. Walks back to the beginning of its list.
int numberOf(const NoteDocument& document, const QTextBlock& item);

/// Moves the selected paragraphs above the one before them, or below the one behind.
enum class Direction { up, down };
bool moveLines(NoteDocument& document, QTextCursor& cursor, Direction direction);

}  // namespace editing
}  // namespace tesserine::app
