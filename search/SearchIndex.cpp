#include "search/SearchIndex.h"

#include "base/FailPoint.h"
#include "base/Text.h"
#include "search/IndexSchema.h"
#include "search/IndexWriter.h"

#include <sys/stat.h>

#include <chrono>
#include <system_error>
#include <thread>

namespace tesserine {
namespace {

using Error = SQLiteDatabase::Error;

constexpr const char* logCategory = "index";
/// `tidyUp` lets so many documents be written first.
constexpr std::uint64_t documentsBeforeTidying = 16;
/// A commit moves a journal beyond 16 or 64 MB into the file itself.
constexpr const char* settingsForChanges =
    "PRAGMA cache_size = -8000; PRAGMA wal_autocheckpoint = 4000;";
constexpr const char* settingsForEverything =
    "PRAGMA cache_size = -65536; PRAGMA wal_autocheckpoint = 16000;";
constexpr int openingAttempts = 100;
constexpr std::chrono::milliseconds betweenAttempts{20};

std::pair<std::uint64_t, std::uint64_t> identityOf(const std::filesystem::path& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) return {};
    return {status.st_dev, status.st_ino};
}

/// Whatever goes wrong while an index is opened is told as that.
Error openError(const Error& error) {
    const SQLiteDatabase::Options options;
    return {
        Error::Kind::open,
        error.resultCode(),
        "Tesserine could not open its " + options.file + ". " + error.message(),
        error.message()};
}

std::unique_ptr<SQLiteDatabase> openOnce(
    const std::filesystem::path& file, const std::string& vfs) {
    auto opened = std::make_unique<SQLiteDatabase>(file, SQLiteDatabase::Options{.vfs = vfs});
    opened->execute(settingsForChanges);
    // Pages that fall free keep what was deleted; `forgetDeleted` is there for that.
    opened->execute("PRAGMA secure_delete = FAST;");
    indexschema::setUp(*opened);
    return opened;
}

/// SQLite's own waiting does not cover the moment in which another process turns a new file's
/// journal into a write-ahead log.
std::unique_ptr<SQLiteDatabase> openPatiently(
    const std::filesystem::path& file, const std::string& vfs) {
    for (int attempt = 1; attempt < openingAttempts; ++attempt) {
        try {
            return openOnce(file, vfs);
        } catch (const Error& error) {
            if (!error.isBusy()) throw;
        }
        std::this_thread::sleep_for(betweenAttempts);
    }
    return openOnce(file, vfs);
}

}  // namespace

std::string indexFold(std::string_view text) { return text::withoutMarks(text::lowercased(text)); }

SearchIndex::SearchIndex(std::filesystem::path file, SearchIndexOptions options)
    : file_(std::move(file)),
      options_(std::move(options)),
      log_(options_.log.category(logCategory)),
      queue_("app.tesserine.search", log_) {
    queue_.sync([this] { open(); });
}

SearchIndex::~SearchIndex() {
    // A connection is closed where it was used.
    queue_.sync([this] { close(); });
}

SQLiteDatabase& SearchIndex::database() {
    if (database_) return *database_;
    throw Error(*failure_);
}

void SearchIndex::open() {
    try {
        database_ = openPatiently(file_, options_.vfs);
        FAIL_POINT("index.opened");
        identity_ = identityOf(file_);
        ++openings_;
    } catch (const Error& error) {
        failure_ = openError(error);
        throw Error(*failure_);
    }
}

void SearchIndex::close() {
    recent_.clear();
    batchWriter_.reset();
    database_.reset();
}

bool SearchIndex::isReplaced() {
    return queue_.call<bool>([this] { return database_ && identityOf(file_) != identity_; });
}

void SearchIndex::reopen() {
    queue_.sync([this] {
        close();
        open();
    });
}

void SearchIndex::replaceFile() {
    queue_.sync([this] {
        close();
        removeFile(file_);
        open();
    });
}

