#include "base/FailPoint.h"
#include "base/sqlite/SQLiteDatabase.h"
#include "core/store/LibraryBackup.h"
#include "core/store/StoreFixture.h"
#include "tests/support/Child.h"
#include "tests/support/FaultyVFS.h"

#include <unistd.h>

namespace tesserine {
namespace {

using test::FaultyVFS;
using test::runInChild;
namespace fs = std::filesystem;

/// Libraries of older programs: the present schema without what was added since.
class MigrationTest : public test::StoreFixture {
public:
    void TearDown() override { failpoint::disarmAll(); }

    /// A library with a note that has a large source, a task with a label, and a trashed note.
    void makeLibrary() {
        const auto store = open();
        StoreContext& context = store->viewContext();
        CDNote& note = addNote(context, "kept", "<p>body</p>");
        note.originalSource = Bytes(200'000, 7);
        note.tags.add(context.insert<CDTag>());
        addNote(context, "trashed", "<p>old</p>").trashedAt = clock.now();
        context.insert<CDTask>().title = "task";
        context.save();
        libraryID = store->libraryID();
    }

    /// Takes the file back to what an early program would have made.
    void age() {
        SQLiteDatabase early(libraryFile, {.journal = SQLiteDatabase::Journal::keep});
        early.execute(R"(
            CREATE TABLE early (
                Z_PK INTEGER PRIMARY KEY, ZID BLOB, ZTITLE TEXT, ZHTML TEXT, ZTRASHEDAT REAL,
                ZISPINNED INTEGER, ZORIGINALSOURCE BLOB, ZUNKNOWN TEXT);
            INSERT INTO early SELECT Z_PK, ZID, ZTITLE, ZHTML, ZTRASHEDAT, NULL, ZORIGINALSOURCE, 'x'
                FROM ZCDNOTE;
            DROP TABLE ZCDNOTE;
            ALTER TABLE early RENAME TO ZCDNOTE;
            DROP TABLE ZCDTASKTEMPLATE;
            DROP TABLE Z_CDTASK_LABELS;
            DROP TABLE Z_DIGEST;
            ALTER TABLE Z_HISTORY DROP COLUMN NAME;
            DELETE FROM Z_METADATA WHERE NAME <> 'libraryID';
            CREATE TABLE unknown (content);
            INSERT INTO unknown VALUES ('kept');
            DROP INDEX idx_CDTag_name;
            PRAGMA user_version = 0;)");
    }

    fs::path copyOf(const char* name) {
        fs::path copy = folder / name;
        fs::copy(library, copy, fs::copy_options::recursive);
        return copy;
    }
    void putBack(const fs::path& copy) {
        fs::remove_all(library);
        fs::copy(copy, library, fs::copy_options::recursive);
    }

    std::string libraryID;
};

TEST_F(MigrationTest, AnOlderLibraryOpensWithAllItHadAndDefaultsForTheRest) {
    makeLibrary();
    age();
    for (int opening = 1; opening <= 2; ++opening) {
        SCOPED_TRACE(opening);
        const auto store = open();
        StoreContext& context = store->viewContext();
        EXPECT_EQ(
            titles(context.fetch<CDNote>(
                {.predicate = {"trashedAt == nil AND isTemplate == NO AND isPinned == NO"}})),
            opening == 1 ? "kept " : "kept new ");
        CDNote& note = *context.fetchFirst<CDNote>({.predicate = {"title == %@", "kept"}});
        EXPECT_EQ(note.html, "<p>body</p>");
        EXPECT_EQ(note.originalSource, Bytes(200'000, 7));
        EXPECT_EQ(note.isPinned, std::nullopt) << "null stays null";
        EXPECT_EQ(note.isTemplate, false);
        EXPECT_EQ(note.contentVersion, opening);
        EXPECT_EQ(note.tags.count(), 1U);
        EXPECT_EQ(context.count<CDTask>(), 1U);
        EXPECT_EQ(context.count<CDTaskTemplate>(), 0U);
        EXPECT_EQ(store->libraryID(), libraryID);
        EXPECT_NE(store->historyID(), "");
        SQLiteDatabase& reader = context.reader();
        EXPECT_EQ(reader.text("SELECT content FROM unknown"), "kept");
        EXPECT_EQ(reader.text("SELECT ZUNKNOWN FROM ZCDNOTE WHERE ZTITLE = 'kept'"), "x");
        EXPECT_EQ(reader.integer("PRAGMA user_version"), Schema::number);
        EXPECT_EQ(reader.text("PRAGMA integrity_check"), "ok");
        const auto backups = LibraryBackups(library, clock, random).list();
        ASSERT_EQ(backups.size(), 1U) << "made before, and once";
        EXPECT_EQ(backups.front().reason, "migration");
        if (opening == 2) break;

        addNote(context, "new", "");  // in a table that never counted its keys
        note.contentVersion = 2;
        context.fetchFirst<CDTask>({})->labels.add(*context.fetchFirst<CDTag>({}));
        context.save();
    }
    // The backup is the library as it was, and the way back.
    const LibraryBackups backups(library, clock, random);
    backups.restore(backups.list().front().folder);
    EXPECT_EQ(titles(open()->viewContext()), "kept trashed ");
}

TEST_F(MigrationTest, ALibraryThatLostItsMarkAndItsTablesInOtherToolsIsTakenBack) {
    makeLibrary();
    SQLiteDatabase(libraryFile, {.journal = SQLiteDatabase::Journal::keep})
        .execute(
            "PRAGMA journal_mode = DELETE; PRAGMA application_id = 0; PRAGMA user_version = 0; "
            "DROP TABLE Z_METADATA; DROP TABLE Z_HISTORY; DROP TABLE Z_HISTORY_CHANGE;");
    {
        const auto store = open();
        EXPECT_EQ(titles(store->viewContext()), "kept trashed ");
        EXPECT_NE(store->libraryID(), "");
        addNote(store->viewContext(), "new", "");
        store->viewContext().save();
        EXPECT_EQ(store->lastTransactionNumber(), 1);
    }
    EXPECT_EQ(open()->viewContext().reader().integer("PRAGMA application_id"), 0x54535352);
}

#ifdef TESSERINE_FAIL_POINTS  // what users run has none
TEST_F(MigrationTest, AKillOrAFullDiskInTheMiddleLeavesTheOldLibraryOrTheNewOne) {
    makeLibrary();
    age();
    const fs::path aged = copyOf("Aged");
    const auto interrupted = [&](const std::function<void(FaultyVFS&)>& fault) {
        putBack(aged);
        return runInChild([&] {
            FaultyVFS disk("failing");
            fault(disk);
            StoreEnvironment with = environment();
            with.sqliteVFS = disk.name();
            const std::string told = refusal(with);
            if (told.find("The disk is full.") != std::string::npos) ::_exit(1);
            if (!told.empty()) throw std::runtime_error(told);
        });
    };
    const auto expectWhole = [&] {
        const auto store = open();
        EXPECT_EQ(titles(store->viewContext()), "kept trashed ");
        EXPECT_EQ(store->viewContext().reader().text("PRAGMA integrity_check"), "ok");
        EXPECT_FALSE(LibraryBackups(library, clock, random).list().empty());
    };
    int kills = 0;
    for (int step = 1;; step += 7) {
        SCOPED_TRACE("killed after step " + std::to_string(step));
        const int status = interrupted([&](FaultyVFS&) {
            failpoint::arm("migration.step", step, [] { ::_exit(FaultyVFS::killedStatus); });
        });
        if (status == 0) break;
        ASSERT_EQ(status, FaultyVFS::killedStatus);
        ++kills;
        expectWhole();
    }
    EXPECT_GT(kills, 2);
    kills = 0;
    for (int nth = 2;; nth += 31) {
        SCOPED_TRACE("write " + std::to_string(nth));
        const int killed = interrupted(
            [&](FaultyVFS& disk) { disk.fail({.nth = nth, .fault = FaultyVFS::Fault::tornKill}); });
        if (killed == 0) break;
        ASSERT_EQ(killed, FaultyVFS::killedStatus);
        ++kills;
        expectWhole();
        const int full = interrupted([&](FaultyVFS& disk) {
            disk.fail(
                {.operation = FaultyVFS::Operation::write,
                 .nth = nth,
                 .fault = FaultyVFS::Fault::full,
                 .isLasting = true});
        });
        EXPECT_LE(full, 1) << "refused with its sentence, or done before the disk was full";
        expectWhole();
    }
    EXPECT_GT(kills, 2);
}
#endif

}  // namespace
}  // namespace tesserine
