#include "app/assistant/AssistantFixture.h"
#include "app/assistant/UpdateForm.h"

#include <gtest/gtest.h>
#include <QCheckBox>
#include <QLabel>
#include <QPushButton>

namespace tesserine::app {
namespace {

class UpdateSettingsTest : public test::AssistantFixture {
protected:
    void show(bool hasService, const std::filesystem::path& program) {
        page_ = std::make_unique<UpdateForm>(
            *environment,
            UpdateSource{
                .hasService = hasService,
                .hosts = {.domain = "tesserine.example"},
                .feedURL = "https://tesserine.example/appcast.json",
                .site = "https://tesserine.example",
                .program = program},
            nullptr);
        page_->show();
    }
    std::string state() { return page_->findChild<QLabel*>("updateState")->text().toStdString(); }
    void checkNow() { page_->findChild<QPushButton*>("checkNow")->click(); }

    std::unique_ptr<UpdateForm> page_;
};

TEST_F(UpdateSettingsTest, TellsWhatWasFoundAndWhen) {
    show(true, folder / "program");
    EXPECT_EQ(state(), "Nobody has looked for updates so far.");
    network.answer = [](const HTTPRequest&) {
        return HTTPReply{.status = 200, .body = R"({"platforms":{"macos":{"version":"99"}}})"};
    };
    checkNow();
    ASSERT_TRUE(waitUntil([this] { return state().find("99 is available") != std::string::npos; }));
    EXPECT_TRUE(page_->findChild<QPushButton*>("updateDetails")->isVisible());
    show(true, folder / "program");
    EXPECT_EQ(state(), "Last looked for updates: Today 09:00.");

    network.answer = [](const HTTPRequest&) { return HTTPReply{.status = 200, .body = "<html>"}; };
    checkNow();
    ASSERT_TRUE(waitUntil([this] { return state().find("left things") != std::string::npos; }));
    EXPECT_FALSE(page_->findChild<QPushButton*>("updateDetails")->isVisible());
}

TEST_F(UpdateSettingsTest, AsksNobodyWhereThereIsNobodyToAsk) {
    show(false, folder / "program");
    const std::string nowhere = state();
    EXPECT_NE(nowhere.find("no service of its own"), std::string::npos);
    checkNow();
    EXPECT_EQ(state(), nowhere);
    show(true, "/usr/bin/tesserine-desktop");
    EXPECT_NE(state().find("package manager"), std::string::npos);
    EXPECT_TRUE(network.requests().empty());
}

TEST_F(UpdateSettingsTest, LooksByItselfUntilTheUserForbidsIt) {
    show(true, folder / "program");
    auto* const automatic = page_->findChild<QCheckBox*>("tesserine.updates.automatic");
    EXPECT_TRUE(automatic->isChecked());
    const auto isDue = [this] {
        return updates::isDue(
            environment->preferences(),
            {.hasService = true, .program = folder / "program"},
            environment->now());
    };
    EXPECT_TRUE(isDue());
    automatic->setChecked(false);
    EXPECT_FALSE(isDue());
}

}  // namespace
}  // namespace tesserine::app
