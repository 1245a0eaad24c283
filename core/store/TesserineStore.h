#pragma once

#include "base/Clock.h"
#include "base/Log.h"
#include "base/Random.h"
#include "core/store/StoreChanges.h"
#include "core/store/StoreError.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tesserine {

class StoreContext;
class StoreCore;

/// Where the library is and how it is held.
struct StoreConfiguration {
    /// The folder that holds "Tesserine.sqlite".
    std::filesystem::path directory{};
    /// Accepted, logged once and otherwise ignored: there is no mirroring service on this platform.
    std::optional<std::string> cloudKitContainerIdentifier{};
    bool inMemory = false;

    /// `$XDG_DATA_HOME/Tesserine`, else `~/.local/share/Tesserine`, from the given environment
    /// values.
    static std::filesystem::path defaultDirectory(
        const std::optional<std::string>& dataHome, const std::filesystem::path& home);
    /// A fresh folder "TesserineTests-<UUID>" in `temporary`.
    static StoreConfiguration forTests(const std::filesystem::path& temporary, Random& random);
};

/// What a store is given by the program that opens it.
struct StoreEnvironment {
    const Clock& clock;
    Random& random;
    Log log{};             ///< its category becomes "store" and "merge"
    std::string author{};  ///< names this process in the history; empty: "tesserine-<pid>-<random>"
    std::string sqliteVFS{};  ///< empty: the default one
    /// When true an absent library is created; otherwise opening one that is absent fails.
    bool createIfMissing = true;
    /// How long opening and saving wait for other programs.
    std::chrono::milliseconds lockPatience{10'000};
};

/// The library: its one file, its contexts and its history.
///
/// Opened once per process at start-up. Safe to call from any thread except where a context is
/// handed out: each context belongs to one thread. Opening never changes, moves or replaces a file
/// it cannot read.
class TesserineStore {
public:
    /// Opens or creates the library, brings its schema up to date, repairs its indexes and makes
    /// the main context. Throws `StoreError::loadFailed`; the file is then as it was.
    TesserineStore(StoreConfiguration configuration, const StoreEnvironment& environment);
    TesserineStore(const TesserineStore&) = delete;
    TesserineStore& operator=(const TesserineStore&) = delete;
    ~TesserineStore();

    static constexpr const char* fileName = "Tesserine.sqlite";
    static constexpr const char* containerName = "Tesserine";

    /// The context named "view": the user interface and the services on the main thread use it. It
    /// takes over what other contexts of this store save, at once when on the same thread,
    /// otherwise through the executor of `startObserving`.
    StoreContext& viewContext();
    /// A context with a connection of its own for another thread or for long work.
    std::unique_ptr<StoreContext> newBackgroundContext();

    /// Runs a task on the main thread.
    using Executor = std::function<void(std::function<void()>)>;
    /// From now on changes of other processes are noticed (within a second), read on `historyQueue`
    /// and merged into the main context through `executor`. They were collected since the store was
    /// opened.
    void startObserving(Executor executor);
    /// Reads what other processes committed since the last call and merges it into the main
    /// context, on the calling thread. For programs without a main loop, and for tests.
    void processRemoteChanges();

    /// The history after transaction `number`, oldest first; at most `limit` transactions, 0 for
    /// all.
    std::vector<StoreTransaction> history(std::int64_t number, std::size_t limit = 0) const;
    std::int64_t lastTransactionNumber() const;
    /// Whether all history after `number` is still there. A follower for which it is not starts
    /// from the rows.
    bool keepsHistoryAfter(std::int64_t number) const;
    /// When the last history transaction that was merged was made; starts at the store's creation.
    Instant lastHistoryDate() const;
    /// Keeps history after `number` for the follower `name` (for at most 90 days without a new
    /// mark).
    void setHistoryMark(const std::string& name, std::int64_t number);
    std::optional<std::int64_t> historyMark(const std::string& name) const;

    const StoreConfiguration& configuration() const;
    std::filesystem::path file() const;
    /// Identifies this library for ever, also in copies of it.
    std::string libraryID() const;
    /// Changes when a backup was put in the library's place: numbers of its history that were read
    /// before mean nothing then, and a follower starts afresh.
    std::string historyID() const;
    bool wasCreated() const;         ///< by this opening
    bool wasEndedUncleanly() const;  ///< a process was killed while the library was open

    /// Drops history that no follower needs any more and files that no row names; returns how many
    /// files. Grows with the library, so it is done when idle and not at every start.
    std::size_t tidyUp();
    /// Writes the journal into the file as far as possible. Called when idle; closing does it too.
    void checkpoint();
    /// Writes the whole journal into the file and empties it: what was deleted is then in none of
    /// the two, because the file is overwritten where rows stood. False when a reader kept the
    /// journal in use for too long. Throws `StoreError` (saveFailed).
    bool emptyJournal();

    /// Shared by the rooms that examine the library's file; not for changing objects.
    StoreCore& core() const { return *core_; }

private:
    std::string metadata(const std::string& name) const;
    template <class Read>
    auto readingHistory(Read read) const;
    bool collectRemoteChanges();
    void mergeSoon();
    void mergeWaiting();

    std::shared_ptr<StoreCore> core_;  // shared with its contexts, so that either may go first
    struct Observing;
    std::shared_ptr<Observing> observing_;  // tasks for the main thread can tell whether it is gone
    std::unique_ptr<StoreContext> viewContext_;
};

}  // namespace tesserine
