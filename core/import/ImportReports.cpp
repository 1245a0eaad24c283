#include "core/import/ImportReports.h"

#include "core/import/ImportReportJSON.h"
#include "core/model/BookkeepingEntities.h"
#include "core/model/TaskEntities.h"
#include "core/services/NoteService.h"
#include "core/services/TagService.h"
#include "core/store/StoreContext.h"

#include <algorithm>

namespace tesserine {
namespace {

constexpr std::size_t undoBatch = 50;
constexpr std::size_t reportsLookedAt = 20;  // for one that was stopped

std::string formatName(const std::string& format) {
    if (format == "markdown") return "Markdown";
    if (format == "enex") return "Evernote";
    if (format == "apple-notes") return "Apple Notes";
    if (format == "tesserine") return "Tesserine";
    return format;
}

Bytes bytesFrom(const std::string& text) {
    const auto bytes = bytesOf(text);
    return {bytes.begin(), bytes.end()};
}

std::string_view payloadOf(const CDImportReport& row) {
    return row.payload ? textOf(*row.payload) : std::string_view{};
}

/// The rows of the report's batches, oldest first. A batch has no title.
std::vector<CDImportReport*> batchRows(StoreContext& context, const Uuid& report) {
    auto rows = context.fetch<CDImportReport>({.predicate = {"title == nil"}});
    std::erase_if(rows, [&](const auto* row) { return !isImportBatch(payloadOf(*row), report); });
    return rows;
}

/// Deletes the tasks that came with a note and were not touched since; tells how many.
std::size_t removeTasks(StoreContext& context, const ImportedNote& imported, Instant started) {
    std::size_t removed = 0;
    for (const Uuid& id : imported.taskIDs) {
        auto* task = context.find<CDTask>(id);
        if (task == nullptr || task->updatedAt.valueOr(Instant{}) > started) continue;
        context.remove(*task);
        ++removed;
    }
    return removed;
}

}  // namespace

std::vector<CDImportReport*> ImportReports::list(StoreContext& context) const {
    return context.fetch<CDImportReport>(
        {.predicate = {"title != nil"},
         .sort = {{"createdAt", SortDescriptor::Order::descending}}});
}

CDImportReport& ImportReports::get(StoreContext& context, const Uuid& id) const {
    auto& row = context.get<CDImportReport>(id, "The import report");
    if (!row.title) throw StoreError::notFound("The import report");
    return row;
}

ImportReport ImportReports::read(StoreContext& context, const CDImportReport& row) const {
    ImportReport report = decodedImportReport(payloadOf(row)).value_or(ImportReport{});
    report.id = row.id;
    if (report.finished) return report;
    for (const CDImportReport* batch : batchRows(context, *row.id)) {
        addImportBatch(report, payloadOf(*batch));
    }
    return report;
}

std::string ImportReports::title(const ImportReport& report, const Calendar& calendar) {
    return formatName(report.format) + " import, " + calendar.longDate(report.started);
}

std::string ImportReports::text(const ImportReport& report, const Calendar& calendar) {
    std::string text = title(report, calendar) + "\n" + report.file + "\n\n";
    text += "Found: " + counted(report.found, "note") + "\n";
    text += "Imported: " + std::to_string(report.imported) + "\n";
    text += "Replaced: " + std::to_string(report.replaced) + "\n";
    text += "Skipped, because they were there already: " + std::to_string(report.skipped) + "\n";
    text += "Failed: " + std::to_string(report.failed) + "\n";
    text += "Attachments: " + std::to_string(report.attachments) + " ("
            + counted(report.attachmentBytes, "byte") + ")\n";
    if (report.check) text += "Compared with the source: " + report.check->sentence() + "\n";
    if (!report.finished) text += "The import was stopped before its end.\n";
    if (report.undone) text += "The import was undone.\n";
    text += "\n";
    for (const ImportedNote& note : report.notes) {
        text += std::string(rawValue(note.outcome)) + ": " + note.title + "\n";
        for (const std::string& warning : note.warnings) {
            text += "    " + warning + "\n";
        }
    }
    return text;
}

ImportUndo ImportReports::undo(
    StoreContext& context, const Uuid& id, const ImportControl& control) const {
    ImportReport report = read(context, get(context, id));
    const NoteService notes(clock_);
    ImportUndo result;
    std::size_t done = 0;
    std::size_t pending = 0;
    for (const ImportedNote& imported : report.notes) {
        if (control.stop.stop_requested()) break;
        ++done;
        if (control.progress) control.progress({done, report.notes.size(), imported.title});
        if (imported.outcome != ImportOutcome::imported || !imported.noteID) continue;
        result.tasks += removeTasks(context, imported, report.started);
        CDNote* note = notes.findNote(context, *imported.noteID);
        if (note == nullptr || note->trashedAt) {
            ++result.gone;
            continue;
        }
        notes.moveToTrash(*note);
        ++result.trashed;
        if (++pending == undoBatch) {
            pending = 0;
            context.save();
            context.reset();
        }
    }
    result.wasStopped = done < report.notes.size();
    if (!result.wasStopped) {
        result.prunedTags = TagService(clock_).pruneUnused(context);
        report.undone = clock_.now();
        rewrite(context, report);
    }
    context.save();
    context.reset();
    return result;
}

void ImportReports::remove(StoreContext& context, CDImportReport& row) const {
    for (CDImportReport* batch : batchRows(context, *row.id)) {
        context.remove(*batch);
    }
    context.remove(row);
}

std::optional<ImportReport> ImportReports::unfinished(
    StoreContext& context, const std::string& format, const std::string& file) const {
    const auto rows = context.fetch<CDImportReport>(
        {.predicate = {"title != nil"},
         .sort = {{"createdAt", SortDescriptor::Order::descending}},
         .limit = reportsLookedAt});
    for (const CDImportReport* row : rows) {
        ImportReport report = read(context, *row);
        if (report.format != format || report.file != file) continue;
        if (report.finished || report.undone || report.seed.isNil()) return std::nullopt;
        return report;
    }
    return std::nullopt;
}

void ImportReports::begin(
    StoreContext& context, const ImportReport& report, const Calendar& calendar) const {
    auto& row = context.insert<CDImportReport>();
    row.id = *report.id;
    row.createdAt = report.started;
    row.title = title(report, calendar);
    ImportReport head = report;
    head.notes.clear();
    row.payload = bytesFrom(encodedImportReport(head));
}

void ImportReports::append(
    StoreContext& context, const ImportReport& report, std::size_t first) const {
    auto& row = context.insert<CDImportReport>();
    row.createdAt = clock_.now();
    row.payload = bytesFrom(encodedImportBatch(report, first));
}

void ImportReports::rewrite(StoreContext& context, const ImportReport& report) const {
    CDImportReport& row = get(context, *report.id);
    for (CDImportReport* batch : batchRows(context, *report.id)) {
        context.remove(*batch);
    }
    row.payload = bytesFrom(encodedImportReport(report));
}

}  // namespace tesserine
