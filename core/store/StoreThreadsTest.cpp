#include "core/store/StoreFixture.h"

#include <atomic>
#include <deque>
#include <mutex>
#include <thread>

namespace tesserine {
namespace {

/// Contexts of one store on threads of their own. Most telling under the thread sanitizer.
class StoreThreadsTest : public test::StoreFixture, public ::testing::WithParamInterface<bool> {
public:
    static constexpr int threads = 2;
    static constexpr int notesPerThread = 15;

    /// Inserts, changes, searches, rolls back and deletes in a context of its own.
    void work(TesserineStore& store, int number) {
        const auto context = store.newBackgroundContext();
        const std::string author = "thread " + std::to_string(number);
        auto& tag = context->insert<CDTag>();
        tag.name = author;
        for (int i = 0; i < notesPerThread; ++i) {
            CDNote& note = addNote(*context, author, "<p>" + std::to_string(i) + "</p>");
            note.tags.add(tag);
            context->save();
            note.title = "dropped";
            context->insert<CDNotebook>();
            context->rollback();
            EXPECT_EQ(note.title, author);
            EXPECT_EQ(
                context->count<CDNote>({"ANY tags == %@", tag}), static_cast<std::size_t>(i + 1));
            context->releaseLargeValues();
            EXPECT_EQ(note.html, "<p>" + std::to_string(i) + "</p>");
            store.lastTransactionNumber();
            store.history(0, 3);
        }
        CDNote& last = *context->fetchFirst<CDNote>(
            {.predicate = {"title == %@", author}, .sort = {{"createdAt"}}});
        context->remove(last);
        context->save();
        store.setHistoryMark(author, store.lastTransactionNumber());
    }
};

TEST_P(StoreThreadsTest, ContextsOnSeveralThreadsSeeOneLibraryAndTheMainOneFollows) {
    TesserineStore store({.directory = library, .inMemory = GetParam()}, environment());
    std::mutex mutex;
    std::deque<std::function<void()>> tasks;  // what the main thread is asked to do
    store.startObserving([&](std::function<void()> task) {
        const std::lock_guard lock(mutex);
        tasks.push_back(std::move(task));
    });
    StoreContext& view = store.viewContext();
    CDNote& own = addNote(view, "main", "");
    view.save();

    std::atomic<int> running = threads;
    std::vector<std::thread> workers;
    workers.reserve(threads);
    for (int number = 0; number < threads; ++number) {
        workers.emplace_back([&, number] {
            work(store, number);
            --running;
        });
    }
    int edits = 0;
    while (running > 0 || edits == 0) {
        own.title = "edit " + std::to_string(++edits);
        view.save();
        view.count<CDNote>({"title == %@", "main"});
        std::function<void()> task;
        {
            const std::lock_guard lock(mutex);
            if (tasks.empty()) continue;
            task = std::move(tasks.front());
            tasks.pop_front();
        }
        task();
    }
    for (std::thread& worker : workers) {
        worker.join();
    }
    store.processRemoteChanges();

    const std::size_t left = std::size_t{threads} * (notesPerThread - 1);
    EXPECT_EQ(view.count<CDNote>(), left + 1);
    EXPECT_EQ(view.count<CDTag>(), static_cast<std::size_t>(threads));
    EXPECT_EQ(own.title, "edit " + std::to_string(edits));
    const auto commits = threads * (notesPerThread + 1) + 1 + edits;
    EXPECT_EQ(store.lastTransactionNumber(), commits);
    EXPECT_EQ(store.history(0).size(), static_cast<std::size_t>(commits));
}

INSTANTIATE_TEST_SUITE_P(
    , StoreThreadsTest, ::testing::Values(false, true), [](const auto& parameter) {
        return parameter.param ? "InMemory" : "InItsFile";
    });

}  // namespace
}  // namespace tesserine
