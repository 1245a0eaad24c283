#pragma once

#include "base/Log.h"

#include <mutex>
#include <string>
#include <string_view>

namespace tesserine::test {

/// Keeps the lines of a log. Safe from any thread.
class RecordingSink final : public LogSink {
public:
    void write(LogLevel /*level*/, std::string_view line) noexcept override {
        const std::lock_guard lock(mutex_);
        lines_ += line;
        lines_ += '\n';
    }
    bool holds(std::string_view text) const {
        const std::lock_guard lock(mutex_);
        return lines_.find(text) != std::string::npos;
    }

private:
    mutable std::mutex mutex_;
    std::string lines_;  // behind mutex_
};

}  // namespace tesserine::test
