#include "search/SearchCoordinator.h"

#include "base/FailPoint.h"
#include "core/store/RemoteChanges.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"
#include "search/ChangedDocuments.h"
#include "search/IndexComparison.h"
#include "search/IndexMeta.h"
#include "search/IndexRebuild.h"
#include "search/IndexUpdater.h"

#include <utility>

namespace tesserine {
namespace {

using Error = SQLiteDatabase::Error;
using std::chrono::milliseconds;

constexpr milliseconds replacingPatience{5000};
/// Transactions of the history that are read at once.
constexpr std::size_t historyPage = 500;
constexpr const char* followerName = "search";
/// The library is told how far the index is so seldom that a search does not write to it.
constexpr std::int64_t transactionsBetweenMarks = 1000;

}  // namespace

SearchCoordinator::SearchCoordinator(TesserineStore& store, Setting setting)
    : store_(store),
      setting_(std::move(setting)),
      log_(setting_.log.category("search")),
      queue_("app.tesserine.search.coordinator", log_),
      followerQueue_("app.tesserine.search.follower", log_) {
    try {
        open();
    } catch (const Error& error) {
        failure_ = error;
        log_.error("the search index could not be opened: " + error.message());
    }
}

SearchCoordinator::~SearchCoordinator() {
    stop_.request_stop();
    observer_.reset();
    followerQueue_.sync([] {});  // the last run sees the stop
    queue_.sync([this] {
        reader_.reset();
        context_.reset();
    });
}

void SearchCoordinator::open() {
    const auto file = store_.configuration().directory / SearchIndex::fileName;
    const auto opened = [&] {
        return std::make_unique<SearchIndex>(
            file, SearchIndexOptions{.log = setting_.log, .vfs = setting_.vfs});
    };
    try {
        index_ = opened();
        return;
    } catch (const Error& error) {
        if (!isUnusable(error)) throw;
    }
    const Lock lock = lockForRebuild(replacingPatience);
    try {
        index_ = opened();  // another process may have replaced it meanwhile
        return;
    } catch (const Error& error) {
        if (!lock || !isUnusable(error) || !SearchIndex::removeFile(file)) throw;
        log_.warning("the search index is damaged and is made anew: " + error.message());
    }
    index_ = opened();
}

SearchIndex& SearchCoordinator::index() const {
    if (index_) return *index_;
    throw Error(*failure_);
}

/// None while another process has it, and where no lock can be made.
SearchCoordinator::Lock SearchCoordinator::lockForRebuild(milliseconds patience) const {
    try {
        return files::FolderLock::acquire(
            store_.configuration().directory / lockFileName, patience);
    } catch (const FileError&) {
        return std::nullopt;
    }
}

DocumentReader& SearchCoordinator::reader() {
    if (!context_) context_ = store_.newBackgroundContext();
    if (!reader_) reader_ = std::make_unique<DocumentReader>(context_->reader());
    return *reader_;
}

/// Runs `body` on the queue. If the index proves to be unusable its file is replaced and filled.
template <class Body>
auto SearchCoordinator::mending(const SearchWork& work, Body body) {
    return queue_.call<Outcome>([&]() -> Outcome {
        try {
            if (index().isReplaced()) index().reopen();
            return body();
        } catch (const Error& error) {
            if (!isUnusable(error)) throw;
            log_.warning("the search index is damaged and is made anew: " + error.message());
        }
        replaceFile();
        return catchUpHere(work);
    });
}

void SearchCoordinator::replaceFile() {
    const Lock lock = lockForRebuild(replacingPatience);
    const bool isAnothersWork = !lock || index().isReplaced();
    if (isAnothersWork) {
        index().reopen();
    } else {
        index().replaceFile();
    }
}

SearchCoordinator::Outcome SearchCoordinator::catchUp(const SearchWork& work) {
    return mending(work, [&] { return catchUpHere(work); });
}

void SearchCoordinator::tidyUp() {
    const bool isDone = queue_.call<bool>([this] { return index().tidyUp(); });
    // The library's journal grew with the same changes, and the next save may have to wait for it.
    if (isDone) store_.checkpoint();
}

bool SearchCoordinator::forgetDeleted(const SearchWork& work) {
    return catchUp(work) == Outcome::complete && index().forgetDeleted();
}

SearchCoordinator::Outcome SearchCoordinator::repair(Care care, const SearchWork& work) {
    return mending(work, [&] { return repairHere(care, work); });
}

SearchCoordinator::Outcome SearchCoordinator::rebuild(const SearchWork& work) {
    return mending(work, [&] { return rebuildHere(work); });
}

bool SearchCoordinator::isRebuildUnfinished() { return IndexMeta(index()).isRebuildUnfinished(); }

IndexCoverage SearchCoordinator::coverage() {
    return queue_.call<IndexCoverage>([&] { return compare(index(), reader()).coverage; });
}

SearchCoordinator::Outcome SearchCoordinator::catchUpHere(const SearchWork& work) {
    if (followToTheEnd()) return Outcome::complete;
    const Lock lock = lockForRebuild(milliseconds(0));
    if (!lock) return Outcome::beingRebuilt;
    if (followToTheEnd()) return Outcome::complete;  // another process has just ended its rebuild
    return fill(work);
}

/// Follows where that is possible and tells whether the index is whole then. On the index's queue
/// as one piece: each of its many small calls would otherwise wait for another thread.
bool SearchCoordinator::followToTheEnd() {
    return index().perform([this](SQLiteDatabase& /*database*/) {
        const IndexMeta meta(index());
        const auto mark = meta.mark();
        if (!mark || !canFollowFrom(*mark)) return false;
        followFrom(*mark);
        return !meta.isRebuildUnfinished();
    });
}

/// Whether this is a known place in this library's history from which on all is kept.
bool SearchCoordinator::canFollowFrom(const HistoryMark& mark) const {
    return mark.historyID == store_.historyID() && mark.number <= store_.lastTransactionNumber()
           && store_.keepsHistoryAfter(mark.number);
}

void SearchCoordinator::followFrom(HistoryMark mark) {
    const IndexMeta meta(index());
    bool hasMore = true;
    while (hasMore) {
        const auto transactions = store_.history(mark.number, historyPage);
        hasMore = transactions.size() == historyPage;
        if (transactions.empty()) break;

        const std::int64_t number = transactions.back().number;
        const auto changed = changedDocuments(transactions, reader(), index());
        IndexUpdater(index(), reader(), log_).update(changed, [&] {
            // Another process may have come further meanwhile.
            mark.number = std::max(number, meta.mark().value_or(mark).number);
            meta.setMark(mark);
        });
        FAIL_POINT("coordinator.followed");
        keepHistory(mark.number);
        if (setting_.changed) setting_.changed();
    }
    reached_ = mark.number;
}

void SearchCoordinator::keepHistory(std::int64_t number) {
    const std::int64_t told = store_.historyMark(followerName).value_or(0);
    if (number - told >= transactionsBetweenMarks) store_.setHistoryMark(followerName, number);
}

SearchCoordinator::Outcome SearchCoordinator::repairHere(Care care, const SearchWork& work) {
    const Outcome caughtUp = catchUpHere(work);
    if (caughtUp != Outcome::complete) return caughtUp;
    if (care == Care::thorough && !isSound(index())) {
        replaceFile();
        return catchUpHere(work);
    }

    IndexDifferences found = compare(index(), reader());
    // Read by the rows and identities that were found; what changed since then is not harmed.
    for (const std::string& uid : found.leftover) {
        const auto key = reader().keyOf(uid);
        if (key) found.toWrite.documents.try_emplace(*key, Uuid::parse(uid));
    }
    found.toWrite.isTagTreeChanged = true;
    IndexUpdater(index(), reader(), log_).update(found.toWrite, [&] {
        for (const std::string& uid : found.leftover) {
            if (!reader().keyOf(uid)) index().remove(uid);
        }
        IndexMeta(index()).setLastRepair(setting_.clock.now());
    });
    if (setting_.changed) setting_.changed();
    const bool isMended = compare(index(), reader()).coverage.isHealthy();
    return isMended ? Outcome::complete : rebuildHere(work);
}

SearchCoordinator::Outcome SearchCoordinator::rebuildHere(const SearchWork& work) {
    const Lock lock = lockForRebuild(milliseconds(0));
    return lock ? fill(work) : Outcome::beingRebuilt;
}

/// The full rebuild; the lock is held. What changes meanwhile is indexed once more at the end, so
/// it does not matter which was first.
SearchCoordinator::Outcome SearchCoordinator::fill(const SearchWork& work) {
    const IndexMeta meta(index());
    const HistoryMark beginning{store_.historyID(), store_.lastTransactionNumber()};
    index().batch([&] {
        index().makeAfresh();
        meta.beginRebuild(setting_.clock.now());
        meta.setMark(beginning);
    });
    FAIL_POINT("rebuild.cleared");

    if (!writeEverything(index(), reader(), log_, work)) return Outcome::stopped;
    index().batch([&] {
        index().replaceTagTree(reader().tagTree());
        meta.endRebuild(setting_.clock.now());
        meta.setMark(beginning);
    });
    FAIL_POINT("rebuild.ended");
    store_.setHistoryMark(followerName, beginning.number);
    followFrom(beginning);
    if (setting_.changed) setting_.changed();
    return Outcome::complete;
}

void SearchCoordinator::start() {
    if (!isOn()) return;
    observer_ = std::make_unique<RemoteChangeObserver>(
        store_.core(), followerQueue_, [this] { follower(); });
    followerQueue_.async([this] {
        if (!stop_.stop_requested()) repair(Care::quick, {.stop = stop_.get_token()});
    });
}

/// Runs once for each commit that was noticed; those that one run collects make the later ones
/// return at once.
void SearchCoordinator::follower() {
    if (store_.lastTransactionNumber() == reached_) return;
    if (!setting_.clock.sleep(collectingTime, stop_.get_token())) return;
    catchUp({.stop = stop_.get_token()});
    if (store_.lastTransactionNumber() == reached_) tidyUp();
}

}  // namespace tesserine
