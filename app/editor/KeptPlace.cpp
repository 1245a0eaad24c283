#include "app/editor/KeptPlace.h"

#include "app/editor/BodyEdit.h"

#include <QTextBlock>

#include <algorithm>

namespace tesserine::app {

KeptPlace::KeptPlace(const QTextCursor& cursor)
    : anchor_(cursor.anchor()),
      position_(cursor.position()),
      selected_(cursor.selectedText()),
      paragraph_(cursor.block().text()) {}

std::optional<QTextCursor> KeptPlace::cursorIn(const BodyEdit& body) const {
    NoteDocument& note = body.note();
    if (body.isReadOnly() || std::max(anchor_, position_) >= note.characterCount()) return {};
    QTextCursor cursor(&note);
    cursor.setPosition(anchor_);
    cursor.setPosition(position_, QTextCursor::KeepAnchor);
    const bool isSame = cursor.selectedText() == selected_ && cursor.block().text() == paragraph_;
    if (!isSame) return {};
    return cursor;
}

}  // namespace tesserine::app
