#include "cli/IndexWork.h"
#include "cli/LibrarySearch.h"
#include "cli/ObjectJSON.h"
#include "cli/Session.h"

#include <boost/json/object.hpp>

namespace tesserine::cli {

namespace {

boost::json::object coverageJSON(const IndexCoverage& coverage, const std::string& summary) {
    boost::json::object json{
        {"notes", coverage.notes},
        {"tasks", coverage.tasks},
        {"attachments", coverage.attachments},
        {"attachmentsWithText", coverage.attachmentsWithText},
        {"indexedNotes", coverage.indexedNotes},
        {"indexedTasks", coverage.indexedTasks},
        {"indexedAttachments", coverage.indexedAttachments},
        {"indexedAttachmentsWithText", coverage.indexedAttachmentsWithText},
        {"missing", coverage.missing},
        {"stale", coverage.stale},
        {"orphaned", coverage.orphaned},
        {"schemaVersion", nullptr},
        {"lastRepair", asJSON(coverage.lastRepair)},
        {"lastFullRebuild", asJSON(coverage.lastFullRebuild)},
        {"interruptedRebuild", coverage.interruptedRebuild},
        {"healthy", coverage.isHealthy()},
        {"summary", summary}};
    if (coverage.schemaVersion) json["schemaVersion"] = *coverage.schemaVersion;
    return json;
}

/// Says how the index stands, mending nothing.
ExitStatus showStatus(Session& session, const Arguments&) {
    const IndexCoverage coverage = session.search().coordinator().coverage();
    const std::string summary = coverage.summary(session.environment().locale());
    if (session.output().isJSON()) {
        session.output().json(coverageJSON(coverage, summary));
    } else {
        session.output().line(summary);
    }
    return ExitStatus::done;
}

ExitStatus checkIndex(Session& session, const Arguments& arguments) {
    IndexWork work(session, "Checking the search index");
    work.finish(session.search().coordinator().repair(SearchCoordinator::Care::thorough, work));
    return showStatus(session, arguments);
}

ExitStatus rebuildIndex(Session& session, const Arguments& arguments) {
    IndexWork work(session, "Rebuilding the search index");
    work.finish(session.search().coordinator().rebuild(work));
    return showStatus(session, arguments);
}

}  // namespace

std::vector<Command> indexCommands() {
    return {
        {.path = "index status",
         .summary = "Tells how much of the library the search index holds",
         .example = "tesserine index status",
         .run = showStatus},
        {.path = "index check",
         .summary = "Looks for what is missing or damaged in the search index and mends it",
         .example = "tesserine index check",
         .run = checkIndex},
        {.path = "index rebuild",
         .summary = "Makes the search index anew from the library",
         .details = "Nothing in the library depends on the index. Ctrl-C stops the work; the next "
                    "search goes on with it.",
         .example = "tesserine index rebuild",
         .run = rebuildIndex}};
}

}  // namespace tesserine::cli
