#include "server/ServerDatabase.h"

namespace tesserine::server {
namespace {

constexpr const char* schema = R"sql(
    CREATE TABLE IF NOT EXISTS users (
        id TEXT PRIMARY KEY, email TEXT NOT NULL UNIQUE, salt BLOB NOT NULL, key BLOB NOT NULL,
        rounds INTEGER NOT NULL, seq INTEGER NOT NULL DEFAULT 0) WITHOUT ROWID;
    -- Of codes and tokens only digests are kept.
    CREATE TABLE IF NOT EXISTS codes (
        digest TEXT PRIMARY KEY, user TEXT NOT NULL, expires REAL NOT NULL) WITHOUT ROWID;
    CREATE TABLE IF NOT EXISTS sessions (
        id TEXT PRIMARY KEY, user TEXT NOT NULL, label TEXT NOT NULL, lastUsed REAL NOT NULL,
        refresh TEXT NOT NULL, previousRefresh TEXT) WITHOUT ROWID;
    CREATE INDEX IF NOT EXISTS sessionsByRefresh ON sessions (refresh);
    CREATE INDEX IF NOT EXISTS sessionsByPrevious ON sessions (previousRefresh);
    CREATE TABLE IF NOT EXISTS accessTokens (
        digest TEXT PRIMARY KEY, session TEXT NOT NULL, expires REAL NOT NULL) WITHOUT ROWID;
    CREATE TABLE IF NOT EXISTS apiTokens (
        id TEXT PRIMARY KEY, user TEXT NOT NULL, label TEXT NOT NULL, digest TEXT NOT NULL UNIQUE,
        created REAL NOT NULL, lastUsed REAL) WITHOUT ROWID;
    CREATE TABLE IF NOT EXISTS shares (
        user TEXT NOT NULL, note TEXT NOT NULL, id TEXT NOT NULL, digest TEXT NOT NULL UNIQUE,
        created REAL NOT NULL, PRIMARY KEY (user, note)) WITHOUT ROWID;
    CREATE TABLE IF NOT EXISTS records (
        key INTEGER PRIMARY KEY, user TEXT NOT NULL, id TEXT NOT NULL, kind TEXT NOT NULL,
        rev INTEGER NOT NULL, seq INTEGER NOT NULL, deleted INTEGER NOT NULL,
        payload TEXT NOT NULL, updated TEXT NOT NULL, sha256 TEXT, UNIQUE (user, id));
    CREATE INDEX IF NOT EXISTS recordsBySeq ON records (user, seq);
    CREATE INDEX IF NOT EXISTS recordsByFile ON records (user, sha256) WHERE sha256 IS NOT NULL;
    CREATE TABLE IF NOT EXISTS revisions (
        key INTEGER PRIMARY KEY, user TEXT NOT NULL, id TEXT NOT NULL, kind TEXT NOT NULL,
        reason TEXT NOT NULL, payload TEXT NOT NULL, updated TEXT NOT NULL);
    CREATE TABLE IF NOT EXISTS eras (
        user TEXT NOT NULL, start INTEGER NOT NULL, name TEXT NOT NULL,
        PRIMARY KEY (user, start)) WITHOUT ROWID;
    CREATE INDEX IF NOT EXISTS revisionsOfRecord ON revisions (user, id);
)sql";

SQLiteDatabase opened(const std::filesystem::path& folder) {
    return {
        folder / "service.sqlite",
        {.file = "service's data",
         .query = "A query of the service",
         .synchronous = SQLiteDatabase::Synchronous::full}};
}

/// Ends with its scope what was begun with "BEGIN"; nothing was written.
class Reading {
public:
    explicit Reading(SQLiteDatabase& database) : database_(database) { database.execute("BEGIN"); }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;
    ~Reading() {
        try {
            database_.execute("ROLLBACK");
        } catch (const SQLiteDatabase::Error&) {}  // it had ended by itself
    }

private:
    SQLiteDatabase& database_;
};

}  // namespace

ServerDatabase::ServerDatabase(const std::filesystem::path& folder)
    : writer_(opened(folder)), reader_(opened(folder)) {
    writer_.execute(schema);
}

void ServerDatabase::runReading(const Work& work) {
    const std::scoped_lock lock(reading_);
    const Reading reading(reader_);
    work(reader_);
}

void ServerDatabase::runWithOthers(const Work& work) {
    Part part{.work = work};
    std::unique_lock lock(mutex_);
    waiting_.push_back(&part);
    ended_.wait(lock, [&] { return part.isEnded || !isWriting_; });
    if (!part.isEnded) {
        isWriting_ = true;
        const auto parts = std::exchange(waiting_, {});
        lock.unlock();
        perform(parts);
        lock.lock();
        for (Part* const one : parts) {
            one->isEnded = true;
        }
        isWriting_ = false;
        ended_.notify_all();
    }
    if (part.error) std::rethrow_exception(part.error);
}

/// All of them in one transaction; one that fails takes only its own back.
void ServerDatabase::perform(const std::vector<Part*>& parts) {
    try {
        writer_.transaction([&] {
            for (Part* const part : parts) {
                writer_.execute("SAVEPOINT part");
                try {
                    part->work(writer_);
                } catch (...) {
                    part->error = std::current_exception();
                    writer_.execute("ROLLBACK TO part");
                }
                writer_.execute("RELEASE part");
            }
        });
    } catch (...) {
        for (Part* const part : parts) {
            part->error = std::current_exception();
        }
    }
}

}  // namespace tesserine::server
