#include "core/store/History.h"

#include "base/FailPoint.h"
#include "core/store/StoreCore.h"
#include "core/store/StoreFixture.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace tesserine {
namespace {

/// One program and another one beside it.
class HistoryTest : public test::StoreFixture {
public:
    HistoryTest() : store(open("mine")), other(open("theirs")) {}

    StoreContext& mine() const { return store->viewContext(); }
    StoreContext& theirs() const { return other->viewContext(); }

    /// "1 mine inserted CDNote; 2 theirs updated CDNote(title)".
    std::string shown(std::int64_t after) const {
        static constexpr const char* kinds[] = {"inserted", "updated", "deleted"};
        std::string text;
        for (const StoreTransaction& transaction : store->history(after)) {
            text += text.empty() ? "" : "; ";
            text += std::to_string(transaction.number) + " " + transaction.author;
            for (const ObjectChange& change : transaction.changes) {
                text += std::string(" ") + kinds[static_cast<std::size_t>(change.kind)] + " "
                        + Schema::library()[change.entity].name;
                for (const std::string& name : change.changed) {
                    text += "." + name;
                }
            }
        }
        return text;
    }

    static constexpr Instant::Duration day{86'400.0};

    std::unique_ptr<TesserineStore> store;
    std::unique_ptr<TesserineStore> other;
};

TEST_F(HistoryTest, EveryCommitIsOneEntryThatNamesWhatItDid) {
    CDNote& note = addNote(mine(), "n", "<p>1</p>");
    const Uuid id = *note.id;
    note.tags.add(mine().insert<CDTag>());
    mine().save();
    auto& same = theirs().get<CDNote>(id, "The note");
    same.title = "renamed";
    same.isPinned = true;
    same.notebook = &theirs().insert<CDNotebook>();
    theirs().save();
    store->processRemoteChanges();
    mine().remove(note);
    mine().save();
    mine().save();  // nothing is pending: no entry
    EXPECT_EQ(
        shown(0),
        "1 mine inserted CDNote inserted CDTag; "
        "2 theirs updated CDNote.title.isPinned.notebook inserted CDNotebook; "
        "3 mine deleted CDNote");
    EXPECT_EQ(store->history(2).front().changes.front().uuid, id) << "a deleted row keeps its name";
    EXPECT_EQ(store->history(0, 2).back().number, 2);
    EXPECT_TRUE(store->history(3).empty());
    EXPECT_EQ(store->lastTransactionNumber(), 3);
}

TEST_F(HistoryTest, WhatOthersCommitIsMergedInOrderAndOwnCommitsAreNotMergedTwice) {
    CDNote& note = addNote(mine(), "n", "<p>1</p>");
    CDNote& gone = addNote(mine(), "gone", "");
    mine().save();
    ASSERT_EQ(note.html, "<p>1</p>");
    int merges = 0;
    mine().setObserver([&](const std::vector<ObjectChange>&) { ++merges; });

    auto& same = theirs().get<CDNote>(*note.id, "The note");
    same.title = "first";
    theirs().save();
    same.title = "second";
    same.html = "<p>2</p>";
    theirs().remove(*theirs().find<CDNote>(*gone.id));
    theirs().save();
    note.isPinned = true;
    mine().save();
    EXPECT_EQ(merges, 1) << "the own save";
    store->processRemoteChanges();
    EXPECT_EQ(merges, 3) << "two of the other program";
    EXPECT_EQ(note.title, "second");
    EXPECT_EQ(note.html, "<p>2</p>");
    EXPECT_TRUE(bool(note.isPinned));
    EXPECT_TRUE(gone.isDeleted());
    store->processRemoteChanges();
    EXPECT_EQ(merges, 3);
}

TEST_F(HistoryTest, OrderIsThatOfTheNumbersWhateverTheClockSays) {
    const Instant start = clock.now();
    CDNote& note = addNote(mine(), "n", "");
    mine().save();
    store->processRemoteChanges();
    EXPECT_EQ(store->lastHistoryDate(), start);
    auto& same = theirs().get<CDNote>(*note.id, "The note");
    for (const double hours : {0.0, 0.0, -1.0, -500'000.0}) {  // the same moment; set back; 1969
        clock.set(start + Instant::Duration(hours * 3600));
        same.sourceURL = "at " + std::to_string(hours);
        theirs().save();
        store->processRemoteChanges();
        EXPECT_EQ(note.sourceURL, same.sourceURL)
            << "seen with the clock " << hours << " hours off";
        EXPECT_EQ(store->lastHistoryDate(), start) << "never goes back";
    }
    clock.set(start + Instant::Duration(5));
    same.sourceURL = "later";
    theirs().save();
    store->processRemoteChanges();
    EXPECT_EQ(store->lastHistoryDate(), clock.now());
}

TEST_F(HistoryTest, OldEntriesGoUnlessAFollowerStillNeedsThem) {
    const auto commit = [&](const char* title) {
        addNote(mine(), title, "");
        mine().save();
    };
    commit("1");
    commit("2");
    store->setHistoryMark("search", 1);
    clock.advance(6 * day);
    commit("3");
    clock.advance(2 * day);  // the first two are 8 days old, the third 2
    store->tidyUp();
    EXPECT_EQ(shown(0), "2 mine inserted CDNote; 3 mine inserted CDNote");
    EXPECT_TRUE(store->keepsHistoryAfter(1));
    EXPECT_FALSE(store->keepsHistoryAfter(0)) << "who has read nothing missed the first";

    store->setHistoryMark("search", 3);
    EXPECT_EQ(other->historyMark("search"), 3);
    EXPECT_EQ(other->historyMark("sync"), std::nullopt);
    store->tidyUp();
    EXPECT_EQ(shown(0), "3 mine inserted CDNote");

    store->setHistoryMark("search", 2);
    clock.advance(91 * day);  // a follower that never came back
    store->tidyUp();
    EXPECT_EQ(shown(0), "");
    EXPECT_EQ(store->lastTransactionNumber(), 3);
    EXPECT_FALSE(store->keepsHistoryAfter(2));
    EXPECT_TRUE(store->keepsHistoryAfter(3));
    commit("4");
    EXPECT_EQ(shown(0), "4 mine inserted CDNote") << "numbers are never used twice";
}

TEST_F(HistoryTest, OneEntryFromAWrongClockDoesNotTakeYoungOnesAlong) {
    addNote(mine(), "1", "");
    mine().save();
    const Instant start = clock.now();
    clock.set(Instant::fromSeconds(0));  // a machine that woke up in 1970
    addNote(mine(), "2", "");
    mine().save();
    clock.set(start + day);
    addNote(mine(), "3", "");
    mine().save();
    store->tidyUp();
    EXPECT_TRUE(store->keepsHistoryAfter(0));
    clock.advance(7 * day);
    store->tidyUp();
    EXPECT_EQ(shown(0), "3 mine inserted CDNote");
}

TEST_F(HistoryTest, AFailingMergeNeitherFailsTheSaveNorLosesTheNews) {
    CDNote& note = addNote(mine(), "n", "");
    mine().save();
    const auto background = store->newBackgroundContext();
    bool fails = true;
    mine().setObserver([&](const std::vector<ObjectChange>&) {
        if (std::exchange(fails, false)) throw StoreError::readFailed("The disk is gone.");
    });
    background->get<CDNote>(*note.id, "The note").title = "renamed";
    EXPECT_NO_THROW(background->save());
    int merges = 0;
    mine().setObserver([&](const std::vector<ObjectChange>&) { ++merges; });
    store->processRemoteChanges();
    EXPECT_EQ(note.title, "renamed");
    EXPECT_EQ(merges, 1);
}

/// What a window's event loop does: tasks from any thread run on the one that waits.
class MainLoop {
public:
    TesserineStore::Executor executor() {
        return [this](std::function<void()> task) {
            const std::lock_guard lock(mutex_);
            tasks_.push_back(std::move(task));
            wakeUp_.notify_one();
        };
    }
    /// Runs tasks until `isDone`, or for ten seconds; tells which.
    bool runUntil(const std::function<bool()>& isDone) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!isDone()) {
            std::unique_lock lock(mutex_);
            if (!wakeUp_.wait_until(lock, deadline, [this] { return !tasks_.empty(); })) {
                return false;
            }
            const auto task = std::move(tasks_.front());
            tasks_.pop_front();
            lock.unlock();
            task();
        }
        return true;
    }

