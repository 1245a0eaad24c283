#pragma once

#include "base/Encoding.h"
#include "base/sqlite/Statement.h"
#include "base/UserError.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

struct sqlite3;

namespace tesserine {

/// One connection to one SQLite file; the only place besides `Statement` that meets SQLite.
///
/// Opened in serialised mode, so a connection may be touched from several threads, though each
/// owner uses it from one queue. Makes no retry of its own beyond the busy time-out.
class SQLiteDatabase {
public:
    /// The one failure of this layer. `what()` is fit to show; `resultCode()` is SQLite's extended
    /// code.
    class Error final : public UserError {
    public:
        enum class Kind { open, prepare, step };
        Error(Kind kind, int resultCode, const std::string& sentence, std::string message)
            : UserError(sentence),
              kind_(kind),
              resultCode_(resultCode),
              message_(std::move(message)) {}
        Kind kind() const noexcept { return kind_; }
        int resultCode() const noexcept { return resultCode_; }
        /// SQLite's own words, without our sentence around them.
        const std::string& message() const noexcept { return message_; }
        bool isBusy() const noexcept;
        bool isFull() const noexcept;
        bool isDamage() const noexcept;  ///< not a database, or malformed
        bool isReadOnly() const noexcept;
        bool isIOError() const noexcept;

    private:
        Kind kind_;
        int resultCode_;
        std::string message_;
    };

    enum class Access { createIfMissing, readWrite, readOnly };
    enum class Synchronous { normal, full };
    enum class Journal { wal, memory, keep };

    /// How a file is opened. The defaults are the search index's.
    struct Options {
        std::string file = "search index";  ///< completes "Tesserine could not open its …. "
        std::string query = "Search query";  ///< begins "… failed to prepare (…)" and "… failed: …"
        Access access = Access::createIfMissing;
        Journal journal = Journal::wal;
        Synchronous synchronous = Synchronous::normal;
        int busyTimeoutMilliseconds = 5000;
        /// For a file that somebody else may have made: defensive mode, no triggers, no views,
        /// schema not trusted, cells checked, no memory mapping, deleted content overwritten,
        /// limits lowered.
        bool isHardened = false;
        int pageSize = 0;              ///< bytes, for a new file; 0 leaves SQLite's
        int cacheKiB = 0;              ///< page cache; 0 leaves SQLite's
        int autoCheckpointPages = -1;  ///< -1 leaves SQLite's 1000
        /// Closing as the last one leaves the write-ahead log as it is.
        bool keepsLog = false;
        std::string vfs;  ///< empty: the default one
    };

    /// Opens `file` (a path, or ":memory:" with Journal::memory). Throws `Error` (open, or step for
    /// a setting); nothing stays open then.
    explicit SQLiteDatabase(const std::filesystem::path& file);
    SQLiteDatabase(std::filesystem::path file, Options options);
    SQLiteDatabase(const SQLiteDatabase&) = delete;
    SQLiteDatabase& operator=(const SQLiteDatabase&) = delete;
    ~SQLiteDatabase();

    const std::filesystem::path& url() const noexcept { return url_; }

    /// Runs one or more statements without results. Throws `Error` (step).
    void execute(const std::string& sql);
    /// Prepares one statement. Throws `Error` (prepare). The statement must not outlive this object
    /// to be of use: afterwards it fails with "no database".
    Statement prepare(const std::string& sql);
    /// The same statement kept prepared for this connection, reset and with its bindings cleared.
    /// Not to be used by two callers at once. Reset it when you stop before its last row: a
    /// statement in the middle of its rows keeps a read transaction open.
    Statement& cached(std::string_view sql);
    std::int64_t lastInsertRowID() const;
    /// Rows changed by the last statement.
    std::int64_t changes() const;
    bool isInTransaction() const;

    /// "BEGIN IMMEDIATE;", `body`, "COMMIT;". When body or commit throws: "ROLLBACK;", whose own
    /// error is dropped, and the first error goes on. A failing BEGIN goes on without a rollback.
    void transaction(const std::function<void()>& body);

    /// A number that changes when another connection commits (`PRAGMA data_version`).
    std::int64_t dataVersion();
    /// Value of a pragma or of any one-cell query.
    std::int64_t integer(const std::string& sql);
    std::string text(const std::string& sql);
    /// Makes a text function of one argument available to SQL; deterministic, NULL stays NULL.
    void registerTextFunction(
        const std::string& name, std::function<std::string(std::string_view)> function);
    /// Makes a predicate over two texts available to SQL (1 or 0); NULL arguments give 0.
    void registerTextPredicate(
        const std::string& name, std::function<bool(std::string_view, std::string_view)> predicate);
    /// Moves the journal into the file as far as readers allow; `truncate` waits for them under the
    /// busy time-out and also empties it. Tells whether all of it was moved.
    enum class Checkpoint { passive, truncate };
    bool checkpoint(Checkpoint how);
    /// Copies this database's content as it stands into the new file `target`, `pagesPerStep` pages
    /// at a time while others write (SQLite's online backup). Calls `progress(remaining, total)`
    /// between steps; when it returns false the copy stops and false is returned. Meanwhile this
    /// connection is inside a read transaction. The copy is one file with a rollback journal, not
    /// synced; a stopped or failed one is removed.
    bool backup(
        const std::filesystem::path& target,
        int pagesPerStep,
        const std::function<bool(int remaining, int total)>& progress);
    /// Ends a running statement of this connection from another thread.
    void interrupt() const;
    /// Runs `body`, whose statements on this connection end when `limit` is over; tells whether it
    /// got to its end. Not to be nested.
    bool finishesWithin(std::chrono::milliseconds limit, const std::function<void()>& body) const;

    sqlite3* handle() const noexcept { return handle_.get(); }

private:
    friend class Statement;
    void open();
    void harden();
    void setJournal();
    void rollBackQuietly() const noexcept;
    bool copyPages(
        SQLiteDatabase& copy,
        int pagesPerStep,
        const std::function<bool(int remaining, int total)>& progress);
    [[noreturn]] void fail(
        Error::Kind kind, int code, const std::string& message, const std::string& sql = {}) const;

    std::filesystem::path url_;
    Options options_;
    std::shared_ptr<sqlite3>
        handle_;  // weakly held by statements, so that they can tell it is gone
    std::map<std::string, std::unique_ptr<Statement>, std::less<>> cached_;
};

/// The linked SQLite, such as 3040001.
int sqliteVersionNumber();

}  // namespace tesserine
