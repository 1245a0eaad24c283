#include "app/account/SyncStatus.h"
#include "app/shell/ShellFixture.h"
#include "app/state/SyncControl.h"
#include "base/OperationCancelled.h"
#include "tests/fakeserver/SyncDevice.h"

namespace tesserine::app {
namespace {

/// A window that is signed in, and another computer of the same account.
class SyncJourney : public test::ShellFixture {
public:
    SyncJourney() {
        AppSetting given = setting();
        given.serviceURL = "https://notes.example.org";
        given.network = &server;
        given.socket = [](const auto&, const auto&, const auto&) {
            throw WebSocketError(WebSocketError::Kind::unreachable, "no live news");
        };
        given.syncInterval = std::chrono::milliseconds(100);
        open(given);
    }
    void TearDown() override {
        ShellFixture::TearDown();
        environment.reset();  // uses the server until its end
    }

    void signIn() {
        window();
        environment->syncControl().beginSignIn();
        environment->syncControl().takeCallback("tesserine://auth?code=abc");
        ASSERT_TRUE(waitUntil(
            [this] { return environment->syncControl().state().phase == SyncState::Phase::idle; }));
    }
    std::string openText() { return editor().body().toPlainText().toStdString(); }

    test::FakeSyncServer server;
};

TEST_F(SyncJourney, WhatIsWrittenHereAndThereMeetsInTheOpenNote) {
    const Uuid plan = *addNote("Plan", "<p>one</p><p>two</p>").id;
    signIn();
    test::SyncDevice other(server);
    ASSERT_EQ(other.sync(), "");
    ASSERT_NE(other.note(plan), nullptr);

    window().go({.kind = Place::Kind::note, .id = plan});
    other.write(plan, "<p>one</p><p>two</p><p>from there</p>");
    ASSERT_EQ(other.sync(), "");
    EXPECT_TRUE(waitUntil([this] { return openText().find("from there") != std::string::npos; }))
        << openText();

    editor().body().setFocus();
    press(Qt::Key_Home, Qt::ControlModifier);
    type("From here: ");
    ASSERT_TRUE(window().save());
    EXPECT_TRUE(waitUntil([&] {
        return other.sync().empty()
               && other.note(plan)->html.valueOr("").find("From here: one") != std::string::npos;
    })) << other.note(plan)->html.valueOr("");
}

TEST_F(SyncJourney, ANoteThatIsDeletedElsewhereLeavesTheList) {
    const Uuid gone = *addNote("Gone").id;
    addNote("Kept");
    signIn();
    test::SyncDevice other(server);
    ASSERT_EQ(other.sync(), "");
    window().go({.kind = Place::Kind::allNotes});
    ASSERT_TRUE(waitUntil([this] { return titles().find("Gone") != std::string::npos; }));
    other.notes.moveToTrash(*other.note(gone));
    other.save();
    ASSERT_EQ(other.sync(), "");
    EXPECT_TRUE(waitUntil([this] { return titles() == "Kept;"; })) << titles();
}

}  // namespace
}  // namespace tesserine::app