    /// Runs what is left.
    void drain() {
        const std::lock_guard lock(mutex_);
        for (const auto& task : tasks_) {
            task();
        }
        tasks_.clear();
    }

private:
    std::mutex mutex_;
    std::condition_variable wakeUp_;
    std::deque<std::function<void()>> tasks_;
};

TEST_F(HistoryTest, AnObservingStoreTakesOverWhatOtherProgramsAndThreadsSave) {
    MainLoop loop;
    CDNote& note = addNote(mine(), "n", "");
    mine().save();
    auto& same = theirs().get<CDNote>(*note.id, "The note");
    same.title = "before observing";
    theirs().save();
    store->startObserving(loop.executor());
    EXPECT_TRUE(loop.runUntil([&] { return note.title == "before observing"; }));
    same.title = "while observing";
    theirs().save();
    EXPECT_TRUE(loop.runUntil([&] { return note.title == "while observing"; }));

    std::jthread worker([&, id = *note.id] {
        const auto background = store->newBackgroundContext();
        background->get<CDNote>(id, "The note").title = "from a thread";
        background->save();
    });
    EXPECT_TRUE(loop.runUntil([&] { return note.title == "from a thread"; }));
    worker.join();

    const auto background = store->newBackgroundContext();
    background->get<CDNote>(*note.id, "The note").title = "from the same thread";
    background->save();
    EXPECT_EQ(note.title, "from the same thread") << "at once";

    // What is still to be merged when the store goes away is dropped with it.
    same.title = "too late";
    theirs().save();
    store.reset();
    loop.drain();
}

}  // namespace
}  // namespace tesserine
