#include "cli/ImportPresentation.h"

#include "cli/DisplayText.h"
#include "cli/ObjectJSON.h"
#include "cli/Presentation.h"
#include "cli/Session.h"

#include <boost/json/array.hpp>

namespace tesserine::cli {

namespace {

boost::json::array arrayOf(const std::vector<std::string>& texts) {
    boost::json::array array;
    for (const std::string& text : texts) {
        array.emplace_back(text);
    }
    return array;
}

boost::json::array arrayOf(const std::vector<ImportedNote>& notes) {
    boost::json::array array;
    for (const ImportedNote& note : notes) {
        array.push_back(boost::json::object{
            {"title", note.title},
            {"outcome", rawValue(note.outcome)},
            {"noteID", asJSON(note.noteID)},
            {"warnings", arrayOf(note.warnings)}});
    }
    return array;
}

boost::json::value checkJSON(const std::optional<ImportCheck>& check) {
    if (!check) return nullptr;
    return boost::json::object{
        {"notes", check->notes},
        {"expectedNotes", check->expectedNotes},
        {"files", check->files},
        {"expectedFiles", check->expectedFiles}};
}

std::string attachmentText(std::size_t count, std::uint64_t bytes) {
    return counted(count, "attachment") + " (" + byteText(bytes) + ")";
}

/// Nothing that went wrong stays unsaid: every failed note, and every warning.
void showTroubles(Session& session, const std::vector<ImportedNote>& notes) {
    Output& output = session.output();
    for (const ImportedNote& note : notes) {
        const bool hasFailed = note.outcome == ImportOutcome::failed;
        if (!hasFailed && note.warnings.empty()) continue;
        output.line(
            (hasFailed ? output.styled("Failed: ", Style::warning) : std::string())
            + inQuotes(note.title));
        for (const std::string& warning : note.warnings) {
            output.line("  " + oneLine(warning));
        }
    }
}

void show(Session& session, const ImportPreview& preview) {
    Output& output = session.output();
    if (output.isJSON()) {
        output.json(boost::json::object{
            {"found", preview.found},
            {"duplicates", preview.duplicates},
            {"unreadable", preview.unreadable},
            {"sourceBytes", preview.sourceBytes},
            {"attachments", preview.attachments},
            {"attachmentBytes", preview.attachmentBytes},
            {"notebooks", arrayOf(preview.notebooks)},
            {"tags", arrayOf(preview.tags)},
            {"notes", arrayOf(preview.notes)}});
        return;
    }
    showTroubles(session, preview.notes);
    output.line(
        "Would import " + counted(preview.found, "note") + " (" + byteText(preview.sourceBytes)
        + ") into " + counted(preview.notebooks.size(), "notebook") + " with "
        + attachmentText(preview.attachments, preview.attachmentBytes) + "; "
        + std::to_string(preview.duplicates) + " of them are there already and "
        + std::to_string(preview.unreadable) + " cannot be read.");
    for (const std::string& notebook : preview.notebooks) {
        output.line("  " + oneLine(notebook));
    }
}

}  // namespace

boost::json::object asJSON(const ImportReport& report) {
    return {
        {"id", asJSON(report.id)},
        {"format", report.format},
        {"file", report.file},
        {"started", report.started.iso()},
        {"finished", asJSON(report.finished)},
        {"undone", asJSON(report.undone)},
        {"found", report.found},
        {"imported", report.imported},
        {"replaced", report.replaced},
        {"skipped", report.skipped},
        {"failed", report.failed},
        {"attachments", report.attachments},
        {"attachmentBytes", report.attachmentBytes},
        {"check", checkJSON(report.check)},
        {"notes", arrayOf(report.notes)}};
}

void showReport(Session& session, const ImportReport& report) {
    Output& output = session.output();
    if (output.isJSON()) {
        output.json(asJSON(report));
        return;
    }
    showTroubles(session, report.notes);
    output.line(
        "Found " + counted(report.found, "note") + ": " + std::to_string(report.imported)
        + " imported, " + std::to_string(report.replaced) + " replaced, "
        + std::to_string(report.skipped) + " skipped, " + std::to_string(report.failed)
        + " failed; " + attachmentText(report.attachments, report.attachmentBytes) + ".");
    if (report.check) output.line("Compared with the source: " + report.check->sentence());
    if (!report.finished) output.line("It was stopped before its end; run it again to go on.");
    if (report.undone) output.line("It was undone at " + session.localTime(*report.undone) + ".");
    if (report.id) output.line("The report is kept as " + report.id->text() + ".");
}

void showReport(Session& session, const TesserineImport& imported) {
    Output& output = session.output();
    if (output.isJSON()) {
        boost::json::object json = asJSON(imported.report);
        json["notebooks"] = imported.notebooks;
        json["tags"] = imported.tags;
        json["projects"] = imported.projects;
        json["tasks"] = imported.tasks;
        json["taskTemplates"] = imported.taskTemplates;
        json["remarks"] = arrayOf(imported.remarks);
        output.json(json);
        return;
    }
    showReport(session, imported.report);
    output.line(
        "With them came " + counted(imported.notebooks, "notebook") + ", "
        + counted(imported.tags, "tag") + ", " + counted(imported.projects, "project") + ", "
        + counted(imported.tasks, "task") + " and "
        + counted(imported.taskTemplates, "task template") + ".");
    for (const std::string& remark : imported.remarks) {
        session.remark(remark);
    }
}

ExitStatus showPreview(
    Session& session, const std::function<ImportPreview(StoreContext& library)>& look) {
    session.onlyRead();
    std::optional<TesserineStore> empty;
    if (!session.hasLibrary()) {
        empty.emplace(
            StoreConfiguration{.inMemory = true},
            StoreEnvironment{.clock = session.clock(), .random = session.environment().random});
    }
    show(session, look(empty ? empty->viewContext() : session.context()));
    return ExitStatus::done;
}

}  // namespace tesserine::cli
