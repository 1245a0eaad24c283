#include "server/Records.h"

#include "base/Digest.h"
#include "base/Files.h"
#include "server/Accounts.h"
#include "server/BlobFolder.h"
#include "server/Eras.h"
#include "tests/support/SeededRandom.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace tesserine::server {
namespace {

class RecordsTest : public testing::Test {
protected:
    RecordsTest() {
        accounts_.setPassword("a@b.test", "secret");
        const auto code = accounts_.signIn("a@b.test", "secret");
        user_ = accounts_.exchange(*code, "Desk")->account.id;
    }
    PushResult push(const SyncPush& change) {
        const auto hasFile = [this](const std::string& digest) {
            return blobs_.has(user_, digest);
        };
        return records_.push(user_, {change}, hasFile).results.at(0);
    }
    SyncPush note(const std::string& title) {
        return {.id = Uuid::random(random_), .kind = "note", .payload = {{"title", title}}};
    }

    test::TemporaryFolder folder_;
    FixedClock clock_{*Instant::parseISO("2026-03-14T09:15:00Z")};
    test::SeededRandom random_{1};
    ServerDatabase database_{(files::createPrivateFolder(folder_ / "data"), folder_ / "data")};
    Accounts accounts_{database_, clock_, random_, 1};
    Records records_{database_, {}};
    BlobFolder blobs_{folder_ / "blobs"};
    std::string user_;
};

TEST_F(RecordsTest, PagesEndByCountAndBySizeAndMissNothing) {
    constexpr int large = 3;
    for (int i = 0; i < 20; ++i) {
        push(note(std::string(i < large ? std::size_t{5} << 20 : 10, 'x')));
    }
    for (const std::int64_t limit : {-1, 0, 1, 7, 200, 1'000'000}) {
        SCOPED_TRACE(limit);
        std::int64_t seq = 0;
        std::size_t received = 0;
        for (bool isMore = true; isMore;) {
            const ChangesResponse page = records_.changes(user_, seq, limit);
            std::size_t bytes = 0;
            for (const SyncRecord& record : page.changes) {
                EXPECT_EQ(record.seq, ++seq);
                bytes += record.payload.at("title").string()->size();
            }
            EXPECT_EQ(page.seq, seq);
            EXPECT_LT(bytes, std::size_t{14} << 20) << "a page nobody can hold";
            received += page.changes.size();
            isMore = page.more;
        }
        EXPECT_EQ(received, 20U);
    }
}

TEST_F(RecordsTest, TheLatestVersionsAreKeptAndNoMore) {
    SyncPush change = note("0");
    for (int i = 1; i <= Records::keptRevisions + 5; ++i) {
        EXPECT_EQ(push(change).rev, i);
        change.baseRev = i;
        change.payload["title"] = std::to_string(i);
    }
    const auto revisions = records_.revisions(user_, change.id);
    ASSERT_EQ(revisions.size(), static_cast<std::size_t>(Records::keptRevisions));
    EXPECT_EQ(revisions.front().payload.at("title"), JSONValue("23"));
    EXPECT_EQ(revisions.back().payload.at("title"), JSONValue("4"));
}

TEST_F(RecordsTest, ANumberThatWasGivenTwiceLiesInTwoEras) {
    const auto marksAt = [this](std::int64_t seq) {
        return *records_.changes(user_, seq, 1).sinceMark;
    };
    push(note("1"));
    const std::string first = marksAt(1);
    EXPECT_EQ(*records_.changes(user_, 0, 1).seqMark, first) << "the next request starts there";
    Eras::begin(database_, random_);
    Eras::begin(database_, random_);  // nothing was changed in between
    EXPECT_EQ(marksAt(1), first);
    push(note("2"));
    const std::string second = marksAt(2);
    EXPECT_NE(second, first);
    Eras::begin(database_, random_);
    EXPECT_EQ(marksAt(1), first);
    EXPECT_EQ(marksAt(2), second);
    EXPECT_NE(marksAt(3), second) << "a device that has seen more than there is";
}

TEST_F(RecordsTest, AFileIsNeverRemovedUnderARecordThatNamesIt) {
    const std::string digest = sha256Hex(bytesOf("picture"));
    SyncPush file = note("");
    file.kind = "attachment";
    file.payload = {{"sha256", digest}};
    // Once each time the file comes: before it is whole, or while its record comes.
    std::atomic<bool> mayRemove = false;
    const std::jthread remover([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            if (mayRemove.exchange(false)) {
                records_.removeUnused(user_, digest, [&] { blobs_.remove(user_, digest); });
            }
            std::this_thread::yield();
        }
    });
    int stored = 0;
    for (int i = 0; i < 200; ++i) {
        if (i % 2 == 0) mayRemove = true;
        blobs_.put(user_, digest, bytesOf("picture"));
        if (i % 2 == 1) mayRemove = true;
        file.deleted = false;
        const PushResult result = push(file);
        if (result.status != "applied") continue;
        ++stored;
        ASSERT_TRUE(blobs_.has(user_, digest)) << i;
        file.deleted = true;
        file.baseRev = *result.rev;
        file.baseRev = *push(file).rev;
    }
    EXPECT_GT(stored, 0);
}

TEST(BlobFolder, FilesAreCountedForEachAccountAndNamesAreNoPaths) {
    const test::TemporaryFolder folder;
    BlobFolder blobs(folder / "blobs");
    const std::string digest(64, 'a');
    blobs.put("one", digest, bytesOf("12345"));
    blobs.put("one", digest, bytesOf("12345"));
    EXPECT_EQ(blobs.usage("one").bytes, 5);
    EXPECT_EQ(blobs.usage("two").files, 0);
    EXPECT_EQ(blobs.get("two", digest), std::nullopt);
    for (const std::string& name :
         {std::string(),
          std::string(64, 'A'),
          std::string(63, 'a'),
          "../" + std::string(61, 'a')}) {
        EXPECT_FALSE(BlobFolder::isDigest(name)) << name;
        EXPECT_FALSE(blobs.has("one", name)) << name;
    }
    EXPECT_EQ(blobs.remove("one", digest), 5);
    EXPECT_EQ(blobs.remove("one", digest), std::nullopt);
}

}  // namespace
}  // namespace tesserine::server
