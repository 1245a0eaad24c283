#include "cli/Safeguard.h"

#include "cli/Session.h"
#include "search/LegacySavedSearches.h"

namespace tesserine::cli {

namespace {

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
    session.care().backUpBefore(reason, session.stop());
}

void doStartWork(Session& session) {
    bringSearchesOver(session);
    if (session.store().wasCreated()) return;
    session.care().makeDailyBackup();
    session.care().purgeTrash(session.preferences(), session.stop());
}

}  // namespace tesserine::cli
