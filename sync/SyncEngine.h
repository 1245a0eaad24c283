#pragma once

#include "base/Clock.h"
#include "base/Log.h"
#include "base/UserError.h"
#include "base/Uuid.h"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

namespace tesserine {

class AccountSession;
class CDAttachment;
class Random;
class StoreContext;
class SyncClient;
class SyncLedger;
class TesserineStore;

/// Why a library is not synced before somebody has said that it shall be.
class SyncQuestion final : public UserError {
public:
    enum class Kind { anotherAccount, manyDeletions };

    static SyncQuestion anotherAccount() {
        return {
            Kind::anotherAccount,
            "This library was synced with another account. Add its notes to this one?"};
    }
    static SyncQuestion manyDeletions(std::size_t count, std::size_t total);

    Kind kind() const noexcept { return kind_; }

private:
    SyncQuestion(Kind kind, const std::string& sentence) : UserError(sentence), kind_(kind) {}
    Kind kind_;
};

/// What one synchronisation did.
struct SyncSummary {
    std::size_t received = 0;
    std::size_t unreadable = 0;  ///< changes of other devices that were left out
    std::size_t sent = 0;
    std::size_t deleted = 0;
    std::size_t conflicts = 0;
    std::size_t refused = 0;
    std::size_t filesReceived = 0;
    std::size_t filesFailed = 0;
};

/// Keeps a library in step with the account's records on the server.
///
/// One synchronisation pulls page by page, marks what was changed here, and pushes, until nothing
/// is left to send; then it fetches missing files, and looks after the notes in between. Every page
/// is applied together with its cursor in one save, so it may be killed anywhere. Before much is
/// deleted, and before the library is compared with another account or with a server that went back
/// in time, it makes a backup. Safe from any thread; one synchronisation of a library runs at a
/// time, whichever program begins it, on the caller's thread and in a context of its own.
class SyncEngine {
public:
    static constexpr int pageSize = 200;
    /// Deleting more than this share of notes and tasks at once is asked about…
    static constexpr double deletionShare = 0.2;
    /// … unless it is no more than so many.
    static constexpr std::size_t deletionAllowance = 20;

    /// What the engine stands on; all of it outlives the engine.
    struct Environment {
        TesserineStore& store;
        AccountSession& session;
        SyncClient& client;
        const Clock& clock;
        Random& random;
        Log log{};  ///< its category becomes "engine"
    };
    /// What somebody has agreed to.
    struct Consent {
        bool anotherAccount = false;
        bool manyDeletions = false;
    };

    explicit SyncEngine(Environment environment);

    /// Throws `SyncError`, `SyncQuestion`, `StoreError`, `BackupError`, or `OperationCancelled`
    /// soon after `stop`. What was done until then stays.
    SyncSummary synchronise(const Consent& consent, const std::stop_token& stop = {});
    SyncSummary synchronise(const std::stop_token& stop = {}) { return synchronise({}, stop); }

    /// The note that somebody looks at, or none: its files are fetched before all others, also by
    /// the synchronisation that runs.
    void setViewedNote(const std::optional<Uuid>& note);

    /// How many changes wait to be sent, as of the last synchronisation.
    std::size_t waitingCount();
    std::optional<Instant> lastSync();
    /// The number of the service's last change that is here.
    std::int64_t cursor();

private:
    struct Run;
    enum class Page { last, more, unreadable };

    SyncSummary runOnce(const Consent& consent, const std::stop_token& stop);
    void exchange(Run& run);
    void checkAccount(Run& run);
    void meetAccount(Run& run);
    void pull(Run& run);
    /// Applies one page of at most `limit` records.
    Page pullPage(Run& run, int limit);
    void stepOverUnreadable(Run& run);
    void startAfresh(Run& run);
    void backUp(Run& run);
    bool fetchFiles(Run& run);
    std::vector<CDAttachment*> missingFiles(Run& run, const std::optional<Uuid>& viewed);
    std::optional<Uuid> viewedNote();
    void fetchFile(Run& run, CDAttachment& file);
    std::optional<std::string> downloaded(Run& run, const std::string& digest);
    void reclaimFiles(Run& run);
    void askAboutRoom(Run& run);

    const Environment environment_;
    const Log log_;
    std::mutex running_;
    std::set<std::string> damagedFiles_;  // digests, not asked for again until the next start
    std::mutex viewing_;
    std::optional<Uuid> viewedNote_;  // behind `viewing_`
};

}  // namespace tesserine
