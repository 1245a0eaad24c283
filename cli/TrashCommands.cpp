#include "cli/Presentation.h"
#include "cli/Safeguard.h"
#include "cli/Session.h"

namespace tesserine::cli {

namespace {

constexpr std::int64_t mostDays = 36'499;

Option withoutBackup() {
    return {.name = "no-backup", .summary = "Make no backup first, for a disk that is full"};
}

ExitStatus answerDeleted(Session& session, std::size_t count) {
    session.context().save();
    return answerCount(
        session, "deleted", count, "Deleted " + counted(count, "note") + " for good.");
}

ExitStatus emptyTrash(Session& session, const Arguments& arguments) {
    StoreContext& context = session.context();
    const bool isEmpty = context.count<CDNote>({"trashedAt != nil"}) == 0;
    if (!isEmpty && !arguments.has("no-backup")) backUpBefore(session, "purge");
    return answerDeleted(session, session.notes().emptyTrash(context));
}

ExitStatus purgeTrash(Session& session, const Arguments& arguments) {
    const auto days = arguments.integer("days", 1, mostDays);
    if (!days) throw UsageError::because("“trash purge” needs --days N.");
    StoreContext& context = session.context();
    const Instant before = session.now() - Instant::Duration(static_cast<double>(*days) * 86'400);
    const std::size_t due = context.count<CDNote>({"trashedAt != nil AND trashedAt < %@", before});
    if (due > 0 && !arguments.has("no-backup")) backUpBefore(session, "purge");
    return answerDeleted(session, session.notes().purgeTrash(context, *days));
}

}  // namespace

std::vector<Command> trashCommands() {
    return {
        {.path = "trash empty",
         .summary = "Deletes the notes in the trash for good, after a backup",
         .access = Access::writes,
         .options = {withoutBackup()},
         .example = "tesserine trash empty",
         .run = emptyTrash},
        {.path = "trash purge",
         .summary = "Deletes the notes that went to the trash more than some days ago",
         .access = Access::writes,
         .options = {{.name = "days", .value = "N", .summary = "How many days"}, withoutBackup()},
         .example = "tesserine trash purge --days 30",
         .run = purgeTrash}};
}

}  // namespace tesserine::cli
