#pragma once

#include "base/sqlite/SQLiteDatabase.h"
#include "core/store/StoreChanges.h"

#include <optional>
#include <string>
#include <vector>

namespace tesserine::history {

/// Kept this long, and for a follower that has not read on yet up to `markLifetime`.
inline constexpr Instant::Duration lifetime{7 * 86'400.0};
inline constexpr Instant::Duration markLifetime{90 * 86'400.0};

/// Writes one transaction inside the caller's transaction and returns its number.
std::int64_t record(
    SQLiteDatabase& database,
    Instant timestamp,
    const std::string& author,
    const std::vector<ObjectChange>& changes);

/// Transactions after `number`, oldest first, at most `limit` (0: all).
std::vector<StoreTransaction> after(
    SQLiteDatabase& database, std::int64_t number, std::size_t limit);
std::int64_t lastNumber(SQLiteDatabase& database);
/// Whether nothing after `number` was dropped.
bool isCompleteAfter(SQLiteDatabase& database, std::int64_t number);

void setMark(
    SQLiteDatabase& database, const std::string& name, std::int64_t number, Instant timestamp);
std::optional<std::int64_t> mark(SQLiteDatabase& database, const std::string& name);

/// The last number that may be dropped at `now`, 0 when there is nothing to drop.
std::int64_t lastPrunable(SQLiteDatabase& database, Instant now);
/// Drops the history up to and including `number`, inside the caller's transaction.
void prune(SQLiteDatabase& database, std::int64_t number);

}  // namespace tesserine::history
