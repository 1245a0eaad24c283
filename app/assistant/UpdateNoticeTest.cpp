#include "app/assistant/UpdateNotice.h"

#include "app/assistant/AssistantFixture.h"
#include "app/assistant/UpdateDialog.h"
#include "base/Digest.h"
#include "base/Encoding.h"
#include "updates/UpdateError.h"

#include <gtest/gtest.h>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QToolButton>

namespace tesserine::app {
namespace {

constexpr const char* fileURL = "https://dl.tesserine.example/Tesserine.dmg";

class UpdateNoticeTest : public test::AssistantFixture {
protected:
    UpdateNoticeTest() {
        network.answer = [this](const HTTPRequest& request) {
            return request.url == fileURL ? HTTPReply{.status = 200, .body = file_}
                                          : HTTPReply{.status = status_, .body = feed_};
        };
    }
    static UpdateSource source(const std::filesystem::path& program) {
        return {
            .hasService = true,
            .hosts = {.domain = "tesserine.example"},
            .feedURL = "https://tesserine.example/appcast.json",
            .site = "https://tesserine.example",
            .program = program};
    }
    void offer(const std::string& version, const std::string& more = "") {
        const std::string digest = sha256Hex(bytesOf("release"));
        feed_ = R"({"platforms":{"macos":{"version":")" + version + R"(","download":{"url":")"
                + fileURL + R"(","sha256":")" + digest + R"(","length":7})" + more + "}}}";
    }
    std::string text() const {
        return notice_->isHidden()
                   ? ""
                   : notice_->findChild<QLabel*>("updateText")->text().toStdString();
    }
    std::size_t looks() { return network.requests().size(); }
    UpdateDialog& openDetails() {
        notice_->findChild<QPushButton*>("updateDetails")->click();
        return *notice_->findChild<UpdateDialog*>();
    }
    std::string stateOf(UpdateDialog& dialog) {
        return dialog.findChild<QLabel*>("updateState")->text().toStdString();
    }
    std::size_t fileCount() const {
        const std::filesystem::directory_iterator entries(downloads_);
        return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    }

    std::string feed_;
    std::string file_ = "release";
    int status_ = 200;
    const std::filesystem::path downloads_ = folder / "Downloads";
    std::unique_ptr<UpdateNotice> notice_ =
        std::make_unique<UpdateNotice>(*environment, source(folder / "program"), downloads_);
};

TEST_F(UpdateNoticeTest, TellsOfANewerVersionOnceADayAndIsQuietOtherwise) {
    status_ = 503;
    notice_->checkIfDue();
    ASSERT_TRUE(waitUntil([this] { return looks() == 1; }));
    environment->waitForBackground();
    settle();
    EXPECT_EQ(text(), "") << "nobody asked, so a failure is not said";

    status_ = 200;
    offer("99.0");
    notice_->checkIfDue();
    ASSERT_TRUE(waitUntil([this] { return !text().empty(); }));
    EXPECT_EQ(text(), "Tesserine 99.0 is available; this is " TESSERINE_VERSION ".");
    notice_->findChild<QToolButton*>("updateLater")->click();
    EXPECT_EQ(text(), "");

    notice_ = std::make_unique<UpdateNotice>(*environment, source(folder / "program"), downloads_);
    notice_->checkIfDue();
    clock.advance(std::chrono::hours(23));
    notice_->checkIfDue();
    EXPECT_EQ(looks(), 2U);
    clock.advance(std::chrono::hours(2));
    notice_->checkIfDue();
    ASSERT_TRUE(waitUntil([this] { return looks() == 3; }));
    ASSERT_TRUE(waitUntil([this] { return !text().empty(); }));
}

TEST_F(UpdateNoticeTest, AlwaysAnswersTheUser) {
    status_ = 503;
    notice_->check();
    ASSERT_TRUE(waitUntil([this] { return text().find("503") != std::string::npos; }));
    EXPECT_EQ(text(), UpdateError::server(503).what());
    status_ = 200;
    offer("0.0.1");
    notice_->check();
    ASSERT_TRUE(waitUntil([this] { return text().find("newest") != std::string::npos; }));
    EXPECT_EQ(text(), "Tesserine " TESSERINE_VERSION " is the newest version.");
}

