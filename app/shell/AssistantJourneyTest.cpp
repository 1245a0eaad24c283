#include "app/assistant/ActionReview.h"
#include "app/assistant/AnswerView.h"
#include "app/assistant/AskPanel.h"
#include "app/assistant/AssistantFixture.h"
#include "app/shell/ShellFixture.h"
#include "app/shell/WindowRooms.h"

#include <QPlainTextEdit>
#include <QPushButton>
#include <QUrl>

namespace tesserine::app {
namespace {

/// A window whose assistant is set up, with a network that is a script.
class AssistantJourney : public test::ShellFixture {
public:
    AssistantJourney() {
        AppSetting given = setting();
        given.network = &network;
        open(given);
        AICredentialStore(secrets, {}).save("secret key");
        const AISettings settings{
            .isEnabled = true, .backend = AISettings::Backend::ownKey, .hasSeenDataNotice = true};
        settings.save(environment->preferences());
    }
    void TearDown() override {
        ShellFixture::TearDown();
        environment.reset();  // uses the network until its end
    }
    void openWindow() {
        MainWindow& opened = window();
        addRooms(opened, commands(), *environment);
    }
    QStringList markedWords() {
        QStringList words;
        for (const auto& mark : editor().body().extraSelections()) {
            words << mark.cursor.selectedText();
        }
        return words;
    }

    test::ScriptedNetwork network;
};

TEST_F(AssistantJourney, AQuestionLeadsToTheWordsOfItsSource) {
    addNote("Trip", "<p>The train leaves at nine.</p><p>Anna likes the hotel by the lake.</p>");
    addNote("Other", "<p>Nothing of that.</p>");
    openWindow();
    press(Qt::Key_J, Qt::ControlModifier);
    type("Which hotel does Anna like?");
    press(Qt::Key_Return);
    auto* const answer = window().findChild<AnswerView*>();
    ASSERT_TRUE(waitUntil([answer] { return answer->isVisible(); }));
    emit answer->anchorClicked(QUrl("source:1"));
    settle();
    EXPECT_EQ(openTitle(), "Trip");
    EXPECT_TRUE(markedWords().contains("Anna likes the hotel by the lake."));
}

TEST_F(AssistantJourney, AnActionSeesWhatWasTypedLastAndIsTakenOverIntoTheOpenNote) {
    const Uuid plan = *addNote("Plan", "<p>Call Tom.</p>").id;
    openWindow();
    window().go({Place::Kind::note, plan});
    editor().body().setFocus();
    press(Qt::Key_Home, Qt::ControlModifier);
    type("Pay Anna. ");
    network.say("- Pay Anna\n- Call Tom");
    commands().trigger("assistant.actionItems");
    auto* const sheet = window().findChild<ActionReview*>();
    ASSERT_NE(sheet, nullptr);
    auto* const text = sheet->findChild<QPlainTextEdit*>("reviewText");
    ASSERT_TRUE(waitUntil([text] { return text->isVisible(); }));
    EXPECT_NE(network.requests().at(0).body->find("Pay Anna. Call Tom."), std::string::npos);
    sheet->findChild<QPushButton*>("insertBelow")->click();
    settle();
    EXPECT_TRUE(waitUntil([this] {
        return editor().body().toPlainText().endsWith("Pay Anna\nCall Tom");
    })) << editor().body().toPlainText().toStdString();
}

}  // namespace
}  // namespace tesserine::app
