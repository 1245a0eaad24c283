#include "base/FailPoint.h"
#include "base/Files.h"
#include "base/sqlite/SQLiteDatabase.h"
#include "core/store/ExternalValues.h"
#include "core/store/StoreFixture.h"
#include "tests/support/Child.h"
#include "tests/support/FaultyVFS.h"

#include <unistd.h>

namespace tesserine {
namespace {

using test::FaultyVFS;
using test::runInChild;
using Operation = FaultyVFS::Operation;
using Fault = FaultyVFS::Fault;
namespace fs = std::filesystem;

/// A disk that fails and a process that is killed while the library is saved.
class SaveFaultTest : public test::StoreFixture {
public:
    void TearDown() override { failpoint::disarmAll(); }

    /// Of the writes at which the process is killed. Pages and their headers take turns in the
    /// journal, so an odd number meets both.
    static constexpr int stride = 5;

    std::unique_ptr<TesserineStore> openOn(const FaultyVFS& disk) {
        StoreEnvironment with = environment();
        with.sqliteVFS = disk.name();
        return open(with);
    }

    /// A library of one note with a body and a file, made by a process that closes it.
    void makeLibrary() {
        const auto store = open();
        StoreContext& context = store->viewContext();
        CDNote& note = addNote(context, "note", std::string(9'000, 'a'));
        auto& attachment = context.insert<CDAttachment>();
        attachment.note = &note;
        attachment.fileData = Bytes(ExternalValues::inlineLimit + 1, 'a');
        context.save();
    }

    /// Changes everything about the note and adds another, in one save.
    static void change(StoreContext& context) {
        CDNote& note = *context.fetchFirst<CDNote>({});
        note.title = "changed";
        note.html = std::string(10'000, 'b');
        note.attachments.all().front()->fileData = Bytes(ExternalValues::inlineLimit + 2, 'b');
        context.insert<CDNote>().title = "added";
        note.tags.add(context.insert<CDTag>());
        context.save();
    }

    /// What is in the library: "before", "after", or what is wrong with it.
    std::string state() {
        const auto store = open();
        StoreContext& context = store->viewContext();
        if (context.reader().text("PRAGMA integrity_check") != "ok") return "damaged";
        const auto notes = context.fetch<CDNote>();
        if (notes.empty()) return "empty";
        CDNote& note = *notes.front();
        const bool isChanged = note.title == "changed";
        const char letter = isChanged ? 'b' : 'a';
        const std::size_t count = isChanged ? 2 : 1;
        if (notes.size() != count || store->history(0).size() != count) return "mixed";
        if (note.html != std::string(isChanged ? 10'000 : 9'000, letter)) return "mixed bodies";
        const auto data = note.attachments.all().front()->fileData.get();
        const std::size_t size = ExternalValues::inlineLimit + count;
        if (data != Bytes(size, static_cast<std::uint8_t>(letter))) return "wrong file";
        if (note.tags.count() != count - 1) return "wrong links";
        return isChanged ? "after" : "before";
    }

    void copyLibrary(const fs::path& from, const fs::path& to) {
        fs::remove_all(to);
        fs::copy(from, to, fs::copy_options::recursive);
    }
};

#ifdef TESSERINE_FAIL_POINTS  // what users run has none
TEST_F(SaveFaultTest, AKillAroundTheCommitLeavesTheOldStateOrTheNewOne) {
    makeLibrary();
    for (const auto& [place, expected] :
         {std::pair{"external.written", "before"},
          {"save.begun", "before"},
          {"save.written", "before"},
          {"save.recorded", "before"},
          {"save.committed", "after"}}) {
        SCOPED_TRACE(place);
        const int status = runInChild([&, name = place] {
            const auto store = open();
            failpoint::arm(name, 1, [] { ::_exit(FaultyVFS::killedStatus); });
            change(store->viewContext());
        });
        ASSERT_EQ(status, FaultyVFS::killedStatus);
        ASSERT_EQ(state(), expected);
    }
}
#endif

TEST_F(SaveFaultTest, AKillAtAnyWriteOfSaveAndCheckpointLosesNothingAcknowledged) {
    makeLibrary();
    const fs::path original = folder / "Original";
    copyLibrary(library, original);
    const fs::path answer = folder / "answer";
    int killed = 0;
    for (int nth = 1; nth < 500; nth += stride) {
        const Fault fault = nth % 2 == 0 ? Fault::kill : Fault::tornKill;
        SCOPED_TRACE((fault == Fault::kill ? "kill at " : "torn write at ") + std::to_string(nth));
        copyLibrary(original, library);
        fs::remove(answer);
        const int status = runInChild([&] {
            FaultyVFS disk("killing");
            {
                const auto store = openOn(disk);
                disk.fail({.nth = nth, .fault = fault});
                change(store->viewContext());
                test::putContent(answer, "saved");
            }
            disk.clear();
        });
        if (status == 0) break;  // it was not killed any more, not even by the checkpoint
        ASSERT_EQ(status, FaultyVFS::killedStatus);
        ++killed;
        const std::string found = state();
        if (fs::exists(answer)) {
            ASSERT_EQ(found, "after") << "it was said to be saved";
        } else {
            ASSERT_TRUE(found == "before" || found == "after") << found;
        }
    }
    EXPECT_GT(killed, 10) << "the journal, the checkpoint and its end were all reached";
}

TEST_F(SaveFaultTest, AKillAtAnyWriteOfTheRecoveryIsRecoveredFrom) {
    makeLibrary();
    ASSERT_EQ(
        runInChild([&] {
            const auto store = open();
            change(store->viewContext());
            ::_exit(1);  // never closed: the journal is full
        }),
        1);
    const fs::path original = folder / "Original";
    copyLibrary(library, original);
    int killed = 0;
    for (int nth = 1; nth < 500; nth += stride) {
        SCOPED_TRACE(nth);
        copyLibrary(original, library);
        const auto openAndClose = [&](int at) {
            return runInChild([&] {
                FaultyVFS disk("killing");
                disk.fail({.nth = at, .fault = Fault::tornKill});
                openOn(disk).reset();
                disk.clear();
            });
        };
        const int status = openAndClose(nth);
        if (status == 0) break;
        ASSERT_EQ(status, FaultyVFS::killedStatus);
        ++killed;
        openAndClose(nth / 2 + 1);  // and once more, while it recovers from that
        ASSERT_EQ(state(), "after");
    }
    EXPECT_GT(killed, 5);
}

TEST_F(SaveFaultTest, AFullDiskIsSaidAndTheSameSaveWorksOnceThereIsSpace) {
    makeLibrary();
    FaultyVFS disk("full");
    {
        const auto store = openOn(disk);
        StoreContext& context = store->viewContext();
        CDNote& note = *context.fetchFirst<CDNote>({});
        int failures = 0;
        for (int nth = 1;; ++nth) {
            SCOPED_TRACE(nth);
            const std::string body(9'000 + static_cast<std::size_t>(nth), 'x');
            note.html = body;
            context.insert<CDNoteRevision>().note = &note;
            disk.fail(
                {.operation = Operation::write,
                 .nth = nth,
                 .fault = Fault::full,
                 .isLasting = true});
            bool hasFailed = false;
            try {
                context.save();
            } catch (const StoreError& error) {
                hasFailed = true;
                EXPECT_EQ(error.kind(), StoreError::Kind::saveFailed);
                EXPECT_STREQ(
                    error.what(),
                    "Your changes could not be saved. The disk is full. Free some space and try "
                    "again. They are still here and not in the library yet.");
                EXPECT_EQ(note.html, body);
                EXPECT_TRUE(context.hasChanges());
            }
            disk.clear();
            if (hasFailed) context.save();
            ASSERT_EQ(note.revisions.count(), static_cast<std::size_t>(nth))
                << "nothing is doubled";
            const auto other = open("other");
            ASSERT_EQ(other->viewContext().fetchFirst<CDNote>({})->html, body);
            ASSERT_EQ(other->viewContext().count<CDNoteRevision>(), static_cast<std::size_t>(nth));
            if (!hasFailed) break;
            ++failures;
        }
        EXPECT_GT(failures, 4);
    }
}

#ifdef TESSERINE_FAIL_POINTS  // what users run has none
TEST_F(SaveFaultTest, NoSpaceForAFileBesideTheLibraryIsSaidLikeAnyFullDisk) {
    makeLibrary();
    const auto store = open();
    StoreContext& context = store->viewContext();
    auto& attachment = *context.fetchFirst<CDAttachment>({});
    attachment.fileData = Bytes(ExternalValues::inlineLimit + 9, 'c');
    context.insert<CDAttachment>().fileData = Bytes(ExternalValues::inlineLimit + 9, 'd');
    const auto place = library / ".Tesserine_SUPPORT" / "_EXTERNAL_DATA";
    failpoint::arm(
        "external.written", 2, [&] { throw FileError::fromErrno(place / "x", "written", ENOSPC); });
    try {
        context.save();
        FAIL();
    } catch (const StoreError& error) {
        EXPECT_NE(std::string(error.what()).find("The disk is full."), std::string::npos);
    }
    EXPECT_LE(std::distance(fs::directory_iterator(place), {}), 2)
        << "the first of the two was taken back";
    context.save();
    context.reset();
    EXPECT_EQ(
        context.fetchFirst<CDAttachment>({})->fileData,
        Bytes(ExternalValues::inlineLimit + 9, 'c'));
}
#endif

TEST_F(SaveFaultTest, AFailedSyncIsAFailedSaveAndTheNextOneUsesAFreshConnection) {
    makeLibrary();
    FaultyVFS disk("failing");
    {
        const auto store = openOn(disk);
        StoreContext& context = store->viewContext();
        CDNote& note = *context.fetchFirst<CDNote>({});
        for (const Operation operation : {Operation::sync, Operation::write}) {
            const std::string body = operation == Operation::sync ? "synced" : "written";
            note.html = body;
            context.insert<CDNote>().title = body;
            disk.fail({.operation = operation, .file = FaultyVFS::File::wal});
            disk.resetCounts();
            try {
                context.save();
                FAIL() << "the disk failed";
            } catch (const StoreError& error) {
                EXPECT_EQ(error.kind(), StoreError::Kind::saveFailed);
                EXPECT_NE(std::string(error.what()).find("The disk reported"), std::string::npos)
                    << error.what();
            }
            EXPECT_EQ(disk.count(Operation::open, FaultyVFS::File::main), 0);
            context.save();
            EXPECT_EQ(disk.count(Operation::open, FaultyVFS::File::main), 1);
            const auto other = open("other");
            EXPECT_EQ(other->viewContext().fetchFirst<CDNote>({})->html, body);
            EXPECT_EQ(other->viewContext().count<CDNote>({"title == %@", body}), 1U);
        }
        disk.clear();
    }
    EXPECT_EQ(open()->viewContext().reader().text("PRAGMA integrity_check"), "ok");
}

TEST_F(SaveFaultTest, NothingIsWrittenToALibraryThatWasTakenAway) {
    makeLibrary();
    const fs::path away = folder / "Away";
    const fs::path another = folder / "Another";
    { TesserineStore(StoreConfiguration{.directory = another}, environment()); }
    const auto journal = fs::path(libraryFile.string() + "-wal");
    struct Case {
        const char* what;
        std::function<void()> harm;
        std::function<void()> heal;
    };
    const Case cases[] = {
        {"moved", [&] { fs::rename(libraryFile, away); }, [&] { fs::rename(away, libraryFile); }},
        {"replaced by another library",
         [&] {
             fs::rename(libraryFile, away);
             fs::copy(another / TesserineStore::fileName, libraryFile);
         },
         [&] { fs::rename(away, libraryFile); }},
        {"without its journal",
         [&] { fs::rename(journal, away); },
         [&] { fs::rename(away, journal); }},
        {"in a folder that was moved",
         [&] { fs::rename(library, away); },
         [&] { fs::rename(away, library); }},
    };
    const auto store = open();
    StoreContext& context = store->viewContext();
    CDNote& note = *context.fetchFirst<CDNote>({});
    for (const Case& one : cases) {
        SCOPED_TRACE(one.what);
        note.title = one.what;
        one.harm();
        const auto size = fs::exists(libraryFile) ? test::contentOf(libraryFile) : std::string();
        try {
            context.save();
            FAIL() << "it was saved into the void";
        } catch (const StoreError& error) {
            EXPECT_NE(
                std::string(error.what()).find("moved, replaced or deleted"), std::string::npos)
                << error.what();
        }
        EXPECT_THROW(store->checkpoint(), StoreError);
        EXPECT_THROW(store->setHistoryMark("search", 1), StoreError);
        EXPECT_EQ(fs::exists(libraryFile) ? test::contentOf(libraryFile) : std::string(), size);
        one.heal();
        context.save();
        EXPECT_EQ(open("other")->viewContext().fetchFirst<CDNote>({})->title, one.what);
    }
    fs::remove(libraryFile);
    note.title = "deleted";
    EXPECT_THROW(context.save(), StoreError);
    EXPECT_TRUE(context.hasChanges());
    EXPECT_EQ(note.html, std::string(9'000, 'a')) << "what was open can still be read";
}

TEST_F(SaveFaultTest, ALibraryThatAnotherProgramKeepsBusyIsWaitedForAndThenReported) {
    makeLibrary();
    StoreEnvironment impatient = environment();
    impatient.lockPatience = std::chrono::milliseconds(20);
    const auto store = open(impatient);
    StoreContext& context = store->viewContext();
    CDNote& note = *context.fetchFirst<CDNote>({});
    const auto refused = [&] {
        try {
            context.save();
            return std::string();
        } catch (const StoreError& error) {
            EXPECT_EQ(error.kind(), StoreError::Kind::saveFailed);
            return std::string(error.what());
        }
    };
    const std::string sentence = "Another program has kept the library busy for too long.";
    note.title = "first";
    {
        const auto lock =
            files::FolderLock::acquire(library / ".Tesserine.lock", std::chrono::milliseconds(0));
        ASSERT_TRUE(lock);
        EXPECT_NE(refused().find(sentence), std::string::npos);
        EXPECT_NE(refusal(impatient).find("Another program has kept"), std::string::npos);
    }
    EXPECT_EQ(refused(), "");
    note.title = "second";
    {
        SQLiteDatabase tool(
            libraryFile, {.journal = SQLiteDatabase::Journal::keep});  // knows no lock file
        tool.execute("BEGIN IMMEDIATE;");
        EXPECT_NE(refused().find(sentence), std::string::npos);
        EXPECT_EQ(open("reader")->viewContext().fetchFirst<CDNote>({})->title, "first");
        tool.execute("ROLLBACK;");
    }
    EXPECT_EQ(refused(), "");
    EXPECT_EQ(open("other")->viewContext().fetchFirst<CDNote>({})->title, "second");
}

}  // namespace
}  // namespace tesserine
