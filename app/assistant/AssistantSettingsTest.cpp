#include "app/assistant/AssistantSettings.h"

#include "ai/AIExclusions.h"
#include "ai/ProviderAddress.h"
#include "app/assistant/AssistantFixture.h"

#include <gtest/gtest.h>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

namespace tesserine::app {
namespace {

class AssistantSettingsTest : public test::AssistantFixture {
protected:
    AssistantSettingsTest() {
        environment->notebooks().findOrCreatePath(context(), {"Health"});
        context().save();
        page_.reset(makeAssistantSettings(*environment, nullptr));
        page_->show();
    }
    template <class Widget>
    Widget& part(const char* name) {
        return *page_->findChild<Widget*>(name);
    }
    void answer(QMessageBox::ButtonRole role) {
        auto& box = part<QMessageBox>("confirmServer");
        for (QAbstractButton* button : box.buttons()) {
            if (box.buttonRole(button) == role) button->click();
        }
        settle();
    }
    std::string server() { return ProviderAddress::load(environment->preferences()).host; }
    std::string keyOf(const std::string& host) {
        return AICredentialStore(secrets, {}, host).read().value_or("none");
    }
    bool waitForKeyState(const char* sentence) {
        return waitUntil([&] { return part<QLabel>("keyState").text() == sentence; });
    }

    std::unique_ptr<QWidget> page_;
};

TEST_F(AssistantSettingsTest, ALongNameDoesNotWidenThePage) {
    const int width = page_->minimumSizeHint().width();
    environment->tags().findOrCreate(context(), std::string(200, 't'));
    environment->notebooks().findOrCreatePath(context(), {std::string(200, 'n')});
    context().save();
    page_.reset(makeAssistantSettings(*environment, nullptr));
    EXPECT_EQ(page_->minimumSizeHint().width(), width);
}

TEST_F(AssistantSettingsTest, ChangesOnePartAndKeepsTheOthers) {
    AISettings before = kept();
    before.model = "grok-x";
    keep(before);
    part<QCheckBox>("assistantEnabled").setChecked(false);
    part<QCheckBox>("assistantWeb").setChecked(true);
    AISettings expected = before;
    expected.isEnabled = false;
    expected.allowWebSearch = true;
    EXPECT_EQ(kept(), expected);
    auto& backend = part<QComboBox>("assistantBackend");
    EXPECT_EQ(backend.currentText(), "My own xAI API key");
    emit backend.activated(0);
    EXPECT_EQ(kept().backend, AISettings::Backend::relay);
}

TEST_F(AssistantSettingsTest, BindsAKeyToTheServerItWasEnteredFor) {
    ASSERT_TRUE(waitForKeyState("A key is kept for this server."));
    part<QLineEdit>("assistantServer").setText("https://models.example/v1");
    part<QPushButton>("useServer").click();
    EXPECT_EQ(page_->findChild<QMessageBox*>("confirmServer"), nullptr) << "not a server nearby";
    part<QLineEdit>("assistantServer").setText("http://127.0.0.1:11434/v1");
    part<QPushButton>("useServer").click();
    answer(QMessageBox::RejectRole);
    EXPECT_EQ(server(), "") << "the built-in one, until the user confirms";
    part<QPushButton>("useServer").click();
    answer(QMessageBox::AcceptRole);
    EXPECT_EQ(server(), "127.0.0.1:11434");
    EXPECT_TRUE(part<QLabel>("whereQuestionsGo").text().contains("to 127.0.0.1:11434."));
    ASSERT_TRUE(waitForKeyState("No key is kept for this server."));

    part<QLineEdit>("assistantKey").setText("other key");
    part<QPushButton>("keepKey").click();
    EXPECT_EQ(part<QLineEdit>("assistantKey").text(), "") << "it is not left on the screen";
    ASSERT_TRUE(waitForKeyState("A key is kept for this server."));
    EXPECT_EQ(keyOf("127.0.0.1:11434"), "other key");
    EXPECT_EQ(keyOf(""), "secret key");
    part<QPushButton>("forgetKey").click();
    ASSERT_TRUE(waitForKeyState("No key is kept for this server."));
    EXPECT_EQ(keyOf(""), "secret key");
}

TEST_F(AssistantSettingsTest, NamesWhatIsNeverSent) {
    auto& choice = part<QComboBox>("notebookChoice");
    emit choice.activated(choice.findText("Health"));
    settle();
    const auto excluded = [this] {
        return AIExclusions::load(environment->preferences()).notebooks;
    };
    EXPECT_EQ(excluded(), std::vector<std::string>{"Health"});
    EXPECT_EQ(choice.findText("Health"), -1) << "it is not offered again";
    for (QPushButton* button : page_->findChildren<QPushButton*>()) {
        if (button->text() == "Health") {
            button->click();
            break;
        }
    }
    EXPECT_TRUE(excluded().empty());
}

}  // namespace
}  // namespace tesserine::app
