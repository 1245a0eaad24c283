#include "app/account/SyncSettings.h"

#include "app/account/DevicesSection.h"
#include "app/account/SyncStatus.h"
#include "app/account/TokensSection.h"
#include "app/look/Theme.h"
#include "app/state/SyncFixture.h"
#include "app/testing/WidgetFaultsFixture.h"
#include "sync/SyncService.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QDialog>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QTest>
#include <QUrl>
#include <QVBoxLayout>

#include <filesystem>

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
            const std::string bytes = std::to_string(1'000 * ++storageQuestions);
            const std::string body = R"({"head":1,"records":1,"tombstones":0,"record_bytes":)"
                                     + bytes + R"(,"revision_bytes":24})";
            return reply(body.c_str());
        }
        if (path == "blobs") return reply(R"({"bytes":2000000,"quota_bytes":8000000})");
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
        if (path == "api-tokens" && isListBroken) return HTTPReply{.status = 400};
        if (path == "api-tokens/7") {
            if (!hasToken) return HTTPReply{.status = 404};
            hasToken = false;
            return HTTPReply{.status = 204};
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
    /// The files of the user's that hold these words.
    std::string filesWith(const std::string& words) {
        std::string names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path())) {
            if (!entry.is_regular_file()) continue;
            QFile file(QString::fromStdString(entry.path().string()));
            if (!file.open(QIODevice::ReadOnly)) names += "unreadable: ";
            if (file.readAll().contains(words.c_str())) names += entry.path().string() + "\n";
        }
        return names;
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

    std::atomic<int> storageQuestions = 0;
    std::atomic<bool> isPhoneSignedIn = true;
    std::atomic<bool> hasToken = false;
    std::atomic<bool> isListBroken = false;

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

TEST_F(SyncSettingsTest, ASignInThatIsNotFinishedSaysSoAndCanBeBegunAgain) {
    environment->startWork();
    ASSERT_TRUE(waitFor(Phase::signedOut));
    Browser browser;
    find("signIn").click();
    realClock.advance(std::chrono::minutes(11));
    EXPECT_TRUE(waitForText("Nobody signed in within 10 minutes. Begin again."));
    EXPECT_FALSE(find<QWidget>("signInPending").isVisible());
    find("signIn").click();
    EXPECT_TRUE(find<QWidget>("signInPending").isVisible());
    EXPECT_EQ(texts().find("10 minutes"), std::string::npos) << texts();
}

TEST_F(SyncSettingsTest, WhomTheTerminalSignedInIsShownWhenThePageIsOpened) {
    AppSetting rare = environment->setting();
    rare.syncInterval = std::chrono::hours(1);
    open(rare);
    environment->startWork();
    ASSERT_TRUE(waitFor(Phase::signedOut));
    SyncService terminal(
        "https://notes.example.org",
        {.session = server, .secrets = keyring, .clock = realClock, .random = random});
    terminal.account().completeSignIn("code", "desk");
    page();
    EXPECT_TRUE(waitForText("a@b.test")) << texts();
}

TEST_F(SyncSettingsTest, WithoutAKeyringNobodyIsSignedInAndNoFileHoldsAToken) {
    keyring.isLocked = true;
    environment->startWork();
    page();
    control().beginSignIn();
    control().takeCallback(callback);
    EXPECT_TRUE(waitForText("Tesserine could not reach its secure storage on this device."));
    EXPECT_TRUE(find("signIn").isVisible());
    environment->waitForBackground();
    EXPECT_EQ(filesWith("refresh"), "");

    keyring.isLocked = false;
    control().beginSignIn();
    control().takeCallback(callback);
    EXPECT_TRUE(waitFor(Phase::idle)) << control().state().sentence;
    EXPECT_NE(keyring.read("refresh-token").value_or("").find("refresh"), std::string::npos);
    EXPECT_EQ(filesWith("refresh"), "");
}

TEST_F(SyncSettingsTest, AnAddressOfThisRunIsExplainedAndNotChanged) {
    environment->startWork();
    EXPECT_FALSE(find<QLineEdit>("serviceAddress").isEnabled());
    EXPECT_EQ(find<QLineEdit>("serviceAddress").text(), "https://notes.example.org");
    EXPECT_FALSE(find("useService").isEnabled());
    EXPECT_NE(texts().find("TESSERINE_SERVICE_URL"), std::string::npos) << texts();
}

TEST_F(SyncSettingsTest, TheAccountShowsWhatItHoldsAndWhoIsSignedIn) {
    signIn();
    page();
    ASSERT_TRUE(waitForText("phone"));
    ASSERT_TRUE(waitForText("2.0 MB of 8.0 MB"));
    EXPECT_EQ(
        find<QWidget>("fileStorage").parentWidget()->findChildren<QProgressBar*>().back()->value(),
        250);
    for (const char* words : {"In step", "Last sync: Today 09:00", "Last used: Yesterday 08:00"}) {
        EXPECT_TRUE(waitForText(words)) << words << " in\n" << texts();
    }
    press("Sign Out: phone");
    EXPECT_TRUE(waitUntil([this] { return texts().find("phone") == std::string::npos; }));
    EXPECT_FALSE(isPhoneSignedIn);
}

