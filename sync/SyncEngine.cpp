#include "sync/SyncEngine.h"

#include "base/Digest.h"
#include "base/FailPoint.h"
#include "base/Files.h"
#include "base/OperationCancelled.h"
#include "core/model/TaskEntities.h"
#include "core/services/LibraryCare.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"
#include "sync/AccountSession.h"
#include "sync/ChangeMarker.h"
#include "sync/RecordApplier.h"
#include "sync/RecordPusher.h"
#include "sync/SyncClient.h"
#include "sync/TreeMender.h"

#include <charconv>
#include <optional>
#include <set>
#include <utility>

namespace tesserine {
namespace {

constexpr int mostRounds = 10;    // of pulling and pushing in one synchronisation
constexpr int mostSteps = 1'000;  // over records that cannot be read, in one synchronisation
constexpr std::size_t filesAtOnce = 50;
constexpr auto turnOfFiles = std::chrono::seconds(5);

std::int64_t cursorIn(const SyncLedger& ledger) {
    const std::string text = ledger.value(SyncLedger::cursor).value_or("0");
    std::int64_t cursor = 0;
    std::from_chars(text.data(), text.data() + text.size(), cursor);
    return cursor;
}

/// Whether the service does not know the changes that we had from it: it holds less than it did, or
/// it has counted on from an older state and gave their numbers to others.
bool hasOtherHistory(const ChangesResponse& page, const SyncLedger& ledger) {
    const std::int64_t cursor = cursorIn(ledger);
    if (cursor == 0) return false;
    const std::string mark = ledger.value(SyncLedger::cursorMark).value_or("");
    const bool isMarked = !mark.empty() && page.sinceMark;
    return page.head < cursor || (isMarked && mark != *page.sinceMark);
}

/// Waits while another program synchronises the library: each would enter the same records, which
/// then are there twice. Held until the lock goes; none where nothing can be locked.
std::optional<files::FolderLock> turnOf(const TesserineStore& store, const std::stop_token& stop) {
    const StoreConfiguration& library = store.configuration();
    if (library.inMemory) return std::nullopt;
    constexpr auto untilNextLook = std::chrono::milliseconds(200);
    while (!stop.stop_requested()) {
        try {
            auto lock =
                files::FolderLock::acquire(library.directory / ".Tesserine.sync", untilNextLook);
            if (lock) return lock;
        } catch (const FileError&) {
            return std::nullopt;
        }
    }
    throw OperationCancelled();
}

}  // namespace

SyncQuestion SyncQuestion::manyDeletions(std::size_t count, std::size_t total) {
    return {
        Kind::manyDeletions,
        "Another device deleted " + std::to_string(count) + " of the " + std::to_string(total)
            + " notes and tasks in this library. Delete them here as well?"};
}

/// One synchronisation.
struct SyncEngine::Run {
    StoreContext& context;
    const Consent& consent;
    const std::stop_token& stop;
    std::size_t itemsAtStart = 0;
    std::set<Uuid> failedFiles{};
    bool hasBackup = false;
    bool hasStartedAfresh = false;
    std::optional<SyncError> unreadable{};  // why the last page could not be read
    SyncSummary summary{};
};

SyncEngine::SyncEngine(Environment environment)
    : environment_(std::move(environment)), log_(environment_.log.category("engine")) {}

SyncSummary SyncEngine::synchronise(const Consent& consent, const std::stop_token& stop) {
    const std::scoped_lock lock(running_);
    try {
        return runOnce(consent, stop);
    } catch (const SyncError& error) {
        if (error.kind() != SyncError::Kind::signedOut) throw;
    }
    // The token may have been taken back before its time: only a refused refresh is the end.
    environment_.session.invalidateAccessToken();
    return runOnce(consent, stop);
}

SyncSummary SyncEngine::runOnce(const Consent& consent, const std::stop_token& stop) {
    const auto turn = turnOf(environment_.store, stop);
    const auto context = environment_.store.newBackgroundContext();
    Run run{.context = *context, .consent = consent, .stop = stop};
    checkAccount(run);
    run.itemsAtStart = context->count<CDNote>() + context->count<CDTask>();
    askAboutRoom(run);

    do {
        exchange(run);
    } while (!fetchFiles(run));
    reclaimFiles(run);
    context->reset();
    const SyncLedger ledger(*context);
    ledger.setValue(SyncLedger::lastSync, environment_.clock.now().iso());
    context->save();
    return run.summary;
}

/// Pulls and pushes until nothing is left to send.
void SyncEngine::exchange(Run& run) {
    ChangeMarker marker(environment_.store);
    RecordPusher pusher(
        {.context = run.context,
         .client = environment_.client,
         .clock = environment_.clock,
         .log = log_});
    for (int round = 0; round < mostRounds; ++round) {
        marker.catchUp(run.context, run.stop);  // what was deleted must be known before the pull
        pull(run);
        meetAccount(run);
        marker.catchUp(run.context, run.stop);
        const auto pushed = pusher.pushAll(run.stop);
        run.summary.sent += pushed.sent;
        run.summary.refused += pushed.refused;
        run.summary.conflicts += pushed.conflicts;
        if (pushed.sent == 0) return;
    }
}

void SyncEngine::checkAccount(Run& run) {
    const auto account = environment_.session.account();
    if (!account) throw SyncError::signedOut();
    SyncLedger ledger(run.context);
    const auto known = ledger.value(SyncLedger::account);
    if (known == account->id) return;
    if (known) {
        if (!run.consent.anotherAccount) throw SyncQuestion::anotherAccount();
        backUp(run);
        ledger.forgetAll();
    }
    ledger.setValue(SyncLedger::account, account->id);
    run.context.save();
    run.context.reset();
}

/// After the first pull of all there is: what was made on both sides is there twice.
void SyncEngine::meetAccount(Run& run) {
    run.context.reset();
    const SyncLedger ledger(run.context);
    if (ledger.value(SyncLedger::firstPullDone)) return;
    joinNotebooks(run.context, ledger);
    ledger.setValue(SyncLedger::firstPullDone, "yes");
    run.context.save();
}

/// Once in a synchronisation: a way back from what it is about to do.
void SyncEngine::backUp(Run& run) {
    if (run.hasBackup) return;
    LibraryCare(environment_.store, environment_.clock, environment_.random, environment_.log)
        .backUpBefore("sync", run.stop);
    run.hasBackup = true;
}

// MARK: pulling

/// Page by page. Where one cannot be read, record by record, leaving out the one that is to blame:
/// the others arrive.
void SyncEngine::pull(Run& run) {
    int limit = pageSize;
    for (int steps = 0; steps < mostSteps;) {
        switch (pullPage(run, limit)) {
        case Page::last: return;
        case Page::more: break;
        case Page::unreadable:
            if (limit == 1) {
                stepOverUnreadable(run);
                ++steps;
            }
            limit = limit == 1 ? pageSize : 1;
            break;
        }
    }
    throw SyncError::malformed("too many unreadable records");
}

/// Only when the service is itself otherwise: something between, such as the sign-in page of a
/// network, must not cost a change.
void SyncEngine::stepOverUnreadable(Run& run) {
    const std::int64_t head = environment_.client.state(run.stop).head;
    run.context.reset();
    const SyncLedger ledger(run.context);
    const std::int64_t next = cursorIn(ledger) + 1;
    if (next > head) throw SyncError(*run.unreadable);
    log_.error("stepping over change " + std::to_string(next) + ", which cannot be read");
    ledger.setValue(SyncLedger::cursor, std::to_string(next));
    ledger.setValue(SyncLedger::cursorMark, "");
    run.context.save();
    ++run.summary.unreadable;
}

SyncEngine::Page SyncEngine::pullPage(Run& run, int limit) {
    run.context.reset();
    SyncLedger ledger(run.context);
    const std::int64_t since = cursorIn(ledger);
    ChangesResponse page;
    try {
        page = environment_.client.changes(since, limit, run.stop);
    } catch (const SyncError& error) {
        if (error.kind() != SyncError::Kind::malformed) throw;
        log_.warning(std::string("a page cannot be read: ") + error.what());
        run.unreadable = error;
        return Page::unreadable;
    }
    if (hasOtherHistory(page, ledger)) {
        startAfresh(run);
        return Page::more;
    }
    if (page.seq < since || (page.more && page.seq == since)) {
        throw SyncError::malformed("no progress");
    }

    RecordApplier applier(run.context, ledger, environment_.clock, log_);
    std::size_t deletions = run.summary.deleted;
    for (const SyncRecord& record : page.changes) {
        if (applier.wouldDelete(record)) ++deletions;
    }
    const auto share = static_cast<double>(run.itemsAtStart) * deletionShare;
    const bool areMany = deletions > deletionAllowance && static_cast<double>(deletions) > share;
    if (areMany && !run.consent.manyDeletions) {
        throw SyncQuestion::manyDeletions(deletions, run.itemsAtStart);
    }
    if (areMany) backUp(run);
    for (const SyncRecord& record : page.changes) {
        applier.apply(record);
        FAIL_POINT("sync.recordApplied");
    }
    applier.finish();
    const std::string mark = page.seqMark.value_or("");
    const bool isChanged = page.seq != since || !page.changes.empty()
                           || mark != ledger.value(SyncLedger::cursorMark).value_or("");
    if (isChanged) {
        ledger.setValue(SyncLedger::cursor, std::to_string(page.seq));
        ledger.setValue(SyncLedger::cursorMark, mark);
        ledger.keepUnresolved();
        run.context.save();
    }
    FAIL_POINT("sync.pageSaved");
    run.summary.received += applier.counts().applied;
    run.summary.deleted += applier.counts().deleted;
    run.summary.conflicts += applier.counts().conflicts;
    return page.more ? Page::more : Page::last;
}

/// The server was put back to an earlier day, or is another one. Nothing is deleted for that; both
/// sides are compared as if they had never met.
void SyncEngine::startAfresh(Run& run) {
    if (std::exchange(run.hasStartedAfresh, true)) throw SyncError::malformed("no progress");
    log_.warning("the server went back in time: everything is compared again");
    backUp(run);
    const SyncLedger ledger(run.context);
    ledger.forgetAll();
    run.context.save();
}

// MARK: files and room

/// Fetches files that are missing, one after the other; false when there are more to come but notes
/// should have their turn.
bool SyncEngine::fetchFiles(Run& run) {
    const auto start = environment_.clock.monotonic();
    for (;;) {
        run.context.reset();
        const auto viewed = viewedNote();
        const auto missing = missingFiles(run, viewed);
        run.summary.filesFailed = run.failedFiles.size();
        if (missing.empty()) return true;
        for (CDAttachment* const file : missing) {
            if (environment_.clock.monotonic() - start > turnOfFiles) return false;
            fetchFile(run, *file);
            if (viewedNote() != viewed) break;
        }
    }
}

/// Files to fetch next, at most so many that one may still turn to another note soon.
std::vector<CDAttachment*> SyncEngine::missingFiles(Run& run, const std::optional<Uuid>& viewed) {
    const auto limit = filesAtOnce + run.failedFiles.size() + damagedFiles_.size();
    const auto hasFailed = [&](CDAttachment* file) {
        const Uuid id = file->uuid().value_or(Uuid());
        if (damagedFiles_.contains(*file->sha256)) run.failedFiles.insert(id);
        return run.failedFiles.contains(id);
    };
    std::vector<CDAttachment*> files;
    if (viewed) {
        files = run.context.fetch<CDAttachment>(
            {.predicate = {"fileData == nil AND sha256 != nil AND note.id == %@", *viewed},
             .limit = limit});
        std::erase_if(files, hasFailed);
    }
    if (!files.empty()) return files;
    files = run.context.fetch<CDAttachment>(
        {.predicate = {"fileData == nil AND sha256 != nil"}, .limit = limit});
    std::erase_if(files, hasFailed);
    return files;
}

void SyncEngine::setViewedNote(const std::optional<Uuid>& note) {
    const std::scoped_lock lock(viewing_);
    viewedNote_ = note;
}

std::optional<Uuid> SyncEngine::viewedNote() {
    const std::scoped_lock lock(viewing_);
    return viewedNote_;
}

void SyncEngine::fetchFile(Run& run, CDAttachment& file) {
    const SyncLedger ledger(run.context);
    const std::string digest = *file.sha256;
    try {
        const auto bytes = downloaded(run, digest);
        ledger.setDamaged(digest, !bytes);
        if (bytes) {
            const auto span = bytesOf(*bytes);
            file.fileData = Bytes(span.begin(), span.end());
            file.integrityVerified = true;
            ++run.summary.filesReceived;
        } else {
            damagedFiles_.insert(digest);
        }
        run.context.save();
        run.context.releaseLargeValues();
        return;
    } catch (const SyncError& error) {
        if (error.isTransient() || error.kind() == SyncError::Kind::signedOut) throw;
        log_.warning(std::string("a file could not be fetched: ") + error.what());
    }
    run.failedFiles.insert(file.uuid().value_or(Uuid()));
}

/// The bytes of a file; none when they were not those of its digest, nor the second time.
std::optional<std::string> SyncEngine::downloaded(Run& run, const std::string& digest) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        std::string bytes = environment_.client.downloadBlob(digest, run.stop);
        if (sha256Hex(bytesOf(bytes)) == digest) return bytes;
        log_.warning("a file does not have its digest and was thrown away");
    }
    return std::nullopt;
}

