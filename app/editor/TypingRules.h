#pragma once

class QTextCursor;

namespace tesserine::app {

class NoteDocument;

namespace editing {

/// After a space was typed: "# ", "- ", "1. ", "[] ", "> " and "``` " at the start of a plain
/// paragraph become its style. One step to undo, which brings the characters back. Tells whether
/// there was such a beginning.
bool applyShortcut(NoteDocument& document, QTextCursor& cursor);
/// When Enter is pressed: a paragraph that is "```" begins code, "---" becomes a dividing line.
bool applyLineShortcut(NoteDocument& document, QTextCursor& cursor);
/// After a space or before Enter: the address that ends at the cursor, if it is one, becomes a
/// link.
void linkAddressBefore(NoteDocument& document, const QTextCursor& cursor);

}  // namespace editing
}  // namespace tesserine::app
