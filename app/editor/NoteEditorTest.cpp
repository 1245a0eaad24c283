#include "app/editor/NoteEditor.h"

#include "app/editor/EditorFixture.h"
#include "app/editor/NoticeBar.h"
#include "core/model/NoteEntities.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QToolButton>

namespace tesserine::app {
namespace {

using NoteEditorTest = test::EditorFixture;

TEST_F(NoteEditorTest, SavesASecondAfterTheFirstChange) {
    CDNote& note = openNote("<p>one|</p>");
    type(" two");
    EXPECT_EQ(*note.html, "<p>one</p>");
    ASSERT_TRUE(waitUntil([&] { return *note.html == "<p>one two</p>"; }));
    EXPECT_EQ(*note.contentVersion, 2);
    EXPECT_FALSE(context().hasChanges());
}

TEST_F(NoteEditorTest, WritesNothingWhereNothingWasChanged) {
    CDNote& note = openNote("<div><p>one</p></div><table><tr><td>x</td></tr></table>");
    editor.body().setTextCursor(QTextCursor(&document()));
    CDNote& other = addNote("Other");
    clock.advance(std::chrono::seconds(60));
    editor.open(*other.id);
    editor.close();
    EXPECT_EQ(*note.contentVersion, 1);
    EXPECT_EQ(*note.updatedAt, *note.createdAt);
}

TEST_F(NoteEditorTest, SaysSavedWhenAChangeWasTakenBack) {
    openNote("<p>one|</p>");
    type("x");
    document().undo();
    const auto* const state = editor.findChild<QLabel*>("saveState");
    EXPECT_EQ(state->text(), "Editing");
    EXPECT_TRUE(waitUntil([&] { return state->text() == "Saved"; }));
}

TEST_F(NoteEditorTest, TabKeepsTheKeysInTheNote) {
    openNote("<p>one|</p>");
    type("\ttwo");
    EXPECT_EQ(html(), "<p>one &nbsp; &nbsp;two</p>");
    openNote("<table><tr><td>x</td></tr></table>");
    type("\t");
    EXPECT_EQ(html(), "<table><tr><td>x</td></tr></table>");
    openNote("<p>|one</p><p>two|</p>");
    type("\t");
    EXPECT_EQ(html(), "<p>one</p><p>two</p>");
    EXPECT_TRUE(editor.body().hasFocus());
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_TRUE(editor.title().hasFocus());
}

TEST_F(NoteEditorTest, SavesBeforeTheNoteIsLeft) {
    CDNote& note = openNote("<p>|</p>");
    type("kept");
    CDNote& other = addNote("Other");
    editor.open(*other.id);
    EXPECT_EQ(*note.html, "<p>kept</p>");
    EXPECT_EQ(editor.title().text(), "Other");
}

TEST_F(NoteEditorTest, UndoesWhatWasDoneBeforeTheNoteWasLeft) {
    CDNote& other = addNote("Other");
    CDNote& note = openNote("<p>one</p><p>three|</p>");
    type("\nlong");
    ASSERT_TRUE(editor.save());
    type("\b\b\b\b");
    editor.open(*other.id);
    EXPECT_FALSE(document().isUndoAvailable());
    editor.open(*note.id);
    EXPECT_EQ(html(), "<p>one</p><p>three</p><p></p>");
    commands.trigger("edit.undo");
    EXPECT_EQ(html(), "<p>one</p><p>three</p><p>long</p>");
    EXPECT_EQ(editor.body().textCursor().blockNumber(), 2) << "where it was done";
    commands.trigger("edit.undo");
    EXPECT_EQ(html(), "<p>one</p><p>three</p>");
    commands.trigger("edit.redo");
    editor.open(*other.id);
    EXPECT_EQ(*note.html, "<p>one</p><p>three</p><p>long</p>");

    environment->notes().moveToTrash(note);
    context().save();
    editor.open(*note.id);
    press(Qt::Key_Z, Qt::ControlModifier);
    commands.trigger("edit.undo");
    EXPECT_EQ(html(), "<p>one</p><p>three</p><p>long</p>") << "nothing is written in the trash";
    environment->notes().restoreFromTrash(note);
    editor.open(*other.id);
    change(note, "<p>theirs</p>");
    editor.open(*note.id);
    EXPECT_FALSE(document().isUndoAvailable()) << "it is not ours any more";
}

TEST_F(NoteEditorTest, WhatWasUndoneStaysUndoneWhenOneComesBack) {
    CDNote& other = addNote("Other");
    CDNote& note = openNote("");
    const auto leaveAndComeBack = [&] {
        editor.open(*other.id);
        editor.open(*note.id);
        editor.body().moveCursor(QTextCursor::End);
    };
    type("First");
    ASSERT_TRUE(editor.save());
    type("\nalpha");
    leaveAndComeBack();
    commands.trigger("edit.undo");
    EXPECT_EQ(html(), "<p>First</p>");
    leaveAndComeBack();
    commands.trigger("edit.redo");
    EXPECT_EQ(html(), "<p>First</p><p>alpha</p>");
    commands.trigger("edit.undo");
    ASSERT_TRUE(editor.save());
    type(" beta");
    leaveAndComeBack();
    EXPECT_EQ(html(), "<p>First beta</p>");
    EXPECT_FALSE(document().isRedoAvailable());
    for (const char* const expected : {"<p>First</p>", "", ""}) {
        commands.trigger("edit.undo");
        EXPECT_EQ(html(), expected) << "alpha was thrown away";
    }
    while (document().isRedoAvailable()) {
        commands.trigger("edit.redo");
    }
    EXPECT_EQ(html(), "<p>First beta</p>");
}

TEST_F(NoteEditorTest, ShowsWhatOthersWroteWhileNothingIsTyped) {
    CDNote& note = openNote("<p>one|</p>");
    const Uuid id = *note.id;
    environment->startWork();
    environment->inBackground(
        [&](StoreContext& other, const std::stop_token&) {
            CDNote& theirs = environment->notes().getNote(other, id);
            environment->notes().updateNote(
                other, theirs, {.title = "Theirs", .html = "<p>theirs</p>"});
            other.save();
        },
        &editor,
        {},
        [](const std::string& sentence) { ADD_FAILURE() << sentence; });
    ASSERT_TRUE(waitUntil([&] { return html() == "<p>theirs</p>"; }));
    EXPECT_EQ(editor.title().text(), "Theirs");
    EXPECT_EQ(editor.notice().text(), "");
}

TEST_F(NoteEditorTest, WhoWritesGoesOnAtTheSameWordsWhenOthersChangeTheNote) {
    struct Case {
        const char* before;
        const char* theirs;
        const char* typedOn;
    };
    for (const auto& [before, theirs, typedOn] : {
             Case{"<p>a</p><p>b|</p>", "<p>new</p><p>a</p><p>b</p>", "<p>new</p><p>a</p><p>bx</p>"},
             Case{"<p>a</p><p>|b</p>", "<p>a</p><p>new</p><p>b</p>", "<p>a</p><p>new</p><p>xb</p>"},
             Case{"<p>a|</p>", "<p>a</p><p>new</p>", "<p>ax</p><p>new</p>"},
             Case{"<p>a b|</p>", "<p>a b, new</p>", "<p>a bx, new</p>"},
             Case{// above and below it
                  "<p>a</p><p>mid|dle</p><p>c</p>",
                  "<p>new</p><p>A</p><p>middle</p><p>C</p>",
                  "<p>new</p><p>A</p><p>midxdle</p><p>C</p>"},
             Case{"<p>a</p><p>b |c| d</p>", "<p>b c d</p>", "<p>b x d</p>"},
             Case{"<p>a</p><p>gone|</p><p>c</p>", "<p>a</p><p>c</p>", "<p>a</p><p>xc</p>"},
         }) {
        SCOPED_TRACE(before);
        CDNote& note = openNote(before);
        change(note, theirs);
        type("x");
        EXPECT_EQ(html(), typedOn);
        EXPECT_TRUE(editor.save());
    }
}

TEST_F(NoteEditorTest, OneComesBackToThePlaceWhereOneWas) {
    for (const int paragraphs : {100, 3000}) {
        SCOPED_TRACE(paragraphs);
        std::string text;
        for (int i = 0; i < paragraphs; ++i) {
            text += "<p>Paragraph " + std::to_string(i) + " of a note that is scrolled.</p>";
        }
        CDNote& note = openNote(text);
        editor.body().note();
        editor.body().setTextCursor(editor.body().note().find("aragraph 80 "));
        editor.body().ensureCursorVisible();
        const int scrolled = editor.body().verticalScrollBar()->value();
        ASSERT_GT(scrolled, 0);
        editor.open(*addNote("Other").id);
        EXPECT_EQ(editor.body().verticalScrollBar()->value(), 0);
        editor.open(*note.id);
        ASSERT_TRUE(waitUntil([this] { return !editor.body().isLoading(); }));
        EXPECT_EQ(editor.body().textCursor().selectedText(), "aragraph 80 ");
        EXPECT_EQ(editor.body().verticalScrollBar()->value(), scrolled);

        editor.close();
        change(note, "<p>short</p>");
        editor.open(*note.id);
        EXPECT_EQ(html(), "<p>short</p>");
    }
}

TEST_F(NoteEditorTest, ShowsABodyThatOthersWriteWhileATitleIsTypedAndTheOtherWayRound) {
    CDNote& note = openNote("<p>one|</p>");
    editor.title().setFocus();
    editor.title().selectAll();
    QTest::keyClicks(&editor.title(), "Mine");
    change(note, "<p>theirs</p>");
    EXPECT_TRUE(editor.save());
    EXPECT_EQ(*note.title, "Mine");
    EXPECT_EQ(html(), "<p>theirs</p>");
    EXPECT_EQ(editor.title().text(), "Mine");

    editor.body().setFocus();
    press(Qt::Key_End);
    type(" and mine");
    environment->notes().updateNote(context(), note, {.title = "Theirs"});
    context().save();
    EXPECT_TRUE(editor.save());
    EXPECT_EQ(*note.html, "<p>theirs and mine</p>");
    EXPECT_EQ(editor.title().text(), "Theirs");
    EXPECT_FALSE(note.hasConflict);
}

TEST_F(NoteEditorTest, WhoWritesATitleGoesOnThereWhenOthersChangeTheNote) {
    CDNote& note = openNote("<p>one</p>");
    editor.title().setFocus();
    editor.title().selectAll();
    QTest::keyClicks(&editor.title(), "Meet");
    EXPECT_TRUE(editor.save());
    change(note, "<p>theirs</p>");
    QTest::keyClicks(&editor.title(), "ing");
    EXPECT_EQ(editor.title().text(), "Meeting");
}

TEST_F(NoteEditorTest, KeysGoBackToTheWordsFromWhatIsHidden) {
    openNote("<p>one|</p>");
    editor.notice().tell("A line", {{"Do it", [] {}}});
    auto* const button = editor.notice().findChild<QPushButton*>();
    button->setFocus();
    ASSERT_TRUE(button->hasFocus());
    editor.notice().hide();
    EXPECT_TRUE(editor.body().hasFocus()) << "from the line above the note";

    commands.trigger("view.outline");
    ASSERT_FALSE(editor.body().hasFocus());
    commands.trigger("view.outline");
    EXPECT_TRUE(editor.body().hasFocus()) << "from the panel beside it";
}

TEST_F(NoteEditorTest, ShowsTheStylesUnderTheCursorOfTheNoteThatIsOpen) {
    openNote("<p><strong>bo|ld</strong></p>");
    EXPECT_TRUE(commands.action("format.bold").isChecked());
    openNote("<p>plain</p>");
    EXPECT_FALSE(commands.action("format.bold").isChecked());
}

TEST_F(NoteEditorTest, ChangesNoNoteInTheTrash) {
    CDNote& note = openNote("<p>|one|</p>");
    const QTextCursor chosen = editor.body().textCursor();
    environment->notes().moveToTrash(note);
    context().save();
    QApplication::clipboard()->setText("pasted");
    for (const char* command :
         {"format.bold",
          "format.heading1",
          "format.alignCenter",
          "format.divider",
          "format.noteLink",
          "edit.pastePlain",
          "note.attach",
          "note.reminder",
          "note.lock"}) {
        editor.body().setTextCursor(chosen);
        commands.trigger(command);
        EXPECT_EQ(html(), "<p>one</p>") << command;
        EXPECT_FALSE(commands.action(command).isEnabled()) << command;
    }
    const QWidget* const bar = editor.findChild<QWidget*>("editorToolBar");
    const QWidget* const tags = editor.findChild<QWidget*>("tagsField");
    EXPECT_FALSE(bar->isEnabled());
    EXPECT_FALSE(tags->isEnabled());
    environment->notes().restoreFromTrash(note);
    context().save();
    EXPECT_TRUE(bar->isEnabled());
    EXPECT_TRUE(tags->isEnabled());
    EXPECT_TRUE(commands.action("format.bold").isEnabled());
}

TEST_F(NoteEditorTest, KeepsBothVersionsWhenOthersWriteWhileTyping) {
    CDNote& note = openNote("<p>one|</p>");
    const Uuid id = *note.id;
    type(" mine");
    environment->startWork();
    environment->inBackground(
        [&](StoreContext& other, const std::stop_token&) {
            CDNote& theirs = environment->notes().getNote(other, id);
            environment->notes().updateNote(other, theirs, {.html = "<p>theirs</p>"});
            other.save();
        },
        &editor,
        {},
        [](const std::string& sentence) { ADD_FAILURE() << sentence; });
    ASSERT_TRUE(waitUntil([&] { return *note.html == "<p>theirs</p>"; }));
    EXPECT_EQ(html(), "<p>one mine</p>");
    EXPECT_TRUE(editor.save());
    EXPECT_EQ(*note.html, "<p>one mine</p>");
    EXPECT_TRUE(note.hasConflict);
    EXPECT_NE(editor.notice().text(), "");
    bool isKept = false;
    for (const CDNoteRevision* revision : environment->notes().revisions(note)) {
        isKept |= *revision->html == "<p>theirs</p>";
    }
    EXPECT_TRUE(isKept);
}

TEST_F(NoteEditorTest, KeepsWhatIsTypedIntoANoteThatIsDeletedElsewhere) {
    const Uuid id = *openNote("<p>one|</p>").id;
    type(" mine");
    const auto other = environment->store().newBackgroundContext();
    environment->notes().deleteNote(*other, environment->notes().getNote(*other, id));
    other->save();
    ASSERT_TRUE(waitUntil([&] { return !editor.noteID(); }));
    const auto notes = context().fetch<CDNote>();
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_EQ(notes.front()->title, "Plan");
    EXPECT_EQ(notes.front()->html, "<p>one mine</p>");
}

TEST_F(NoteEditorTest, APressOnATagOffersItsNotesAndToTakeItOff) {
    CDNote& note = openNote("<p>one|</p>");
    CDTag& tag = *environment->tags().findOrCreate(context(), "R&D");
    environment->notes().addTag(note, tag);
    environment->save(&editor);
    settle();
    QString shown;
    QObject::connect(&editor, &app::NoteEditor::linkActivated, &editor, [&](const auto& address) {
        shown = address;
    });
    auto* const row = editor.findChild<QWidget*>("tagsField");
    const auto choose = [&](int line) {
        row->findChild<QToolButton*>()->click();
        auto* const menu = row->findChild<QMenu*>("tagMenu");
        menu->actions().at(line)->trigger();
        menu->close();
        settle();
    };
    choose(0);
    EXPECT_EQ(shown.toStdString(), "tesserine://tag/" + tag.id->text());
    ASSERT_EQ(note.tags.all().size(), 1U);
    choose(1);
    EXPECT_TRUE(note.tags.all().empty());
}

TEST_F(NoteEditorTest, ATagThatIsRenamedIsShownWithItsNewName) {
    CDNote& note = openNote("<p>one|</p>");
    CDTag& tag = *environment->tags().findOrCreate(context(), "baking");
    environment->notes().addTag(note, tag);
    environment->save(&editor);
    environment->tags().rename(context(), tag, "cakes");
    environment->save(&editor);
    settle();
    auto* const row = editor.findChild<QWidget*>("tagsField");
    EXPECT_EQ(row->findChild<QToolButton*>()->text(), "cakes");
}

TEST_F(NoteEditorTest, TabLeadsFromTheTitleIntoTheBodyAndBackToTheTags) {
    openNote("<p>one|</p>");
    editor.title().setFocus();
    QTest::keyClick(editor.focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(editor.focusWidget(), &editor.body());
    editor.title().setFocus();
    QTest::keyClick(editor.focusWidget(), Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(editor.focusWidget()->objectName(), "tagName");
}

TEST_F(NoteEditorTest, AHintStandsOnlyWhereOneMayBeginToWrite) {
    openNote("<p>|</p>");
    EXPECT_NE(editor.body().placeholderText(), "");
    type("- ");
    EXPECT_EQ(editor.body().placeholderText(), "") << "a sign stands there";
    commands.trigger("edit.undo");
    EXPECT_NE(editor.body().placeholderText(), "");
    openNote("<ul class=\"ts-checklist\"><li data-checked=\"false\">|</li></ul>");
    EXPECT_EQ(editor.body().placeholderText(), "");
    CDNote& gone = openNote("<p>|</p>");
    environment->notes().moveToTrash(gone);
    context().save();
    settle();
    EXPECT_EQ(editor.body().placeholderText(), "") << "it is only read";
}

TEST_F(NoteEditorTest, APressAnywhereBesideTheTagsBeginsOne) {
    openNote("<p>one|</p>");
    auto* const row = editor.findChild<QWidget*>("tagsField");
    QTest::mouseClick(row, Qt::LeftButton, {}, {row->width() - 5, row->height() / 2});
    EXPECT_EQ(editor.focusWidget(), row->findChild<QLineEdit*>("tagName"));
}

TEST_F(NoteEditorTest, ATagBegunForOneNoteIsPutOnItWhenTheFieldIsLeft) {
    const CDNote& note = openNote("<p>one|</p>");
    auto* const field = editor.findChild<QLineEdit*>("tagName");
    QTest::keyClicks(field, "gard");
    environment->save(&editor);
    EXPECT_EQ(field->text(), "gard");
    const CDNote& other = addNote("Other");
    editor.open(*other.id);
    EXPECT_EQ(field->text(), "");
    ASSERT_EQ(note.tags.all().size(), 1U);
    EXPECT_EQ(note.tags.all().front()->name, "gard");
    EXPECT_TRUE(other.tags.all().empty());

    field->setFocus();
    QTest::keyClicks(field, "draft");
    QTest::keyClick(field, Qt::Key_Escape);
    editor.body().setFocus();
    EXPECT_TRUE(other.tags.all().empty()) << "it was dropped";
    field->setFocus();
    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_EQ(editor.focusWidget(), &editor.body()) << "what is typed next is no tag";
    field->setFocus();
    QTest::keyClicks(field, "plan");
    editor.body().setFocus();
    EXPECT_EQ(other.tags.all().size(), 1U);
}

TEST_F(NoteEditorTest, KeepsARevisionEveryTenMinutesOfWriting) {
    CDNote& note = openNote("<p>|</p>");
    const auto autosaves = [&] {
        std::size_t count = 0;
        for (const CDNoteRevision* revision : environment->notes().revisions(note)) {
            count += revision->reason == "autosave" ? 1 : 0;
        }
        return count;
    };
    const auto writeForMinutes = [&](int minutes) {
        for (int i = 0; i < minutes; ++i) {
            type("x");
            editor.save();
            clock.advance(std::chrono::minutes(1));
        }
    };
    writeForMinutes(10);
    EXPECT_EQ(autosaves(), 0U);
    writeForMinutes(1);
    EXPECT_EQ(autosaves(), 1U);
    clock.advance(std::chrono::minutes(30));  // a pause begins it anew
    writeForMinutes(10);
    EXPECT_EQ(autosaves(), 1U);
}

}  // namespace
}  // namespace tesserine::app
