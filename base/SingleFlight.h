#pragma once

#include "base/OperationCancelled.h"

#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>

namespace tesserine {

/// Makes callers that want the same thing at the same time share one run of the work. Safe from any
/// thread.
template <class Result>
class SingleFlight {
public:
    /// Runs `work`, or waits for the run in progress: its value or its exception is ours as well. A
    /// run that its own caller cancelled is not: the next waiter starts again. Throws
    /// `OperationCancelled` as soon as `stop` is used.
    Result run(
        const std::stop_token& stop,
        const std::function<Result(const std::stop_token& stop)>& work) {
        std::unique_lock lock(mutex_);
        while (current_) {
            const std::shared_ptr<Flight> joined = current_;
            landed_.wait(lock, stop, [&joined] { return joined->ended; });
            if (stop.stop_requested()) throw OperationCancelled();
            if (joined->error) std::rethrow_exception(joined->error);
            if (joined->value) return *joined->value;
        }
        const auto flight = current_ = std::make_shared<Flight>();
        lock.unlock();
        try {
            Result value = work(stop);
            land(*flight, [&value](Flight& ended) { ended.value = value; });
            return value;
        } catch (...) {
            const bool isOursAlone = stop.stop_requested();
            land(*flight, [isOursAlone](Flight& ended) {
                if (!isOursAlone) ended.error = std::current_exception();
            });
            throw;
        }
    }

private:
    struct Flight {  // owned by the worker and by those who wait for it
        std::optional<Result> value;
        std::exception_ptr error;
        bool ended = false;
    };

    void land(Flight& flight, const std::function<void(Flight&)>& keep) {
        const std::scoped_lock lock(mutex_);
        keep(flight);
        flight.ended = true;
        current_.reset();
        landed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable_any landed_;
    std::shared_ptr<Flight> current_;
};

}  // namespace tesserine