TEST_F(UpdateNoticeTest, DownloadsACheckedFileAndRunsNothing) {
    offer("99.0", R"(,"releaseNotes":"New:\n- <b>Fas\u001b[2Jt\u202eer</b>")");
    notice_->check();
    ASSERT_TRUE(waitUntil([this] { return text().find("99.0") != std::string::npos; }));
    UpdateDialog& dialog = openDetails();
    QStringList notes;
    for (const QLabel* label :
         dialog.findChild<QScrollArea*>("releaseNotes")->findChildren<QLabel*>()) {
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
        notes << label->text();
    }
    EXPECT_EQ(notes, QStringList({"New:", "•", "<b>Fas[2Jter</b>"}));

    auto& button = *dialog.findChild<QPushButton*>("download");
    file_ = "releasf";
    button.click();
    ASSERT_TRUE(waitUntil([&] { return stateOf(dialog).find("discarded") != std::string::npos; }));
    EXPECT_EQ(stateOf(dialog), UpdateError::digestMismatch("https://tesserine.example").what());
    EXPECT_EQ(fileCount(), 0U);

    file_ = "release";
    button.click();
    ASSERT_TRUE(waitUntil([&] { return button.text() == "Show in Folder"; }));
    EXPECT_EQ(test::contentOf(downloads_ / "Tesserine.dmg"), "release");
    EXPECT_NE(stateOf(dialog).find("Nothing was run."), std::string::npos);
}

TEST_F(UpdateNoticeTest, ADownloadCanBeCancelledAndAVersionSkipped) {
    offer("99.0");
    notice_->check();
    ASSERT_TRUE(waitUntil([this] { return text().find("99.0") != std::string::npos; }));
    UpdateDialog& dialog = openDetails();
    network.isSilent = true;
    dialog.findChild<QPushButton*>("download")->click();
    auto& cancel = *dialog.findChild<QPushButton*>("cancelDownload");
    EXPECT_TRUE(cancel.isVisible());
    ASSERT_TRUE(waitUntil([this] { return looks() == 2; }));
    cancel.click();
    ASSERT_TRUE(waitUntil([&] { return !cancel.isVisible(); }));
    EXPECT_EQ(stateOf(dialog), UpdateError::cancelled().what());
    EXPECT_EQ(fileCount(), 0U);
    network.isSilent = false;

    dialog.findChild<QPushButton*>("skipVersion")->click();
    EXPECT_EQ(text(), "");
    notice_->check();
    ASSERT_TRUE(waitUntil([this] { return text().find("newest") != std::string::npos; }));
}

TEST_F(UpdateNoticeTest, DetailsGoWhenAnotherVersionIsFoundOrNone) {
    for (const char* const found : {"99.1", "0.0.1"}) {
        SCOPED_TRACE(found);
        offer("99.0");
        notice_->check();
        ASSERT_TRUE(waitUntil([this] { return text().find("99.0") != std::string::npos; }));
        offer(found);
        notice_->check();
        const QPointer<UpdateDialog> dialog = &openDetails();
        EXPECT_TRUE(waitUntil([&] {
            settle();
            return dialog.isNull();
        }));
    }
}

TEST_F(UpdateNoticeTest, OffersNoDownloadWhereAPackageManagerOwnsTheProgram) {
    notice_ = std::make_unique<UpdateNotice>(
        *environment, source("/usr/bin/tesserine-desktop"), downloads_);
    offer("99.0", R"(,"minimumSupportedVersion":"98")");
    notice_->checkIfDue();
    EXPECT_EQ(looks(), 0U);
    notice_->check();
    ASSERT_TRUE(waitUntil([this] { return text().find("99.0") != std::string::npos; }));
    UpdateDialog& dialog = openDetails();
    EXPECT_FALSE(dialog.findChild<QPushButton*>("download")->isVisible());
    EXPECT_FALSE(dialog.findChild<QPushButton*>("skipVersion")->isVisible()) << "it is required";
    EXPECT_NE(stateOf(dialog).find("package manager"), std::string::npos);
}

}  // namespace
}  // namespace tesserine::app
