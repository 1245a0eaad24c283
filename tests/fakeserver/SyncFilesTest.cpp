#include "base/Digest.h"
#include "sync/MissingFiles.h"
#include "sync/SyncLedger.h"
#include "tests/fakeserver/SyncFixture.h"

#include <string>
#include <vector>

namespace tesserine::test {
namespace {

class SyncFiles : public Sync {
protected:
    /// Attaches a file to a note on one device, and saves.
    static Uuid attach(SyncDevice& device, const Uuid& note, const std::string& content) {
        StoreContext& context = device.context();
        const auto bytes = bytesOf(content);
        const Uuid id = *device.attachments
                             .insert(
                                 context,
                                 *context.find<CDNote>(note),
                                 {.filename = "a.bin", .data = Bytes(bytes.begin(), bytes.end())})
                             .id;
        device.save();
        return id;
    }
    static void removeNote(SyncDevice& device, const Uuid& note) {
        StoreContext& context = device.context();
        device.notes.deleteNote(context, *context.find<CDNote>(note));
        device.save();
    }
    /// What the device holds of a file: its bytes, or what is the matter.
    static std::string content(SyncDevice& device, const Uuid& file) {
        auto* const found = device.context().find<CDAttachment>(file);
        if (found == nullptr) return "no record";
        if (!found->fileData) return "no bytes";
        const std::string bytes(textOf(*found->fileData));
        const bool isTrue = sha256Hex(bytesOf(bytes)) == found->sha256.valueOr("");
        return isTrue ? bytes : "wrong bytes";
    }
    /// What users read about the one file of a note that is not there.
    static std::string lack(SyncDevice& device, const Uuid& note) {
        StoreContext& context = device.context();
        const auto missing = missingFiles(context, *context.find<CDNote>(note));
        return missing.empty() ? "" : missing.begin()->second;
    }
    /// Lets every request of one method for a file end with `reply`.
    void answerFiles(const std::string& method, const HTTPReply& reply) {
        service.instead = [=](const HTTPRequest& request) -> std::optional<HTTPReply> {
            const bool isMeant = request.method == method
                                 && request.url.find("/blobs/") != std::string::npos
                                 && !request.url.ends_with("/check");
            return isMeant ? std::optional(reply) : std::nullopt;
        };
    }
};

TEST_F(SyncFiles, AFileThatComesInOnePageWithTheDeletionOfItsNoteIsDeletedEverywhere) {
    const Uuid id = sharedNote("<p>1</p>");
    SyncDevice late(service, 3);
    EXPECT_EQ(late.sync(), "");
    attach(a, id, "picture");
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

TEST_F(SyncFiles, AFileIsDeletedOnTheServerWithItsLastRecord) {
    const Uuid first = *a.addNote("One", "<p>1</p>").id;
    const Uuid second = *a.addNote("Two", "<p>2</p>").id;
    attach(a, first, "same picture");
    attach(a, second, "same picture");
    settle();
    EXPECT_EQ(service.blobs.size(), 1U);
    removeNote(b, first);
    settle();
    EXPECT_EQ(service.blobs.size(), 1U) << "the other note still has it";
    removeNote(b, second);
    answerFiles("DELETE", {.status = 503});
    EXPECT_EQ(b.sync(), "");
    EXPECT_EQ(service.blobs.size(), 1U);
    service.instead = nullptr;
    EXPECT_EQ(b.sync(), "");
    EXPECT_TRUE(service.blobs.empty());
}

TEST_F(SyncFiles, NotesHaveTheirTurnWhileManyFilesAreFetched) {
    const Uuid id = sharedNote("<p>1</p>");
    for (int i = 0; i < 3; ++i) {
        attach(a, id, "file " + std::to_string(i));
    }
    EXPECT_EQ(a.sync(), "");
    int fetched = 0;
    service.instead = [&](const HTTPRequest& request) -> std::optional<HTTPReply> {
        if (request.method != "GET" || request.url.find("/blobs/") == std::string::npos) return {};
        if (++fetched == 1) b.write(id, "<p>typed meanwhile</p>");
        if (fetched == 2) {
            EXPECT_EQ(service.liveRecords("note").at(0).rev, 2);
        }
        b.clock.advance(std::chrono::seconds(6));  // a slow line
        return std::nullopt;
    };
    EXPECT_EQ(b.sync(), "");
    EXPECT_EQ(fetched, 3);
    EXPECT_EQ(b.summary.filesReceived, 3U);
}

TEST_F(SyncFiles, FilesOfTheNoteThatIsLookedAtComeFirst) {
    const Uuid first = *a.addNote("First", "<p>1</p>").id;
    const Uuid second = *a.addNote("Second", "<p>2</p>").id;
    const Uuid third = *a.addNote("Third", "<p>3</p>").id;
    int count = 0;
    for (const Uuid& note : {first, first, second, third}) {
        attach(a, note, "file " + std::to_string(count++));
    }
    EXPECT_EQ(a.sync(), "");
    std::vector<std::string> order;
    service.instead = [&](const HTTPRequest& request) -> std::optional<HTTPReply> {
        if (request.method != "GET" || request.url.find("/blobs/") == std::string::npos) return {};
        for (int i = 0; i < 4; ++i) {
            const std::string name = "file " + std::to_string(i);
            if (request.url.ends_with(sha256Hex(bytesOf(name)))) order.push_back(name);
        }
        if (order.size() == 1) b.setViewedNote(second);  // while the first file comes
        return std::nullopt;
    };
    b.setViewedNote(third);
    EXPECT_EQ(b.sync(), "");
    EXPECT_EQ(order, (std::vector<std::string>{"file 3", "file 2", "file 0", "file 1"}));
    b.setViewedNote(std::nullopt);
    EXPECT_EQ(b.sync(), "");
}

TEST_F(SyncFiles, AFileThatDoesNotComeStaysMissingAndIsFetchedAgain) {
    const Uuid note = sharedNote("<p>1</p>");
    const Uuid file = attach(a, note, "the right bytes");
    EXPECT_EQ(a.sync(), "");
    answerFiles("GET", {.status = 404});
    EXPECT_EQ(b.sync(), "");
    EXPECT_EQ(b.summary.filesFailed, 1U);
    EXPECT_EQ(lack(b, note), "Not downloaded yet");
    answerFiles("GET", {.status = 503});
    EXPECT_NE(b.sync(), "") << "worth another try soon";
    EXPECT_EQ(content(b, file), "no bytes");
    service.instead = nullptr;
    EXPECT_EQ(b.sync(), "");
    EXPECT_EQ(content(b, file), "the right bytes");
    EXPECT_EQ(lack(b, note), "");
    EXPECT_TRUE(static_cast<bool>(b.context().find<CDAttachment>(file)->integrityVerified));
}

TEST_F(SyncFiles, AFileThatTwiceHasOtherBytesIsDamagedUntilTheNextStart) {
    const Uuid note = sharedNote("<p>1</p>");
    const Uuid file = attach(a, note, "the right bytes");
    EXPECT_EQ(a.sync(), "");
    int asked = 0;
    for (const std::string wrong : {"other bytes", "", "the right byte"}) {
        SCOPED_TRACE(wrong);
        service.instead = [&](const HTTPRequest& request) -> std::optional<HTTPReply> {
            if (request.method != "GET" || request.url.find("/blobs/") == std::string::npos) {
                return std::nullopt;
            }
            ++asked;
            return HTTPReply{.status = 200, .body = wrong};
        };
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(b.sync(), "");
            EXPECT_EQ(b.summary.filesFailed, 1U);
            EXPECT_EQ(content(b, file), "no bytes");
            EXPECT_EQ(lack(b, note), "Damaged on the service");
            EXPECT_FALSE(b.context().find<CDAttachment>(file)->integrityVerified.valueOr(false));
        }
        b.restart();
    }
    EXPECT_EQ(asked, 6) << "twice at each start";
    // Only the first answer is wrong.
    service.instead = [&](const HTTPRequest& request) -> std::optional<HTTPReply> {
        if (request.url.find("/blobs/") == std::string::npos || asked++ > 6) return std::nullopt;
        return HTTPReply{.status = 200, .body = "other bytes"};
    };
    EXPECT_EQ(b.sync(), "");
    EXPECT_EQ(b.summary.filesFailed, 0U);
    EXPECT_EQ(content(b, file), "the right bytes");
    EXPECT_EQ(lack(b, note), "");
}

TEST_F(SyncFiles, OfANoteThatOutlivesItsDeletionFilesNobodyHasAnyMoreAreLetGo) {
    const Uuid id = sharedNote("<p>1</p>");
    const Uuid file = attach(a, id, "never came to the other");
    EXPECT_EQ(a.sync(), "");
    answerFiles("GET", {.status = 404});
    EXPECT_EQ(b.sync(), "");
    EXPECT_EQ(content(b, file), "no bytes");
    b.write(id, "<p>2</p>");
    const Uuid own = attach(b, id, "here all the time");
    removeNote(a, id);
    EXPECT_EQ(a.sync(), "");
    EXPECT_TRUE(service.blobs.empty());
    service.instead = nullptr;

    settle();
    for (SyncDevice* const device : {&a, &b}) {
        ASSERT_NE(device->note(id), nullptr);
        EXPECT_EQ(device->note(id)->html, "<p>2</p>");
        EXPECT_EQ(content(*device, file), "no record");
        EXPECT_EQ(content(*device, own), "here all the time");
    }
}

TEST_F(SyncFiles, AFileThatIsNamedLikeAPathIsAskedForNowhere) {
    const Uuid file = Uuid::random(a.random);
    service.put(
        {.id = file,
         .kind = "attachment",
         .payload = {{"filename", "../../x"}, {"sha256", "../../etc/passwd"}}});
    service.instead = [](const HTTPRequest& request) -> std::optional<HTTPReply> {
        EXPECT_EQ(request.url.find("/blobs/"), std::string::npos) << request.url;
        return std::nullopt;
    };
    EXPECT_EQ(a.sync(), "");
    EXPECT_EQ(a.summary.filesFailed, 1U);
    EXPECT_EQ(content(a, file), "no bytes");
    EXPECT_EQ(a.sync(), "");
}

TEST_F(SyncFiles, AnUploadCutShortIsDoneAgainBeforeItsRecordIsSent) {
    const Uuid note = sharedNote("<p>1</p>");
    const Uuid file = attach(a, note, "picture");
    service.afterwards = [&](const HTTPRequest& request, HTTPReply&) {
        if (request.method != "PUT") return;
        service.blobs.clear();  // all but the last bytes arrived: the service keeps nothing
        throw HTTPError(HTTPError::Kind::unreachable, "cut");
    };
    EXPECT_NE(a.sync(), "");
    EXPECT_TRUE(service.liveRecords("attachment").empty());
    service.afterwards = nullptr;
    settle();
    EXPECT_EQ(content(b, file), "picture");
}

TEST_F(SyncFiles, AFileWithoutRoomHoldsNothingElseBackAndGoesUpOnceThereIsSome) {
    const Uuid first = sharedNote("<p>1</p>");
    // A note with a member of a newer program that happens to be called like a file's digest.
    const Uuid odd = Uuid::random(a.random);
    const std::string digest = sha256Hex(bytesOf("a large picture"));
    service.put({.id = odd, .kind = "note", .payload = {{"html", "<p>2</p>"}, {"sha256", digest}}});
    EXPECT_EQ(a.sync(), "");
    a.write(odd, "<p>sent beside the file</p>");
    const Uuid file = attach(a, first, "a large picture");
    int uploads = 0;
    std::int64_t used = 100;
    service.instead = [&](const HTTPRequest& request) -> std::optional<HTTPReply> {
        if (request.url.ends_with("/blobs")) {
            const std::string usage =
                R"({"bytes":)" + std::to_string(used) + R"(,"quota_bytes":100})";
            return HTTPReply{.status = 200, .body = usage};
        }
        if (request.method != "PUT") return std::nullopt;
        ++uploads;
        return used < 100 ? std::nullopt : std::optional(HTTPReply{.status = 507});
    };
    EXPECT_EQ(a.sync(), "");
    EXPECT_EQ(a.summary.refused, 1U);
    EXPECT_EQ(
        service.records().at(odd).payload.at("html"), JSONValue("<p>sent beside the file</p>"));
    EXPECT_TRUE(service.liveRecords("attachment").empty());
    const auto refused = SyncLedger(a.context()).value(SyncLedger::refusals).value_or("");
    EXPECT_NE(refused.find("Your Tesserine attachment storage is full."), std::string::npos);

    EXPECT_EQ(a.sync(), "");
    EXPECT_EQ(uploads, 1) << "tried again though there is no room";
    used = 10;
    settle();
    EXPECT_EQ(uploads, 2);
    EXPECT_EQ(content(b, file), "a large picture");
}

TEST_F(SyncFiles, EditedMovedAndDeletedOnSeveralDevicesTheyEndAlike) {
    const Uuid first = sharedNote("<p>1</p>");
    const Uuid second = sharedNote("<p>2</p>");
    const Uuid moved = attach(a, first, "moved");
    const Uuid edited = attach(a, first, "before");
    const Uuid deleted = attach(a, first, "deleted");
    const Uuid kept = attach(a, second, "deleted");  // the same bytes elsewhere
    settle();
    {
        StoreContext& context = a.context();
        context.find<CDAttachment>(moved)->note = context.find<CDNote>(second);
        context.remove(*context.find<CDAttachment>(deleted));
        a.save();
    }
    {
        StoreContext& context = b.context();
        CDAttachment& file = *context.find<CDAttachment>(edited);
        const auto bytes = bytesOf("after");
        file.fileData = Bytes(bytes.begin(), bytes.end());
        file.sha256 = sha256Hex(bytes);
        file.byteCount = static_cast<std::int64_t>(bytes.size());
        context.find<CDAttachment>(moved)->filename = "renamed.bin";
        b.save();
    }
    settle();
    for (SyncDevice* const device : {&a, &b}) {
        EXPECT_EQ(content(*device, moved), "moved");
        EXPECT_EQ(content(*device, edited), "after");
        EXPECT_EQ(content(*device, deleted), "no record");
        EXPECT_EQ(content(*device, kept), "deleted");
        const CDAttachment& file = *device->context().find<CDAttachment>(moved);
        EXPECT_EQ(file.filename, "renamed.bin");
        EXPECT_EQ(file.note->id, second);
    }
    EXPECT_TRUE(service.blobs.contains(sha256Hex(bytesOf("deleted"))));
    removeNote(a, second);
    settle();
    EXPECT_FALSE(service.blobs.contains(sha256Hex(bytesOf("deleted"))));
    EXPECT_FALSE(service.blobs.contains(sha256Hex(bytesOf("moved"))));
}

TEST_F(SyncFiles, GivingBackThatIsKilledNeverTakesAFileThatIsUsedAgain) {
    const std::string digest = sha256Hex(bytesOf("picture"));
    for (SyncDevice* const user : {&a, &b}) {
        const Uuid note = sharedNote("<p>1</p>");
        attach(a, note, "picture");
        settle();
        removeNote(a, note);
        failpoint::arm("sync.fileReclaimed", 1, [] { throw std::runtime_error("killed"); });
        EXPECT_EQ(a.sync(), "killed");
        EXPECT_FALSE(service.blobs.contains(digest));
        a.restart();
        // Before it can be finished the same picture is used again, and the clock leaps.
        const Uuid other = sharedNote("<p>2</p>");
        const Uuid file = attach(*user, other, "picture");
        if (user == &b) {
            EXPECT_EQ(b.sync(), "");
        }
        a.clock.advance(std::chrono::hours(24 * 400));
        settle();
        EXPECT_TRUE(service.blobs.contains(digest));
        EXPECT_EQ(content(a, file), "picture");
        EXPECT_EQ(content(b, file), "picture");
        removeNote(*user, other);
        settle();
        EXPECT_TRUE(service.blobs.empty());
    }
}

}  // namespace
}  // namespace tesserine::test
