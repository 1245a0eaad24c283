#include "base/Digest.h"
#include "base/JSON.h"
#include "core/services/NotebookService.h"
#include "core/services/TagService.h"
#include "sync/WireCoding.h"
#include "tests/fakeserver/SyncFixture.h"

#include <gtest/gtest.h>

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

TEST_F(Sync, AKillAnywhereLosesAndRepeatsNothing) {
    for (const char* point : {"sync.recordApplied", "sync.pageSaved", "sync.pushAnswered"}) {
        SCOPED_TRACE(point);
        a.addNote(point, "<p>from a</p>");
        b.addNote(point, "<p>from b</p>");
        EXPECT_EQ(a.sync(), "");
        failpoint::arm(point, 1, [] { throw std::runtime_error("killed"); });
        EXPECT_EQ(b.sync(), "killed");
        b.restart();
        settle();
    }
    EXPECT_EQ(service.liveRecords("note").size(), 6U);
    EXPECT_EQ(service.storedCount(), 6U);
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

TEST_F(Sync, AFileThatComesInOnePageWithTheDeletionOfItsNoteIsDeletedEverywhere) {
    const Uuid id = sharedNote("<p>1</p>");
    SyncDevice late(service, 3);
    EXPECT_EQ(late.sync(), "");
    {
        StoreContext& context = a.context();
        const auto data = bytesOf("picture");
        a.attachments.insert(
            context,
            *context.find<CDNote>(id),
            {.filename = "a.bin", .data = Bytes(data.begin(), data.end())});
        a.save();
    }
    EXPECT_EQ(a.sync(), "");
    // The tombstone of a note, from a device that held no file of it yet.
    service.put({.id = id, .kind = "note", .deleted = true});
    for (SyncDevice* const device : {&late, &b}) {
        EXPECT_EQ(device->sync(), "");
        EXPECT_EQ(device->context().count<CDAttachment>(), 0U);
        EXPECT_TRUE(service.liveRecords("attachment").empty()) << "nobody told the server";
    }
    settle();
    EXPECT_EQ(a.dump(), late.dump());
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
    EXPECT_EQ(b.context().count<CDNote>(), 4U);
    EXPECT_EQ(b.sync(), "");
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

TEST_F(Sync, AServerThatStandsStillOrGoesBackDeletesNothing) {
    const Uuid id = sharedNote("<p>1</p>");
    a.write(id, "<p>2</p>");
    EXPECT_EQ(a.sync(), "");
    service.withRecords([](auto& records) { records.clear(); });
    EXPECT_EQ(b.sync(), "");
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

TEST_F(Sync, TombstonesForMuchOfTheLibraryAreAskedAbout) {
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
    EXPECT_EQ(b.sync({.manyDeletions = true}), "");
    EXPECT_EQ(b.context().count<CDNote>(), 0U);
}

TEST_F(Sync, AnotherAccountIsAskedAboutAndGetsEverythingAsNew) {
    sharedNote("<p>1</p>");
    service.accountID = "other";
    service.withRecords([](auto& records) { records.clear(); });
    a.signIn();
    EXPECT_EQ(a.sync(), "This library was synced with another account. Add its notes to this one?");
    EXPECT_EQ(a.sync({.anotherAccount = true}), "");
    EXPECT_EQ(service.liveRecords("note").size(), 1U);
}

TEST_F(Sync, WrongBytesAreThrownAwayAndFetchedAgain) {
    const Uuid id = Uuid::random(a.random);
    const std::string digest = sha256Hex(bytesOf("right"));
    service.blobs[digest] = "wrong";
    service.put(
        {.id = id,
         .kind = "attachment",
         .payload = {{"filename", "a.bin"}, {"sha256", digest}, {"byte_count", 5}}});
    EXPECT_EQ(a.sync(), "");
    EXPECT_EQ(a.summary.filesFailed, 1U);
    EXPECT_FALSE(a.context().find<CDAttachment>(id)->fileData);
    service.blobs[digest] = "right";
    EXPECT_EQ(a.sync(), "");
    EXPECT_TRUE(static_cast<bool>(a.context().find<CDAttachment>(id)->integrityVerified));
}

TEST_F(Sync, AFileIsDeletedOnTheServerWithItsLastRecord) {
    const auto attach = [&](const Uuid& note) {
        const auto data = bytesOf("same picture");
        StoreContext& context = a.context();
        a.attachments.insert(
            context,
            *context.find<CDNote>(note),
            {.filename = "a.bin", .data = Bytes(data.begin(), data.end())});
        a.save();
    };
    const auto remove = [](SyncDevice& device, const Uuid& note) {
        StoreContext& context = device.context();
        device.notes.deleteNote(context, *context.find<CDNote>(note));
        device.save();
    };
    const Uuid first = *a.addNote("One", "<p>1</p>").id;
    const Uuid second = *a.addNote("Two", "<p>2</p>").id;
    attach(first);
    attach(second);
    settle();
    EXPECT_EQ(service.blobs.size(), 1U);
    remove(b, first);
    settle();
    EXPECT_EQ(service.blobs.size(), 1U) << "the other note still has it";
    remove(b, second);
    service.instead = [](const HTTPRequest& request) -> std::optional<HTTPReply> {
        if (request.method != "DELETE") return std::nullopt;
        return HTTPReply{.status = 503};
    };
    EXPECT_EQ(b.sync(), "");
    EXPECT_EQ(service.blobs.size(), 1U);
    service.instead = nullptr;
    EXPECT_EQ(b.sync(), "");
    EXPECT_TRUE(service.blobs.empty());
}

TEST_F(Sync, ARevokedTokenIsRefreshedOnceAndARefusedRefreshEndsTheSession) {
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
