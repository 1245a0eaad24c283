#include "cli/CommandError.h"
#include "cli/DisplayText.h"
#include "cli/Names.h"
#include "cli/ObjectJSON.h"
#include "cli/Presentation.h"
#include "cli/Session.h"

#include <boost/json/array.hpp>

namespace tesserine::cli {

namespace {

std::size_t liveNotesIn(StoreContext& context, CDNotebook& notebook) {
    return context.count<CDNote>(
        {"notebook == %@ AND trashedAt == nil AND isTemplate == NO", &notebook});
}

/// The notebook a word names; "none" (or no word) is the top of the tree.
CDNotebook* parentNamed(Session& session, const std::optional<std::string>& name) {
    if (!name || *name == "none") return nullptr;
    return &resolveNotebook(session, *name);
}

ExitStatus addNotebook(Session& session, const Arguments& arguments) {
    session.holdNames();
    StoreContext& context = session.context();
    CDNotebook* parent = parentNamed(session, arguments.text("parent"));
    CDNotebook& notebook = session.notebooks().findOrCreate(context, arguments.word(0), parent);
    if (const auto color = arguments.text("color")) session.notebooks().setColor(notebook, color);
    context.save();
    return answerWithID(session, notebook);
}

ExitStatus listNotebooks(Session& session, const Arguments&) {
    StoreContext& context = session.context();
    const auto rows = session.notebooks().tree(context, session.collator());
    if (session.output().isJSON()) {
        boost::json::array array;
        for (const auto& row : rows) {
            boost::json::object object = asJSON(*row.object, Detail::header);
            object["path"] = NotebookService::pathText(*row.object);
            object["noteCount"] = liveNotesIn(context, *row.object);
            array.push_back(std::move(object));
        }
        session.output().json(array);
        return ExitStatus::done;
    }
    if (rows.empty()) session.remark("There are no notebooks.");
    Table table{
        .columns = {
            {.title = "ID", .style = Style::accent},
            {.title = "NOTES", .isNumber = true},
            {.title = "NAME", .style = Style::strong, .mayShrink = true},
            {.title = "", .style = Style::faint}}};
    for (const auto& row : rows) {
        CDNotebook& notebook = *row.object;
        table.rows.push_back(
            {shortID(notebook.id),
             std::to_string(liveNotesIn(context, notebook)),
             std::string(row.depth * 2, ' ') + notebook.name.valueOr(""),
             notebook.isFavorite ? "favourite" : ""});
    }
    session.output().table(table);
    return ExitStatus::done;
}

ExitStatus renameNotebook(Session& session, const Arguments& arguments) {
    session.holdNames();
    CDNotebook& notebook = resolveNotebook(session, arguments.word(0));
    session.notebooks().rename(session.context(), notebook, arguments.word(1));
    session.context().save();
    return answer(session, notebook, "It is called " + inQuotes(notebook.name.valueOr("")) + ".");
}

ExitStatus moveNotebook(Session& session, const Arguments& arguments) {
    session.holdNames();
    StoreContext& context = session.context();
    CDNotebook& notebook = resolveNotebook(session, arguments.word(0));
    CDNotebook* parent = parentNamed(session, arguments.wordIfAny(1));
    const bool makesTwins = session.notebooks().wouldMakeTwins(context, notebook, parent);
    if (!session.notebooks().move(notebook, parent)) {
        throw CommandError::wouldMakeCycle(notebook.name.valueOr(""));
    }
    context.save();
    if (makesTwins) session.remark("There are now two notebooks of this name there.");
    return answer(
        session, notebook, "It is now " + inQuotes(NotebookService::pathText(notebook)) + ".");
}

ExitStatus deleteNotebook(Session& session, const Arguments& arguments) {
    StoreContext& context = session.context();
    CDNotebook& notebook = resolveNotebook(session, arguments.word(0));
    const std::string name = inQuotes(notebook.name.valueOr(""));
    session.notebooks().remove(context, notebook);
    context.save();
    return answerCount(session, "deleted", 1, "Deleted " + name + "; its notes stay.");
}

ExitStatus setNotebookTemplate(Session& session, const Arguments& arguments) {
    StoreContext& context = session.context();
    CDNotebook& notebook = resolveNotebook(session, arguments.word(0));
    const std::string name = arguments.word(1);
    CDNote* noteTemplate =
        name == "none" ? nullptr : &resolveNote(session, name, NoteScope::templates);
    session.notebooks().setNoteTemplate(notebook, noteTemplate);
    context.save();
    const std::string start =
        noteTemplate == nullptr ? "empty" : "from " + quotedTitle(*noteTemplate);
    return answer(session, notebook, "New notes there start " + start + ".");
}

ExitStatus setNotebookColor(Session& session, const Arguments& arguments) {
    CDNotebook& notebook = resolveNotebook(session, arguments.word(0));
    const std::string color = arguments.word(1);
    session.notebooks().setColor(
        notebook, color == "none" ? std::nullopt : std::optional<std::string>(color));
    session.context().save();
    return answer(session, notebook, "Its colour is " + notebook.colorHex.valueOr("none") + ".");
}

ExitStatus setFavorite(Session& session, const Arguments& arguments) {
    const bool isFavorite = arguments.wordIfAny(1).value_or("on") == "on";
    CDNotebook& notebook = resolveNotebook(session, arguments.word(0));
    session.notebooks().setFavorite(notebook, isFavorite);
    session.context().save();
    return answer(session, notebook, isFavorite ? "It is a favourite." : "It is no favourite.");
}

}  // namespace

std::vector<Command> notebookCommands() {
    const Argument notebook{.name = "NOTEBOOK"};
    return {
        {.path = "notebook add",
         .summary = "Makes a notebook, if there is none of this name, and prints its id",
         .access = Access::writes,
         .arguments = {{.name = "NAME"}},
         .options =
             {{.name = "parent", .value = "NOTEBOOK", .summary = "The notebook it stands in"},
              {.name = "color", .value = "COLOR", .summary = "Its colour, as #3366CC"}},
         .example = "tesserine notebook add Plans --parent Work",
         .run = addNotebook},
        {.path = "notebook list",
         .summary = "Lists the notebooks as a tree, with how many notes they hold",
         .example = "tesserine notebook list",
         .run = listNotebooks},
        {.path = "notebook rename",
         .summary = "Gives a notebook another name",
         .access = Access::writes,
         .arguments = {notebook, {.name = "NAME"}},
         .example = "tesserine notebook rename 'Work / Plans' Projects",
         .run = renameNotebook},
        {.path = "notebook move",
         .summary = "Moves a notebook into another one, or to the top",
         .access = Access::writes,
         .arguments = {notebook, {.name = "PARENT", .isOptional = true}},
         .details = "Without PARENT, or with “none”, it goes to the top.",
         .example = "tesserine notebook move Plans Work",
         .run = moveNotebook},
        {.path = "notebook delete",
         .summary = "Deletes a notebook; its notes and notebooks stay",
         .access = Access::writes,
         .arguments = {notebook},
         .example = "tesserine notebook delete Plans",
         .run = deleteNotebook},
        {.path = "notebook template",
         .summary = "Sets the template that new notes in a notebook start from, or “none”",
         .access = Access::writes,
         .arguments = {notebook, {.name = "TEMPLATE"}},
         .example = "tesserine notebook template Meetings 'Meeting Notes'",
         .run = setNotebookTemplate},
        {.path = "notebook color",
         .summary = "Sets the colour of a notebook, or “none”",
         .access = Access::writes,
         .arguments = {notebook, {.name = "COLOR"}},
         .example = "tesserine notebook color Work '#3366CC'",
         .run = setNotebookColor},
        {.path = "notebook favorite",
         .summary = "Makes a notebook a favourite, or no longer",
         .access = Access::writes,
         .arguments = {notebook, {.name = "STATE", .isOptional = true, .choices = {"on", "off"}}},
         .example = "tesserine notebook favorite Work off",
         .run = setFavorite}};
}

}  // namespace tesserine::cli
