#include "cli/Names.h"
#include "cli/ObjectJSON.h"
#include "cli/Presentation.h"
#include "cli/Session.h"

#include <boost/json/array.hpp>

namespace tesserine::cli {

namespace {

ExitStatus listRevisions(Session& session, const Arguments& arguments) {
    CDNote& note = resolveNote(session, arguments.word(0));
    const auto revisions = session.notes().revisions(note);
    if (session.output().isJSON()) {
        boost::json::array array;
        for (CDNoteRevision* revision : revisions) {
            array.push_back(asJSON(*revision, Detail::header));
        }
        session.output().json(array);
        return ExitStatus::done;
    }
    if (revisions.empty()) session.remark("There are no earlier versions.");
    Table table{
        .columns = {
            {.title = "#", .isNumber = true},
            {.title = "ID", .style = Style::accent},
            {.title = "WHEN", .style = Style::faint},
            {.title = "REASON"},
            {.title = "TITLE", .style = Style::strong, .mayShrink = true}}};
    for (const CDNoteRevision* revision : revisions) {
        table.rows.push_back(
            {std::to_string(table.rows.size() + 1),
             shortID(revision->id),
             localText(session, revision->createdAt),
             revision->reason.valueOr(""),
             revision->title.valueOr("")});
    }
    session.output().table(table);
    return ExitStatus::done;
}

ExitStatus showRevision(Session& session, const Arguments& arguments) {
    CDNote& note = resolveNote(session, arguments.word(0));
    CDNoteRevision& revision = resolveRevision(session, note, arguments.word(1));
    if (session.output().isJSON()) {
        session.output().json(asJSON(revision, Detail::whole));
    } else if (arguments.has("html")) {
        session.output().text(revision.html.valueOr(""));
    } else {
        session.output().text(revision.plainText.valueOr(""));
    }
    return ExitStatus::done;
}

ExitStatus revertNote(Session& session, const Arguments& arguments) {
    StoreContext& context = session.context();
    CDNote& note = resolveNote(session, arguments.word(0));
    CDNoteRevision& revision = resolveRevision(session, note, arguments.word(1));
    const std::string when = localText(session, revision.createdAt);
    if (revision.reason.valueOr("") == rawValue(NoteRevisionReason::conflict)) {
        session.notes().useConflictVersion(context, note, revision);
    } else {
        session.notes().revertTo(context, note, revision);
    }
    context.save();
    return answer(session, note, quotedTitle(note) + " is as it was at " + when + ".");
}

ExitStatus keepVersion(Session& session, const Arguments& arguments) {
    CDNote& note = resolveNote(session, arguments.word(0));
    session.notes().keepPresentVersion(note);
    session.context().save();
    return answer(session, note, "Kept the present version of " + quotedTitle(note) + ".");
}

ExitStatus listBacklinks(Session& session, const Arguments& arguments) {
    CDNote& note = resolveNote(session, arguments.word(0));
    showNotes(session, session.notes().backlinks(session.context(), note), "No note links to it.");
    return ExitStatus::done;
}

}  // namespace

std::vector<Command> noteHistoryCommands() {
    return {
        {.path = "note revisions",
         .summary = "Lists earlier versions of a note, newest first",
         .arguments = {{.name = "NOTE"}},
         .example = "tesserine note revisions Plan",
         .run = listRevisions},
        {.path = "note revision",
         .summary = "Shows an earlier version of a note",
         .arguments = {{.name = "NOTE"}, {.name = "REVISION"}},
         .options = {{.name = "html", .summary = "As HTML"}},
         .details = "REVISION is its id, the beginning of it, or its number in the list.",
         .example = "tesserine note revision Plan 1",
         .run = showRevision},
        {.path = "note revert",
         .summary = "Makes a note what it was in an earlier version; nothing is lost",
         .access = Access::writes,
         .arguments = {{.name = "NOTE"}, {.name = "REVISION"}},
         .details = "REVISION is its id, the beginning of it, or its number in the list. Reverting "
                    "to a version with the reason “conflict” ends that conflict.",
         .example = "tesserine note revert Plan 1",
         .run = revertNote},
        {.path = "note keep",
         .summary = "Ends a conflict with the present version of a note",
         .access = Access::writes,
         .arguments = {{.name = "NOTE"}},
         .example = "tesserine note keep Plan",
         .run = keepVersion},
        {.path = "note backlinks",
         .summary = "Lists the notes that link to a note",
         .arguments = {{.name = "NOTE"}},
         .example = "tesserine note backlinks Plan",
         .run = listBacklinks}};
}

}  // namespace tesserine::cli
