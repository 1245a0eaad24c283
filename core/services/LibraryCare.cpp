#include "core/services/LibraryCare.h"

#include "base/Preferences.h"
#include "core/services/TrashRetention.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"

namespace tesserine {

LibraryCare::LibraryCare(TesserineStore& store, const Clock& clock, Random& random, Log log)
    : store_(store),
      clock_(clock),
      backups_(store.configuration().directory, clock, random, log),
      log_(std::move(log)) {}

void LibraryCare::backUpBefore(const std::string& reason, const std::stop_token& stop) {
    if (backedUpChange_ == store_.lastTransactionNumber()) return;
    backups_.create(store_, reason, std::nullopt, stop);
    noteBackup();
    backups_.prune();
}

void LibraryCare::noteBackup() { backedUpChange_ = store_.lastTransactionNumber(); }

void LibraryCare::makeDailyBackup() {
    try {
        if (!backups_.createDaily(store_)) return;
        noteBackup();
        // Once a day is also often enough to drop what no follower and no row needs.
        store_.tidyUp();
    } catch (const UserError& error) {
        log_.warning(std::string("daily backup: ") + error.what());
    }
}

void LibraryCare::purgeTrash(Preferences& preferences, const std::stop_token& stop) {
    if (!TrashRetention::days(preferences)) return;
    try {
        const auto context = store_.newBackgroundContext();
        TrashRetention(clock_, preferences)
            .run(
                *context, [&] { return hasBackupForPurge(stop); }, stop);
    } catch (const UserError& error) {
        log_.warning(std::string("purge of the trash: ") + error.what());
    }
}

bool LibraryCare::hasBackupForPurge(const std::stop_token& stop) {
    try {
        backUpBefore("purge", stop);
        return true;
    } catch (const UserError& error) {
        log_.warning(std::string("backup before the purge: ") + error.what());
        return false;
    }
}

}  // namespace tesserine
