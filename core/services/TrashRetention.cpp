#include "core/services/TrashRetention.h"

#include "core/services/Limits.h"
#include "core/services/NoteService.h"
#include "core/store/StoreContext.h"

#include <algorithm>

namespace tesserine {

std::optional<std::int64_t> TrashRetention::days(const Preferences& preferences) {
    const auto days = preferences.integer(daysKey);
    const bool isUsable = days && *days > 0 && *days <= limits::retentionDays;
    return isUsable ? days : std::nullopt;
}

TrashRetention::Result TrashRetention::run(
    StoreContext& context, const EnsureBackup& ensureBackup, const std::stop_token& stop) const {
    const Instant now = clock_.now();
    const bool isBelieved = noteRun(now);
    const auto wanted = days(preferences_);
    if (!wanted) return {};
    if (!isBelieved) return {.outcome = Outcome::clockNotBelieved};

    const NoteService notes(clock_);
    const std::size_t inTrash = context.count<CDNote>({"trashedAt != nil"});
    Result result{.outcome = Outcome::done, .expired = notes.expiredCount(context, *wanted)};
    if (result.expired == 0) return result;

    const bool hasBackup = ensureBackup && ensureBackup();
    const std::size_t allowed = hasBackup ? result.expired : std::min(result.expired, inTrash / 2);
    while (result.purged < allowed) {
        if (stop.stop_requested()) {
            result.outcome = Outcome::stopped;
            return result;
        }
        const std::size_t wave = std::min(batchSize, allowed - result.purged);
        const std::size_t purged = notes.purgeTrash(context, *wanted, wave);
        context.save();
        result.purged += purged;
        if (purged == 0) break;  // somebody took notes out of the trash meanwhile
    }
    return result;
}

bool TrashRetention::noteRun(Instant now) const {
    const auto stored = preferences_.integer(lastRunKey);
    const Instant last = Instant::fromMilliseconds(stored.value_or(0));
    const bool isBelieved = stored && now >= last && now - last <= longestBelievedGap;
    const bool isFresh = isBelieved && now - last < shortestGap;
    if (!isFresh) preferences_.set(lastRunKey, now.milliseconds());
    return isBelieved;
}

}  // namespace tesserine
