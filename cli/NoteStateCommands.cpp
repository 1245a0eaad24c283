#include "cli/Names.h"
#include "cli/Presentation.h"
#include "cli/Session.h"
#include "cli/When.h"

namespace tesserine::cli {

namespace {

ExitStatus pinNote(Session& session, const Arguments& arguments) {
    CDNote& note = resolveNote(session, arguments.word(0));
    session.notes().pin(note);
    session.context().save();
    return answer(session, note, "Pinned " + quotedTitle(note) + ".");
}

ExitStatus unpinNote(Session& session, const Arguments& arguments) {
    CDNote& note = resolveNote(session, arguments.word(0));
    session.notes().unpin(note);
    session.context().save();
    return answer(session, note, "Unpinned " + quotedTitle(note) + ".");
}

ExitStatus trashNote(Session& session, const Arguments& arguments) {
    CDNote& note = resolveNote(session, arguments.word(0));
    if (!note.trashedAt) session.notes().moveToTrash(note);
    session.context().save();
    return answer(session, note, "Moved " + quotedTitle(note) + " to the trash.");
}

ExitStatus restoreNote(Session& session, const Arguments& arguments) {
    CDNote& note = resolveNote(session, arguments.word(0), NoteScope::trash);
    if (note.trashedAt) session.notes().restoreFromTrash(note);
    session.context().save();
    return answer(session, note, "Restored " + quotedTitle(note) + " from the trash.");
}

ExitStatus deleteNote(Session& session, const Arguments& arguments) {
    CDNote& note = resolveNote(session, arguments.word(0), NoteScope::trash);
    const std::string title = quotedTitle(note);
    session.notes().deleteNote(session.context(), note);
    session.context().save();
    return answerCount(session, "deleted", 1, "Deleted " + title + " for good.");
}

ExitStatus duplicateNote(Session& session, const Arguments& arguments) {
    StoreContext& context = session.context();
    CDNote& note = resolveNote(session, arguments.word(0));
    CDNote& copy = session.notes().duplicateNote(context, note);
    session.attachments().cloneReferenced(context, copy);
    context.save();
    return answerWithID(session, copy);
}

ExitStatus remindOfNote(Session& session, const Arguments& arguments) {
    const std::string when = arguments.word(1);
    std::optional<Instant> reminder;
    if (when != "none") reminder = parseWhen(when, session.calendar());

    CDNote& note = resolveNote(session, arguments.word(0));
    session.notes().setReminder(note, reminder);
    session.context().save();
    const std::string title = quotedTitle(note);
    if (!reminder) return answer(session, note, "No reminder of " + title + " any more.");
    return answer(
        session, note, "Reminder of " + title + " at " + session.localTime(*reminder) + ".");
}

std::vector<Argument> oneNote() { return {{.name = "NOTE"}}; }

}  // namespace

std::vector<Command> noteStateCommands() {
    return {
        {.path = "note pin",
         .summary = "Pins a note",
         .access = Access::writes,
         .arguments = oneNote(),
         .example = "tesserine note pin Plan",
         .run = pinNote},
        {.path = "note unpin",
         .summary = "Takes the pin away",
         .access = Access::writes,
         .arguments = oneNote(),
         .example = "tesserine note unpin Plan",
         .run = unpinNote},
        {.path = "note trash",
         .summary = "Moves a note to the trash",
         .access = Access::writes,
         .arguments = oneNote(),
         .example = "tesserine note trash 3F2A9C41",
         .run = trashNote},
        {.path = "note restore",
         .summary = "Takes a note out of the trash",
         .access = Access::writes,
         .arguments = oneNote(),
         .example = "tesserine note restore 3F2A9C41",
         .run = restoreNote},
        {.path = "note delete",
         .summary = "Deletes a note for good, with its attachments and revisions",
         .access = Access::writes,
         .arguments = oneNote(),
         .example = "tesserine note delete 3F2A9C41",
         .run = deleteNote},
        {.path = "note duplicate",
         .summary = "Makes a copy of a note and prints its id",
         .access = Access::writes,
         .arguments = oneNote(),
         .example = "tesserine note duplicate Plan",
         .run = duplicateNote},
        {.path = "note remind",
         .summary = "Sets the reminder of a note, or takes it away with “none”",
         .access = Access::writes,
         .arguments = {{.name = "NOTE"}, {.name = "WHEN"}},
         .details = "WHEN is an ISO 8601 instant, or a local time such as “2026-03-14 09:15”.",
         .example = "tesserine note remind Plan '2026-03-14 09:15'",
         .run = remindOfNote}};
}

}  // namespace tesserine::cli
