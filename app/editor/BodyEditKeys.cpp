#include "app/editor/BodyEdit.h"
#include "app/editor/ListRules.h"
#include "app/editor/PasteRules.h"
#include "app/editor/StyleCommands.h"
#include "app/editor/TypingRules.h"

#include <QKeyEvent>
#include <QTextBlock>

/// What keys do to the body of a note.
namespace tesserine::app {
namespace {

using Kind = BlockStyle::Kind;

bool isTyped(const QString& text) { return !text.isEmpty() && text.front().isPrint(); }

}  // namespace

void BodyEdit::keyPressEvent(QKeyEvent* event) {
    if (isReadOnly()) return QTextEdit::keyPressEvent(event);
    if (handleKey(*event)) {
        event->accept();
        return ensureCursorVisible();
    }
    const bool isCommand = event->modifiers() & (Qt::ControlModifier | Qt::MetaModifier);
    const QString text = isCommand ? QString() : event->text();
    beforeTyping(text);
    typeKey(*event);
    afterTyping(text);
}

/// What goes, and what its paragraph is then, are one step.
void BodyEdit::typeKey(QKeyEvent& event) {
    QTextCursor step = textCursor();
    const QTextBlock first = note_.findBlock(step.selectionStart());
    const QTextBlock last = note_.findBlock(step.selectionEnd());
    const bool isObject = note_.isObjectBlock(first) || note_.isObjectBlock(last);
    const bool isUndo = event.matches(QKeySequence::Undo) || event.matches(QKeySequence::Redo);
    if (isUndo || (first == last && !isObject)) return QTextEdit::keyPressEvent(&event);
    const NoteDocument::Paragraph paragraph = note_.paragraph(first);
    const int blocks = note_.blockCount();
    const bool areWhole = step.selectionStart() == first.position()
                          && step.selectionEnd() == last.position() + last.length() - 1;
    step.beginEditBlock();
    QTextEdit::keyPressEvent(&event);
    if (areWhole && note_.blockCount() < blocks) beginAnew(paragraph);
    repairObjects();
    step.endEditBlock();
}

/// Paragraphs that were typed over leave one like the first of them, and not like the last.
void BodyEdit::beginAnew(NoteDocument::Paragraph paragraph) {
    paragraph.isChecked = false;
    note_.setParagraph(textCursor().block(), paragraph);
}

/// What is not typing; false leaves the key to the text field.
bool BodyEdit::handleKey(const QKeyEvent& event) {
    const bool isPlain = (event.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    QTextCursor cursor = textCursor();
    bool isDone = false;
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter: return isPlain && pressEnter();
    case Qt::Key_Tab: return isPlain && pressTab(1);
    case Qt::Key_Backtab: return pressTab(-1);
    case Qt::Key_Backspace:
        isDone = isPlain && !cursor.hasSelection() && cursor.atBlockStart()
                 && editing::backspaceAtStart(note_, cursor);
        break;
    case Qt::Key_Delete:
        isDone = isPlain && !cursor.hasSelection() && cursor.atBlockEnd()
                 && editing::deleteAtEnd(note_, cursor);
        break;
    default: break;
    }
    if (isDone) setTextCursor(cursor);
    return isDone;
}

bool BodyEdit::pressEnter() {
    leaveObject();
    edit([this](NoteDocument& note, QTextCursor& cursor) {
        if (!cursor.hasSelection()) editing::linkAddressBefore(note, cursor);
        const bool isStyle = hasShortcuts_ && editing::applyLineShortcut(note, cursor);
        if (!isStyle) editing::newLine(note, cursor);
    });
    return true;
}

/// Who writes on after Tab writes in the note: it leads nowhere, and Shift+Tab back to the title.
bool BodyEdit::pressTab(int levels) {
    QTextCursor cursor = textCursor();
    if (editing::changeIndent(note_, cursor, levels)) return true;
    if (levels < 0) {
        // NOLINTNEXTLINE(bugprone-parent-virtual-call): that of the text field would write a tab
        QWidget::focusNextPrevChild(false);
        return true;
    }
    const Kind kind = note_.kind(cursor.block());
    const bool isBeside = note_.isObjectBlock(cursor.block()) || kind == Kind::divider;
    if (cursor.hasSelection() || isBeside) return true;
    cursor.insertText(kind == Kind::codeBlock ? "\t" : paste::tab);
    return true;
}

/// Nothing is typed into an object or at the end of a link.
void BodyEdit::beforeTyping(const QString& text) {
    if (!isTyped(text)) return;
    keepEnding();
    leaveObject();
    QTextCursor cursor = textCursor();
    const Kind kind = note_.kind(cursor.block());
    const bool isBeside = note_.isObjectBlock(cursor.block()) || kind == Kind::divider;
    if (isBeside && !cursor.hasSelection()) {
        editing::newLine(note_, cursor);
        return setTextCursor(cursor);
    }
    InlineStyle style{.marks = note_.style(currentCharFormat()).marks};
    const bool isAtEndOfLink =
        style.has(HTMLElement::a) && note_.styleAt(cursor.selectionEnd()).link() != style.link();
    if (!isAtEndOfLink) return;
    editing::removeMark(style, HTMLElement::a);
    setCurrentCharFormat(note_.charFormat(style, note_.paragraph(cursor.block())));
}

/// A table, or whatever else is a paragraph of its own, goes by Delete and not by words: it may be
/// selected because something was found in it.
void BodyEdit::leaveObject() {
    QTextCursor cursor = textCursor();
    const bool isObject = note_.isObjectBlock(note_.findBlock(cursor.selectionStart()))
                          && cursor.selectedText() == QChar::ObjectReplacementCharacter;
    if (!isObject) return;
    cursor.setPosition(cursor.selectionEnd());
    setTextCursor(cursor);
}

/// Whole paragraphs that are selected with their ending, as three clicks do, are typed over: the
/// one behind them stays a paragraph of its own.
void BodyEdit::keepEnding() {
    QTextCursor cursor = textCursor();
    const int begin = cursor.selectionStart();
    const int end = cursor.selectionEnd();
    const bool areWhole = cursor.hasSelection() && document()->findBlock(begin).position() == begin
                          && document()->findBlock(end).position() == end;
    if (!areWhole) return;
    cursor.setPosition(begin);
    cursor.setPosition(end - 1, QTextCursor::KeepAnchor);
    setTextCursor(cursor);
}

void BodyEdit::afterTyping(const QString& text) {
    if (text == " ") {
        QTextCursor cursor = textCursor();
        if (hasShortcuts_ && editing::applyShortcut(note_, cursor)) {
            setTextCursor(cursor);
        } else {
            editing::linkAddressBefore(note_, cursor);
        }
    }
}

/// A paragraph whose object was deleted is one for words again.
void BodyEdit::repairObjects() {
    const QTextBlock block = textCursor().block();
    const bool isBereft =
        note_.isObjectBlock(block) && !block.text().contains(QChar::ObjectReplacementCharacter);
    if (isBereft) note_.setParagraph(block, {.style = BlockStyle{}});
}

}  // namespace tesserine::app
