#pragma once

#include "base/Clock.h"
#include "base/Files.h"
#include "base/Log.h"
#include "base/SerialQueue.h"
#include "search/DocumentReader.h"
#include "search/IndexCoverage.h"
#include "search/IndexRebuild.h"
#include "search/SearchIndex.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

namespace tesserine {

struct HistoryMark;
class RemoteChangeObserver;
class StoreContext;
class TesserineStore;

/// Keeps the search index of a library true by itself.
///
/// Follows the library's history from a mark that is kept in the index, so that changes made while
/// it was not running, or by another process, are found as well. Changes nothing in the library.
/// Several processes may each have one for the same library: SQLite's lock lets one write at a
/// time, and whatever two of them write is the same.
///
/// Every call may come from any thread except the index's queue, and waits for the calls before it.
/// Calls throw `SQLiteDatabase::Error` for the index (as `index()` does while search is off) and
/// `StoreError` for the library; what was written before stays and the next call goes on from
/// there.
class SearchCoordinator {
public:
    struct Setting {
        const Clock& clock;
        Log log{};        ///< its category becomes "search"
        std::string vfs;  ///< SQLite's, for the index; empty: the default one
        /// Called after documents were written, on a queue of the coordinator; must not call it.
        std::function<void()> changed{};
    };

    /// How long changes are collected after a save before they are indexed.
    static constexpr std::chrono::milliseconds collectingTime{300};
    static constexpr const char* lockFileName = "Search.lock";

    /// Opens "Search.sqlite" in the library's folder and makes a damaged one anew. When it cannot
    /// be opened search is off, and everything else of the program works. `store` outlives this.
    SearchCoordinator(TesserineStore& store, Setting setting);
    SearchCoordinator(const SearchCoordinator&) = delete;
    SearchCoordinator& operator=(const SearchCoordinator&) = delete;
    ~SearchCoordinator();

    /// The index, which stays the same object when its file is replaced. Throws why search is off.
    SearchIndex& index() const;
    bool isOn() const { return index_ != nullptr; }

    /// From now on follows every commit to the library, by any process, after first mending what is
    /// missing, out of date or left over. Returns at once; failures are logged, and the next commit
    /// tries again.
    void start();

    enum class Outcome {
        complete,
        stopped,       ///< by the token; a rebuild is then marked as interrupted
        beingRebuilt,  ///< another process is rebuilding the index: it is true, but not whole yet
    };
    /// Brings the index up to everything that is committed now. Costs next to nothing when it is.
    /// Rebuilds an index that is new, was left unfinished or belongs to another history.
    Outcome catchUp(const SearchWork& work = {});
    /// Does what saving and indexing put off, for a moment when nobody waits: merges parts of the
    /// index, and moves both journals into their files. `start` does it by itself.
    void tidyUp();
    /// Catches up, and takes out of the index's files what is no longer in the library, such as a
    /// passage that was locked. False when that could not be done now.
    bool forgetDeleted(const SearchWork& work = {});
    /// Empties the index and fills it from the library, replacing a damaged file. The index can be
    /// searched meanwhile.
    Outcome rebuild(const SearchWork& work = {});

    enum class Care {
        quick,    ///< compares identities and signatures
        thorough  ///< also looks for damage inside the file, which a rebuild mends
    };
    /// Catches up, mends what is missing, out of date or left over, and notes the time. Anything
    /// that mending cannot make healthy is rebuilt.
    Outcome repair(Care care, const SearchWork& work = {});
    /// Whether the index is not whole now: after `catchUp` was complete, because another process
    /// has begun to rebuild it.
    bool isRebuildUnfinished();
    /// How the index stands now; changes nothing.
    IndexCoverage coverage();

private:
    using Lock = std::optional<files::FolderLock>;

    void open();
    Lock lockForRebuild(std::chrono::milliseconds patience) const;
    template <class Body>
    auto mending(const SearchWork& work, Body body);
    void replaceFile();
    Outcome catchUpHere(const SearchWork& work);
    Outcome repairHere(Care care, const SearchWork& work);
    Outcome rebuildHere(const SearchWork& work);
    Outcome fill(const SearchWork& work);
    bool followToTheEnd();
    bool canFollowFrom(const HistoryMark& mark) const;
    void followFrom(HistoryMark mark);
    void keepHistory(std::int64_t number);
    void follower();
    DocumentReader& reader();

    // Fixed after construction.
    TesserineStore& store_;
    Setting setting_;
    Log log_;
    std::unique_ptr<SearchIndex> index_;
    std::optional<SQLiteDatabase::Error> failure_;

    std::stop_source stop_;
    std::atomic<std::int64_t> reached_{-1};  // number in the history; a hint for the follower

    // Touched on queue_ only.
    std::unique_ptr<StoreContext> context_;
    std::unique_ptr<DocumentReader> reader_;

    SerialQueue queue_;
    SerialQueue followerQueue_;
    std::unique_ptr<RemoteChangeObserver> observer_;
};

}  // namespace tesserine
