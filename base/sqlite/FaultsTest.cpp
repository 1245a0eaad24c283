#include "base/sqlite/SQLiteDatabase.h"
#include "tests/support/Child.h"
#include "tests/support/FaultyVFS.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

using test::FaultyVFS;
using Error = SQLiteDatabase::Error;
using Fault = FaultyVFS::Fault;
using File = FaultyVFS::File;
using Operation = FaultyVFS::Operation;

class SQLiteOnAFaultyDisk : public testing::Test {
protected:
    SQLiteDatabase::Options options() const {
        return {
            .synchronous = SQLiteDatabase::Synchronous::full,
            .isHardened = true,
            .vfs = disk_.name()};
    }

    /// A database whose table holds one row, closed.
    void makeDatabase() const {
        for (const char* suffix : {"", "-wal", "-shm"}) {
            std::filesystem::remove(file_.native() + suffix);
        }
        SQLiteDatabase database(file_, options());
        database.execute("CREATE TABLE t (a); INSERT INTO t VALUES (randomblob(9000));");
    }

    static void insertAndCheckpoint(SQLiteDatabase& database) {
        database.transaction([&] {
            for (int i = 0; i < 9; ++i) {
                database.execute("INSERT INTO t VALUES (randomblob(9000));");
            }
        });
        database.checkpoint(SQLiteDatabase::Checkpoint::truncate);
    }

    const test::TemporaryFolder folder_;
    const std::filesystem::path file_ = folder_ / "x.sqlite";
    FaultyVFS disk_{"faulty"};
};

TEST_F(SQLiteOnAFaultyDisk, KilledAtAnyOperationItHoldsTheStateBeforeOrAfter) {
    for (const Fault fault : {Fault::kill, Fault::tornKill}) {
        int killed = 0;
        bool isDone = false;
        for (int nth = 1; !isDone; ++nth) {
            SCOPED_TRACE(nth);
            makeDatabase();
            const int status = test::runInChild([&] {
                SQLiteDatabase database(file_, options());
                disk_.fail({.operation = Operation::any, .nth = nth, .fault = fault});
                insertAndCheckpoint(database);
            });
            isDone = status == 0;
            if (!isDone) {
                ASSERT_EQ(status, FaultyVFS::killedStatus);
                ++killed;
            }

            SQLiteDatabase database(file_, options());
            ASSERT_EQ(database.text("PRAGMA integrity_check"), "ok");
            const std::int64_t rows = database.integer("SELECT count(*) FROM t");
            ASSERT_TRUE(rows == 1 || rows == 10) << rows;
            ASSERT_TRUE(rows == 10 || !isDone);
        }
        EXPECT_GT(killed, 20);  // writes of the log, its sync, the checkpoint, the file's sync
    }
}

TEST_F(SQLiteOnAFaultyDisk, AFullDiskFailsTheCommitAndLosesNothing) {
    makeDatabase();
    SQLiteDatabase database(file_, options());
    disk_.fail(
        {.operation = Operation::write,
         .file = File::wal,
         .fault = Fault::full,
         .isLasting = true});
    try {
        insertAndCheckpoint(database);
        FAIL() << "the disk is full";
    } catch (const Error& error) {
        EXPECT_TRUE(error.isFull());
        EXPECT_STREQ(error.what(), "Search query failed: database or disk is full");
    }
    EXPECT_FALSE(database.isInTransaction());
    EXPECT_EQ(database.integer("SELECT count(*) FROM t"), 1);

    disk_.clear();  // somebody made room
    insertAndCheckpoint(database);
    EXPECT_EQ(database.integer("SELECT count(*) FROM t"), 10);
    EXPECT_GT(disk_.count(Operation::sync, File::main), 0);
}

TEST_F(SQLiteOnAFaultyDisk, AFailingSyncFailsTheCommit) {
    makeDatabase();
    SQLiteDatabase database(file_, options());
    disk_.fail({.operation = Operation::sync, .file = File::wal});
    try {
        insertAndCheckpoint(database);
        FAIL() << "nothing was synced";
    } catch (const Error& error) {
        EXPECT_TRUE(error.isIOError());
    }
    EXPECT_EQ(database.integer("SELECT count(*) FROM t"), 1);
}

TEST_F(SQLiteOnAFaultyDisk, ACopyThatFindsNoRoomIsRemoved) {
    makeDatabase();
    SQLiteDatabase database(file_, options());
    disk_.fail({.operation = Operation::write, .file = File::main, .nth = 2, .fault = Fault::full});
    EXPECT_THROW(database.backup(folder_ / "copy", 1, {}), Error);
    EXPECT_FALSE(std::filesystem::exists(folder_ / "copy"));
    EXPECT_TRUE(database.backup(folder_ / "copy2", 1, {}));
}

}  // namespace
}  // namespace tesserine
