#include "app/editor/EditorFixture.h"
#include "app/editor/NoticeBar.h"
#include "app/editor/PassageDialogs.h"
#include "core/body/LockedPassages.h"
#include "core/body/SelectiveEncryption.h"
#include "core/model/NoteEntities.h"
#include "search/SearchCoordinator.h"

#include <gmock/gmock.h>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace tesserine::app {
namespace {

using testing::HasSubstr;
using testing::Not;

class PassageLockingTest : public test::EditorFixture {
public:
    void lockSelection(const QString& passphrase) {
        commands.trigger("note.lock");
        givePassphrase(passphrase);
    }
    void givePassphrase(const QString& passphrase) {
        auto* const dialog = editor.findChild<LockDialog*>();
        ASSERT_NE(dialog, nullptr);
        dialog->findChild<QLineEdit*>("passphrase")->setText(passphrase);
        dialog->findChild<QLineEdit*>("confirmation")->setText(passphrase);
        dialog->accept();
    }
    /// Presses a button of the next message, and remembers what it said.
    void answerNextMessage(QMessageBox::StandardButton button) {
        QTimer::singleShot(50, &editor, [this, button] {
            auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (box == nullptr) return answerNextMessage(button);
            message = box->text().toStdString();
            box->button(button)->click();
        });
    }
    /// Opens the locked passage that stands first in the note.
    UnlockDialog* unlock(const QString& passphrase) {
        emit editor.body().objectActivated(
            static_cast<int>(document().content().text.find(AttributedText::objectCharacter)));
        auto* const dialog = editor.findChild<UnlockDialog*>();
        dialog->findChild<QLineEdit*>("passphrase")->setText(passphrase);
        emit dialog->passphraseGiven();
        waitUntil([&] {
            const auto* const label = dialog->findChild<QLabel*>();
            return !label->text().startsWith("Enter the passphrase");
        });
        return dialog;
    }
    QString notice() {
        const auto* const box = editor.findChild<QMessageBox*>("notice");
        return box == nullptr ? QString() : box->text();
    }
    bool isInLibrary(const std::string& bytes) {
        for (const auto& entry :
             std::filesystem::recursive_directory_iterator(folder / "Library")) {
            if (!entry.is_regular_file()) continue;
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string content(std::istreambuf_iterator<char>(file), {});
            if (content.find(bytes) != std::string::npos) return true;
        }
        return false;
    }

    std::string message;
};

TEST_F(PassageLockingTest, LeavesTheTextInNoFileOfTheLibrary) {
    environment->search().catchUp();
    CDNote& note = openNote("<p>The key is |swordfish-4711|.</p><p>Rest</p>");
    type("");
    ASSERT_TRUE(isInLibrary("swordfish-4711"));
    answerNextMessage(QMessageBox::Yes);
    lockSelection("correct horse");
    ASSERT_TRUE(waitUntil([&] { return editor.notice().text().contains("Backups"); }));
    EXPECT_EQ(message, "Earlier versions of this note still contain this text. Remove them?");
    const auto passages = lockedPassages(*note.html);
    ASSERT_EQ(passages.size(), 1U);
    EXPECT_EQ(
        *note.html,
        "<p>The key is</p>" + lockedBlock(passages.front().blob) + "<p>.</p><p>Rest</p>");
    EXPECT_FALSE(document().isUndoAvailable());
    EXPECT_FALSE(isInLibrary("swordfish-4711"));

    type("more");
    const std::string block = lockedBlock(passages.front().blob);
    EXPECT_NE(html().find(block + "<p>more</p>"), std::string::npos) << "one goes on behind it";
    editor.close();
    editor.open(*note.id);
    while (document().isUndoAvailable()) {
        commands.trigger("edit.undo");
        EXPECT_THAT(html(), Not(HasSubstr("swordfish"))) << "what was typed before comes back";
    }
}

TEST_F(PassageLockingTest, RefusesWhatIsNotText) {
    for (const char* body :
         {"<p>a|b</p>", "<p>|a</p><table><tr><td>x</td></tr></table><p>b|</p>"}) {
        openNote(body);
        commands.trigger("note.lock");
        EXPECT_EQ(editor.findChild<LockDialog*>(), nullptr);
        auto* const notice = editor.findChild<QMessageBox*>("notice");
        ASSERT_NE(notice, nullptr);
        EXPECT_EQ(
            notice->text(),
            "Couldn't encrypt the selection. Make sure some text is selected outside any other "
            "protected block.");
        delete notice;
    }
}

TEST_F(PassageLockingTest, ShowsAPassageBesideTheNoteOnly) {
    const std::string blob = SelectiveEncryption::encrypt("one\ntwo", "open", random);
    openNote("<p>a</p>" + lockedBlock(blob));
    const std::string before = html();
    UnlockDialog* dialog = unlock("wrong");
    EXPECT_EQ(dialog->findChild<QLabel*>()->text(), "That passphrase didn't work.");
    EXPECT_EQ(dialog->findChild<QPlainTextEdit*>("unlockedText"), nullptr);
    delete dialog;

    dialog = unlock("open");
    const auto* const text = dialog->findChild<QPlainTextEdit*>("unlockedText");
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->toPlainText(), "one\ntwo");
    EXPECT_EQ(html(), before);

