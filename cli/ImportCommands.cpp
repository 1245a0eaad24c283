#include "cli/CommandError.h"
#include "cli/DisplayText.h"
#include "cli/ImportPresentation.h"
#include "cli/Names.h"
#include "cli/Presentation.h"
#include "cli/Safeguard.h"
#include "cli/Session.h"
#include "core/import/AppleNotesImporter.h"
#include "core/import/ENEXImporter.h"
#include "core/import/ImportReports.h"
#include "core/import/MarkdownImporter.h"
#include "core/model/BookkeepingEntities.h"

#include <boost/json/array.hpp>

namespace tesserine::cli {

namespace {

/// The notebook that an import goes into: one that is there, by any of its names, or a new path.
std::vector<std::string> targetNotebook(Session& session, const std::string& name) {
    if (!session.hasLibrary()) return pathNames(name);
    const auto known = session.notebooks().named(session.context(), name);
    if (known.empty() && !idsBeginningWith(name)) return pathNames(name);
    return pathNames(NotebookService::pathText(resolveNotebook(session, name)));
}

ImportOptions optionsFrom(Session& session, const Arguments& arguments) {
    ImportOptions options{
        .tag = arguments.text("tag"),
        .keepsRemoteImages = arguments.has("remote-images"),
        .recognisesTags = arguments.has("recognise-tags"),
        .createsTasks = !arguments.has("no-tasks")};
    if (const auto policy = arguments.text("duplicates")) {
        options.duplicates = *duplicatePolicyNamed(*policy);
    }
    if (const auto name = arguments.text("notebook")) {
        options.notebook = targetNotebook(session, *name);
    }
    return options;
}

template <class Importer>
ExitStatus preview(Session& session, const Importer& importer, const Arguments& arguments) {
    return showPreview(session, [&](StoreContext& library) {
        return importer.preview(library, arguments.pathsFrom(0), optionsFrom(session, arguments));
    });
}

template <class Importer>
ImportReport runImport(Session& session, const Importer& importer, const Arguments& arguments) {
    const ImportOptions options = optionsFrom(session, arguments);
    if (!session.store().wasCreated() && !arguments.has("no-backup")) {
        backUpBefore(session, "import");
    }
    Progress progress(session.environment(), "Importing");
    const auto context = session.store().newBackgroundContext();
    return importer.run(
        *context,
        arguments.pathsFrom(0),
        options,
        {.stop = session.stop(), .progress = [&](const ImportProgress& state) {
             progress.show(state.done, state.total, state.current);
         }});
}

template <class Importer>
ExitStatus importWith(Session& session, const Arguments& arguments) {
    const Importer importer(
        {.clock = session.clock(),
         .random = session.environment().random,
         .calendar = session.calendar(),
         .types = session.types(),
         .log = session.log()});
    if (arguments.has("dry-run")) return preview(session, importer, arguments);

    const ImportReport report = runImport(session, importer, arguments);
    showReport(session, report);
    session.output().flush();
    session.throwIfStopped();
    const bool isAllLost = report.failed > 0 && report.failed == report.found;
    if (isAllLost) throw CommandError::badInput("Nothing could be imported.");
    return ExitStatus::done;
}

ExitStatus listImports(Session& session, const Arguments&) {
    StoreContext& context = session.context();
    const ImportReports reports(session.clock());
    boost::json::array array;
    Table table{
        .columns = {
            {.title = "ID", .style = Style::accent},
            {.title = "WHEN", .style = Style::faint},
            {.title = "NOTES", .isNumber = true},
            {.title = "SOURCE", .style = Style::strong, .mayShrink = true},
            {.title = "", .style = Style::warning}}};
    for (const CDImportReport* row : reports.list(context)) {
        const ImportReport report = reports.read(context, *row);
        array.push_back(asJSON(report));
        table.rows.push_back(
            {shortID(report.id),
             session.localTime(report.started),
             std::to_string(report.imported + report.replaced),
             report.file,
             report.undone     ? "undone"
             : report.finished ? ""
                               : "stopped"});
    }
    if (session.output().isJSON()) {
        session.output().json(array);
        return ExitStatus::done;
    }
    if (table.rows.empty()) session.remark("Nothing was imported yet.");
    session.output().table(table);
    return ExitStatus::done;
}

ExitStatus showImport(Session& session, const Arguments& arguments) {
    const CDImportReport& row = resolveImport(session, arguments.word(0));
    showReport(session, ImportReports(session.clock()).read(session.context(), row));
    return ExitStatus::done;
}

ImportUndo runUndo(Session& session, const Uuid& id) {
    Progress progress(session.environment(), "Undoing");
    const auto context = session.store().newBackgroundContext();
    return ImportReports(session.clock())
        .undo(*context, id, {.stop = session.stop(), .progress = [&](const ImportProgress& state) {
                                 progress.show(state.done, state.total, state.current);
                             }});
}

ExitStatus undoImport(Session& session, const Arguments& arguments) {
    const auto id = resolveImport(session, arguments.word(0)).id.get();
    if (!id) throw StoreError::notFound("The import “" + arguments.word(0) + "”");
    const ImportUndo undo = runUndo(session, *id);
    if (session.output().isJSON()) {
        session.output().json(boost::json::object{
            {"trashed", undo.trashed},
            {"gone", undo.gone},
            {"prunedTags", undo.prunedTags},
            {"tasks", undo.tasks}});
    } else {
        session.output().line(
            "Moved " + counted(undo.trashed, "note") + " to the trash (" + std::to_string(undo.gone)
            + " were gone already) and deleted " + counted(undo.prunedTags, "unused tag")
            + (undo.tasks == 0 ? "" : " and " + counted(undo.tasks, "task")) + ".");
    }
    session.output().flush();
    if (undo.wasStopped) throw Interrupted();
    return ExitStatus::done;
}

/// What every import from another program offers, with `more` of its own.
std::vector<Option> importOptions(std::vector<Option> more = {}) {
    std::vector<Option> options{
        {.name = "dry-run", .summary = "Only tell what would be imported"},
        {.name = "notebook", .value = "NAME", .summary = "The notebook everything goes into"},
        {.name = "tag", .value = "NAME", .summary = "A tag for every imported note"},
        {.name = "duplicates",
         .value = "POLICY",
         .summary = "skip (which is usual), replace or keep notes that are there already",
         .choices = {"skip", "replace", "keep"}},
        {.name = "remote-images", .summary = "Keep pictures on other servers as pictures"}};
    options.insert(options.end(), more.begin(), more.end());
    options.push_back({.name = "no-backup", .summary = "Make no backup first"});
    return options;
}

}  // namespace

std::vector<Command> importCommands() {
    return {
        {.path = "import markdown",
         .summary = "Imports Markdown files, or all of a folder, with a report that is kept",
         .access = Access::writes,
         .arguments = {{.name = "PATH", .isRepeatable = true, .completion = Completion::file}},
         .options = importOptions(
             {{.name = "recognise-tags", .summary = "Make tags of #words in the text"}}),
         .details = "Folders become notebooks; links between the files become links between notes; "
                    "pictures and files beside them become attachments. Notes that are there "
                    "already are skipped, so a run that was stopped can be run again.",
         .example = "tesserine import markdown ~/Documents/notes --tag imported",
         .run = importWith<MarkdownImporter>},
        {.path = "import enex",
         .summary = "Imports Evernote's export files, with a report that is kept",
         .access = Access::writes,
         .arguments = {{.name = "FILE", .isRepeatable = true, .completion = Completion::file}},
         .options = importOptions(
             {{.name = "no-tasks", .summary = "Make checklists of tasks instead of tasks"}}),
         .details = "Each file becomes a notebook of its name. Text, pictures, files, tags, dates, "
                    "reminders and tasks come along. At the end the library is read again and "
                    "compared with the files, byte by byte. Notes that are there already are "
                    "skipped, so a run that was stopped can be run again.",
         .example = "tesserine import enex ~/Downloads/Recipes.enex",
         .run = importWith<ENEXImporter>},
        {.path = "import apple-notes",
         .summary = "Imports Apple Notes, with a report that is kept",
         .access = Access::writes,
         .arguments = {{.name = "PATH", .completion = Completion::file}},
         .options = importOptions(),
         .details =
             "PATH is a copy of the folder group.com.apple.notes of a Mac, or NoteStore.sqlite "
             "in it, or a folder of exported HTML, Markdown and text files. Folders become "
             "notebooks. What is locked in Apple Notes stays there. Notes that are there "
             "already are skipped, so a run that was stopped can be run again.",
         .example = "tesserine import apple-notes ~/group.com.apple.notes",
         .run = importWith<AppleNotesImporter>},
        {.path = "import list",
         .summary = "Lists the imports whose reports are kept, newest first",
         .example = "tesserine import list",
         .run = listImports},
        {.path = "import show",
         .summary = "Shows the report of an import",
         .arguments = {{.name = "ID"}},
         .example = "tesserine import show 5D0C77E1",
         .run = showImport},
        {.path = "import undo",
         .summary = "Moves the notes that an import created to the trash",
         .access = Access::writes,
         .arguments = {{.name = "ID"}},
         .details = "Notes that it replaced stay; their former content is among their revisions. "
                    "Tags that nothing carries any more are deleted.",
         .example = "tesserine import undo 5D0C77E1",
         .run = undoImport}};
}

}  // namespace tesserine::cli
