#include "cli/CommandError.h"
#include "cli/ImportPresentation.h"
#include "cli/Presentation.h"
#include "cli/Safeguard.h"
#include "cli/Session.h"
#include "core/import/TesserineImporter.h"

namespace tesserine::cli {

namespace {

TesserineImport runImport(
    Session& session, const TesserineImporter& importer, const Arguments& arguments) {
    if (!session.store().wasCreated() && !arguments.has("no-backup")) {
        backUpBefore(session, "import");
    }
    Progress progress(session.environment(), "Importing");
    const auto context = session.store().newBackgroundContext();
    const ImportControl control{
        .stop = session.stop(), .progress = [&progress](const ImportProgress& state) {
            progress.show(state.done, state.total, state.current);
        }};
    return importer.run(*context, arguments.word(0), control);
}

ExitStatus importLibrary(Session& session, const Arguments& arguments) {
    const TesserineImporter importer(
        {.clock = session.clock(),
         .random = session.environment().random,
         .calendar = session.calendar(),
         .types = session.types(),
         .log = session.log()});
    if (arguments.has("dry-run")) {
        return showPreview(session, [&](StoreContext& library) {
            return importer.preview(library, arguments.word(0), {.stop = session.stop()});
        });
    }

    const TesserineImport imported = runImport(session, importer, arguments);
    showReport(session, imported);
    session.output().flush();
    session.throwIfStopped();
    const ImportReport& report = imported.report;
    const bool isAllLost = report.failed > 0 && report.failed == report.found;
    if (isAllLost) throw CommandError::badInput("No note could be imported.");
    return ExitStatus::done;
}

}  // namespace

std::vector<Command> libraryImportCommands() {
    return {
        {.path = "import tesserine",
         .summary = "Imports a folder that “export library” wrote, with everything in it",
         .access = Access::writes,
         .arguments = {{.name = "DIR", .completion = Completion::folder}},
         .options =
             {{.name = "dry-run", .summary = "Only tell what would be imported"},
              {.name = "no-backup", .summary = "Make no backup first"}},
         .details = "An empty library becomes the one that was exported. Any other one keeps what "
                    "it has and gets what it does not hold yet, so a run that was stopped can be "
                    "run again. Earlier versions of notes and saved searches are not in an export.",
         .example = "tesserine import tesserine ~/Desktop/Export",
         .run = importLibrary}};
}

}  // namespace tesserine::cli
