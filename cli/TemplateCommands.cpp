#include "cli/Names.h"
#include "cli/Presentation.h"
#include "cli/Session.h"

namespace tesserine::cli {

namespace {

ExitStatus listTemplates(Session& session, const Arguments&) {
    showNotes(
        session, session.notes().templates(session.context()), "There are no note templates.");
    return ExitStatus::done;
}

ExitStatus saveTemplate(Session& session, const Arguments& arguments) {
    StoreContext& context = session.context();
    CDNote& note = resolveNote(session, arguments.word(0));
    CDNote& made = session.notes().saveAsTemplate(context, note);
    session.attachments().cloneReferenced(context, made);
    context.save();
    return answerWithID(session, made);
}

ExitStatus useTemplate(Session& session, const Arguments& arguments) {
    StoreContext& context = session.context();
    CDNote& used = resolveNote(session, arguments.word(0), NoteScope::templates);
    CDNotebook* notebook = nullptr;
    if (const auto name = arguments.text("notebook")) notebook = &notebookToFill(session, *name);

    const auto title = arguments.text("title");
    CDNote& made =
        title ? session.notes().createNote(
            context, {.title = *title, .html = used.html.valueOr(""), .notebook = notebook})
              : session.notes().createFromTemplate(context, used, notebook);
    session.attachments().cloneReferenced(context, made);
    context.save();
    return answerWithID(session, made);
}

ExitStatus seedTemplates(Session& session, const Arguments&) {
    const std::size_t count = session.notes().seedDefaultTemplates(session.context());
    session.context().save();
    return answerCount(
        session,
        "inserted",
        count,
        count == 0 ? "There are templates already." : "Made " + counted(count, "template") + ".");
}

}  // namespace

std::vector<Command> templateCommands() {
    return {
        {.path = "template list",
         .summary = "Lists the note templates, newest change first",
         .example = "tesserine template list",
         .run = listTemplates},
        {.path = "template save",
         .summary = "Makes a template of a note and prints its id",
         .access = Access::writes,
         .arguments = {{.name = "NOTE"}},
         .example = "tesserine template save 'Weekly Report'",
         .run = saveTemplate},
        {.path = "template use",
         .summary = "Makes a note from a template and prints its id",
         .access = Access::writes,
         .arguments = {{.name = "TEMPLATE"}},
         .options =
             {{.name = "notebook",
               .value = "NAME",
               .summary = "The notebook it goes to; made when there is none"},
              {.name = "title",
               .value = "TITLE",
               .summary = "Its title, in place of the template's"}},
         .example = "tesserine template use 'Meeting Notes' --notebook Work",
         .run = useTemplate},
        {.path = "template seed",
         .summary = "Makes the default templates where there are none",
         .access = Access::writes,
         .example = "tesserine template seed",
         .run = seedTemplates}};
}

}  // namespace tesserine::cli
