#pragma once

#include "app/commands/Commands.h"
#include "app/editor/BodyEdit.h"
#include "app/editor/NoteEditor.h"
#include "app/state/WindowFixture.h"
#include "core/body/AttributedTextReader.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QBuffer>
#include <QImage>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTest>
#include <QTextCursor>

#include <algorithm>
#include <string>

namespace tesserine::test {

/// A window with nothing but an editor.
class EditorFixture : public WindowFixture {
public:
    void SetUp() override {
        editor.resize(800, 600);
        editor.show();
        QApplication::setActiveWindow(&editor);
    }

    app::NoteDocument& document() { return editor.body().note(); }
    std::string html() { return document().html(); }

    /// Opens a note with this body and puts the cursor where "|" stands in it, or selects what
    /// stands between two of them.
    CDNote& openNote(std::string body) {
        app::NoteDocument marked;
        marked.setContent(attributedText(body));
        QTextCursor first = marked.find("|");
        first.removeSelectedText();
        const QTextCursor second = marked.find("|");
        std::erase(body, '|');
        CDNote& note = addNote("Plan", body);
        editor.open(*note.id);
        QTextCursor cursor(&document());
        cursor.setPosition(std::max(first.position(), 0));
        const int end = std::min(second.selectionStart(), document().characterCount() - 1);
        if (!second.isNull()) cursor.setPosition(end, QTextCursor::KeepAnchor);
        editor.body().setTextCursor(cursor);
        editor.body().setFocus();
        return note;
    }
    /// As another program does it.
    void change(CDNote& note, const std::string& body) {
        environment->notes().updateNote(context(), note, {.html = body});
        context().save();
    }
    /// Types text; "\n" is Enter, "\t" Tab, "\b" Backspace, "\x7F" Delete.
    void type(const std::string& keys) {
        for (const QChar key : QString::fromStdString(keys)) {
            switch (key.unicode()) {
            case '\n': press(Qt::Key_Return); break;
            case '\t': press(Qt::Key_Tab); break;
            case '\b': press(Qt::Key_Backspace); break;
            case 0x7F: press(Qt::Key_Delete); break;
            default: typeCharacter(key);
            }
        }
    }
    void typeCharacter(QChar character) {
        if (character.unicode() < 0x80) return QTest::keyClicks(&editor.body(), character);
        QKeyEvent event(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, character);
        QApplication::sendEvent(&editor.body(), &event);
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(&editor.body(), key, modifiers);
    }

    /// The bytes of a picture of one colour.
    static Bytes png(const QSize& size, const QColor& color) {
        QImage image(size, QImage::Format_RGB32);
        image.fill(color);
        QByteArray file;
        QBuffer buffer(&file);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG");
        return {file.begin(), file.end()};
    }

    app::Commands commands{environment->preferences()};
    app::NoteEditor editor{*environment, commands};
};

}  // namespace tesserine::test
