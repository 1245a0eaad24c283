#pragma once

#include "base/Clock.h"
#include "base/Preferences.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <string_view>

namespace tesserine {

class StoreContext;

/// Purges old notes from the trash when a program starts, if the user asked for it.
///
/// Unlike the services it saves: it runs in a context of its own, off the main thread, in batches.
class TrashRetention {
public:
    /// The user's setting: days a note stays in the trash. Absent or 0: until it is emptied.
    static constexpr std::string_view daysKey = "tesserine.trashRetentionDays";
    /// When the last start looked at the trash, in milliseconds since 1970.
    static constexpr std::string_view lastRunKey = "tesserine.trashRetentionLastRun";
    /// Longest time between two starts for which the clock is believed.
    static constexpr std::chrono::hours longestBelievedGap{60 * 24};
    /// Runs that follow each other faster need not each note their time.
    static constexpr std::chrono::hours shortestGap{1};
    static constexpr std::size_t batchSize = 100;

    /// `clock` and `preferences` outlive it.
    TrashRetention(const Clock& clock, Preferences& preferences)
        : clock_(clock), preferences_(preferences) {}

    /// The user's days: a whole number above 0 and below 36,500, else none.
    static std::optional<std::int64_t> days(const Preferences& preferences);

    /// Makes sure that a backup of today exists and tells whether one does.
    using EnsureBackup = std::function<bool()>;
    enum class Outcome {
        notWanted,         ///< no days are set
        clockNotBelieved,  ///< first run, clock set back, or far later than the last run
        done,
        stopped,
    };
    struct Result {
        Outcome outcome = Outcome::notWanted;
        std::size_t purged = 0;
        std::size_t expired = 0;  ///< how many were due; more than `purged` when held back
    };
    /// Notes the time of this run, whatever else happens, and purges what is due. `ensureBackup` is
    /// asked once, before the first deletion; without a backup at most half of the trash goes.
    /// Throws `StoreError`; batches already saved stay deleted.
    Result run(
        StoreContext& context,
        const EnsureBackup& ensureBackup,
        const std::stop_token& stop = {}) const;

private:
    /// Notes the time of this run and tells whether the clock is believed.
    bool noteRun(Instant now) const;

    const Clock& clock_;
    Preferences& preferences_;
};

}  // namespace tesserine
