#include "core/services/LibraryExamination.h"

#include "core/services/NoteService.h"
#include "core/store/History.h"
#include "core/store/StoreCore.h"
#include "core/store/TesserineStore.h"

#include <array>

namespace tesserine {
namespace {

constexpr int shownDamages = 10;
constexpr std::array steps{
    "file", "references", "large values", "digests", "bodies", "trees", "pins"};

}  // namespace

LibraryExamination::LibraryExamination(
    TesserineStore& store, const Clock& clock, const LibraryChecker::Options& options)
    : store_(store), clock_(clock), options_(options), context_(store.newBackgroundContext()) {}

LibraryReport LibraryExamination::run() {
    const auto guard = store_.core().reading();
    std::size_t step = 0;
    const auto goesOn = [&] {
        if (isStopped()) return false;
        progress(steps.at(step), step, steps.size());
        ++step;
        return !isStopped();
    };
    try {
        if (!goesOn() || !isFileSound()) return std::move(report_);
        countObjects();
        if (goesOn()) checkReferences();
        if (goesOn()) checkFiles();
        if (goesOn()) checkDigests();
        if (goesOn()) checkBodies();
        if (goesOn()) {
            checkTree(EntityKind::notebook);
            checkTree(EntityKind::tag);
            checkTree(EntityKind::task);
        }
        if (goesOn()) checkPins();
    } catch (const SQLiteDatabase::Error& error) {
        throw StoreError::readFailed(StoreCore::explain(error));
    }
    return std::move(report_);
}

/// SQLite's own examination. What it finds is reported and left alone.
bool LibraryExamination::isFileSound() {
    SQLiteDatabase& database = context_->reader();
    const std::stop_callback interrupt(options_.stop, [&] { database.interrupt(); });
    try {
        Statement findings =
            database.prepare("PRAGMA integrity_check(" + std::to_string(shownDamages) + ")");
        while (findings.step()) {
            const std::string finding = findings.text(0).value_or("");
            if (finding == "ok") continue;
            add(LibraryProblem::Kind::damagedFile,
                "The library's file is damaged (" + finding + "); restore a backup");
        }
    } catch (const SQLiteDatabase::Error& error) {
        if (isStopped()) return false;
        if (!error.isDamage()) throw;
        add(LibraryProblem::Kind::damagedFile, "The library's file is damaged; restore a backup");
    }
    return report_.problems.empty();
}

void LibraryExamination::countObjects() {
    for (const EntityDescription& entity : Schema::library().entities()) {
        report_.objects += static_cast<std::size_t>(
            context_->reader().integer("SELECT count(*) FROM " + entity.table));
    }
}

void LibraryExamination::checkPins() {
    for (const char* disagreement :
         {"isPinned == YES AND favoritedAt == nil", "isPinned == NO AND favoritedAt != nil"}) {
        for (CDNote* note : context_->fetch<CDNote>({.predicate = {disagreement}})) {
            const RowID row{note->key(), note->id};
            if (repairs()) NoteService::reconcilePin(*note);
            add(LibraryProblem::Kind::pinDisagreement,
                "The " + nameOf(note->entity(), row)
                    + " was pinned without a time or had a time without being pinned",
                "it is pinned with a time now");
        }
    }
    if (context_->hasChanges()) context_->save();
}

bool LibraryExamination::isStopped() {
    if (options_.stop.stop_requested()) report_.wasStopped = true;
    return report_.wasStopped;
}

void LibraryExamination::progress(
    std::string_view step, std::size_t done, std::size_t total) const {
    if (options_.progress) options_.progress(step, done, total);
}

void LibraryExamination::add(
    LibraryProblem::Kind kind, const std::string& problem, const std::string& repair) {
    const bool repaired = repairs() && !repair.empty();
    report_.problems.push_back({kind, problem + (repaired ? "; " + repair + "." : "."), repaired});
}

std::string LibraryExamination::nameOf(const EntityDescription& entity, const RowID& row) const {
    static constexpr std::array<const char*, entityCount> nouns{
        "note",
        "notebook",
        "tag",
        "saved search",
        "task template",
        "attachment",
        "revision",
        "task",
        "project",
        "import report",
        "sync record",
        "sync entry"};
    const std::string noun = nouns.at(static_cast<std::size_t>(entity.kind));
    return noun + " " + (row.id ? row.id->text() : "in row " + std::to_string(row.key));
}

std::vector<LibraryExamination::RowID> LibraryExamination::rows(const std::string& sql) {
    std::vector<RowID> result;
    Statement row = context_->reader().prepare(sql);
    while (row.step()) {
        result.push_back({row.integer(0), Uuid::fromBytes(row.blob(1))});
    }
    return result;
}

void LibraryExamination::changeRows(
    const EntityDescription& entity,
    const std::vector<RowID>& rows,
    const std::string& changedName,
    const std::function<void(SQLiteDatabase&, const RowID&)>& change) {
    if (!repairs() || rows.empty()) return;
    std::vector<ObjectChange> changes;
    changes.reserve(rows.size());
    for (const RowID& row : rows) {
        changes.push_back(
            {.kind = ChangeKind::updated,
             .entity = entity.kind,
             .key = row.key,
             .uuid = row.id,
             .changed = {changedName}});
    }
    StoreCore& core = store_.core();
    {
        const StoreCore::Writing writing = core.beginWriting();
        writing.database().transaction([&] {
            for (const RowID& row : rows) {
                change(writing.database(), row);
            }
            history::record(writing.database(), clock_.now(), core.author(), changes);
        });
    }
    core.publish(changes, nullptr);
}

}  // namespace tesserine
