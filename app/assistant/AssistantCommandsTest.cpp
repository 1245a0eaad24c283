#include "app/assistant/AssistantCommands.h"

#include "app/assistant/ActionReview.h"
#include "app/assistant/ActionWords.h"
#include "app/assistant/AskPanel.h"
#include "app/assistant/AssistantFixture.h"
#include "app/commands/Commands.h"

#include <gtest/gtest.h>
#include <QMessageBox>
#include <QPlainTextEdit>

namespace tesserine::app {
namespace {

class AssistantCommandsTest : public test::AssistantFixture {
protected:
    AssistantCommandsTest() {
        panel_.hide();
        handleAssistantCommands(
            *environment,
            commands_,
            {.window = &window_,
             .panel = &panel_,
             .save = [this] { return canSave_; },
             .note = [this] { return note_; }});
    }
    bool isReviewOpen() { return window_.findChild<ActionReview*>() != nullptr; }

    QWidget window_;
    Commands commands_{environment->preferences()};
    AskPanel panel_{*environment, &window_};
    bool canSave_ = true;
    std::optional<Uuid> note_;
};

TEST_F(AssistantCommandsTest, EachActionIsShownForReview) {
    note_ = *addNote("Plan", "<p>Call Tom.</p>").id;
    for (const ActionWords& words : actionWords()) {
        commands_.trigger(words.command);
        auto* const sheet = window_.findChild<ActionReview*>();
        ASSERT_NE(sheet, nullptr) << words.command;
        auto* const text = sheet->findChild<QPlainTextEdit*>("reviewText");
        if (words.action != NoteAction::ask) {
            EXPECT_TRUE(waitUntil([text] { return text->isVisible(); })) << words.command;
        }
        sheet->reject();
        settle();
    }
    EXPECT_EQ(network.requests().size(), actionWords().size() - 1) << "a question is typed first";
}

TEST_F(AssistantCommandsTest, NothingIsAskedWithoutANoteThatIsSaved) {
    commands_.trigger("assistant.summarize");
    EXPECT_FALSE(isReviewOpen());
    EXPECT_NE(window_.findChild<QMessageBox*>("notice"), nullptr) << "a note is to be opened first";
    note_ = *addNote("Plan", "<p>Call Tom.</p>").id;
    canSave_ = false;
    commands_.trigger("assistant.summarize");
    EXPECT_FALSE(isReviewOpen()) << "what was typed last would be missing";
    EXPECT_TRUE(network.requests().empty());
}

TEST_F(AssistantCommandsTest, ThePanelOpensForAQuestion) {
    window_.show();
    commands_.trigger("assistant.ask");
    EXPECT_TRUE(panel_.isVisible());
}

}  // namespace
}  // namespace tesserine::app
