#include "core/store/LibraryBackup.h"

#include "base/FailPoint.h"
#include "core/store/ExternalValues.h"
#include "core/store/StoreFixture.h"
#include "tests/support/Child.h"
#include "tests/support/FaultyVFS.h"

#include <unistd.h>

namespace tesserine {
namespace {

using test::contentOf;
using test::FaultyVFS;
using test::runInChild;
namespace fs = std::filesystem;

constexpr Instant::Duration day{86'400.0};

class LibraryBackupTest : public test::StoreFixture {
public:
    void TearDown() override { failpoint::disarmAll(); }

    void add(TesserineStore& store, const std::string& title) {
        CDNote& note = addNote(store.viewContext(), title, "<p>" + title + "</p>");
        auto& attachment = store.viewContext().insert<CDAttachment>();
        attachment.note = &note;
        attachment.fileData = Bytes(size, static_cast<std::uint8_t>(title.front()));
        store.viewContext().save();
    }
    /// Titles, bodies and files of the library in `at`, as far as they are whole.
    std::string inside(const fs::path& at) {
        TesserineStore store(StoreConfiguration{.directory = at}, environment());
        std::string text;
        for (CDNote* note : store.viewContext().fetch<CDNote>()) {
            const std::string title = note->title.valueOr("-");
            const auto data = note->attachments.all().front()->fileData.get();
            const bool isWhole = note->html == "<p>" + title + "</p>"
                                 && data == Bytes(size, static_cast<std::uint8_t>(title.front()));
            text += title + (isWhole ? " " : " (damaged) ");
        }
        return text;
    }
    std::string inside() { return inside(library); }

    template <class Work>
    static std::string refusalOf(Work work) {
        try {
            work();
            return {};
        } catch (const BackupError& error) {
            return error.what();
        }
    }

    static constexpr std::size_t size = ExternalValues::inlineLimit + 1;
    LibraryBackups backups{library, clock, random};
};

TEST_F(LibraryBackupTest, ABackupIsOneMomentOfTheLibraryAndComesBackWhole) {
    LibraryBackup first;
    std::string history;
    {
        const auto store = open();
        add(*store, "a");
        first = backups.create(*store, "import");
        add(*store, "b");
        history = store->historyID();
        EXPECT_EQ(first.folder.filename(), "2026-03-14 09.15.00 import");
        EXPECT_EQ(
            backups.create(*store, "import").folder.filename(), "2026-03-14 09.15.00 import 2");
        EXPECT_NE(
            refusalOf([&] {
                backups.create(*store, "manual", first.folder);
            }).find("there already"),
            std::string::npos);
        EXPECT_NE(
            refusalOf([&] { backups.restore(first.folder); }).find("open in another"),
            std::string::npos);
        std::stop_source stopped;
        stopped.request_stop();
        EXPECT_EQ(
            refusalOf([&] { backups.create(*store, "daily", std::nullopt, stopped.get_token()); }),
            "The backup was cancelled.");
    }
    EXPECT_EQ(backups.list().size(), 2U);
    EXPECT_EQ(backups.verify(first.folder).reason, "import");
    const auto outcome = backups.restore(first.folder);
    EXPECT_EQ(inside(), "a ");
    EXPECT_NE(open()->historyID(), history) << "followers start afresh";
    ASSERT_TRUE(outcome.keptAside);

    // What stood there is a library as before.
    const fs::path kept = folder / "Kept";
    fs::create_directory(kept);
    fs::copy(*outcome.keptAside, kept / TesserineStore::fileName);
    fs::copy(
        library / ".Tesserine_SUPPORT", kept / ".Tesserine_SUPPORT", fs::copy_options::recursive);
    EXPECT_EQ(inside(kept), "a b ");
    // A backup is a library of its own; using it leaves others alone.
    EXPECT_EQ(inside(first.folder), "a ");
}

#ifdef TESSERINE_FAIL_POINTS  // what users run has none
TEST_F(LibraryBackupTest, AKillLeavesOnlyWholeBackupsAndWhatIsLeftOverGoesLater) {
    {
        const auto store = open();
        add(*store, "a");
        backups.create(*store, "daily");
    }
    std::size_t whole = 1;
    for (const char* place : {"backup.copied", "backup.made", "backup.done"}) {
        SCOPED_TRACE(place);
        ASSERT_EQ(
            runInChild([&] {
                const auto store = open();
                failpoint::arm(place, 1, [] { ::_exit(FaultyVFS::killedStatus); });
                backups.create(*store, "import");
            }),
            FaultyVFS::killedStatus);
        whole += std::string(place) == "backup.done" ? 1 : 0;
        ASSERT_EQ(backups.list().size(), whole);
        for (const LibraryBackup& backup : backups.list()) {
            EXPECT_EQ(inside(backup.folder), "a ");
        }
    }
    const auto entries = [&] {
        return std::distance(fs::directory_iterator(backups.folder()), {});
    };
    EXPECT_EQ(entries(), 4);
    backups.prune();
    EXPECT_EQ(entries(), 4) << "another program may still be making them";
    for (const auto& entry : fs::directory_iterator(backups.folder())) {
        fs::last_write_time(entry, fs::file_time_type::clock::now() - std::chrono::hours(25));
    }
    backups.prune();
    EXPECT_EQ(entries(), 2);
}
#endif

TEST_F(LibraryBackupTest, AFullDiskEndsTheBackupWithASentenceAndNothingLeftBehind) {
    FaultyVFS disk("full");
    {
        StoreEnvironment with = environment();
        with.sqliteVFS = disk.name();
        const auto store = open(with);
        add(*store, "a");
        backups.create(*store, "daily");
        int failures = 0;
        for (int nth = 1;; nth += 5) {
            disk.fail(
                {.operation = FaultyVFS::Operation::write,
                 .nth = nth,
                 .fault = FaultyVFS::Fault::full,
                 .isLasting = true});
            const std::string told = refusalOf([&] { backups.create(*store, "manual"); });
            disk.clear();
            if (told.empty()) break;
            ++failures;
            EXPECT_EQ(
                told,
                "The backup could not be made. The disk is full. Free some space and try again.");
            EXPECT_EQ(std::distance(fs::directory_iterator(backups.folder()), {}), 1);
        }
        EXPECT_GT(failures, 2);
    }
    EXPECT_EQ(inside(backups.list().front().folder), "a ");
}

#ifdef TESSERINE_FAIL_POINTS  // what users run has none
TEST_F(LibraryBackupTest, ARestoreKilledAnywhereLosesNothingAndCanBeRunAgain) {
    {
        const auto store = open();
        add(*store, "a");
        backups.create(*store, "manual");
    }
    const fs::path backup = backups.list().front().folder;
    ASSERT_EQ(
        runInChild([&] {
            const auto store = open();
            add(*store, "b");
            ::_exit(1);  // its last changes are in the journal
        }),
        1);
    const fs::path original = folder / "Original";
    fs::copy(library, original, fs::copy_options::recursive);
    struct Case {
        const char* place;
        int pass;
        const char* after;
    };
    for (const auto& [place, pass, after] :
         {Case{"restore.arrived", 1, "a b "},
          {"exchange.planned", 1, "a "},
          {"exchange.moved", 1, "a "},
          {"exchange.moved", 2, "a "},
          {"exchange.moved", 3, "a "},
          {"exchange.arrived", 1, "a "}}) {
        SCOPED_TRACE(std::string(place) + " " + std::to_string(pass));
        for (const bool opensFirst : {true, false}) {
            fs::remove_all(library);
            fs::copy(original, library, fs::copy_options::recursive);
            ASSERT_EQ(
                runInChild([&, name = place, nth = pass] {
                    failpoint::arm(name, nth, [] { ::_exit(FaultyVFS::killedStatus); });
                    backups.restore(backup);
                }),
                FaultyVFS::killedStatus);
            if (opensFirst) {
                EXPECT_EQ(inside(), after);
            }
            backups.restore(backup);
            EXPECT_EQ(inside(), "a ");

            // What was there before stands aside with its journal.
            bool isKept = false;
            for (const auto& entry : fs::directory_iterator(library)) {
                const std::string name = entry.path().filename();
                if (name.find(".replaced-") == std::string::npos || name.ends_with("-wal")
                    || name.ends_with("-shm")) {
                    continue;
                }
                const fs::path kept = folder / "Kept";
                fs::remove_all(kept);
                fs::create_directory(kept);
                for (const char* part : {"", "-wal"}) {
                    const fs::path from = entry.path().string() + part;
                    const fs::path to = (kept / TesserineStore::fileName).string() + part;
                    if (fs::exists(from)) fs::copy(from, to);
                }
                fs::copy(
                    original / ".Tesserine_SUPPORT",
                    kept / ".Tesserine_SUPPORT",
                    fs::copy_options::recursive);
                isKept = isKept || inside(kept) == "a b ";
            }
            EXPECT_TRUE(isKept);
        }
    }
}
#endif

TEST_F(LibraryBackupTest, ADamagedLibraryIsReplacedAndKeptAsItIs) {
    {
        const auto store = open();
        add(*store, "a");
        backups.create(*store, "manual", folder / "Elsewhere");
    }
    test::putContent(libraryFile, "rubbish");
    ASSERT_NE(refusal(), "");
    const auto outcome = backups.restore(folder / "Elsewhere");
    EXPECT_EQ(inside(), "a ");
    EXPECT_EQ(contentOf(*outcome.keptAside), "rubbish");

    // Into a folder that never held a library.
    const LibraryBackups fresh(folder / "Fresh", clock, random);
    EXPECT_FALSE(fresh.restore(folder / "Elsewhere").keptAside);
    EXPECT_EQ(inside(folder / "Fresh"), "a ");
}

TEST_F(LibraryBackupTest, AFileThatDiffersInSizeFromTheBackupsIsHealedByRestoring) {
    {
        const auto store = open();
        add(*store, "a");
        backups.create(*store, "manual");
    }
    const fs::path other = folder / "Other disk";  // copied there, so not one file under two names
    fs::copy(backups.list().front().folder, other, fs::copy_options::recursive);
    for (const auto& entry :
         fs::directory_iterator(library / ".Tesserine_SUPPORT" / "_EXTERNAL_DATA")) {
        fs::resize_file(entry.path(), 100);
    }
    ASSERT_EQ(inside(), "a (damaged) ");
    backups.restore(other);
    EXPECT_EQ(inside(), "a ");
}

TEST_F(LibraryBackupTest, WhatIsNoCompleteBackupIsRefused) {
    {
        const auto store = open();
        add(*store, "a");
        backups.create(*store, "manual", folder / "Good");
    }
    const fs::path bad = folder / "Bad";
    struct Case {
        const char* what;
        std::function<void()> harm;
        const char* sentence;
    };
    const auto file = bad / TesserineStore::fileName;
    const Case cases[] = {
        {"no library", [&] { fs::remove(file); }, "It holds no library."},
        {"out of reach",
         [&] {
             fs::remove(file);
             fs::create_symlink(file, file);  // leads to itself
         },
         "It cannot be read."},
        {"a text", [&] { test::putContent(file, std::string(9000, 'x')); }, "damaged"},
        {"cut off",
         [&] { fs::resize_file(file, fs::file_size(file) / 2 / 8192 * 8192); },
         "damaged"},
        {"without its attachments",
         [&] { fs::remove_all(bad / ".Tesserine_SUPPORT"); },
         "A file of an attachment is missing."},
        {"a newer library",
         [&] {
             SQLiteDatabase(file, {.journal = SQLiteDatabase::Journal::keep})
                 .execute("PRAGMA user_version = 2;");
         },
         "newer version"},
    };
    for (const auto& [what, harm, sentence] : cases) {
        SCOPED_TRACE(what);
        fs::remove_all(bad);
        fs::copy(folder / "Good", bad, fs::copy_options::recursive);
        harm();
        const std::string told = refusalOf([&] { backups.restore(bad); });
        EXPECT_NE(told.find("is not a complete backup."), std::string::npos) << told;
        EXPECT_NE(told.find(sentence), std::string::npos) << told;
        EXPECT_EQ(inside(), "a ");
    }
}

TEST_F(LibraryBackupTest, WhatTheLibraryHadLostDoesNotSpoilItsBackups) {
    const auto store = open();
    add(*store, "a");
    add(*store, "b");
    const fs::path data = library / ".Tesserine_SUPPORT" / "_EXTERNAL_DATA";
    fs::remove(fs::directory_iterator(data)->path());
    const auto made = backups.create(*store, "manual", folder / "Backup");
    EXPECT_EQ(
        std::distance(
            fs::directory_iterator(made.folder / ".Tesserine_SUPPORT" / "_EXTERNAL_DATA"), {}),
        1)
        << "the other one is there";
    const LibraryBackups elsewhere(folder / "Elsewhere", clock, random);
    EXPECT_NO_THROW(elsewhere.restore(made.folder));
    const std::string found = inside(folder / "Elsewhere");
    EXPECT_TRUE(found == "a b (damaged) " || found == "a (damaged) b ") << found;
}

TEST_F(LibraryBackupTest, OneADayIsMadeWhenSomethingChanged) {
    const auto store = open();
    const auto isMade = [&] { return backups.createDaily(*store).has_value(); };
    EXPECT_FALSE(isMade()) << "nothing was ever saved";
    add(*store, "a");
    EXPECT_TRUE(isMade());
    add(*store, "b");
    EXPECT_FALSE(isMade()) << "the last one is of today";
    clock.advance(day - Instant::Duration(1));
    EXPECT_FALSE(isMade());
    clock.advance(Instant::Duration(1));
    EXPECT_TRUE(isMade());
    clock.advance(30 * day);
    EXPECT_FALSE(isMade()) << "nothing changed since";
    add(*store, "c");
    clock.set(*Instant::parseISO("1970-01-02T00:00:00Z"));
    EXPECT_TRUE(isMade()) << "backups from the future do not count as today's";
    EXPECT_EQ(backups.list().size(), 3U) << "and are not thrown away";
}

TEST_F(LibraryBackupTest, AWeekOfDaysAMonthOfWeeksAndHalfAYearAreKept) {
    const auto make = [&](const std::string& name) {
        fs::create_directories(backups.folder() / name);
    };
    const Instant today = clock.now();
    for (int age = 0; age < 400; ++age) {
        std::string name = (today - age * day).iso().substr(0, 19);
        name[10] = ' ';
        name[13] = name[16] = '.';
        make(name + (age % 100 == 50 ? " manual" : " daily"));
        if (age == 3) make(name.substr(0, 11) + "08.00.00 import");
        if (age == 0) make(name.substr(0, 11) + "08.00.00 import");
    }
    make("Holiday 2025");
    backups.prune();
    std::string kept;
    for (const LibraryBackup& backup : backups.list()) {
        kept += backup.folder.filename().string().substr(2, 8) + " ";
    }
    // 14 March twice, as both are younger than a day, and the six days before. The ends of three
    // more weeks, which begin on Thursdays: 11 and 4 March, 25 February. The ends of five more
    // months of thirty days: 7 March to 7 November. Made by hand: every hundredth.
    EXPECT_EQ(
        kept,
        "26-03-14 26-03-14 26-03-13 26-03-12 26-03-11 26-03-10 26-03-09 26-03-08 26-03-07 26-03-04 "
        "26-02-25 26-02-05 26-01-23 26-01-06 25-12-07 25-11-07 25-10-15 25-07-07 25-03-29 ");
    EXPECT_TRUE(fs::exists(backups.folder() / "Holiday 2025")) << "not one of ours";
    EXPECT_EQ(backups.prune(), 0U);
}

}  // namespace
}  // namespace tesserine