bool SearchIndex::removeFile(const std::filesystem::path& file) {
    bool isGone = true;
    for (const char* suffix : {"", "-wal", "-shm"}) {
        std::error_code error;
        std::filesystem::remove(file.string() + suffix, error);
        isGone = isGone && !error;
    }
    return isGone;
}

template <class Write>
void SearchIndex::writing(Write write) {
    perform([&](SQLiteDatabase& database) {
        if (!database.isInTransaction()) {
            IndexWriter afresh(database);
            write(afresh);
            return;
        }
        if (!batchWriter_) batchWriter_ = std::make_unique<IndexWriter>(database);
        try {
            write(*batchWriter_);
        } catch (...) {
            batchWriter_.reset();  // the statement that failed would keep what was bound to it
            throw;
        }
    });
}

void SearchIndex::upsert(IndexDocument document) {
    const IndexRows rows(std::move(document));
    writing([&](IndexWriter& writer) {
        FAIL_POINT("index.upsert");
        writer.remove(rows.uid);
        writer.insert(rows);
        ++generation_;
    });
}

void SearchIndex::insert(const IndexRows& rows) {
    writing([&](IndexWriter& writer) {
        FAIL_POINT("index.upsert");
        writer.insert(rows);
        ++generation_;
    });
}

void SearchIndex::remove(const std::string& uid) {
    writing([&](IndexWriter& writer) {
        if (writer.remove(uid)) ++generation_;
    });
}

void SearchIndex::clear() {
    perform([&](SQLiteDatabase& database) {
        database.execute("DELETE FROM fts; DELETE FROM docs; DELETE FROM afts; DELETE FROM atts;");
        ++generation_;
    });
}

void SearchIndex::makeAfresh() {
    batch([this] {
        indexschema::remake(database());
        ++generation_;
    });
}

void SearchIndex::prepareFor(Work work) {
    perform([&](SQLiteDatabase& database) {
        const bool isEverything = work == Work::everything;
        database.execute(isEverything ? settingsForEverything : settingsForChanges);
        if (!isEverything) database.execute("PRAGMA shrink_memory;");
    });
}

bool SearchIndex::tidyUp() {
    return perform([this](SQLiteDatabase& database) {
        if (generation_ - tidyGeneration_ < documentsBeforeTidying) return false;
        tidyGeneration_ = generation_;
        try {
            // At most so many pages of each; what is left is merged the next time.
            database.execute("INSERT INTO fts(fts, rank) VALUES('merge', 500); "
                             "INSERT INTO afts(afts, rank) VALUES('merge', 500);");
            database.checkpoint(SQLiteDatabase::Checkpoint::passive);
        } catch (const Error& error) {
            if (!error.isBusy()) throw;  // another process writes: the next time will do
        }
        return true;
    });
}

bool SearchIndex::forgetDeleted() {
    return perform([](SQLiteDatabase& database) {
        // A full-text table keeps the words of a deleted document until its parts are merged.
        database.execute(
            "INSERT INTO fts(fts) VALUES('optimize'); INSERT INTO afts(afts) VALUES('optimize'); "
            "VACUUM;");
        return database.checkpoint(SQLiteDatabase::Checkpoint::truncate);
    });
}

void SearchIndex::batch(const std::function<void()>& body) {
    perform([&](SQLiteDatabase& database) {
        if (database.isInTransaction()) {
            body();
            return;
        }
        database.transaction([&] {
            body();
            FAIL_POINT("index.commit");
        });
    });
}

void SearchIndex::replaceTagTree(const std::vector<TagParent>& tags) {
    batch([&] {
        SQLiteDatabase& tree = database();
        tree.execute("DELETE FROM tag_tree;");
        Statement row = tree.prepare("INSERT OR REPLACE INTO tag_tree(name, parent) VALUES(?, ?);");
        for (const auto& [name, parent] : tags) {
            if (name.empty()) continue;
            row.bindText(1, text::lowercased(name));
            if (parent) {
                row.bindText(2, text::lowercased(*parent));
            } else {
                row.bindNull(2);
            }
            row.step();
            row.reset();
        }
    });
}

}  // namespace tesserine
