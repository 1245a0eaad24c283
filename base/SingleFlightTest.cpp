#include "base/SingleFlight.h"

#include <gtest/gtest.h>

#include <latch>
#include <thread>

namespace tesserine {
namespace {

/// A run that stays in the air until it is let down.
class SingleFlightTest : public testing::Test {
protected:
    std::jthread leader(std::function<int()> end) {
        std::jthread thread([this, end = std::move(end)](const std::stop_token& stop) {
            try {
                flight_.run(stop, [&](const std::stop_token&) {
                    started_.count_down();
                    mayEnd_.wait();
                    return end();
                });
            } catch (const std::exception&) {
                hasFailed_ = true;
            }
        });
        started_.wait();
        return thread;
    }

    SingleFlight<int> flight_;
    std::latch started_{1};
    std::latch mayEnd_{1};
    std::atomic<bool> hasFailed_ = false;
};

TEST_F(SingleFlightTest, CallersAtTheSameTimeShareOneRunAndLaterOnesStartAnother) {
    const auto first = leader([] { return 7; });
    int ownRuns = 0;
    std::jthread second([&] {
        const int value = flight_.run({}, [&](const std::stop_token&) { return ++ownRuns; });
        EXPECT_TRUE(value == 7 || ownRuns == 1) << value;  // it may have come too late to join
    });
    mayEnd_.count_down();
    second.join();
    EXPECT_EQ(flight_.run({}, [](const std::stop_token&) { return 9; }), 9);
}

TEST_F(SingleFlightTest, AWaiterLeavesWhenItIsStopped) {
    const auto first = leader([] { return 7; });
    std::jthread second([&](const std::stop_token& stop) {
        EXPECT_THROW(
            flight_.run(stop, [](const std::stop_token&) { return 1; }), OperationCancelled);
    });
    second.request_stop();
    second.join();
    mayEnd_.count_down();
}

TEST_F(SingleFlightTest, ACancelledRunIsStartedAgainByWhoeverWaits) {
    auto first = leader([]() -> int { throw OperationCancelled(); });
    std::jthread second(
        [&] { EXPECT_EQ(flight_.run({}, [](const std::stop_token&) { return 3; }), 3); });
    first.request_stop();
    mayEnd_.count_down();
    second.join();
    first.join();
    EXPECT_TRUE(hasFailed_);
}

}  // namespace
}  // namespace tesserine