TEST_F(SyncSettingsTest, NothingIsCutOrNamelessBeforeAndAfterASignIn) {
    const Theme theme(*qApp);
    for (const bool isSignedIn : {false, true}) {
        if (isSignedIn) signIn();
        hasToken = true;
        test::forReaders({1.0, 1.4}, [&](double) {
            closeWidgets();
            page();
            EXPECT_TRUE(!isSignedIn || waitForText("2.0 MB of 8.0 MB"));
            environment->waitForBackground();
            settle();
            EXPECT_EQ(test::layoutFaults(page()), "");
            EXPECT_EQ(test::namelessControls(page()), "");
        });
    }
}

TEST_F(SyncSettingsTest, TheStorageIsLookedAtAgainAfterASync) {
    signIn();
    page();
    ASSERT_TRUE(waitForText(" kB"));
    const int before = storageQuestions;
    clock.advance(std::chrono::minutes(1));
    control().syncNow();
    EXPECT_TRUE(waitUntil([&] { return storageQuestions > before; }));
}

TEST_F(SyncSettingsTest, WhatAnotherAccountHoldsTakesThePlaceOfTheFirstOnes) {
    signIn();
    page();
    ASSERT_TRUE(waitForText("phone"));
    isPhoneSignedIn = false;
    server.accountID = "another";
    control().beginSignIn();
    control().takeCallback(callback);
    ASSERT_TRUE(waitFor(Phase::asking));
    EXPECT_TRUE(waitUntil([this] { return texts().find("phone") == std::string::npos; }));
}

TEST_F(SyncSettingsTest, WhatTheServiceDoesNotAnswerIsSaidWhereItWasAsked) {
    signIn();
    page();
    ASSERT_TRUE(waitForText("phone"));
    control().stop();
    failure = HTTPReply{.status = 403, .body = R"({"error":{"message":"<b>Not</b> you."}})"};
    press("Sign Out: phone");
    EXPECT_TRUE(waitForText("<b>Not</b> you.")) << texts();
    EXPECT_NE(texts().find("phone"), std::string::npos) << "what was there stays";
    EXPECT_TRUE(isPhoneSignedIn);
}

TEST_F(SyncSettingsTest, WhatCouldNotBeAskedIsAskedAgainWhenTheServiceIsBack) {
    signIn();
    control().stop();
    failure = HTTPReply{.status = 400};
    control().start();
    ASSERT_TRUE(waitFor(Phase::waiting));
    page();
    ASSERT_TRUE(waitForText("The server returned an error (400)."));
    EXPECT_TRUE(waitUntil([this] { return texts().find("Asking") == std::string::npos; }))
        << "nobody is asking any more";
    environment->waitForBackground();

    failure.reset();
    clock.advance(std::chrono::minutes(1));
    control().syncNow();
    EXPECT_TRUE(waitForText("phone"));
    EXPECT_TRUE(waitForText("There is none."));
    EXPECT_EQ(texts().find("The server returned an error"), std::string::npos) << texts();
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
    press("Delete: Backup script");
    EXPECT_TRUE(waitForText("There is none."));
    EXPECT_FALSE(hasToken);
}

TEST_F(SyncSettingsTest, TheSecretOfATokenStaysWhileTheTokenDoes) {
    signIn();
    page();
    ASSERT_TRUE(waitForText("There is none."));
    isListBroken = true;
    find<QLineEdit>("tokenLabel").setText("Backup script");
    find("createToken").click();
    ASSERT_TRUE(waitForText("The server returned an error (400)."));
    EXPECT_EQ(find<QLineEdit>("tokenSecret").text(), "secret-1") << "the token exists";

    isListBroken = false;
    page().findChild<TokensSection*>()->refresh();
    ASSERT_TRUE(waitForText("Backup script"));
    EXPECT_TRUE(find<QLineEdit>("tokenSecret").isVisible());
    hasToken = false;  // deleted by somebody else
    press("Delete: Backup script");
    EXPECT_TRUE(waitForText("There is none.")) << texts();
    EXPECT_FALSE(find<QLineEdit>("tokenSecret").isVisible());
}

TEST_F(SyncSettingsTest, WhatFailsIsBroughtIntoView) {
    signIn();
    QScrollArea area;
    area.setWidgetResizable(true);
    area.setWidget(new SyncSettings(*environment));
    area.resize(640, 200);
    area.show();
    auto* const section = area.findChild<DevicesSection*>();
    ASSERT_TRUE(waitUntil([&] { return section->findChild<QPushButton*>() != nullptr; }));
    QApplication::setActiveWindow(&area);
    control().stop();
    failure = HTTPReply{.status = 403, .body = R"({"error":{"message":"Not you."}})"};
    auto* const button = section->findChild<QPushButton*>();
    button->setFocus();
    button->click();
    auto* const sentence = section->findChild<QLabel*>("failure");
    EXPECT_TRUE(waitUntil([&] { return !sentence->visibleRegion().isEmpty(); }));
}

TEST_F(SyncSettingsTest, WhatTheServiceRefusedIsNamedWithItsReason) {
    addNote("Enormous");
    server.afterwards = [](const HTTPRequest& request, HTTPReply& reply) {
        if (!request.url.ends_with("sync/push")) return;
        const std::size_t at = reply.body.find("\"applied\"");
        if (at == std::string::npos) return;
        reply.body.replace(at, 9, R"("refused","reason":"too_large","limit":1000,"measured":4000)");
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