    answerNextMessage(QMessageBox::Ok);
    dialog->findChild<QPushButton*>("removeEncryption")->click();
    ASSERT_TRUE(waitUntil([this] { return !message.empty(); }));
    EXPECT_EQ(
        message,
        "Removing encryption permanently replaces this block with plain, editable text. This "
        "cannot be undone.");
    EXPECT_EQ(html(), "<p>a</p><p>one</p><p>two</p>");
    EXPECT_FALSE(document().isUndoAvailable());
}

TEST_F(PassageLockingTest, LocksNothingWhenTheNoteChangedWhileThePassphraseWasTyped) {
    CDNote& note = openNote("<p>|secret|</p><p>other</p>");
    commands.trigger("note.lock");
    change(note, "<p>more before</p><p>secret</p>");
    givePassphrase("correct horse");
    EXPECT_TRUE(notice().startsWith("The note was changed meanwhile")) << notice().toStdString();
    environment->waitForBackground();
    settle();
    EXPECT_EQ(*note.html, "<p>more before</p><p>secret</p>");
}

TEST_F(PassageLockingTest, AKeyThatIsReadyLateDoesNothingToTheNextNote) {
    CDNote& next = addNote("Old", "<p>secret</p>");
    environment->notes().moveToTrash(next);
    CDNote& note = openNote("<p>|secret|</p>");
    lockSelection("correct horse");
    editor.open(*next.id);
    ASSERT_TRUE(waitUntil([this] { return !notice().isEmpty(); }));
    EXPECT_EQ(*next.html, "<p>secret</p>");
    EXPECT_EQ(*note.html, "<p>secret</p>");
    EXPECT_TRUE(editor.body().isReadOnly()) << "it is in the trash";
}

TEST_F(PassageLockingTest, ALockIsNotTakenFromThePassageThatCameIntoItsPlace) {
    const std::string first = lockedBlock(SelectiveEncryption::encrypt("one", "open", random));
    const std::string second = lockedBlock(SelectiveEncryption::encrypt("two", "open", random));
    CDNote& note = openNote(first + second);
    auto* const dialog = unlock("open");
    answerNextMessage(QMessageBox::Ok);
    dialog->findChild<QPushButton*>("removeEncryption")->click();
    change(note, second + first);
    ASSERT_TRUE(waitUntil([this] { return !message.empty(); }));
    EXPECT_EQ(*note.html, second + first);
    EXPECT_TRUE(notice().startsWith("The note was changed meanwhile")) << notice().toStdString();
}

TEST_F(PassageLockingTest, TheQuestionAboutALockGoesWithItsNote) {
    const Uuid id = *openNote(lockedBlock(SelectiveEncryption::encrypt("one", "open", random))).id;
    unlock("open")->findChild<QPushButton*>("removeEncryption")->click();
    const auto elsewhere = environment->store().newBackgroundContext();
    environment->notes().deleteNote(*elsewhere, *elsewhere->find<CDNote>(id));
    elsewhere->save();
    EXPECT_TRUE(waitUntil([this] {
        settle();
        return editor.findChildren<QDialog*>().isEmpty() && !editor.isEnabled();
    }));
}

TEST_F(PassageLockingTest, SaysWhichBlockCannotBeRead) {
    openNote(lockedBlock("QUJD"));
    const UnlockDialog* const dialog = unlock("x");
    EXPECT_EQ(dialog->findChild<QLabel*>()->text(), "This encrypted block could not be read.");
}

}  // namespace
}  // namespace tesserine::app
