#include "base/SerialQueue.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

namespace tesserine {
namespace {

/// Keeps lines for a test to look at.
class MemorySink final : public LogSink {
public:
    void write(LogLevel /*level*/, std::string_view line) noexcept override { lines += line; }
    std::string lines;
};

TEST(SerialQueue, RunsTasksOfSeveralThreadsOneAtATimeInTheirOrder) {
    std::vector<std::pair<int, int>> run;  // touched on the queue only
    {
        SerialQueue queue("test");
        std::vector<std::jthread> threads;
        threads.reserve(4);
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([&queue, &run, thread] {
                for (int i = 0; i < 200; ++i) {
                    queue.async([&run, thread, i] { run.emplace_back(thread, i); });
                }
            });
        }
    }  // the queue runs all that was given before it ends
    ASSERT_EQ(run.size(), 800U);
    std::array<int, 4> next{};
    for (const auto& [thread, i] : run) {
        EXPECT_EQ(i, next.at(static_cast<std::size_t>(thread))++);
    }
}

TEST(SerialQueue, AWaitingCallFromTheQueueItselfRunsInPlace) {
    SerialQueue queue("test");
    EXPECT_FALSE(queue.isCurrent());
    const int answer = queue.call<int>(
        [&] { return queue.call<int>([&] { return queue.isCurrent() ? 42 : 0; }); });
    EXPECT_EQ(answer, 42);
}

TEST(SerialQueue, WaitingThreadsTakeTurnsWithTheQueuesOwn) {
    SerialQueue queue("test");
    int count = 0;  // touched on the queue only
    {
        std::vector<std::jthread> threads;
        threads.reserve(4);
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([&] {
                for (int i = 0; i < 500; ++i) {
                    queue.sync([&] { ++count; });
                    queue.async([&] { ++count; });
                }
            });
        }
    }
    EXPECT_EQ(queue.call<int>([&] { return count; }), 4000);
}

TEST(SerialQueue, ATaskThatWaitsForAnotherQueueMayBeCalledBack) {
    SerialQueue outer("outer");
    SerialQueue inner("inner");
    const bool isBoth = outer.call<bool>([&] {
        return inner.call<bool>([&] {
            return inner.isCurrent() && outer.call<bool>([&] { return outer.isCurrent(); });
        });
    });
    EXPECT_TRUE(isBoth);
    EXPECT_FALSE(outer.isCurrent() || inner.isCurrent());
}

TEST(SerialQueue, GivesExceptionsToWhoWaitsAndLogsTheOthers) {
    const auto sink = std::make_shared<MemorySink>();
    SerialQueue queue("index", Log(sink, "app", "queue"));
    EXPECT_THROW(queue.sync([] { throw std::out_of_range("x"); }), std::out_of_range);
    queue.async([] { throw std::runtime_error("the disk is full"); });
    queue.sync([] {});  // and it still runs
    EXPECT_EQ(sink->lines, "app:queue A task of the queue index failed: the disk is full");
}

TEST(SerialQueue, KeepsTasksWhileSuspended) {
    std::atomic<int> count = 0;
    SerialQueue queue("test");
    queue.sync([&] { queue.suspend(); });
    queue.async([&] { ++count; });
    std::jthread waiting([&] { queue.sync([&] { ++count; }); });
    EXPECT_EQ(count, 0);
    queue.resume();
    waiting.join();
    EXPECT_EQ(count, 2);

    queue.suspend();
    queue.async([&] { ++count; });  // run at the end at the latest
}

}  // namespace
}  // namespace tesserine
