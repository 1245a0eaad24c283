#include "app/assistant/ActionReview.h"

#include "ai/AIExclusions.h"
#include "app/assistant/AssistantFixture.h"
#include "core/model/NoteEntities.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QTest>

namespace tesserine::app {
namespace {

class ActionReviewTest : public test::AssistantFixture {
protected:
    ActionReview& begin(const CDNote& note, NoteAction action) {
        sheet_ = new ActionReview(*environment, *note.id, action, nullptr);
        sheet_->begin();
        return *sheet_;
    }
    void TearDown() override { delete sheet_; }

    template <class Widget>
    Widget& part(const char* name) {
        return *sheet_->findChild<Widget*>(name);
    }
    bool waitForText() {
        return waitUntil([this] { return part<QPlainTextEdit>("reviewText").isVisible(); });
    }
    std::string state() { return part<QLabel>("reviewState").text().toStdString(); }
    void press(const char* button) { part<QPushButton>(button).click(); }

    QPointer<ActionReview> sheet_;
};

TEST_F(ActionReviewTest, NothingIsWrittenUntilTheTextIsTakenOver) {
    CDNote& note = addNote("Plan", "<p>Call Tom.</p>");
    const std::string before = *note.html;
    network.say("- Call Tom");
    begin(note, NoteAction::extractActionItems);
    ASSERT_TRUE(waitForText());
    EXPECT_EQ(*note.html, before);
    EXPECT_FALSE(context().hasChanges());
    press("copyResult");
    EXPECT_EQ(QApplication::clipboard()->text(), "- Call Tom");

    press("insertBelow");
    EXPECT_EQ(
        *note.html,
        before + "<ul class=\"ts-checklist\"><li data-checked=\"false\">Call Tom</li></ul>");
    settle();
    EXPECT_TRUE(sheet_.isNull()) << "the sheet has done its work";
}

TEST_F(ActionReviewTest, ReplacingKeepsTheTextBeforeAsAVersion) {
    CDNote& note = addNote("Plan", "<p>A long text.</p>");
    network.say("Short.");
    begin(note, NoteAction::shorten);
    ASSERT_TRUE(waitForText());
    part<QPlainTextEdit>("reviewText").setPlainText("Shorter <b>still</b>.");
    press("replaceNote");
    EXPECT_EQ(*note.html, "<p>Shorter &lt;b&gt;still&lt;/b&gt;.</p>");
    ASSERT_EQ(note.revisions.all().size(), 1U);
    EXPECT_EQ(*note.revisions.all().front()->html, "<p>A long text.</p>");
}

TEST_F(ActionReviewTest, WhatAnotherProgramWroteMeanwhileIsKept) {
    CDNote& note = addNote("Plan", "<p>One.</p>");
    begin(note, NoteAction::rewrite);
    ASSERT_TRUE(waitForText());
    environment->notes().updateNote(context(), note, {.html = "<p>Two, from elsewhere.</p>"});
    context().save();
    press("replaceNote");
    EXPECT_TRUE(*note.hasConflict);
    bool isKept = false;
    for (const CDNoteRevision* revision : note.revisions.all()) {
        isKept = isKept || *revision->html == "<p>Two, from elsewhere.</p>";
    }
    EXPECT_TRUE(isKept);
}

TEST_F(ActionReviewTest, ANoteThatWentToTheTrashMeanwhileTakesNoText) {
    CDNote& note = addNote("Plan", "<p>One.</p>");
    network.say("Two.");
    begin(note, NoteAction::summarize);
    ASSERT_TRUE(waitForText());
    environment->notes().moveToTrash(note);
    context().save();
    press("insertBelow");
    EXPECT_EQ(*note.html, "<p>One.</p>");
    EXPECT_TRUE(sheet_->isVisible()) << "to be copied from";
}

TEST_F(ActionReviewTest, ATextCannotTakeThePlaceOfLockedPassages) {
    CDNote& note = addNote(
        "Plan",
        "<p>Open.</p><div class=\"ts-encrypted\" data-ts-cipher=\"QUJD\">🔒 Encrypted text</div>");
    begin(note, NoteAction::summarize);
    ASSERT_TRUE(waitForText());
    EXPECT_FALSE(part<QPushButton>("replaceNote").isEnabled());
    EXPECT_EQ(network.requests().at(0).body->find("QUJD"), std::string::npos);
    press("insertBelow");
    EXPECT_NE(note.html->find("QUJD"), std::string::npos);
}

TEST_F(ActionReviewTest, NorOfWhatWasLockedSinceTheTextWasAskedFor) {
    CDNote& note = addNote("Plan", "<p>Open.</p>");
    begin(note, NoteAction::shorten);
    ASSERT_TRUE(waitForText());
    const std::string locked =
        "<div class=\"ts-encrypted\" data-ts-cipher=\"QUJD\">🔒 Encrypted text</div>";
    environment->notes().updateNote(context(), note, {.html = locked});
    context().save();
    press("replaceNote");
    EXPECT_NE(note.html->find("QUJD"), std::string::npos);
    EXPECT_FALSE(*note.hasConflict);
}

TEST_F(ActionReviewTest, AsksAboutTheNoteAndAgainAfterAFailure) {
    CDNote& note = addNote("Plan", "<p>Tom pays.</p>");
    network.answer = [](const HTTPRequest&) { return HTTPReply{.status = 429}; };
    begin(note, NoteAction::ask);
    EXPECT_TRUE(network.requests().empty()) << "there is no question yet";
    part<QLineEdit>("noteQuestion").setText("Who pays?");
    press("askAgain");
    ASSERT_TRUE(waitUntil([this] { return part<QPushButton>("askAgain").isVisible(); }));
    EXPECT_EQ(state(), "The AI service is busy right now. Try again shortly.");
    EXPECT_EQ(part<QLineEdit>("noteQuestion").text(), "Who pays?");
    network.say("Tom.");
    press("askAgain");
    ASSERT_TRUE(waitForText());
    EXPECT_NE(network.requests().at(1).body->find("QUESTION:Who pays?"), std::string::npos);
}

TEST_F(ActionReviewTest, ANoteThatIsNeverSentIsNotSentByAnActionEither) {
    CDNotebook* const diary = environment->notebooks().findOrCreatePath(context(), {"Diary"});
    CDNote& note = addNote("Plan", "<p>Private.</p>", diary);
    environment->preferences().set(AIExclusions::notebooksKey, std::vector<std::string>{"diary"});
    begin(note, NoteAction::summarize);
    EXPECT_EQ(state(), NeverSentError().what());
    EXPECT_TRUE(network.requests().empty());
}

}  // namespace
}  // namespace tesserine::app
