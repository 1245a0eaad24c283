#include "base/sqlite/SQLiteDatabase.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

namespace tesserine {
namespace {

using Error = SQLiteDatabase::Error;

constexpr int maximumSQLLength = 1'000'000;
constexpr int maximumLikePattern = 50'000;
constexpr int maximumAttached = 2;

struct CloseConnection {
    // With statements still about, the connection goes away with the last of them.
    void operator()(sqlite3* connection) const noexcept { sqlite3_close_v2(connection); }
};

int openFlags(SQLiteDatabase::Access access) {
    switch (access) {
    case SQLiteDatabase::Access::createIfMissing:
        return SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX;
    case SQLiteDatabase::Access::readWrite: return SQLITE_OPEN_READWRITE | SQLITE_OPEN_FULLMUTEX;
    case SQLiteDatabase::Access::readOnly: return SQLITE_OPEN_READONLY | SQLITE_OPEN_FULLMUTEX;
    }
    return SQLITE_OPEN_READONLY | SQLITE_OPEN_FULLMUTEX;
}

/// SQLite makes files as the umask allows; a file made here first is private in any case, and its
/// journal files take the same mode. Failing is no matter: opening tells what is wrong.
void makePrivateFile(const std::filesystem::path& file) {
    const int made =
        ::open(file.c_str(), O_CREAT | O_EXCL | O_RDWR | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (made >= 0) ::close(made);
}

/// SQLite counts the memory it uses behind one lock for all connections; nobody asks for the count.
/// Too late, and of no harm, when something else of this process used SQLite before.
void countNoMemory() {
    static const int result = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
    static_cast<void>(result);
}

int primaryCode(int extendedCode) { return extendedCode & 0xFF; }

using TextFunction = std::function<std::string(std::string_view)>;
using TextPredicate = std::function<bool(std::string_view, std::string_view)>;

std::string_view argument(sqlite3_value* value) {
    const unsigned char* const text = sqlite3_value_text(value);
    if (text == nullptr) return {};
    return {
        reinterpret_cast<const char*>(text), static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

bool isNull(sqlite3_value* value) { return sqlite3_value_type(value) == SQLITE_NULL; }

void callTextFunction(sqlite3_context* context, int /*count*/, sqlite3_value** values) noexcept {
    if (isNull(values[0])) {
        sqlite3_result_null(context);
        return;
    }
    try {
        const auto& function = *static_cast<const TextFunction*>(sqlite3_user_data(context));
        const std::string result = function(argument(values[0]));
        sqlite3_result_text64(context, result.data(), result.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    } catch (const std::exception& error) {
        sqlite3_result_error(context, error.what(), -1);
    }
}

void callTextPredicate(sqlite3_context* context, int /*count*/, sqlite3_value** values) noexcept {
    if (isNull(values[0]) || isNull(values[1])) {
        sqlite3_result_int(context, 0);
        return;
    }
    try {
        const auto& predicate = *static_cast<const TextPredicate*>(sqlite3_user_data(context));
        const bool isTrue = predicate(argument(values[0]), argument(values[1]));
        sqlite3_result_int(context, isTrue ? 1 : 0);
    } catch (const std::exception& error) {
        sqlite3_result_error(context, error.what(), -1);
    }
}

template <class Function>
void destroyFunction(void* function) {
    delete static_cast<Function*>(function);
}

constexpr int functionFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;

}  // namespace

bool Error::isBusy() const noexcept {
    return primaryCode(resultCode_) == SQLITE_BUSY || primaryCode(resultCode_) == SQLITE_LOCKED;
}

bool Error::isFull() const noexcept {
    // On a disk without any space it is the log's index that cannot be made.
    return primaryCode(resultCode_) == SQLITE_FULL || resultCode_ == SQLITE_IOERR_SHMSIZE;
}

bool Error::isDamage() const noexcept {
    return primaryCode(resultCode_) == SQLITE_CORRUPT || primaryCode(resultCode_) == SQLITE_NOTADB;
}

bool Error::isReadOnly() const noexcept { return primaryCode(resultCode_) == SQLITE_READONLY; }

bool Error::isIOError() const noexcept { return primaryCode(resultCode_) == SQLITE_IOERR; }

SQLiteDatabase::SQLiteDatabase(const std::filesystem::path& file)
    : SQLiteDatabase(file, Options{}) {}

SQLiteDatabase::SQLiteDatabase(std::filesystem::path file, Options options)
    : url_(std::move(file)), options_(std::move(options)) {
    open();
    // Before anything reads the file: another process may be changing its journal mode right now.
    sqlite3_busy_timeout(handle(), options_.busyTimeoutMilliseconds);
    if (options_.isHardened) harden();
    if (options_.keepsLog) {
        sqlite3_db_config(handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    }
    if (options_.pageSize > 0) {
        execute("PRAGMA page_size = " + std::to_string(options_.pageSize) + ";");
    }
    setJournal();
    const bool isFull = options_.synchronous == Synchronous::full;
    execute(isFull ? "PRAGMA synchronous = FULL;" : "PRAGMA synchronous = NORMAL;");
    if (options_.cacheKiB > 0) {
        execute("PRAGMA cache_size = -" + std::to_string(options_.cacheKiB) + ";");
    }
    if (options_.autoCheckpointPages >= 0) {
        sqlite3_wal_autocheckpoint(handle(), options_.autoCheckpointPages);
    }
}

SQLiteDatabase::~SQLiteDatabase() = default;

void SQLiteDatabase::open() {
    countNoMemory();
    const bool isFile = options_.journal != Journal::memory && url_ != ":memory:";
    if (isFile && options_.access == Access::createIfMissing) makePrivateFile(url_);

    sqlite3* opened = nullptr;
    const char* const vfs = options_.vfs.empty() ? nullptr : options_.vfs.c_str();
    const int code = sqlite3_open_v2(url_.c_str(), &opened, openFlags(options_.access), vfs);
    handle_ = std::shared_ptr<sqlite3>(opened, CloseConnection{});
    if (code == SQLITE_OK) {
        sqlite3_extended_result_codes(opened, 1);
        return;
    }
    const std::string message = opened == nullptr ? "unknown error" : sqlite3_errmsg(opened);
    fail(Error::Kind::open, opened == nullptr ? code : sqlite3_extended_errcode(opened), message);
}

void SQLiteDatabase::harden() {
    sqlite3_db_config(handle(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(handle(), SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(handle(), SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    sqlite3_limit(handle(), SQLITE_LIMIT_SQL_LENGTH, maximumSQLLength);
    sqlite3_limit(handle(), SQLITE_LIMIT_LIKE_PATTERN_LENGTH, maximumLikePattern);
    sqlite3_limit(handle(), SQLITE_LIMIT_ATTACHED, maximumAttached);
    execute("PRAGMA cell_size_check = ON; PRAGMA mmap_size = 0; PRAGMA secure_delete = ON;");
    // One huge commit does not leave a huge journal behind; in bytes.
    execute("PRAGMA journal_size_limit = 67108864;");
}

void SQLiteDatabase::setJournal() {
    switch (options_.journal) {
    case Journal::wal: execute("PRAGMA journal_mode = WAL;"); break;
    case Journal::memory: execute("PRAGMA journal_mode = MEMORY;"); break;
    case Journal::keep: break;
    }
    // SQLite keeps the old mode without an error where shared memory does not work.
    const bool mustBeWAL = options_.isHardened && options_.journal == Journal::wal;
    if (mustBeWAL && text("PRAGMA journal_mode;") != "wal") {
        fail(
            Error::Kind::open,
            SQLITE_CANTOPEN,
            "this folder does not allow a write-ahead log (a network folder?)");
    }
}

void SQLiteDatabase::fail(
    Error::Kind kind, int code, const std::string& message, const std::string& sql) const {
    std::string sentence;
    switch (kind) {
    case Error::Kind::open:
        sentence = "Tesserine could not open its " + options_.file + ". " + message;
        break;
    case Error::Kind::prepare:
        sentence = options_.query + " failed to prepare (" + message + "): " + sql;
        break;
    case Error::Kind::step: sentence = options_.query + " failed: " + message; break;
    }
    throw Error(kind, code, sentence, message);
}

void SQLiteDatabase::execute(const std::string& sql) {
    char* text = nullptr;
    const int code = sqlite3_exec(handle(), sql.c_str(), nullptr, nullptr, &text);
    const std::unique_ptr<char, decltype(&sqlite3_free)> owned(text, sqlite3_free);
    if (code == SQLITE_OK) return;
    fail(Error::Kind::step, code, text != nullptr ? text : sqlite3_errmsg(handle()));
}

Statement SQLiteDatabase::prepare(const std::string& sql) {
    sqlite3_stmt* made = nullptr;
    const int code = sqlite3_prepare_v2(handle(), sql.c_str(), -1, &made, nullptr);
    Statement statement(made, handle_, options_.query);
    if (code == SQLITE_OK && made != nullptr) return statement;
    fail(Error::Kind::prepare, code, sqlite3_errmsg(handle()), sql);
}

Statement& SQLiteDatabase::cached(std::string_view sql) {
    auto found = cached_.find(sql);
    if (found == cached_.end()) {
        std::string text(sql);
        auto made = std::make_unique<Statement>(prepare(text));
        found = cached_.emplace(std::move(text), std::move(made)).first;
    }
    Statement& statement = *found->second;
    statement.reset();
    statement.clearBindings();
    return statement;
}

std::int64_t SQLiteDatabase::lastInsertRowID() const { return sqlite3_last_insert_rowid(handle()); }

std::int64_t SQLiteDatabase::changes() const { return sqlite3_changes64(handle()); }

bool SQLiteDatabase::isInTransaction() const { return sqlite3_get_autocommit(handle()) == 0; }

void SQLiteDatabase::transaction(const std::function<void()>& body) {
    execute("BEGIN IMMEDIATE;");
    try {
        body();
        execute("COMMIT;");
    } catch (...) {
        rollBackQuietly();
        throw;
    }
}

void SQLiteDatabase::rollBackQuietly() const noexcept {
    // Often SQLite has rolled back by itself; the error that led here is the one to be told.
    sqlite3_exec(handle(), "ROLLBACK;", nullptr, nullptr, nullptr);
}

std::int64_t SQLiteDatabase::dataVersion() {
    Statement& statement = cached("PRAGMA data_version;");
    const bool hasRow = statement.step();
    const std::int64_t version = hasRow ? statement.integer(0) : 0;
    statement.reset();
    return version;
}

std::int64_t SQLiteDatabase::integer(const std::string& sql) {
    Statement statement = prepare(sql);
    return statement.step() ? statement.integer(0) : 0;
}

std::string SQLiteDatabase::text(const std::string& sql) {
    Statement statement = prepare(sql);
    return statement.step() ? statement.text(0).value_or("") : "";
}

void SQLiteDatabase::registerTextFunction(const std::string& name, TextFunction function) {
    auto owned = std::make_unique<TextFunction>(std::move(function));
    const int code = sqlite3_create_function_v2(
        handle(),
        name.c_str(),
        1,
        functionFlags,
        owned.release(),  // SQLite destroys it, also when it fails
        callTextFunction,
        nullptr,
        nullptr,
        destroyFunction<TextFunction>);
    if (code != SQLITE_OK) fail(Error::Kind::step, code, sqlite3_errmsg(handle()));
}

void SQLiteDatabase::registerTextPredicate(const std::string& name, TextPredicate predicate) {
    auto owned = std::make_unique<TextPredicate>(std::move(predicate));
    const int code = sqlite3_create_function_v2(
        handle(),
        name.c_str(),
        2,
        functionFlags,
        owned.release(),  // SQLite destroys it, also when it fails
        callTextPredicate,
        nullptr,
        nullptr,
        destroyFunction<TextPredicate>);
    if (code != SQLITE_OK) fail(Error::Kind::step, code, sqlite3_errmsg(handle()));
}

bool SQLiteDatabase::checkpoint(Checkpoint how) {
    const int mode =
        how == Checkpoint::truncate ? SQLITE_CHECKPOINT_TRUNCATE : SQLITE_CHECKPOINT_PASSIVE;
    int framesInJournal = 0;
    int framesMoved = 0;
    const int code =
        sqlite3_wal_checkpoint_v2(handle(), nullptr, mode, &framesInJournal, &framesMoved);
    if (primaryCode(code) == SQLITE_BUSY) return false;
    if (code != SQLITE_OK) fail(Error::Kind::step, code, sqlite3_errmsg(handle()));
    return framesInJournal == framesMoved;
}

void SQLiteDatabase::interrupt() const { sqlite3_interrupt(handle()); }

bool SQLiteDatabase::finishesWithin(
    std::chrono::milliseconds limit, const std::function<void()>& body) const {
    using Monotonic = std::chrono::steady_clock;
    struct Watch {
        sqlite3* connection;
        Monotonic::time_point end;
        static int isOver(void* watch) {
            return Monotonic::now() > static_cast<const Watch*>(watch)->end ? 1 : 0;
        }
        ~Watch() { sqlite3_progress_handler(connection, 0, nullptr, nullptr); }
    } watch{handle(), Monotonic::now() + limit};
    constexpr int instructionsBetweenLooks = 1'000;
    sqlite3_progress_handler(handle(), instructionsBetweenLooks, &Watch::isOver, &watch);
    try {
        body();
        return true;
    } catch (const Error& error) {
        if (error.resultCode() != SQLITE_INTERRUPT) throw;
        return false;
    }
}

int sqliteVersionNumber() { return sqlite3_libversion_number(); }

}  // namespace tesserine
