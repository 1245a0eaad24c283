#pragma once

#include "base/sqlite/SQLiteDatabase.h"

#include <condition_variable>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace tesserine::server {

/// The service's one SQLite file. What is answered as stored is on disk. Safe from any thread.
///
/// Waiting for the disk is what writing costs: whoever comes while a transaction is on its way goes
/// into the next one, together with all others that wait, and is answered when that is on disk.
class ServerDatabase {
public:
    /// Opens or makes "service.sqlite" in `folder`. Throws `SQLiteDatabase::Error`.
    explicit ServerDatabase(const std::filesystem::path& folder);

    /// Runs `body(SQLiteDatabase&)` in a transaction, perhaps with others and on another thread,
    /// and returns what it returns. When it throws, nothing of it stays, and that comes out of
    /// this.
    template <class Body>
    auto transact(Body body) {
        return resultOf(body, [this](const Work& work) { runWithOthers(work); });
    }
    /// Runs `body(SQLiteDatabase&)`, which only reads, on one state of the data, and returns what
    /// it returns. Waits for no writer.
    template <class Body>
    auto read(Body body) {
        return resultOf(body, [this](const Work& work) { runReading(work); });
    }

private:
    using Work = std::function<void(SQLiteDatabase& database)>;
    /// One caller's part of a transaction.
    struct Part {
        const Work& work;
        bool isEnded = false;
        std::exception_ptr error{};
    };

    template <class Body, class Run>
    static auto resultOf(Body& body, Run run) {
        using Result = decltype(body(std::declval<SQLiteDatabase&>()));
        if constexpr (std::is_void_v<Result>) {
            run([&body](SQLiteDatabase& database) { body(database); });
        } else {
            std::optional<Result> result;
            run([&](SQLiteDatabase& database) { result.emplace(body(database)); });
            return *std::move(result);
        }
    }
    void runWithOthers(const Work& work);
    void runReading(const Work& work);
    void perform(const std::vector<Part*>& parts);

    // Behind the mutex.
    std::mutex mutex_;
    std::condition_variable ended_;
    std::vector<Part*> waiting_;
    bool isWriting_ = false;
    // Touched by the one that writes.
    SQLiteDatabase writer_;
    // Behind a mutex of its own.
    std::mutex reading_;
    SQLiteDatabase reader_;
};

}  // namespace tesserine::server
