#include "app/account/SyncSettings.h"

#include "app/account/SyncStatus.h"
#include "app/look/Theme.h"
#include "app/state/SyncFixture.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QUrl>
#include <QVBoxLayout>

namespace tesserine::app {
namespace {

using Phase = SyncState::Phase;

class SyncSettingsTest : public test::SyncFixture {
public:
    std::optional<HTTPReply> answerInstead(const HTTPRequest& request) override {
        if (failure) return failure;
        const std::string path = request.url.substr(request.url.find("/api/v1/") + 8);
        const auto reply = [](const char* body) { return HTTPReply{.status = 200, .body = body}; };
        if (path == "sync/state") {
            return reply(
                R"({"head":1,"records":1,"tombstones":0,"record_bytes":1000,"revision_bytes":24})");
        }
        if (path == "blobs") return reply(R"({"bytes":2097152,"quota_bytes":8388608})");
        if (path == "auth/sessions") {
            return reply(
                isPhoneSignedIn
                    ? R"({"sessions":[{"id":"1","label":"desk","is_current_device":true},
                                {"id":"2","label":"phone","last_used_at":"2026-03-13T08:00:00Z"}]})"
                    : R"({"sessions":[{"id":"1","label":"desk",
                                "is_current_device":true}]})");
        }
        if (path == "auth/sessions/2/revoke") {
            isPhoneSignedIn = false;
            return HTTPReply{.status = 204};
        }
        if (path == "api-tokens" && request.method == "POST") {
            hasToken = true;
            return reply(R"({"id":"7","token":"secret-1","label":"Backup script",
                             "created_at":"2026-03-14T09:00:00Z"})");
        }
        if (path == "api-tokens") {
            return reply(
                hasToken ? R"({"tokens":[{"id":"7","label":"Backup script",
                                        "created_at":"2026-03-14T09:00:00Z"}]})"
                         : R"({"tokens":[]})");
        }
        return std::nullopt;
    }

    /// In a dialog, where a Return may press its main button.
    SyncSettings& page() {
        if (!dialog_) {
            dialog_ = std::make_unique<QDialog>();
            auto* const column = new QVBoxLayout(dialog_.get());
            column->addWidget(new SyncSettings(*environment));
            dialog_->resize(640, 900);
            dialog_->show();
        }
        return *dialog_->findChild<SyncSettings*>();
    }
    void closeWidgets() override { dialog_.reset(); }

    template <class Widget = QPushButton>
    Widget& find(const char* name) {
        auto* const found = page().findChild<Widget*>(name);
        EXPECT_NE(found, nullptr) << name;
        return *found;
    }
    /// All texts that are to be seen, a line each.
    std::string texts() {
        std::string all;
        for (const QLabel* label : page().findChildren<QLabel*>()) {
            if (label->isVisible()) all += label->text().toStdString() + "\n";
        }
        return all;
    }
    bool waitForText(const std::string& text) {
        return waitUntil([&] { return texts().find(text) != std::string::npos; });
    }
    void press(const std::string& accessibleName) {
        for (auto* button : page().findChildren<QPushButton*>()) {
            if (button->isVisible() && button->accessibleName().toStdString() == accessibleName) {
                return button->click();
            }
        }
        ADD_FAILURE() << "no button " << accessibleName;
    }

    std::atomic<bool> isPhoneSignedIn = true;
    std::atomic<bool> hasToken = false;

private:
    std::unique_ptr<QDialog> dialog_;
};

/// Takes the place of the browser.
class Browser final : public QObject {
    Q_OBJECT

public:
    Browser() { QDesktopServices::setUrlHandler("https", this, "open"); }
    ~Browser() override { QDesktopServices::unsetUrlHandler("https"); }
    Q_INVOKABLE void open(const QUrl& address) { opened = address.toString().toStdString(); }
    std::string opened;
};

TEST_F(SyncSettingsTest, ANewUserNamesAServiceAndSignsInByTheBrowser) {
    AppSetting unset = environment->setting();
    unset.serviceURL.reset();
    open(unset);
    environment->startWork();
    EXPECT_FALSE(find("signIn").isEnabled());

    auto& address = find<QLineEdit>("serviceAddress");
    address.setText("http://notes.example.org");
    find("useService").click();
    EXPECT_NE(texts().find("begins with “https://”"), std::string::npos) << texts();
    address.setText("https://notes.example.org");
    QTest::keyClick(&address, Qt::Key_Return);
    EXPECT_EQ(texts().find("begins with “https://”"), std::string::npos) << texts();
    ASSERT_TRUE(waitFor(Phase::signedOut));
    EXPECT_EQ(requests, 0);
    EXPECT_FALSE(control().isSigningIn());

    Browser browser;
    find("signIn").click();
    EXPECT_EQ(browser.opened, "https://notes.example.org/api/v1/auth/google/start?flow=app");
    EXPECT_TRUE(find<QWidget>("signInPending").isVisible());
    control().takeCallback(callback);
    ASSERT_TRUE(waitForText("a@b.test"));
    EXPECT_FALSE(find<QWidget>("signInPending").isVisible());
    EXPECT_FALSE(address.isVisible());
}

