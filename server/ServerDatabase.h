#pragma once

#include "base/sqlite/SQLiteDatabase.h"

#include <filesystem>
#include <mutex>
#include <utility>

namespace tesserine::server {

/// The service's one SQLite file. What is answered as stored is on disk. Safe from any thread: one
/// transaction runs at a time.
class ServerDatabase {
public:
    /// Opens or makes "service.sqlite" in `folder`. Throws `SQLiteDatabase::Error`.
    explicit ServerDatabase(const std::filesystem::path& folder);

    /// Runs `body(SQLiteDatabase&)` in one transaction and returns what it returns.
    template <class Body>
    auto transact(Body body) {
        const std::scoped_lock lock(mutex_);
        using Result = decltype(body(database_));
        if constexpr (std::is_void_v<Result>) {
            database_.transaction([&] { body(database_); });
        } else {
            std::optional<Result> result;
            database_.transaction([&] { result.emplace(body(database_)); });
            return *std::move(result);
        }
    }

private:
    std::mutex mutex_;
    SQLiteDatabase database_;
};

}  // namespace tesserine::server
