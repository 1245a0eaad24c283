#include "base/sqlite/SQLiteDatabase.h"

#include <sqlite3.h>

#include <system_error>

namespace tesserine {
namespace {

constexpr int busyPauseMilliseconds = 10;

/// Holds one state of a database in view, so that others may write without the copy starting
/// afresh. Inside a transaction of the caller there is nothing to do.
class ReadTransaction {
public:
    explicit ReadTransaction(SQLiteDatabase& database)
        : database_(database), isOurs_(!database.isInTransaction()) {
        if (!isOurs_) return;
        database_.execute("BEGIN;");
        // BEGIN alone reads nothing yet.
        sqlite3_exec(
            database_.handle(), "SELECT 1 FROM sqlite_schema LIMIT 1;", nullptr, nullptr, nullptr);
    }
    ReadTransaction(const ReadTransaction&) = delete;
    ReadTransaction& operator=(const ReadTransaction&) = delete;
    ~ReadTransaction() {
        if (isOurs_) sqlite3_exec(database_.handle(), "COMMIT;", nullptr, nullptr, nullptr);
    }

private:
    SQLiteDatabase& database_;
    bool isOurs_;
};

/// The new file of a copy; removed with all that belongs to it unless `keep` was called.
class NewFile {
public:
    explicit NewFile(std::filesystem::path file) : file_(std::move(file)) {}
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile() {
        if (isKept_) return;
        std::error_code ignored;
        std::filesystem::remove(file_, ignored);
        for (const char* suffix : {"-journal", "-wal", "-shm"}) {
            std::filesystem::remove(file_.native() + suffix, ignored);
        }
    }
    void keep() { isKept_ = true; }

private:
    std::filesystem::path file_;
    bool isKept_ = false;
};

struct FinishBackup {
    void operator()(sqlite3_backup* backup) const noexcept { sqlite3_backup_finish(backup); }
};

}  // namespace

bool SQLiteDatabase::backup(
    const std::filesystem::path& target,
    int pagesPerStep,
    const std::function<bool(int remaining, int total)>& progress) {
    std::error_code ignored;
    if (std::filesystem::exists(std::filesystem::symlink_status(target, ignored))) {
        fail(Error::Kind::open, SQLITE_CANTOPEN, "the file of the copy exists already");
    }

    NewFile made(target);
    SQLiteDatabase copy(
        target,
        {.file = options_.file,
         .query = options_.query,
         .journal = Journal::keep,
         .vfs = options_.vfs});
    copy.execute("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF;");
    if (!copyPages(copy, pagesPerStep, progress)) return false;

    // As a copied page the journal mode came along; one plain file is what a copy should be.
    copy.execute("PRAGMA journal_mode = DELETE;");
    made.keep();
    return true;
}

bool SQLiteDatabase::copyPages(
    SQLiteDatabase& copy,
    int pagesPerStep,
    const std::function<bool(int remaining, int total)>& progress) {
    const ReadTransaction reading(*this);
    const std::unique_ptr<sqlite3_backup, FinishBackup> backup(
        sqlite3_backup_init(copy.handle(), "main", handle(), "main"));
    if (backup == nullptr) {
        fail(
            Error::Kind::step,
            sqlite3_extended_errcode(copy.handle()),
            sqlite3_errmsg(copy.handle()));
    }
    while (true) {
        const int code = sqlite3_backup_step(backup.get(), pagesPerStep);
        if (code == SQLITE_DONE) return true;

        const bool mustWait = code == SQLITE_BUSY || code == SQLITE_LOCKED;
        if (code != SQLITE_OK && !mustWait) fail(Error::Kind::step, code, sqlite3_errstr(code));
        if (mustWait) sqlite3_sleep(busyPauseMilliseconds);
        const int remaining = sqlite3_backup_remaining(backup.get());
        const int total = sqlite3_backup_pagecount(backup.get());
        if (progress && !progress(remaining, total)) return false;
    }
}

}  // namespace tesserine
