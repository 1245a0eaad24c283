#include "base/Files.h"
#include "base/Product.h"
#include "cli/CommandError.h"
#include "cli/DisplayText.h"
#include "cli/Names.h"
#include "cli/Presentation.h"
#include "cli/Session.h"
#include "core/export/ExportVerifier.h"
#include "core/export/ICSExporter.h"
#include "core/export/LibraryExporter.h"
#include "core/export/NoteExport.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

namespace tesserine::cli {

namespace {

namespace fs = std::filesystem;

fs::path targetOf(const Arguments& arguments) {
    const auto target = arguments.path("to");
    if (!target) throw UsageError::because("“--to” says where the export goes; it is missing.");
    return *target;
}

ExportOptions optionsFrom(const Arguments& arguments) {
    const auto isChosen = [&arguments](std::string_view name) {
        return arguments.has("all") || arguments.has(name);
    };
    return {
        .includeTrash = isChosen("trash"),
        .includeMarkdown = isChosen("markdown"),
        .includeOriginalImportSource = isChosen("original-source"),
        .includeAttachments = isChosen("attachments"),
        .includeTasks = isChosen("tasks"),
        .appVersion = std::string(product::version)};
}

ExportSummary runExport(Session& session, const fs::path& target, const ExportOptions& options) {
    Progress progress(session.environment(), "Exporting");
    const auto context = session.store().newBackgroundContext();
    const LibraryExporter exporter(
        {.clock = session.clock(),
         .calendar = session.calendar(),
         .collator = session.collator(),
         .library = session.libraryFolder()});
    const ExportControl control{
        .stop = session.stop(), .progress = [&progress](const ExportProgress& state) {
            progress.show(state.notesWritten, state.totalNotes, state.currentNotebook);
        }};
    return exporter.run(*context, target, options, control);
}

boost::json::array texts(const std::vector<std::string>& list) {
    boost::json::array values;
    for (const std::string& text : list) {
        values.push_back(boost::json::string(text));
    }
    return values;
}

void show(Session& session, const ExportSummary& summary) {
    if (session.output().isJSON()) {
        session.output().json(boost::json::object{
            {"directory", summary.directory.string()},
            {"notesWritten", summary.notesWritten},
            {"attachmentsWritten", summary.attachmentsWritten},
            {"attachmentBytes", summary.attachmentBytes},
            {"tasksWritten", summary.tasksWritten},
            {"warnings", texts(summary.warnings)}});
        return;
    }
    for (const std::string& warning : summary.warnings) {
        session.remark(oneLine(warning));
    }
    session.output().line(
        "Exported " + counted(summary.notesWritten, "note") + ", "
        + counted(summary.attachmentsWritten, "attachment") + " ("
        + byteText(summary.attachmentBytes) + ") and " + counted(summary.tasksWritten, "task")
        + " to “" + oneLine(summary.directory.string()) + "”.");
}

ExitStatus exportLibrary(Session& session, const Arguments& arguments) {
    const fs::path target = targetOf(arguments);
    session.store();  // a library that is not there is said before anything else
    try {
        show(session, runExport(session, target, optionsFrom(arguments)));
    } catch (const ExportError& error) {
        if (error.kind() != ExportError::Kind::cancelled) throw;
        session.remark(error.what());
        session.throwIfStopped();
    }
    return ExitStatus::done;
}

ExitStatus verify(Session& session, const Arguments& arguments) {
    const ExportVerification found = verifyExport(arguments.word(0), session.stop());
    if (found.wasStopped) session.throwIfStopped();
    if (session.output().isJSON()) {
        session.output().json(boost::json::object{
            {"notes", found.notes},
            {"files", found.files},
            {"bytes", found.bytes},
            {"problems", texts(found.problems)}});
    } else {
        for (const std::string& problem : found.problems) {
            session.output().line(oneLine(problem));
        }
        if (found.problems.empty()) {
            session.output().line(
                counted(found.notes, "note") + ", " + counted(found.files, "file") + ", "
                + byteText(found.bytes) + ": everything is as the manifest says.");
        }
    }
    session.output().flush();
    if (found.problems.empty()) return ExitStatus::done;
    throw CommandError::badInput("The export has " + counted(found.problems.size(), "fault") + ".");
}

ExitStatus exportTasks(Session& session, const Arguments& arguments) {
    const fs::path file = targetOf(arguments);
    const std::size_t count = exportCalendar(
        session.context(),
        file,
        {.includeCompleted = arguments.has("completed")},
        session.calendar());
    if (session.output().isJSON()) {
        session.output().json(boost::json::object{{"file", file.string()}, {"tasks", count}});
    } else {
        session.output().line(
            "Exported " + counted(count, "task") + " to “" + oneLine(file.string()) + "”.");
    }
    return ExitStatus::done;
}

ExitStatus exportNote(Session& session, const Arguments& arguments) {
    const fs::path file = targetOf(arguments);
    CDNote& note = resolveNote(session, arguments.word(0));
    const auto form = noteFileFormOf(file);
    if (!form) {
        throw UsageError::because("“--to” names a file that ends in .html, .md or .txt.");
    }
    writeNoteFile(
        note, *form, file, NoteFileTarget::newFile, session.calendar(), session.collator());
    return answer(session, note, "Exported " + quotedTitle(note) + ".");
}

}  // namespace

std::vector<Command> exportCommands() {
    return {
        {.path = "export library",
         .summary = "Writes all notes into a folder that needs no program",
         .options =
             {{.name = "to",
               .value = "DIR",
               .summary = "Where the new folder is made",
               .completion = Completion::folder},
              {.name = "all", .summary = "Everything below"},
              {.name = "markdown", .summary = "A Markdown file beside each page"},
              {.name = "attachments", .summary = "The attachments"},
              {.name = "original-source", .summary = "The source of imported notes"},
              {.name = "tasks", .summary = "The tasks"},
              {.name = "trash", .summary = "Notes in the trash as well"}},
         .details = "Makes a folder “Tesserine Export …” in DIR with a page for every note, an "
                    "index, and a manifest that programs read.",
         .example = "tesserine export library --to ~/Desktop --all",
         .run = exportLibrary},
        {.path = "export verify",
         .summary = "Reads an exported folder again and compares it with its manifest",
         .access = Access::none,
         .arguments = {{.name = "DIR", .completion = Completion::folder}},
         .example = "tesserine export verify ~/Desktop/Export",
         .run = verify},
        {.path = "export calendar",
         .summary = "Writes tasks with a due date as a file that calendar programs read",
         .options =
             {{.name = "to",
               .value = "FILE",
               .summary = "A new file, which usually ends in .ics",
               .completion = Completion::file},
              {.name = "completed", .summary = "Completed tasks as well"}},
         .details = "Each task is a to-do of the iCalendar format, with its rule of repetition.",
         .example = "tesserine export calendar --to ~/tasks.ics",
         .run = exportTasks},
        {.path = "export note",
         .summary = "Writes one note as a page, as Markdown or as text",
         .arguments = {{.name = "NOTE"}},
         .options =
             {{.name = "to",
               .value = "FILE",
               .summary = "A new file that ends in .html, .md or .txt",
               .completion = Completion::file}},
         .details =
             "A page holds its pictures; other attachments are only named. Beside a Markdown file "
             "stands a folder with all of them.",
         .example = "tesserine export note Plan --to plan.html",
         .run = exportNote}};
}

}  // namespace tesserine::cli
