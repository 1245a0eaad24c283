#pragma once

#include "base/Log.h"
#include "base/SerialQueue.h"
#include "base/sqlite/SQLiteDatabase.h"
#include "search/IndexDocument.h"
#include "search/RecentStatements.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace tesserine {

class IndexWriter;
struct IndexRows;

/// How an index is opened besides its place.
struct SearchIndexOptions {
    Log log{};        ///< its category becomes "index"
    std::string vfs;  ///< SQLite's; empty: the default one
};

/// "Search.sqlite", the full-text index beside the library: its schema, the writing of documents,
/// and the statements that read it.
///
/// Holds nothing that is not in the library; can be emptied and filled again at any time. Every
/// call runs on the index's own serial queue and waits for it, so all of them are safe from any
/// thread, and in place when made on the queue. Other processes may read and write the same file.
/// Everything throws `SQLiteDatabase::Error`.
class SearchIndex {
public:
    static constexpr const char* fileName = "Search.sqlite";
    /// Opens or makes the file and brings its schema up to date; one of another version is emptied.
    /// Throws `SQLiteDatabase::Error` (open), which tells whether the file is damaged.
    explicit SearchIndex(std::filesystem::path file, SearchIndexOptions options = {});
    SearchIndex(const SearchIndex&) = delete;
    SearchIndex& operator=(const SearchIndex&) = delete;
    ~SearchIndex();

    const std::filesystem::path& file() const noexcept { return file_; }

    /// Runs `body(SQLiteDatabase&)` on the queue and returns its value.
    template <class Body>
    auto perform(Body&& body) {
        using Result = std::invoke_result_t<Body, SQLiteDatabase&>;
        if constexpr (std::is_void_v<Result>) {
            queue_.sync([&] { body(database()); });
        } else {
            return queue_.call<Result>([&]() -> Result { return body(database()); });
        }
    }

    /// A statement of a search, prepared; see `RecentStatements`. To be called on the queue.
    Statement& prepared(const std::string& sql) { return recent_.prepared(database(), sql); }

    /// Puts the document in the place of its older self. What it wrote before it failed stays:
    /// group what must be whole in a `batch`.
    void upsert(IndexDocument document);
    /// The same for a document that is not expected to be there, as in a full rebuild.
    void insert(const IndexRows& rows);
    /// Takes the document with all its rows out; nothing when it is not there.
    void remove(const std::string& uid);
    /// Takes every document out; tag tree and `meta` stay.
    void clear();
    /// The same, with the tag tree, and quickly however full it is: for a full rebuild.
    void makeAfresh();
    /// How much is going to be written: a whole library gets a page cache and a journal of 64 MB.
    enum class Work { changes, everything };
    void prepareFor(Work work);
    /// Does what writing put off: merges parts of the full-text tables and moves the journal into
    /// the file. For a moment when nobody waits; does nothing, and says so, until some documents
    /// were written, and never takes long.
    bool tidyUp();
    /// Writes the file anew without what was taken out of it, and empties its journal: deleted text
    /// is then in none of the two. Takes time by the size of the index. False when another process
    /// kept the journal in use for too long.
    bool forgetDeleted();
    /// Runs `body` on the queue in one transaction, or in the one that is open. All or nothing.
    void batch(const std::function<void()>& body);

    /// A tag and the tag above it.
    struct TagParent {
        std::string name;
        std::optional<std::string> parent;
    };
    /// Makes these the tag tree, in lower case. Tags without a name are left out.
    void replaceTagTree(const std::vector<TagParent>& tags);
    /// Every tag below `name`, in lower case, without itself. A cycle ends.
    std::vector<std::string> descendantTags(const std::string& name);

    std::optional<std::string> meta(const std::string& key);
    void setMeta(const std::string& key, const std::string& value);
    void deleteMeta(const std::string& key);

    std::int64_t countDocuments();
    /// Counts of what is indexed.
    struct Counts {
        std::int64_t notes = 0;
        std::int64_t tasks = 0;
        std::int64_t attachments = 0;
        std::int64_t attachmentsWithText = 0;
    };
    Counts counts();
    /// Hands every document's uid, kind and signature to `visit`, on the queue.
    struct Entry {
        std::string_view uid;
        std::string_view kind;
        std::string_view signature;
    };
    void visitEntries(const std::function<void(const Entry&)>& visit);
    /// The uid of the document that an attachment belongs to.
    std::optional<std::string> ownerOfAttachment(const Uuid& attachment);

    // What suggestions and corrections read. Keys of the analyzer are never among the terms.

    struct Term {
        std::string term;
        std::int64_t documents = 0;
    };
    /// Every word with the number of documents that hold it.
    std::vector<Term> terms();
    /// Whether there is a term that is not below `from` and below `to`.
    bool hasTerm(const std::string& from, const std::string& to);
    /// At most 40 of those, the most frequent first.
    std::vector<std::string> termsBetween(const std::string& from, const std::string& to);
    /// Terms by a LIKE pattern whose escape character is "\", in order.
    std::vector<std::string> termsLike(const std::string& pattern, std::int64_t limit);

    /// Years in which something was created (UTC), newest first.
    std::vector<std::string> years();
    /// Notebooks outside the trash with the number of their notes, most first.
    struct NotebookCount {
        std::string notebook;
        std::int64_t documents = 0;
    };
    std::vector<NotebookCount> notebookCounts();
    /// The tags of each document outside the trash that has some.
    std::vector<std::vector<std::string>> tagLists();
    /// The attachment types of at most 3,000 documents that have some.
    std::vector<std::vector<std::string>> typeLists();
    /// Titles outside the trash by a LIKE pattern over the folded title, last changed first.
    std::vector<std::string> titlesLike(const std::string& pattern, std::int64_t limit);

    /// Raised by every document written or removed and by `clear`, through this object. What other
    /// processes write shows in `fileGeneration` only.
    std::uint64_t generation() const noexcept { return generation_; }
    /// Changes when another connection wrote to the file or the file was replaced.
    std::int64_t fileGeneration();

    /// Whether the file at this place is no longer the one that is open.
    bool isReplaced();
    /// Closes the file and opens what is at its place, as the constructor does. When it throws,
    /// every later call throws the same until one succeeds.
    void reopen();
    /// The same after removing the file with its -wal and -shm.
    void replaceFile();
    /// Removes an index that nothing of this process has open; tells whether it is gone.
    static bool removeFile(const std::filesystem::path& file);

private:
    SQLiteDatabase& database();
    void open();
    void close();
    /// Runs `write(IndexWriter&)` with the batches' writer or, outside of a batch, one of its own.
    template <class Write>
    void writing(Write write);

    // Fixed after construction.
    std::filesystem::path file_;
    SearchIndexOptions options_;
    Log log_;

    std::atomic<std::uint64_t> generation_{0};

    // Touched on queue_ only.
    std::unique_ptr<SQLiteDatabase> database_;
    std::optional<SQLiteDatabase::Error> failure_;  // why there is none
    std::unique_ptr<IndexWriter> batchWriter_;      // holds its statements from batch to batch
    RecentStatements recent_;
    std::int64_t openings_ = 0;
    std::uint64_t tidyGeneration_ = 0;                    // when `tidyUp` last did something
    std::pair<std::uint64_t, std::uint64_t> identity_{};  // device and inode that were opened

    SerialQueue queue_;  // last: it ends before what its tasks touch
};

/// The copies in lower case and without diacritics by which names are compared: Café becomes cafe.
std::string indexFold(std::string_view text);

/// Joins the tags of a document in its row.
inline constexpr char tagSeparator = '\x1F';

}  // namespace tesserine