/// Files that no record here names any more are deleted on the server, which keeps those that
/// others still use.
void SyncEngine::reclaimFiles(Run& run) {
    run.context.reset();
    const SyncLedger ledger(run.context);
    const auto digests = ledger.reclaimable();
    if (digests.empty()) return;
    std::set<std::string> later;
    for (const std::string& digest : digests) {
        if (run.context.count<CDAttachment>({"sha256 == %@", digest}) > 0) continue;
        try {
            const auto deletion = environment_.client.deleteBlob(digest, run.stop);
            if (deletion.outcome == BlobDeletion::Outcome::later) later.insert(digest);
            FAIL_POINT("sync.fileReclaimed");
        } catch (const SyncError& error) {
            if (error.kind() == SyncError::Kind::signedOut) throw;
            log_.warning(std::string("a file was not deleted on the server: ") + error.what());
        }
    }
    ledger.setReclaimable(later);
    run.context.save();
}

/// What was refused for want of room is sent again once there is some.
void SyncEngine::askAboutRoom(Run& run) {
    const SyncLedger ledger(run.context);
    PushRefusals refusals(ledger.value(SyncLedger::refusals).value_or(""));
    refusals.forget("missing_attachment");  // the file is sent before the record each time
    if (const auto smallest = refusals.smallest("quota")) {
        const SyncStateResponse state = environment_.client.state(run.stop);
        const std::int64_t used = state.recordBytes.value_or(0) + state.revisionBytes.value_or(0);
        const bool hasRoom = !state.recordQuotaBytes || used + *smallest <= *state.recordQuotaBytes;
        if (hasRoom) refusals.forget("quota");
    }
    if (const auto smallest = refusals.smallest(PushRefusal::storageFull)) {
        const BlobUsage usage = environment_.client.blobUsage(run.stop);
        const std::int64_t used = usage.bytes.value_or(0);
        const bool hasRoom = !usage.quotaBytes || used + *smallest <= *usage.quotaBytes;
        if (hasRoom) refusals.forget(PushRefusal::storageFull);
    }
    const std::string text = refusals.text();
    if (text == ledger.value(SyncLedger::refusals).value_or("{}")) return;
    ledger.setValue(SyncLedger::refusals, text);
    run.context.save();
}

std::size_t SyncEngine::waitingCount() {
    const auto context = environment_.store.newBackgroundContext();
    return context->count<CDSyncState>({"needsPush == YES"});
}

std::int64_t SyncEngine::cursor() {
    const auto context = environment_.store.newBackgroundContext();
    return cursorIn(SyncLedger(*context));
}

std::optional<Instant> SyncEngine::lastSync() {
    const auto context = environment_.store.newBackgroundContext();
    const auto text = SyncLedger(*context).value(SyncLedger::lastSync);
    return text ? Instant::parseISO(*text) : std::nullopt;
}

}  // namespace tesserine
