#include "app/state/SyncControl.h"

#include "app/state/SyncFixture.h"
#include "sync/SyncService.h"
#include "tests/fakeserver/SyncDevice.h"

namespace tesserine::app {
namespace {

using Phase = SyncState::Phase;

class SyncControlTest : public test::SyncFixture {
public:
    /// What the user is told from now on.
    const QString& failures() {
        QObject::connect(&control(), &SyncControl::failed, &control(), [this](const QString& text) {
            failures_ += text;
        });
        return failures_;
    }
    /// Nothing but what the test does makes it look at the service.
    void lookRarely() {
        AppSetting rare = environment->setting();
        rare.syncInterval = std::chrono::hours(1);
        open(rare);
    }
    /// The terminal program's way to the same account.
    std::unique_ptr<SyncService> terminal() {
        return std::make_unique<SyncService>(
            "https://notes.example.org",
            SyncService::Environment{
                .session = server, .secrets = keyring, .clock = realClock, .random = random});
    }

private:
    QString failures_;
};

TEST_F(SyncControlTest, NothingIsReachedWithoutAnAccount) {
    environment->startWork();
    ASSERT_TRUE(waitFor(Phase::signedOut));
    addNote("Kept to myself");
    control().takeCallback(callback);  // nobody asked for it
    control().syncNow();
    environment->waitForBackground();
    ASSERT_TRUE(waitFor(Phase::signedOut));
    EXPECT_EQ(requests, 0);
    EXPECT_EQ(control().state().account, std::nullopt);
}

TEST_F(SyncControlTest, ASignInByTheBrowserBringsBothSidesInStep) {
    test::SyncDevice other(server);
    other.addNote("From the other computer", "<p>x</p>");
    ASSERT_EQ(other.sync(), "");
    addNote("From here");

    signIn();
    EXPECT_FALSE(control().isSigningIn());
    EXPECT_EQ(control().state().account->email, "a@b.test");
    EXPECT_EQ(keyring.read("refresh-token").has_value(), true);
    EXPECT_TRUE(waitUntil([this] { return context().count<CDNote>() == 2; }));
    EXPECT_EQ(server.liveRecords("note").size(), 2U);

    const Uuid later = *other.addNote("Later", "<p>y</p>").id;
    ASSERT_EQ(other.sync(), "");
    EXPECT_TRUE(waitUntil([&] { return context().find<CDNote>(later) != nullptr; }));
}

TEST_F(SyncControlTest, NewsOfTheServiceBringsAChangeAtOnce) {
    lookRarely();
    live.isOpen = true;
    signIn();
    test::SyncDevice other(server);
    const Uuid note = *other.addNote("From the other computer", "<p>x</p>").id;
    ASSERT_EQ(other.sync(), "");
    live.tell(R"({"type":"changes","seq":1000})");
    EXPECT_TRUE(waitUntil([&] { return context().find<CDNote>(note) != nullptr; }));
}

TEST_F(SyncControlTest, AnOpenWayIsTakenAtOnceAndTheLiveChannelBegunAnew) {
    lookRarely();
    live.isOpen = true;
    signIn();
    ASSERT_TRUE(waitUntil([this] { return live.openings == 1; }));
    test::SyncDevice other(server);
    const Uuid note = *other.addNote("While this one slept", "<p>x</p>").id;
    ASSERT_EQ(other.sync(), "");
    control().reconnect();
    EXPECT_TRUE(waitUntil([&] { return context().find<CDNote>(note) != nullptr; }));
    EXPECT_TRUE(waitUntil([this] { return live.openings == 2; }));
}

TEST_F(SyncControlTest, WhatTheTerminalDoesToTheSharedSignInIsFollowed) {
    signIn();
    const auto other = terminal();
    other->account().signOut();
    realClock.advance(std::chrono::hours(2));  // the access token has run out
    ASSERT_TRUE(waitFor(Phase::signedOut));

    other->account().completeSignIn("code", "desk");
    EXPECT_TRUE(waitFor(Phase::idle));
    server.accountID = "another";
    other->account().completeSignIn("code", "desk");
    const std::size_t pushed = server.pushedCount();
    addNote("Not for everybody");
    realClock.advance(std::chrono::hours(2));
    EXPECT_TRUE(waitFor(Phase::asking)) << control().state().sentence;
    EXPECT_EQ(server.pushedCount(), pushed) << "or the other account has it";
}

TEST_F(SyncControlTest, AnotherAccountSignedInByTheTerminalIsAskedAboutAtTheFirstLook) {
    lookRarely();
    signIn();
    const auto other = terminal();
    other->account().signOut();
    realClock.advance(std::chrono::hours(2));  // the access token has run out
    control().syncNow();
    ASSERT_TRUE(waitFor(Phase::signedOut));

    server.accountID = "another";
    other->account().completeSignIn("code", "desk");
    control().syncNow();
    EXPECT_TRUE(waitFor(Phase::asking)) << control().state().sentence;
    EXPECT_EQ(control().state().question, SyncQuestion::Kind::anotherAccount);
}

TEST_F(SyncControlTest, AnOpenWayAnswersNoQuestionAndSignsNobodyIn) {
    environment->startWork();
    ASSERT_TRUE(waitFor(Phase::signedOut));
    control().reconnect();
    QThread::msleep(100);
    settle();
    EXPECT_EQ(requests, 0);
}

TEST_F(SyncControlTest, AnAbandonedSignInTakesNoCallback) {
    environment->startWork();
    ASSERT_TRUE(waitFor(Phase::signedOut));
    control().beginSignIn();
    control().cancelSignIn();
    control().takeCallback(callback);
    environment->waitForBackground();
    settle();
    EXPECT_EQ(requests, 0);
    EXPECT_EQ(keyring.read("refresh-token"), std::nullopt);
}

TEST_F(SyncControlTest, ASignInThatNobodyFinishesEndsByItself) {
    environment->startWork();
    const QString& heard = failures();
    control().beginSignIn();
    realClock.advance(std::chrono::minutes(9));
    QThread::msleep(1'100);  // longer than it takes to look again
    settle();
    EXPECT_TRUE(control().isSigningIn());

    realClock.advance(std::chrono::minutes(1));
    ASSERT_TRUE(waitUntil([this] { return !control().isSigningIn(); }));
    EXPECT_EQ(heard.toStdString(), "Nobody signed in within 10 minutes. Begin again.");
    control().takeCallback(callback);
    environment->waitForBackground();
    EXPECT_EQ(requests, 0);
}

TEST_F(SyncControlTest, ACallbackThatComesTooLateIsToldSoAtOnce) {
    environment->startWork();
    const QString& heard = failures();
    control().beginSignIn();
    control().takeCallback("tesserine://auth");  // says nothing: the sign-in goes on
    environment->waitForBackground();
    settle();
    EXPECT_TRUE(control().isSigningIn());
    EXPECT_EQ(heard, "");

    realClock.advance(std::chrono::minutes(11));
    control().takeCallback(callback);
    ASSERT_TRUE(waitUntil([this] { return !control().isSigningIn(); }));
    EXPECT_EQ(heard.toStdString(), "Nobody signed in within 10 minutes. Begin again.");
    EXPECT_EQ(requests, 0);
}

TEST_F(SyncControlTest, ASlowServiceIsNoForgottenSignIn) {
    environment->startWork();
    const QString& heard = failures();
    std::atomic<bool> mayAnswer = false;
    server.afterwards = [&mayAnswer](const HTTPRequest&, HTTPReply&) { mayAnswer.wait(false); };
    control().beginSignIn();
    control().takeCallback(callback);
    ASSERT_TRUE(waitUntil([this] { return requests == 1; }));
    realClock.advance(std::chrono::minutes(11));
    QThread::msleep(1'100);
    settle();
    EXPECT_TRUE(control().isSigningIn());
    mayAnswer = true;
    mayAnswer.notify_all();
    EXPECT_TRUE(waitFor(Phase::idle)) << control().state().sentence;
    EXPECT_EQ(heard, "");
}

TEST_F(SyncControlTest, WhatTheSignInPageSaysIsShown) {
    environment->startWork();
    const QString& heard = failures();
    control().beginSignIn();
    control().takeCallback("tesserine://auth?error=suspended");
    ASSERT_TRUE(waitUntil([this] { return !control().isSigningIn(); }));
    EXPECT_EQ(
        heard.toStdString(), "That account is not active. Get in touch and we will sort it out.");
}

TEST_F(SyncControlTest, ALockedKeyringKeepsTheSession) {
    signIn();
    AppSetting next = environment->setting();
    keyring.isLocked = true;
    open(next);
    environment->startWork();
    ASSERT_TRUE(waitFor(Phase::waiting));
    EXPECT_EQ(
        control().state().sentence,
        "Tesserine could not reach its secure storage on this device. Your session is still "
        "there; this should clear up on its own.");
    EXPECT_TRUE(control().state().until.has_value());

    keyring.isLocked = false;
    control().syncNow();
    EXPECT_TRUE(waitFor(Phase::idle));
    EXPECT_EQ(control().state().account->email, "a@b.test");
}

TEST_F(SyncControlTest, ASignOutForgetsTheAccountAndKeepsTheNotes) {
    addNote("Plan");
    signIn();
    control().signOut();
    ASSERT_TRUE(waitFor(Phase::signedOut));
    EXPECT_EQ(keyring.read("refresh-token"), std::nullopt);
    EXPECT_EQ(keyring.read("account"), std::nullopt);
    EXPECT_EQ(control().state().sentence, "");
    EXPECT_EQ(context().count<CDNote>(), 1U);

    const int before = requests;
    addNote("Afterwards");
    control().syncNow();
    settle();
    EXPECT_EQ(requests, before);
}

TEST_F(SyncControlTest, AnotherAccountIsAskedAboutBeforeAnythingIsSent) {
    addNote("Plan");
    signIn();
    control().signOut();
    ASSERT_TRUE(waitFor(Phase::signedOut));
    server.accountID = "another";
    const std::size_t pushed = server.pushedCount();
    control().beginSignIn();
    control().takeCallback(callback);
    ASSERT_TRUE(waitFor(Phase::asking));
    EXPECT_EQ(control().state().question, SyncQuestion::Kind::anotherAccount);
    EXPECT_EQ(server.pushedCount(), pushed);

    control().syncNow({.anotherAccount = true});
    EXPECT_TRUE(waitFor(Phase::idle)) << control().state().sentence;
}

TEST_F(SyncControlTest, AFailureThatTimeDoesNotMendIsNotRepeatedAtEveryTick) {
    signIn();
    control().stop();
    failure = HTTPReply{.status = 400};
    control().start();
    ASSERT_TRUE(waitFor(Phase::waiting));
    EXPECT_EQ(control().state().sentence, "The server returned an error (400).");
    const int asked = requests;
    addNote("More");
    QThread::msleep(200);  // four ticks
    settle();
    EXPECT_EQ(requests, asked);
}

TEST_F(SyncControlTest, APageOfTheNetworkInPlaceOfAnAnswerIsOutlived) {
    signIn();
    control().stop();
    failure = HTTPReply{.status = 200, .body = "<html>Welcome to the hotel</html>"};
    control().start();
    ASSERT_TRUE(waitFor(Phase::waiting));
    EXPECT_LE(*control().state().until, clock.now() + Instant::Duration(10));
    failure.reset();
    control().reconnect();
    EXPECT_TRUE(waitFor(Phase::idle)) << control().state().sentence;
}

TEST_F(SyncControlTest, AnotherServiceIsUsedAtOnceAndABadAddressNever) {
    AppSetting given = environment->setting();
    given.serviceURL.reset();
    open(given);
    environment->startWork();
    EXPECT_EQ(environment->session(), nullptr);
    EXPECT_EQ(control().state().phase, Phase::off);

    EXPECT_THROW(control().setAddress("http://notes.example.org"), SyncSetupError);
    EXPECT_EQ(environment->session(), nullptr);

    control().setAddress("https://notes.example.org");
    ASSERT_TRUE(waitFor(Phase::signedOut));
    EXPECT_EQ(environment->sync()->client().baseURL(), "https://notes.example.org/api/");
    SyncService* const before = environment->sync();
    control().setAddress(std::nullopt);
    EXPECT_EQ(control().state().phase, Phase::off);
    EXPECT_EQ(before->client().baseURL(), "https://notes.example.org/api/") << "still valid";
    EXPECT_EQ(requests, 0);
}

}  // namespace
}  // namespace tesserine::app
