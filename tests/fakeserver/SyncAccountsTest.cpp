#include "base/JSON.h"
#include "core/services/NotebookService.h"
#include "tests/fakeserver/SyncFixture.h"

namespace tesserine::test {
namespace {

class SyncAccounts : public Sync {
protected:
    static std::size_t backups(const SyncDevice& device) {
        const auto folder = device.library() / "Backups";
        if (!std::filesystem::exists(folder)) return 0;
        const std::filesystem::directory_iterator all(folder);
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }
    /// Whether the service holds a body that says `text`.
    bool holds(const std::string& text) const {
        for (const SyncRecord& record : service.liveRecords("note")) {
            if (record.payload.at("html") == JSONValue(text)) return true;
        }
        return false;
    }
};

TEST_F(SyncAccounts, UnsentChangesNeverGoToAnotherAccountUnasked) {
    const Uuid shared = sharedNote("<p>1</p>");
    a.write(shared, "<p>unsent edit</p>");
    a.addNote("New", "<p>unsent note</p>");
    const auto first = service.records();
    service.accountID = "other";
    service.withRecords([](auto& records) { records.clear(); });
    a.signIn();
    const std::size_t pushed = service.pushedCount();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(
            a.sync(), "This library was synced with another account. Add its notes to this one?");
    }
    EXPECT_EQ(service.pushedCount(), pushed);
    EXPECT_EQ(backups(a), 0U);

    // Back at the first account they are sent, as edits of what was there.
    service.accountID = "account";
    service.withRecords([&](auto& records) { records = first; });
    a.signIn();
    settle();
    EXPECT_TRUE(holds("<p>unsent edit</p>"));
    EXPECT_TRUE(holds("<p>unsent note</p>"));
    EXPECT_EQ(service.liveRecords("note").size(), 2U);
    EXPECT_FALSE(a.note(shared)->hasConflict);
}

TEST_F(SyncAccounts, AnotherAccountIsAskedAboutAndGetsEverythingAsNew) {
    sharedNote("<p>1</p>");
    service.accountID = "other";
    service.withRecords([](auto& records) { records.clear(); });
    a.signIn();
    EXPECT_EQ(a.sync(), "This library was synced with another account. Add its notes to this one?");
    EXPECT_EQ(a.sync({.anotherAccount = true}), "");
    EXPECT_EQ(service.liveRecords("note").size(), 1U);
    EXPECT_EQ(backups(a), 1U);
}

TEST_F(SyncAccounts, NotebooksMadeOnBothSidesBeforeTheFirstSyncBecomeOne) {
    const auto fill = [](SyncDevice& device, const std::vector<std::string>& path) {
        StoreContext& context = device.context();
        CDNotebook* const book = NotebookService(device.clock).findOrCreatePath(context, path);
        device.notes.createNote(context, {.html = "<p>x</p>", .notebook = book});
        device.save();
        device.clock.advance(std::chrono::seconds(5));
    };
    b.clock.advance(std::chrono::seconds(2));
    fill(a, {"Work", "Plans"});
    fill(a, {"Home"});
    fill(b, {"work", "plans", "Old"});
    fill(b, {"Travel"});
    settle();
    EXPECT_EQ(b.context().count<CDNotebook>(), 5U);
    CDNotebook* const old =
        b.context().fetchFirst<CDNotebook>({.predicate = {"name == %@", "Old"}});
    ASSERT_NE(old, nullptr);
    EXPECT_EQ(old->parent->name, "Plans");
    EXPECT_EQ(old->parent->parent->name, "Work");

    // Later ones stay apart: somebody may want two.
    fill(a, {"Later"});
    fill(b, {"Later"});
    settle();
    EXPECT_EQ(a.context().count<CDNotebook>(), 7U);
}

TEST_F(SyncAccounts, AServerThatStandsStillOrGoesBackDeletesNothing) {
    const Uuid id = sharedNote("<p>1</p>");
    a.write(id, "<p>2</p>");
    EXPECT_EQ(a.sync(), "");
    service.withRecords([](auto& records) { records.clear(); });
    EXPECT_EQ(b.sync(), "");
    EXPECT_EQ(backups(b), 1U);
    settle();
    EXPECT_EQ(service.liveRecords("note").size(), 1U);
    EXPECT_NE((a.allBodies() + b.allBodies()).find("<p>2</p>"), std::string::npos);

    service.instead = [](const HTTPRequest& request) -> std::optional<HTTPReply> {
        if (request.url.find("/changes") == std::string::npos) return std::nullopt;
        return HTTPReply{
            .status = 200, .body = R"({"changes":[],"seq":900,"head":999,"more":true})"};
    };
    EXPECT_NE(b.sync().find("no progress"), std::string::npos);
}

TEST_F(SyncAccounts, AServerPutBackToLastWeekGetsWhatItLost) {
    const Uuid edited = sharedNote("<p>1</p>");
    const Uuid deleted = sharedNote("<p>gone</p>");
    const auto lastWeek = service.records();
    a.write(edited, "<p>2</p>");
    const Uuid made = sharedNote("<p>made since</p>");
    {
        StoreContext& context = a.context();
        a.notes.deleteNote(context, *context.find<CDNote>(deleted));
        a.save();
    }
    settle();
    b.clock.advance(std::chrono::minutes(1));
    b.write(made, "<p>not sent yet</p>");
    service.withRecords([&](auto& records) { records = lastWeek; });
    settle();
    for (SyncDevice* const device : {&a, &b}) {
        EXPECT_EQ(device->note(edited)->html, "<p>2</p>");
        EXPECT_EQ(device->note(made)->html, "<p>not sent yet</p>");
    }
    EXPECT_TRUE(holds("<p>2</p>"));
    EXPECT_TRUE(holds("<p>not sent yet</p>"));
}

TEST_F(SyncAccounts, TombstonesForMuchOfTheLibraryAreAskedAbout) {
    for (int i = 0; i < 30; ++i) {
        a.addNote("Note", "<p>x</p>");
    }
    settle();
    for (const SyncRecord& record : service.liveRecords("note")) {
        service.put({.id = record.id, .kind = "note", .deleted = true});
    }
    EXPECT_EQ(
        b.sync(),
        "Another device deleted 30 of the 30 notes and tasks in this library. Delete them here as "
        "well?");
    EXPECT_EQ(b.context().count<CDNote>(), 30U);
    EXPECT_EQ(backups(b), 0U);
    EXPECT_EQ(b.sync({.manyDeletions = true}), "");
    EXPECT_EQ(backups(b), 1U) << "a way back";
    EXPECT_EQ(b.context().count<CDNote>(), 0U);
}

TEST_F(SyncAccounts, ARevokedTokenIsRefreshedOnceAndARefusedRefreshEndsTheSession) {
    a.addNote("Note", "<p>x</p>");
    int refusals = 0;
    service.instead = [&](const HTTPRequest& request) -> std::optional<HTTPReply> {
        const bool isSync = request.url.find("/sync/") != std::string::npos;
        if (!isSync || refusals++ > 0) return std::nullopt;
        return HTTPReply{.status = 401};
    };
    EXPECT_EQ(a.sync(), "");
    service.instead = [](const HTTPRequest&) { return HTTPReply{.status = 401}; };
    EXPECT_EQ(a.sync(), "Your Tesserine session has ended. Sign in again to keep syncing.");
    EXPECT_EQ(service.liveRecords("note").size(), 1U);
}

}  // namespace
}  // namespace tesserine::test
