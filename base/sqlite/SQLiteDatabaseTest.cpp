#include "base/sqlite/SQLiteDatabase.h"

#include "base/Text.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <optional>
#include <stdexcept>
#include <thread>

namespace tesserine {
namespace {

using Access = SQLiteDatabase::Access;
using Error = SQLiteDatabase::Error;
using Journal = SQLiteDatabase::Journal;
using Options = SQLiteDatabase::Options;

/// The operation's error; fails the test when there is none.
template <class Operation>
Error errorOf(const Operation& operation) {
    try {
        operation();
    } catch (const Error& error) {
        return error;
    }
    ADD_FAILURE() << "nothing was thrown";
    return {Error::Kind::step, 0, "", ""};
}

class SQLite : public testing::Test {
protected:
    const test::TemporaryFolder folder_;
    const std::filesystem::path file_ = folder_ / "index.sqlite";
};

TEST_F(SQLite, ErrorsAreSentencesOfTheirOwner) {
    const Error open = errorOf([&] { SQLiteDatabase(folder_ / "absent/x.sqlite"); });
    EXPECT_STREQ(
        open.what(), "Tesserine could not open its search index. unable to open database file");
    EXPECT_EQ(open.kind(), Error::Kind::open);

    SQLiteDatabase index(file_);
    index.execute("CREATE TABLE docs (uid TEXT UNIQUE); INSERT INTO docs VALUES ('a');");
    const Error prepare = errorOf([&] { index.prepare("SELEC 1"); });
    EXPECT_STREQ(
        prepare.what(), "Search query failed to prepare (near \"SELEC\": syntax error): SELEC 1");
    EXPECT_EQ(prepare.kind(), Error::Kind::prepare);
    EXPECT_THROW(index.prepare(""), Error);

    Statement insert = index.prepare("INSERT INTO docs VALUES (?)");
    insert.bindText(1, "a");
    const Error step = errorOf([&] { insert.step(); });
    EXPECT_STREQ(step.what(), "Search query failed: UNIQUE constraint failed: docs.uid");
    EXPECT_EQ(step.message(), "UNIQUE constraint failed: docs.uid");
    EXPECT_EQ(step.resultCode(), SQLITE_CONSTRAINT_UNIQUE);

    SQLiteDatabase library(folder_ / "l.sqlite", {.file = "library", .query = "Library request"});
    EXPECT_STREQ(
        errorOf([&] { library.execute("x"); }).what(),
        "Library request failed: near \"x\": syntax error");
    test::putContent(folder_ / "text", "no database, whatever its name says; long enough to look");
    EXPECT_TRUE(errorOf([&] { SQLiteDatabase(folder_ / "text"); }).isDamage());
}

TEST_F(SQLite, CellsComeBackAsTheyWereBound) {
    SQLiteDatabase database(file_);
    database.execute("CREATE TABLE t (a, b, c, d, e, f);");
    Statement insert = database.prepare("INSERT INTO t VALUES (?, ?, ?, ?, ?, ?)");
    insert.bindText(1, "Café");
    insert.bindText(2, "");
    insert.bindInteger(3, INT64_MIN);
    insert.bindDouble(4, 0.1);
    insert.bindBlob(5, Bytes{0, 1, 0});
    insert.bindBlob(6, {});
    EXPECT_FALSE(insert.step());
    EXPECT_EQ(database.changes(), 1);

    Statement select = database.prepare("SELECT a, b, c, d, e, f, NULL FROM t");
    ASSERT_TRUE(select.step());
    EXPECT_EQ(select.text(0), "Café");
    EXPECT_EQ(select.text(1), "");
    EXPECT_EQ(select.integer(2), INT64_MIN);
    EXPECT_EQ(select.real(3), 0.1);
    EXPECT_EQ(Bytes(select.blob(4).begin(), select.blob(4).end()), (Bytes{0, 1, 0}));
    EXPECT_EQ(select.type(5), Statement::Type::blob);  // of no bytes, yet not NULL
    EXPECT_EQ(select.text(6), std::nullopt);
    EXPECT_FALSE(select.step());
}

TEST_F(SQLite, DamagedTextIsReadAsValidText) {
    SQLiteDatabase database(file_);
    Statement select = database.prepare("SELECT CAST(x'4100ff42' AS TEXT)");
    ASSERT_TRUE(select.step());
    EXPECT_EQ(select.text(0), "A\uFFFDB");
    EXPECT_EQ(select.textView(0).size(), 4U);
}

TEST_F(SQLite, ATransactionThatThrowsLeavesNoRowAndTheFirstError) {
    SQLiteDatabase database(file_);
    database.execute("CREATE TABLE t (a INTEGER PRIMARY KEY);");
    EXPECT_THROW(
        database.transaction([&] {
            database.execute("INSERT INTO t VALUES (1);");
            throw std::out_of_range("first");
        }),
        std::out_of_range);
    // The rollback has nothing to do any more, and its error is not the one that is told.
    EXPECT_THROW(
        database.transaction([&] {
            database.execute("INSERT INTO t VALUES (2);");
            database.execute("ROLLBACK;");
            throw std::out_of_range("first");
        }),
        std::out_of_range);
    EXPECT_EQ(database.integer("SELECT count(*) FROM t"), 0);

    // A second BEGIN fails and leaves the first transaction open.
    database.transaction([&] {
        database.execute("INSERT INTO t VALUES (3);");
        EXPECT_THROW(database.transaction([] {}), Error);
        EXPECT_TRUE(database.isInTransaction());
    });
    EXPECT_EQ(database.integer("SELECT count(*) FROM t"), 1);
}

TEST_F(SQLite, AWriterThatWaitsInVainIsBusy) {
    SQLiteDatabase one(file_);
    SQLiteDatabase two(file_, {.busyTimeoutMilliseconds = 1});
    const std::int64_t before = two.dataVersion();
    one.execute("CREATE TABLE t (a);");
    EXPECT_NE(two.dataVersion(), before);
    one.transaction([&] {
        EXPECT_TRUE(errorOf([&] { two.execute("BEGIN IMMEDIATE;"); }).isBusy());
        EXPECT_EQ(two.integer("SELECT count(*) FROM t"), 0);  // readers run meanwhile
    });
}

TEST_F(SQLite, AStatementThatOutlivesItsDatabaseFailsAndHarmsNothing) {
    std::optional<Statement> statement;
    {
        SQLiteDatabase database(file_);
        statement = database.prepare("SELECT 1");
        ASSERT_TRUE(statement->step());
        EXPECT_EQ(&database.cached("SELECT 2"), &database.cached("SELECT 2"));
    }
    EXPECT_STREQ(errorOf([&] { statement->step(); }).what(), "Search query failed: no database");
    statement->reset();
    statement.reset();
}

TEST_F(SQLite, TheDefaultsAreTheIndexsSettings) {
    SQLiteDatabase database(file_);
    EXPECT_EQ(database.text("PRAGMA journal_mode"), "wal");
    EXPECT_EQ(database.integer("PRAGMA synchronous"), 1);
    EXPECT_EQ(database.integer("PRAGMA busy_timeout"), 5000);
    database.execute("CREATE TABLE t (a);");
    for (const char* suffix : {"", "-wal", "-shm"}) {
        struct stat status {};
        ASSERT_EQ(::stat((file_.native() + suffix).c_str(), &status), 0) << suffix;
        EXPECT_EQ(status.st_mode & 0777, 0600U) << suffix;
    }
}

TEST_F(SQLite, AHardenedConnectionTrustsNothingInTheFile) {
    {
        SQLiteDatabase maker(file_);
        maker.execute(R"(
            CREATE TABLE t (a);
            CREATE TABLE seen (a);
            CREATE VIEW v AS SELECT a FROM t;
            CREATE TRIGGER spy AFTER INSERT ON t BEGIN INSERT INTO seen VALUES (new.a); END;
        )");
    }
    SQLiteDatabase database(
        file_,
        {.synchronous = SQLiteDatabase::Synchronous::full,
         .isHardened = true,
         .cacheKiB = 4096,
         .autoCheckpointPages = 0});
    database.execute("INSERT INTO t VALUES (1);");
    EXPECT_EQ(database.integer("SELECT count(*) FROM seen"), 0);
    EXPECT_THROW(database.prepare("SELECT * FROM v"), Error);
    EXPECT_THROW(
        database.execute("PRAGMA writable_schema = ON; DELETE FROM sqlite_schema;"), Error);
    EXPECT_THROW(database.execute(std::string(1'100'000, ' ') + "SELECT 1"), Error);
    EXPECT_EQ(database.integer("PRAGMA synchronous"), 2);
    EXPECT_EQ(database.integer("PRAGMA secure_delete"), 1);
    EXPECT_EQ(database.integer("PRAGMA trusted_schema"), 0);
    EXPECT_EQ(database.integer("PRAGMA cell_size_check"), 1);
    EXPECT_EQ(database.integer("PRAGMA mmap_size"), 0);
    EXPECT_EQ(database.integer("PRAGMA journal_size_limit"), 64 * 1024 * 1024);
    EXPECT_EQ(database.integer("PRAGMA cache_size"), -4096);
    EXPECT_EQ(database.integer("PRAGMA wal_autocheckpoint"), 0);
    // Without shared memory there is no write-ahead log; SQLite alone would go on without a word.
    EXPECT_THROW(SQLiteDatabase(":memory:", {.isHardened = true}), Error);
}

TEST_F(SQLite, OpensNoFileThatIsNotThereUnlessAskedTo) {
    for (const Access access : {Access::readWrite, Access::readOnly}) {
        EXPECT_THROW(SQLiteDatabase(file_, {.access = access, .journal = Journal::keep}), Error);
        EXPECT_FALSE(std::filesystem::exists(file_));
    }
    SQLiteDatabase(file_, {.pageSize = 8192}).execute("CREATE TABLE t (a);");
    SQLiteDatabase reader(file_, {.access = Access::readOnly, .journal = Journal::keep});
    EXPECT_TRUE(errorOf([&] { reader.execute("INSERT INTO t VALUES (1);"); }).isReadOnly());
    EXPECT_EQ(reader.integer("PRAGMA page_size"), 8192);
}

TEST_F(SQLite, FunctionsOfOursWorkInStatementsAndTheirFailureIsAnError) {
    SQLiteDatabase database(file_);
    database.registerTextFunction("fold", [](std::string_view text) {
        if (text == "throw") throw std::runtime_error("as asked");
        return text::caseFolded(text);
    });
    database.registerTextPredicate("has", [](std::string_view text, std::string_view part) {
        return text.find(part) != std::string_view::npos;
    });
    EXPECT_EQ(database.text("SELECT fold('ÉTÉ')"), "été");
    EXPECT_EQ(database.integer("SELECT fold(NULL) IS NULL"), 1);
    EXPECT_EQ(database.integer("SELECT has('abc', 'b') + has('abc', 'x') + has(NULL, 'x')"), 1);
    EXPECT_STREQ(
        errorOf([&] { database.text("SELECT fold('throw')"); }).what(),
        "Search query failed: as asked");
    EXPECT_THROW(database.registerTextFunction(std::string(300, 'x'), {}), Error);
}

TEST_F(SQLite, ACopyHoldsOneMomentWhileOthersWrite) {
    SQLiteDatabase source(file_, {.pageSize = 1024});
    SQLiteDatabase other(file_);
    source.execute("CREATE TABLE t (a);");
    const auto insert = [](SQLiteDatabase& database) {
        database.execute("INSERT INTO t VALUES (randomblob(700));");
    };
    for (int i = 0; i < 100; ++i) {
        insert(source);
    }

    int steps = 0;
    const bool isWhole = source.backup(folder_ / "copy", 5, [&](int remaining, int total) {
        EXPECT_LT(remaining, total);
        insert(other);
        return ++steps > 0;
    });
    EXPECT_TRUE(isWhole);
    EXPECT_GT(steps, 10);
    EXPECT_EQ(source.integer("SELECT count(*) FROM t"), 100 + steps);
    EXPECT_FALSE(source.isInTransaction());
    EXPECT_TRUE(source.checkpoint(SQLiteDatabase::Checkpoint::truncate));

    SQLiteDatabase copy(folder_ / "copy", {.access = Access::readOnly, .journal = Journal::keep});
    EXPECT_EQ(copy.integer("SELECT count(*) FROM t"), 100);
    EXPECT_EQ(copy.text("PRAGMA integrity_check"), "ok");
    EXPECT_EQ(copy.text("PRAGMA journal_mode"), "delete");  // one file, complete without others
    EXPECT_FALSE(std::filesystem::exists(folder_ / "copy-wal"));
}

TEST_F(SQLite, AStoppedCopyLeavesNothingAndNoCopyReplacesAFile) {
    SQLiteDatabase source(file_);
    source.execute("CREATE TABLE t (a); CREATE TABLE u (a);");
    EXPECT_FALSE(source.backup(folder_ / "copy", 1, [](int, int) { return false; }));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "copy"));
    EXPECT_THROW(
        source.backup(
            folder_ / "copy", 1, [](int, int) -> bool { throw std::runtime_error("stop"); }),
        std::runtime_error);
    EXPECT_FALSE(std::filesystem::exists(folder_ / "copy"));

    test::putContent(folder_ / "copy", "mine");
    EXPECT_THROW(source.backup(folder_ / "copy", 1, {}), Error);
    EXPECT_EQ(test::contentOf(folder_ / "copy"), "mine");
}

TEST_F(SQLite, ARunningStatementCanBeInterruptedFromAnotherThread) {
    SQLiteDatabase database(file_);
    std::jthread interrupter([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            database.interrupt();
        }
    });
    const Error error = errorOf([&] {
        database.integer(
            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT count(*) FROM n");
    });
    EXPECT_EQ(error.resultCode(), SQLITE_INTERRUPT);
}

TEST_F(SQLite, StatementsCanBeGivenALimitedTime) {
    SQLiteDatabase database(file_);
    EXPECT_FALSE(database.finishesWithin(std::chrono::milliseconds(5), [&] {
        database.integer(
            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT count(*) FROM n");
    }));
    const std::string count =
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 100000)"
        " SELECT count(*) FROM n";
    EXPECT_EQ(database.integer(count), 100'000);  // the limit is gone
    EXPECT_TRUE(database.finishesWithin(std::chrono::hours(1), [&] { database.integer(count); }));
}

}  // namespace
}  // namespace tesserine