TEST_F(SyncSettingsTest, ACancelledSignInCanBeBegunAgain) {
    environment->startWork();
    ASSERT_TRUE(waitFor(Phase::signedOut));
    Browser browser;
    find("signIn").click();
    find("cancelSignIn").click();
    EXPECT_TRUE(find("signIn").isVisible());
    find("signIn").click();
    control().takeCallback("tesserine://auth?error=weird");
    EXPECT_TRUE(waitForText("Sign-in did not complete (weird). Try again."));
    EXPECT_TRUE(find("signIn").isVisible());
}

TEST_F(SyncSettingsTest, TheAccountShowsWhatItHoldsAndWhoIsSignedIn) {
    signIn();
    page();
    ASSERT_TRUE(waitForText("phone"));
    ASSERT_TRUE(waitForText("2.0 MB of 8.0 MB"));
    for (const char* words :
         {"In step", "Last sync: Today 09:00", "1.0 kB", "Last used: Yesterday 08:00"}) {
        EXPECT_TRUE(waitForText(words)) << words << " in\n" << texts();
    }
    press("Sign Out: phone");
    EXPECT_TRUE(waitUntil([this] { return texts().find("phone") == std::string::npos; }));
    EXPECT_FALSE(isPhoneSignedIn);
}

TEST_F(SyncSettingsTest, TheSecretOfATokenIsShownOnce) {
    signIn();
    find<QLineEdit>("tokenLabel").setText("Backup script");
    find("createToken").click();  // while the list is still asked for
    ASSERT_TRUE(waitForText("It cannot create another token"));
    EXPECT_EQ(find<QLineEdit>("tokenSecret").text(), "secret-1");
    find("copyToken").click();
    EXPECT_EQ(QApplication::clipboard()->text(), "secret-1");

    closeWidgets();
    ASSERT_TRUE(waitForText("Backup script"));
    EXPECT_FALSE(find<QLineEdit>("tokenSecret").isVisible());
    EXPECT_EQ(find<QLineEdit>("tokenSecret").text(), "");
}

TEST_F(SyncSettingsTest, WhatTheServiceRefusedIsNamedWithItsReason) {
    addNote("Enormous");
    server.afterwards = [](const HTTPRequest& request, HTTPReply& reply) {
        if (!request.url.ends_with("sync/push")) return;
        const std::size_t at = reply.body.find("\"applied\"");
        if (at == std::string::npos) return;
        reply.body.replace(at, 9, R"("refused","reason":"too_large","limit":1024,"measured":4096)");
    };
    signIn();
    page();
    EXPECT_TRUE(waitForText("Enormous")) << texts();
    EXPECT_TRUE(waitForText("It takes 4.0 kB, and the service takes 1.0 kB at most."));
}

TEST_F(SyncSettingsTest, AQuestionIsAnsweredThere) {
    signIn();
    control().signOut();
    ASSERT_TRUE(waitFor(Phase::signedOut));
    server.accountID = "another";
    page();
    control().beginSignIn();
    control().takeCallback(callback);
    ASSERT_TRUE(
        waitForText("This library was synced with another account. Add its notes to this one?"));
    press("Add the Notes");
    EXPECT_TRUE(waitForText("In step"));
}

TEST_F(SyncSettingsTest, SigningOutIsAskedAndLeadsBackToTheStart) {
    signIn();
    page();
    press("Sign Out…");
    auto* question = page().findChild<QMessageBox*>("question");
    ASSERT_NE(question, nullptr);
    for (auto* button : question->buttons()) {
        if (button->text() == "Sign Out") button->click();
    }
    ASSERT_TRUE(waitFor(Phase::signedOut));
    EXPECT_TRUE(find("signIn").isVisible());
    EXPECT_FALSE(find<QWidget>("account").isVisible());
}

TEST_F(SyncSettingsTest, TheLineBelowTheSidebarIsQuietWhileAllIsWell) {
    SyncStatus status(*environment);
    environment->startWork();
    signIn();
    EXPECT_EQ(status.text().toStdString(), "In step");
    control().stop();
    failure = HTTPReply{.status = 400};
    control().start();
    EXPECT_TRUE(waitUntil([&] { return status.text() == "Sync waits until 10:00"; }))
        << status.text().toStdString();
}

}  // namespace
}  // namespace tesserine::app

#include "SyncSettingsTest.moc"
