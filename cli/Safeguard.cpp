#include "cli/Safeguard.h"

#include "cli/Session.h"
#include "core/services/TrashRetention.h"
#include "search/LegacySavedSearches.h"

namespace tesserine::cli {

namespace {

void makeDailyBackup(Session& session) {
    try {
        if (!backupsOf(session).createDaily(session.store())) return;
        session.noteBackup();
        // Once a day is also often enough to drop what no follower and no row needs.
        session.store().tidyUp();
    } catch (const UserError& error) {
        session.log().warning(std::string("daily backup: ") + error.what());
    }
}

bool hasBackupForPurge(Session& session) {
    try {
        backUpBefore(session, "purge");
        return true;
    } catch (const UserError& error) {
        session.log().warning(std::string("backup before the purge: ") + error.what());
        return false;
    }
}

void purgeExpired(Session& session) {
    try {
        const TrashRetention retention(session.clock(), session.preferences());
        const auto context = session.store().newBackgroundContext();
        retention.run(
            *context, [&] { return hasBackupForPurge(session); }, session.stop());
    } catch (const UserError& error) {
        session.log().warning(std::string("purge of the trash: ") + error.what());
    }
}

void bringSearchesOver(Session& session) {
    try {
        LegacySavedSearches legacy(session.savedSearches(), session.preferences());
        if (legacy.isDue()) legacy.migrate(session.context());
    } catch (const UserError& error) {
        session.context().rollback();
        session.log().warning(std::string("saved searches of earlier builds: ") + error.what());
    }
}

}  // namespace

LibraryBackups backupsOf(Session& session) {
    return LibraryBackups(
        session.libraryFolder(), session.clock(), session.environment().random, session.log());
}

void backUpBefore(Session& session, const std::string& reason) {
    if (session.isBackedUp()) return;
    const LibraryBackups backups = backupsOf(session);
    backups.create(session.store(), reason, std::nullopt, session.stop());
    session.noteBackup();
    backups.prune();
}

void doStartWork(Session& session) {
    bringSearchesOver(session);
    if (session.store().wasCreated()) return;
    makeDailyBackup(session);
    if (TrashRetention::days(session.preferences())) purgeExpired(session);
}

}  // namespace tesserine::cli
