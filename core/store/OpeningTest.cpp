#include "base/FailPoint.h"
#include "base/sqlite/SQLiteDatabase.h"
#include "core/store/LibraryBackup.h"
#include "core/store/StoreFixture.h"
#include "tests/support/Child.h"
#include "tests/support/FaultyVFS.h"
#include "tests/support/RecordingSink.h"

#include <sys/stat.h>
#include <unistd.h>

#include <map>

namespace tesserine {
namespace {

using test::contentOf;
using test::FaultyVFS;
using test::putContent;
using test::runInChild;
namespace fs = std::filesystem;

/// What a library's folder may hold when it is opened.
class OpeningTest : public test::StoreFixture {
public:
    void TearDown() override { failpoint::disarmAll(); }

    void makeLibrary(const std::string& title = "note") {
        const auto store = open();
        addNote(store->viewContext(), title, "<p>1</p>");
        store->viewContext().save();
    }
    /// The same, but the process that made it never closed it and left a journal.
    void makeUnclosedLibrary(const std::string& title = "note") {
        makeLibrary("closed");
        const int status = runInChild([&] {
            const auto store = open();
            addNote(store->viewContext(), title, std::string(30'000, 'x'));
            store->viewContext().save();
            ::_exit(1);
        });
        ASSERT_EQ(status, 1);
        ASSERT_GT(fs::file_size(journal), 0U);
    }
    std::string titlesInside() { return titles(open()->viewContext()); }

    /// Every file below the library's folder with its content, but for the locks.
    std::map<std::string, std::string> contents() const {
        std::map<std::string, std::string> result;
        for (const auto& entry : fs::recursive_directory_iterator(library)) {
            const std::string name = entry.path().lexically_relative(library);
            const bool isPassing = name.ends_with("-shm") || name.starts_with(".Tesserine.");
            if (entry.is_regular_file() && !isPassing) result[name] = contentOf(entry.path());
        }
        return result;
    }

    fs::path journal = libraryFile.string() + "-wal";
};

TEST_F(OpeningTest, ALibraryIsPrivateWhateverTheUmaskSays) {
    const mode_t before = ::umask(0);
    {
        const auto store = open();
        auto& attachment = store->viewContext().insert<CDAttachment>();
        attachment.fileData = Bytes(200'000, 1);
        store->viewContext().save();
        LibraryBackups(library, clock, random).create(*store, "manual");
        for (const auto& entry : fs::recursive_directory_iterator(library)) {
            const auto expected = entry.is_directory() ? fs::perms(0700) : fs::perms(0600);
            EXPECT_EQ(entry.status().permissions(), expected) << entry.path();
        }
        EXPECT_EQ(fs::status(library).permissions(), fs::perms(0700));
    }
    ::umask(before);
}

TEST_F(OpeningTest, OpeningTwiceKeepsTheLibraryAndItsIndexes) {
    std::string id;
    for (const bool isNew : {true, false}) {
        const auto store = open();
        EXPECT_EQ(store->wasCreated(), isNew);
        EXPECT_FALSE(store->wasEndedUncleanly());
        if (isNew) id = store->libraryID();
        EXPECT_EQ(store->libraryID(), id);
        SQLiteDatabase& reader = store->viewContext().reader();
        EXPECT_EQ(
            reader.integer("SELECT count(*) FROM sqlite_master WHERE type = 'index' AND tbl_name = "
                           "'ZCDNOTE' AND name IN ('idx_CDNote_trashedAt', 'idx_CDNote_updatedAt', "
                           "'idx_CDNote_createdAt', 'idx_CDNote_isPinned')"),
            4);
        EXPECT_EQ(reader.text("PRAGMA journal_mode"), "wal");
        EXPECT_EQ(reader.integer("PRAGMA synchronous"), 2);
    }
    EXPECT_FALSE(fs::exists(journal)) << "closing moves the journal into the file";
}

TEST_F(OpeningTest, AStoreInMemoryTouchesNoFile) {
    TesserineStore store({.directory = library, .inMemory = true}, environment());
    store.viewContext().insert<CDAttachment>().fileData = Bytes(200'000, 1);
    store.viewContext().save();
    store.tidyUp();
    EXPECT_FALSE(fs::exists(library));
}

TEST_F(OpeningTest, WhatIsNoLibraryIsRefusedAndLeftAsItIs) {
    const fs::path elsewhere = folder / "elsewhere";
    putContent(elsewhere, "precious");
    struct Case {
        const char* what;
        std::function<void()> put;
        const char* sentence;
    };
    const Case cases[] = {
        {"an empty file", [&] { putContent(libraryFile, ""); }, "Its file is empty"},
        {"a text",
         [&] { putContent(libraryFile, std::string(4096, 'x')); },
         "is damaged or is not a library"},
        {"a short text", [&] { putContent(libraryFile, "x"); }, "is not a library of Tesserine"},
        {"another program's database",
         [&] {
             SQLiteDatabase other(libraryFile, {.journal = SQLiteDatabase::Journal::keep});
             other.execute("CREATE TABLE accounts (balance); INSERT INTO accounts VALUES (7);");
         },
         "is not a library of Tesserine"},
        {"a marked database of another program",
         [&] {
             SQLiteDatabase other(libraryFile, {.journal = SQLiteDatabase::Journal::keep});
             other.execute("CREATE TABLE ZCDNOTE (Z_PK); PRAGMA application_id = 252006675;");
         },
         "is not a library of Tesserine"},
        {"a library of a newer program",
         [&] {
             makeLibrary();
             SQLiteDatabase(libraryFile, {.journal = SQLiteDatabase::Journal::keep})
                 .execute("PRAGMA user_version = 2;");
         },
         "This library was written by a newer version of Tesserine."},
        {"a folder", [&] { fs::create_directory(libraryFile); }, "is not a regular file"},
        {"a link", [&] { fs::create_symlink(elsewhere, libraryFile); }, "is not a regular file"},
        {"a pipe", [&] { ::mkfifo(libraryFile.c_str(), 0600); }, "is not a regular file"},
    };
    for (const auto& [what, put, sentence] : cases) {
        SCOPED_TRACE(what);
        fs::remove_all(library);
        fs::create_directories(library);
        put();
        const auto before = contents();
        for (int attempt = 1; attempt <= 2; ++attempt) {
            const std::string told = refusal();
            EXPECT_TRUE(told.starts_with("Tesserine could not open its library. ")) << told;
            EXPECT_NE(told.find(sentence), std::string::npos) << told;
            EXPECT_TRUE(contents() == before) << "a file was made or changed";
        }
        EXPECT_EQ(contentOf(elsewhere), "precious");
    }
}

TEST_F(OpeningTest, ADamagedLibraryWithAJournalIsRefusedWithoutTouchingEither) {
    makeUnclosedLibrary();
    std::string bytes = contentOf(libraryFile);
    for (std::size_t page = 2; page < bytes.size() / 8192; ++page) {
        bytes.replace(page * 8192, 200, 200, 'x');
    }
    putContent(libraryFile, bytes);
    const auto before = contents();
    EXPECT_NE(refusal().find("damaged"), std::string::npos) << refusal();
    EXPECT_TRUE(contents() == before);
}

TEST_F(OpeningTest, AJournalOfAnotherLibraryIsRefusedWithoutTouchingEither) {
    makeUnclosedLibrary("theirs");
    const std::string foreign = contentOf(journal);
    const std::string theirFile = contentOf(libraryFile);
    fs::remove_all(library);
    makeUnclosedLibrary("mine");
    const std::string own = contentOf(journal);

    putContent(journal, foreign);
    fs::remove(libraryFile.string() + "-shm");
    const auto before = contents();
    EXPECT_NE(refusal(), "");
    EXPECT_TRUE(contents() == before);
    putContent(journal, own);
    EXPECT_EQ(titlesInside(), "closed mine ");
}

TEST_F(OpeningTest, ABackupPutInPlaceByHandDoesNotTakeTheJournalOfTheOld) {
    makeLibrary("first");
    const fs::path backup =
        LibraryBackups(library, clock, random).create(*open(), "manual", folder / "Backup").folder;
    ASSERT_EQ(
        runInChild([&] {
            const auto store = open();
            addNote(store->viewContext(), "second", "");
            store->viewContext().save();
            ::_exit(1);
        }),
        1);
    fs::copy_file(
        backup / TesserineStore::fileName, libraryFile, fs::copy_options::overwrite_existing);
    EXPECT_NE(refusal().find("belongs to another library"), std::string::npos) << refusal();
    fs::remove(journal);
    EXPECT_EQ(titlesInside(), "first ");
}

TEST_F(OpeningTest, ALostJournalIsNoticedAndTheRestOpens) {
    makeUnclosedLibrary();
    fs::remove(journal);
    const auto sink = std::make_shared<test::RecordingSink>();
    StoreEnvironment with = environment();
    with.log = Log(sink, "test", "store");
    {
        const auto store = open(with);
        EXPECT_TRUE(store->wasEndedUncleanly());
        EXPECT_EQ(titles(store->viewContext()), "closed ");
        EXPECT_TRUE(sink->holds("journal is gone"));
    }
    EXPECT_FALSE(open()->wasEndedUncleanly()) << "said once";
}

TEST_F(OpeningTest, AnUncleanEndIsKnownByTheFirstWhoComesAfterIt) {
    makeUnclosedLibrary();
    const auto first = open();
    EXPECT_TRUE(first->wasEndedUncleanly());
    EXPECT_FALSE(open("second")->wasEndedUncleanly()) << "the first has it open";
    EXPECT_EQ(titles(first->viewContext()), "closed note ");
}

TEST_F(OpeningTest, AFolderWhoseLibraryIsGoneGetsNoEmptyOne) {
    StoreEnvironment existing = environment();
    existing.createIfMissing = false;
    EXPECT_NE(refusal(existing).find("There is no library in this folder."), std::string::npos);
    EXPECT_FALSE(fs::exists(library));
    fs::create_directories(library);
    EXPECT_NE(refusal(existing).find("There is no library in this folder."), std::string::npos);

    makeUnclosedLibrary();
    fs::remove(libraryFile);
    EXPECT_NE(refusal().find("is missing from its folder"), std::string::npos);
    fs::remove(journal);
    EXPECT_NE(refusal().find("is missing from its folder"), std::string::npos)
        << "that a library was kept here is remembered";
    EXPECT_FALSE(fs::exists(libraryFile));
}

/// Runs `body` without the rights of the administrator, to whom modes mean nothing.
int runAsNobody(const fs::path& home, const std::function<void()>& body) {
    constexpr uid_t nobody = 65534;
    const bool mustDrop = ::geteuid() == 0;
    if (mustDrop) {
        fs::permissions(home, fs::perms(0711));
        EXPECT_EQ(::chown(home.c_str(), nobody, nobody), 0);
    }
    return runInChild([&] {
        if (mustDrop
            && (::setresgid(nobody, nobody, nobody) != 0
                || ::setresuid(nobody, nobody, nobody) != 0)) {
            throw std::runtime_error("the rights could not be dropped");
        }
        body();
    });
}

TEST_F(OpeningTest, WithoutTheRightToWriteItIsRefusedWithASentence) {
    const auto expect = [&](const std::string& what, const std::string& sentence) {
        const std::string told = refusal();
        if (told.find(sentence) == std::string::npos) {
            throw std::runtime_error(what + ": “" + told + "”");
        }
    };
    EXPECT_EQ(
        runAsNobody(
            folder.path(),
            [&] {
                makeLibrary();
                const auto before = contents();
                fs::permissions(libraryFile, fs::perms(0400));
                expect("a file that is read-only", "You are not allowed to write to it.");
                fs::permissions(libraryFile, fs::perms(0000));
                expect("a file that is closed", "You are not allowed to write to it.");
                fs::permissions(libraryFile, fs::perms(0600));
                fs::permissions(library, fs::perms(0500));
                expect("a folder that is read-only", "You are not allowed to write to it.");
                fs::permissions(library, fs::perms(0000));
                expect("a folder that is closed", "You are not allowed to write to it.");
                fs::permissions(library, fs::perms(0700));
                if (contents() != before) throw std::runtime_error("something was changed");
                const fs::path closed = folder / "Closed";
                fs::create_directory(closed);
                fs::permissions(closed, fs::perms(0500));
                library = closed / "Library";
                expect("a folder that cannot be made", "could not be made");
            }),
        0);
    if (::geteuid() != 0) return;  // only the administrator can give a folder away
    ASSERT_EQ(::chown(libraryFile.c_str(), 0, 0), 0);
    EXPECT_EQ(
        runAsNobody(
            folder.path(), [&] { expect("another's file", "It belongs to another user."); }),
        0);
    ASSERT_EQ(::chown(library.c_str(), 1, 1), 0);
    fs::permissions(library, fs::perms(0777));
    EXPECT_EQ(
        runAsNobody(
            folder.path(),
            [&] { expect("another's folder", "Its folder belongs to another user."); }),
        0);
}

TEST_F(OpeningTest, ProgramsThatCreateItAtOnceShareOneLibrary) {
    constexpr int programs = 4;
    constexpr int notes = 5;
    const auto statuses = test::runInChildren(programs, [&](int number) {
        const auto store = open("program " + std::to_string(number));
        for (int i = 0; i < notes; ++i) {
            addNote(store->viewContext(), "n", "");
            store->viewContext().save();
        }
    });
    EXPECT_EQ(statuses, std::vector<int>(programs, 0));
    const auto store = open();
    EXPECT_EQ(store->viewContext().count<CDNote>(), static_cast<std::size_t>(programs * notes));
    EXPECT_EQ(store->lastTransactionNumber(), programs * notes);
    for (const auto& entry : fs::directory_iterator(library)) {
        EXPECT_EQ(entry.path().string().find(".new-"), std::string::npos) << entry.path();
    }
}

TEST_F(OpeningTest, ADiskTooFullForALibraryGetsNoPartOfOne) {
    FaultyVFS disk("full");
    StoreEnvironment with = environment();
    with.sqliteVFS = disk.name();
    for (const int nth : {1, 2, 20}) {
        disk.fail(
            {.operation = FaultyVFS::Operation::write,
             .nth = nth,
             .fault = FaultyVFS::Fault::full,
             .isLasting = true});
        EXPECT_EQ(
            refusal(with),
            "Tesserine could not open its library. The disk is full. Free some space and try again.");
        EXPECT_TRUE(contents().empty());
        disk.clear();
    }
    EXPECT_EQ(refusal(with), "");
}

#ifdef TESSERINE_FAIL_POINTS  // what users run has none
TEST_F(OpeningTest, AKillWhileTheLibraryIsMadeLeavesNoneOrAWholeOne) {
    std::vector<std::function<void(FaultyVFS&)>> faults;
    for (const char* place :
         {"store.schemaMade", "exchange.planned", "exchange.arrived", "store.created"}) {
        faults.emplace_back([place](FaultyVFS&) {
            failpoint::arm(place, 1, [] { ::_exit(FaultyVFS::killedStatus); });
        });
    }
    for (int nth = 1; nth < 40; nth += 7) {
        faults.emplace_back([nth](FaultyVFS& disk) {
            disk.fail({.nth = nth, .fault = FaultyVFS::Fault::tornKill});
        });
    }
    for (const auto& arm : faults) {
        fs::remove_all(library);
        ASSERT_EQ(
            runInChild([&] {
                FaultyVFS disk("killing");
                arm(disk);
                StoreEnvironment with = environment();
                with.sqliteVFS = disk.name();
                open(with);
            }),
            FaultyVFS::killedStatus);
        makeLibrary();
        EXPECT_EQ(titlesInside(), "note ");
        EXPECT_EQ(open()->viewContext().reader().text("PRAGMA integrity_check"), "ok");
    }
}
#endif

}  // namespace
}  // namespace tesserine
