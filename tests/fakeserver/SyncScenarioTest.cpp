#include "base/Digest.h"
#include "base/JSON.h"
#include "core/model/BookkeepingEntities.h"
#include "core/services/NotebookService.h"
#include "core/services/TagService.h"
#include "sync/SyncSchedule.h"
#include "sync/WireCoding.h"
#include "tests/fakeserver/SyncFixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <thread>

namespace tesserine::test {
namespace {

TEST_F(Sync, EverythingArrivesWithItsReferencesWhateverTheOrder) {
    {
        StoreContext& context = a.context();
        NotebookService notebooks(a.clock);
        CDNotebook* const plans = notebooks.findOrCreatePath(context, {"Work", "Plans"});
        CDTag* const tag = TagService(a.clock).findOrCreate(context, "urgent");
        CDNote& note = a.notes.createNote(
            context, {.title = "Plan", .html = "<p>Text</p>", .notebook = plans, .tags = {tag}});
        auto& task = context.insert<CDTask>();
        task.title = "Call";
        task.linkedNote = &note;
        task.labels.add(*tag);
        auto& subtask = context.insert<CDTask>();
        subtask.title = "Dial";
        subtask.parent = &task;
        context.insert<CDTaskTemplate>().name = "Weekly";
        context.insert<CDSavedSearch>().query = "tag:urgent";
        a.save();
    }
    EXPECT_EQ(a.sync(), "");
    // Pages of one record, in the worst order: notes and tasks before what they refer to.
    service.withRecords([](auto& records) {
        std::int64_t seq = 100;
        for (const char* kind : {"task", "note", "tag", "notebook", "savedSearch", "setting"}) {
            for (auto& [id, record] : records) {
                if (record.kind == kind) record.seq = ++seq;
            }
        }
    });
    settle();
    CDNote* const note = b.context().fetchFirst<CDNote>({});
    ASSERT_NE(note, nullptr);
    ASSERT_NE(note->notebook.get(), nullptr);
    EXPECT_EQ(note->notebook->parent->name, "Work");
    EXPECT_EQ(note->tags.count(), 1U);
    EXPECT_EQ(note->tasks.all().at(0)->subtasks.count(), 1U);
    EXPECT_EQ(note->plainText, "Text");
}

TEST_F(Sync, ALostAnswerToAPushMakesOneChangeAndNoConflict) {
    const Uuid id = *a.addNote("One", "<p>1</p>").id;
    bool isLost = false;
    service.afterwards = [&](const HTTPRequest& request, HTTPReply&) {
        if (isLost || !request.url.ends_with("/push")) return;
        isLost = true;
        throw HTTPError(HTTPError::Kind::unreachable, "lost");
    };
    EXPECT_NE(a.sync(), "");
    settle();
    EXPECT_EQ(service.storedCount(), 1U);
    EXPECT_FALSE(a.note(id)->hasConflict);
    EXPECT_EQ(a.note(id)->revisions.count(), 0U);
}

TEST_F(Sync, MissingDoubledAndUnknownResultsHarmNobody) {
    for (int i = 0; i < 20; ++i) {
        a.addNote("Note " + std::to_string(i), "<p>x</p>");
    }
    int pushes = 0;
    service.afterwards = [&](const HTTPRequest& request, HTTPReply& reply) {
        if (!request.url.ends_with("/push") || ++pushes > 1) return;
        auto body = json::parse(reply.body);
        auto& results = body.at("results").as_array();
        results.erase(results.begin());
        results.push_back(results.at(3));
        std::swap(results.at(0), results.at(9));
        results.push_back({{"id", "00000000-0000-4000-8000-000000000000"}, {"status", "applied"}});
        results.at(5).as_object()["status"] = "refused";
        results.at(5).as_object()["reason"] = "too_large";
        reply.body = json::write(body);
    };
    EXPECT_EQ(a.sync(), "");
    EXPECT_EQ(a.summary.refused, 1U);
    EXPECT_LE(pushes, 3);
    EXPECT_EQ(service.liveRecords("note").size(), 20U);
    const int before = pushes;
    EXPECT_EQ(a.sync(), "");
    EXPECT_EQ(pushes, before) << "a refused record is sent again unchanged";
}

TEST_F(Sync, AnEditDuringThePushStaysMarked) {
    const Uuid id = sharedNote("<p>1</p>");
    a.write(id, "<p>2</p>");
    bool isDone = false;
    service.afterwards = [&](const HTTPRequest& request, HTTPReply&) {
        if (isDone || !request.url.ends_with("/push")) return;
        isDone = true;
        a.write(id, "<p>3</p>");
    };
    settle();
    EXPECT_EQ(b.note(id)->html, "<p>3</p>");
}

TEST_F(Sync, AKillAtAnyRecordPageOrAnswerLosesAndRepeatsNothing) {
    service.pageLimit = 3;
    for (const char* point : {"sync.recordApplied", "sync.pageSaved", "sync.pushAnswered"}) {
        bool isReached = true;
        for (int nth = 1; isReached; ++nth) {
            SCOPED_TRACE(std::string(point) + " " + std::to_string(nth));
            for (int i = 0; i < 4; ++i) {
                a.addNote("From a", "<p>a</p>");
                b.addNote("From b", "<p>b</p>");
            }
            EXPECT_EQ(a.sync(), "");
            failpoint::arm(point, nth, [] { throw std::runtime_error("killed"); });
            const std::string outcome = b.sync();
            failpoint::disarmAll();
            isReached = outcome == "killed";
            EXPECT_EQ(outcome, isReached ? "killed" : "");
            b.restart();
            settle();
        }
    }
    EXPECT_EQ(service.storedCount(), service.liveRecords("note").size());
    EXPECT_EQ(a.context().count<CDNoteRevision>() + b.context().count<CDNoteRevision>(), 0U);
}

TEST_F(Sync, ChangesOfDifferentPartsAreJoined) {
    const Uuid id = sharedNote("<p>one</p><p>two</p><p>three</p>");
    a.write(id, "<p>ONE</p><p>two</p><p>three</p>");
    b.write(id, "<p>one</p><p>two</p><p>three</p><p>four</p>");
    b.notes.togglePin(*b.note(id));
    b.save();
    settle();
    EXPECT_EQ(a.note(id)->html, "<p>ONE</p><p>two</p><p>three</p><p>four</p>");
    EXPECT_TRUE(static_cast<bool>(a.note(id)->isPinned));
    EXPECT_FALSE(a.note(id)->hasConflict);
}

TEST_F(Sync, OfTwoTextsForOnePlaceBothAreKeptWhateverTheClocks) {
    for (const auto policy :
         {FakeSyncServer::Stale::superseded, FakeSyncServer::Stale::laterWins}) {
        for (const double skew : {0.0, 366.0 * 86'400, -56.0 * 366 * 86'400}) {
            SCOPED_TRACE(skew);
            service.stale = policy;
            const Uuid id = sharedNote("<p>base</p>");
            a.write(id, "<p>mine</p>");
            b.clock.advance(Instant::Duration(skew));
            b.write(id, "<p>yours</p>");
            settle();
            const std::string all = a.allBodies() + b.allBodies();
            EXPECT_NE(all.find("<p>mine</p>"), std::string::npos) << all;
            EXPECT_NE(all.find("<p>yours</p>"), std::string::npos) << all;
            EXPECT_TRUE(a.note(id)->hasConflict || b.note(id)->hasConflict);
            b.clock.advance(Instant::Duration(-skew));
        }
    }
}

TEST_F(Sync, AnEditBeatsADeletionAndBringsItsFilesBack) {
    for (const bool deleterIsFirst : {true, false}) {
        SCOPED_TRACE(deleterIsFirst);
        Uuid file;
        const Uuid id = *a.addNote("Kept", "<p>1</p>").id;
        {
            StoreContext& context = a.context();
            const auto data = bytesOf("picture");
            file = *a.attachments
                        .insert(
                            context,
                            *context.find<CDNote>(id),
                            {.filename = "a.bin",
                             .declaredType = "application/octet-stream",
                             .data = Bytes(data.begin(), data.end()),
                             .sourceKind = "file"})
                        .id;
            a.save();
        }
        settle();
        EXPECT_TRUE(static_cast<bool>(b.context().find<CDAttachment>(file)->fileData));

        StoreContext& context = a.context();
        a.notes.deleteNote(context, *context.find<CDNote>(id));
        a.save();
        b.write(id, "<p>2</p>");
        if (deleterIsFirst) {
            EXPECT_EQ(a.sync(), "");
        } else {
            EXPECT_EQ(b.sync(), "");
        }
        settle();
        ASSERT_NE(a.note(id), nullptr);
        EXPECT_EQ(a.note(id)->html, "<p>2</p>");
        ASSERT_NE(a.context().find<CDAttachment>(file), nullptr);
        EXPECT_TRUE(static_cast<bool>(a.context().find<CDAttachment>(file)->fileData));
    }
}

TEST_F(Sync, WhatNobodyEditedStaysDeleted) {
    const Uuid id = sharedNote("<p>1</p>");
    for (SyncDevice* device : {&a, &b}) {
        StoreContext& context = device->context();
        device->notes.deleteNote(context, *context.find<CDNote>(id));
        device->save();
    }
    settle();
    EXPECT_EQ(a.note(id), nullptr);
    EXPECT_TRUE(service.liveRecords("note").empty());
}

/// As an undone deletion does.
TEST_F(Sync, WhatComesBackUnderItsOwnIdentifierIsThereAgainEverywhere) {
    enum class Deletion { unsent, sent, seen };
    for (const auto deletion : {Deletion::unsent, Deletion::sent, Deletion::seen}) {
        SCOPED_TRACE(static_cast<int>(deletion));
        const auto insert = [this](const std::optional<Uuid>& id) {
            auto& task = a.context().insert<CDTask>();
            if (id) task.id = *id;
            task.title = "Call Ada";
            task.createdAt = a.clock.now();
            task.updatedAt = a.clock.now();
            a.save();
            return *task.id;
        };
        const Uuid id = insert({});
        settle();
        a.clock.advance(std::chrono::seconds(1));
        a.context().remove(*a.context().find<CDTask>(id));
        a.save();
        if (deletion != Deletion::unsent) {
            EXPECT_EQ(a.sync(), "");
        }
        if (deletion == Deletion::seen) {
            EXPECT_EQ(b.sync(), "");
        }
        a.clock.advance(std::chrono::seconds(1));
        insert(id);
        settle();
        for (SyncDevice* device : {&a, &b}) {
            ASSERT_NE(device->context().find<CDTask>(id), nullptr);
            EXPECT_EQ(device->context().find<CDTask>(id)->title, "Call Ada");
        }
    }
}

TEST_F(Sync, TagsOfOneNameBecomeOneAndCyclesAreBroken) {
    for (SyncDevice* device : {&a, &b}) {
        StoreContext& context = device->context();
        CDTag* const tag =
            TagService(device->clock).findOrCreate(context, device == &a ? "Work" : "work");
        device->notes.createNote(context, {.title = "N", .html = "<p>x</p>", .tags = {tag}});
        device->save();
        device->clock.advance(std::chrono::seconds(5));
    }
    NotebookService notebooks(a.clock);
    const Uuid x = *notebooks.findOrCreatePath(a.context(), {"X"})->id;
    a.save();
    const Uuid y = *notebooks.findOrCreatePath(a.context(), {"Y"})->id;
    a.save();
    settle();
    EXPECT_EQ(a.context().count<CDTag>(), 1U);
    EXPECT_EQ(a.context().fetchFirst<CDTag>({})->notes.count(), 2U);

    const auto put = [](SyncDevice& device, const Uuid& child, const Uuid& parent) {
        StoreContext& context = device.context();
        context.find<CDNotebook>(child)->parent = context.find<CDNotebook>(parent);
        device.save();
    };
    put(a, x, y);
    put(b, y, x);
    settle();
    StoreContext& context = a.context();
    const bool xIsTop = context.find<CDNotebook>(x)->parent.get() == nullptr;
    const bool yIsTop = context.find<CDNotebook>(y)->parent.get() == nullptr;
    EXPECT_NE(xIsTop, yIsTop);
}

TEST_F(Sync, APoisonedRecordDoesNotKeepTheOthersBack) {
    for (int i = 0; i < 5; ++i) {
        a.addNote("Note", "<p>x</p>");
    }
    EXPECT_EQ(a.sync(), "");
    service.afterwards = [](const HTTPRequest& request, HTTPReply& reply) {
        if (request.url.find("/changes") == std::string::npos) return;
        auto body = json::parse(reply.body);
        for (auto& record : body.at("changes").as_array()) {
            if (record.at("seq").as_int64() == 3) record.as_object()["updated_at"] = "never";
        }
        reply.body = json::write(body);
    };
    EXPECT_EQ(b.sync(), "");
    EXPECT_EQ(b.summary.unreadable, 1U);
    EXPECT_EQ(b.context().count<CDNote>(), 4U);
    EXPECT_EQ(b.sync(), "");
    EXPECT_EQ(b.summary.unreadable, 0U);
}

TEST_F(Sync, WhateverIsAnsweredNothingIsLostAndTheNextSyncGoesOn) {
    const std::string sentence = "The server sent something Tesserine could not read (";
    struct Case {
        HTTPReply reply;
        std::string outcome;
    };
    const std::string html = "<html>Please sign in to this network</html>";
    for (const auto& [reply, outcome] : {
             Case{{.status = 200, .body = html}, sentence + "not the expected JSON)."},
             Case{
                 {.status = 200, .body = R"({"changes":[{"id)"},
                 sentence + "not the expected JSON)."},
             Case{{.status = 200, .body = "{}"}, sentence + "the key “head” is missing)."},
             Case{
                 {.status = 302, .headers = {{"Location", "https://portal.example/"}}},
                 sentence + "redirected)."},
             Case{{.status = 404}, "The server returned an error (404)."},
             Case{{.status = 404, .body = R"({"detail":"Moved away."})"}, "Moved away."},
             Case{{.status = 502}, "The server returned an error (502)."},
             Case{
                 {.status = 507},
                 "Your Tesserine attachment storage is full. Delete some attachments in Settings > "
                 "Storage, then try again. Nothing already uploaded is lost."},
         }) {
        SCOPED_TRACE(outcome);
        a.addNote("From a", "<p>a</p>");
        EXPECT_EQ(a.sync(), "");
        b.addNote("From b", "<p>b</p>");
        service.instead = [&reply = reply](const HTTPRequest& request) -> std::optional<HTTPReply> {
            const bool isSync = request.url.find("/sync/") != std::string::npos;
            return isSync ? std::optional(reply) : std::nullopt;
        };
        EXPECT_EQ(b.sync(), outcome);
        service.instead = nullptr;
        settle();
        EXPECT_EQ(b.context().count<CDNote>(), service.liveRecords("note").size());
    }
}

TEST_F(Sync, AServiceThatNeverGetsOnIsNotAskedForEver) {
    a.addNote("From a", "<p>a</p>");
    settle();
    for (const bool goesBack : {false, true}) {
        SCOPED_TRACE(goesBack);
        int asked = 0;
        service.afterwards = [&](const HTTPRequest& request, HTTPReply& reply) {
            if (request.url.find("/sync/changes") == std::string::npos) return;
            ++asked;
            boost::json::value page = json::parse(reply.body);
            page.as_object()["more"] = true;
            if (goesBack) page.as_object()["seq"] = 0;
            reply.body = json::write(page);
        };
        EXPECT_EQ(b.sync(), "The server sent something Tesserine could not read (no progress).");
        EXPECT_EQ(asked, 1);
        service.afterwards = nullptr;
        a.addNote("More", "<p>a</p>");
        settle();
        EXPECT_EQ(b.context().count<CDNote>(), a.context().count<CDNote>());
    }
}

TEST_F(Sync, ChangesComeByPollingHoweverTheLiveChannelBehaves) {
    using Kind = LiveNews::Kind;
    const LiveNews newest{.kind = Kind::changes, .seq = 1'000};
    const LiveNews old{.kind = Kind::changes, .seq = 0};
    SyncSchedule schedule(b.clock);
    EXPECT_EQ(b.sync(), "");
    schedule.succeeded(1);
    for (const auto& news : {
             std::vector<LiveNews>{},  // it never opens
             std::vector<LiveNews>{{.kind = Kind::closed}},
             std::vector<LiveNews>{old, newest, old},
             std::vector<LiveNews>(1'000, newest),
             std::vector<LiveNews>(1'000, {.kind = Kind::unknown}),
         }) {
        SCOPED_TRACE(news.size());
        a.addNote("From a", "<p>a</p>");
        EXPECT_EQ(a.sync(), "");
        for (const LiveNews& one : news) {
            schedule.hear(one, 0);
        }
        int syncs = 0;
        for (auto waited = std::chrono::seconds(0); waited < SyncSchedule::interval;
             waited += std::chrono::seconds(1)) {
            b.clock.advance(std::chrono::seconds(1));
            if (!schedule.isDue(1)) continue;
            EXPECT_EQ(b.sync(), "");
            schedule.succeeded(1);
            ++syncs;
        }
        EXPECT_EQ(syncs, 1) << "one pull for all that was told";
        EXPECT_EQ(b.context().count<CDNote>(), service.liveRecords("note").size());
    }
}

TEST_F(Sync, UnknownKindsAreKeptAndHostileBodiesAreCleaned) {
    service.put({.id = Uuid::random(a.random), .kind = "drawing", .payload = {{"a", 1}}});
    service.put(
        {.id = Uuid::random(a.random),
         .kind = "setting",
         .payload = {{"key", "theme"}, {"name", "dark"}}});
    const Uuid id = Uuid::random(a.random);
    service.put(
        {.id = id,
         .kind = "note",
         .payload = {
             {"title", 5},
             {"html", "<p onclick=\"x()\">a<script>alert(1)</script></p>"},
             {"tag_ids", JSONValue::Array{"nonsense"}},
             {"notebook_id", "11111111-1111-4111-8111-111111111111"},
             {"newer_key", "kept"}}});
    EXPECT_EQ(a.sync(), "");
    EXPECT_EQ(a.note(id)->html, "<p>a</p>");
    EXPECT_EQ(a.context().count<CDTaskTemplate>(), 0U);
    EXPECT_EQ(service.pushedCount(), 0U) << "cleaning is no edit";

    a.write(id, "<p>b</p>");
    EXPECT_EQ(a.sync(), "");
    const JSONObject sent = service.records().at(id).payload;
    EXPECT_EQ(sent.at("newer_key"), JSONValue("kept"));
    EXPECT_EQ(sent.at("notebook_id"), JSONValue("11111111-1111-4111-8111-111111111111"));
}

TEST_F(Sync, TwoProgramsEnterNothingTwiceIntoOneLibrary) {
    b.addNote("One", "<p>1</p>");
    b.addNote("Two", "<p>2</p>");
    EXPECT_EQ(b.sync(), "");
    SyncDevice window(service, 3);

    TesserineStore store({.directory = window.library()}, {.clock = a.clock, .random = a.random});
    SyncClient client(
        "https://service.test", {.session = service, .clock = a.clock, .random = a.random});
    InMemorySecrets secrets;
    AccountSession session({.client = client, .secrets = secrets, .clock = a.clock});
    client.setTokenSource(
        [&](const std::stop_token& stop) { return session.validAccessToken(stop); });
    session.completeSignIn("code", "Terminal");
    SyncEngine terminal(
        {.store = store,
         .session = session,
         .client = client,
         .clock = a.clock,
         .random = a.random});
    std::jthread other;
    failpoint::arm("sync.recordApplied", 1, [&] {
        other = std::jthread([&terminal] { terminal.synchronise(); });
        std::this_thread::sleep_for(std::chrono::milliseconds(700));
    });
    EXPECT_EQ(window.sync(), "");
    if (other.joinable()) other.join();

    std::set<Uuid> records;
    const auto states = window.context().fetch<CDSyncState>();
    for (const CDSyncState* state : states) {
        records.insert(*state->recordID);
    }
    EXPECT_EQ(states.size(), records.size());
    EXPECT_EQ(window.context().count<CDNote>(), 2U);
}

}  // namespace
}  // namespace tesserine::test
