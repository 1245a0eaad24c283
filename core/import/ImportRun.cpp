#include "core/import/ImportRun.h"

#include "base/Digest.h"
#include "base/FailPoint.h"
#include "base/JSON.h"
#include "base/Text.h"
#include "core/store/StoreContext.h"

#include <algorithm>
#include <exception>
#include <set>

namespace tesserine {
namespace {

Bytes metadataJSON(const std::vector<std::pair<std::string, std::string>>& metadata) {
    boost::json::object object;
    for (const auto& [key, value] : metadata) {
        object[key] = value;
    }
    const std::string text = json::write(object);
    return {text.begin(), text.end()};
}

std::string foldedPath(const std::vector<std::string>& names) {
    std::string key;
    for (const std::string& name : names) {
        key += text::caseFolded(text::trimmed(name)) + "\n";
    }
    return key;
}

}  // namespace

std::string importFingerprint(
    std::string_view format,
    std::string_view title,
    const std::optional<Instant>& createdAt,
    std::string_view canonicalHTML) {
    std::string head(format);
    head += "\n";
    head += title;
    head += "\n";
    if (createdAt) head += createdAt->iso();
    head += "\n";
    SHA256 digest;
    digest.update(bytesOf(head));
    digest.update(bytesOf(canonicalHTML));
    return hex(digest.finish());
}

/// Takes attachments into one note, and remembers which.
class ImportRun::Intake final : public AttachmentIntake {
public:
    /// `note` gives the note when there is something to take into it.
    Intake(ImportRun& run, std::function<CDNote&()> note, const ImportedNote& soFar)
        : run_(run), note_(std::move(note)), soFar_(soFar) {}

    const CDAttachment& take(
        AttachmentDraft draft, const std::optional<std::string>& recognisedText) override {
        draft.sourceKind = "import";
        const std::uint64_t bytes = draft.data.size();
        CDAttachment& taken = run_.attachments_.insert(run_.context_, note_(), std::move(draft));
        const bool isFirst = std::ranges::find(taken_, &taken) == taken_.end();
        if (isFirst) taken_.push_back(&taken);
        if (recognisedText) {
            taken.ocrText = *recognisedText;
            taken.ocrStatus = "done";
        }
        if (isFirst && taken.isInserted()) add(taken, bytes);
        return taken;
    }
    bool wasTaken(const CDAttachment* attachment) const {
        return std::ranges::find(taken_, attachment) != taken_.end();
    }
    /// Takes everything back that this note brought.
    void undo() {
        for (CDAttachment* attachment : made_) {
            run_.context_.remove(*attachment);
        }
        run_.report_.attachments -= made_.size();
        run_.report_.attachmentBytes -= madeBytes_;
    }

private:
    void add(CDAttachment& made, std::uint64_t bytes) {
        made_.push_back(&made);
        madeBytes_ += bytes;
        ++run_.report_.attachments;
        run_.report_.attachmentBytes += bytes;
        run_.bytesInBatch_ += bytes;
        if (run_.bytesInBatch_ > bytesPerBatch) run_.saveHalfway(soFar_);
    }

    ImportRun& run_;
    const std::function<CDNote&()> note_;
    const ImportedNote& soFar_;
    std::vector<CDAttachment*> taken_;
    std::vector<CDAttachment*> made_;
    std::uint64_t madeBytes_ = 0;
};

ImportRun::ImportRun(
    StoreContext& context,
    const ImportEnvironment& environment,
    const ImportOptions& options,
    std::string format,
    std::string file,
    std::size_t found)
    : context_(context),
      environment_(environment),
      options_(options),
      notes_(environment.clock),
      notebooks_(environment.clock),
      tagService_(environment.clock),
      attachments_(environment.clock, environment.types),
      tasks_(environment.clock),
      reports_(environment.clock) {
    const auto before = reports_.unfinished(context, format, file);
    isContinued_ = before.has_value();
    report_.id = Uuid::random(environment.random);
    report_.seed = before ? before->seed : Uuid::random(environment.random);
    report_.format = std::move(format);
    report_.file = std::move(file);
    report_.started = environment.clock.now();
    report_.found = found;
}

ImportedNote ImportRun::add(ImportDraft draft) {
    ImportedNote result{.title = draft.title, .outcome = ImportOutcome::imported};
    result.warnings = std::move(draft.warnings);
    try {
        put(draft, result);
    } catch (const StoreError&) {
        throw;
    } catch (const UserError& error) {
        result.outcome = ImportOutcome::failed;
        result.noteID.reset();
        result.warnings.emplace_back(error.what());
    }
    count(result);
    return result;
}

ImportedNote ImportRun::addFailure(std::string title, std::string sentence) {
    ImportedNote result{.title = std::move(title), .outcome = ImportOutcome::failed};
    result.warnings.push_back(std::move(sentence));
    count(result);
    return result;
}

void ImportRun::put(ImportDraft& draft, ImportedNote& result) {
    CDNote* present = nullptr;
    if (options_.duplicates != DuplicatePolicy::keepBoth) {
        present = notes_.findByImportFingerprint(context_, draft.fingerprint);
    }
    if (present == nullptr) {
        create(draft, result);
    } else if (options_.duplicates == DuplicatePolicy::replace) {
        replace(draft, *present, result);
    } else {
        result.outcome = ImportOutcome::skipped;
        result.noteID = present->id;
    }
}

void ImportRun::create(ImportDraft& draft, ImportedNote& result) {
    NoteDraft content{.title = draft.title, .sourceURL = draft.sourceURL};
    content.id = freeIdentifier(draft).value_or(Uuid::random(environment_.random));
    content.notebook = notebook(draft.notebookPath);
    content.tags = tags(draft.tags);
    result.noteID = content.id;

    CDNote* note = nullptr;
    const auto make = [&]() -> CDNote& {
        if (note != nullptr) return *note;
        note = &notes_.createNote(context_, std::move(content));
        keepSource(*note, draft);
        return *note;
    };
    Intake intake(*this, make, result);
    try {
        std::string html = draft.body(*result.noteID, intake, result.warnings);
        if (note == nullptr) {
            content.html = std::move(html);
            make();
        } else {
            notes_.updateNote(context_, *note, {.html = std::move(html)});
            note->contentVersion = 1;
        }
    } catch (...) {
        intake.undo();
        if (note != nullptr) context_.remove(*note);
        throw;
    }
    note->importFingerprint = draft.fingerprint;
    takeDetails(*note, draft, result);
    if (draft.createdAt) note->createdAt = *draft.createdAt;
    if (draft.updatedAt) note->updatedAt = *draft.updatedAt;
    note->isPinned = draft.isPinned;
    NoteService::reconcilePin(*note);
}

void ImportRun::replace(ImportDraft& draft, CDNote& note, ImportedNote& result) {
    result.outcome = ImportOutcome::replaced;
    result.noteID = note.id;
    notes_.takeRevision(context_, note, NoteRevisionReason::preImportReplace);
    Intake intake(
        *this, [&]() -> CDNote& { return note; }, result);
    try {
        std::string html = draft.body(*note.id, intake, result.warnings);
        notes_.updateNote(context_, note, {.title = draft.title, .html = std::move(html)});
    } catch (...) {
        intake.undo();
        throw;
    }
    dropFormerAttachments(note, intake);
    replaceTags(note, draft);
    takeDetails(note, draft, result);
    keepSource(note, draft);
}

void ImportRun::takeDetails(CDNote& note, const ImportDraft& draft, ImportedNote& result) {
    if (draft.location) notes_.setLocation(note, *draft.location);
    if (draft.reminderAt) notes_.setReminder(note, *draft.reminderAt);
    if (draft.tasks.empty()) return;
    // A note that is replaced may have them from the first import.
    std::set<std::string> present;
    for (const CDTask* task : note.tasks.all()) {
        present.insert(task->title.valueOr(""));
    }
    for (const ImportedTask& task : draft.tasks) {
        if (!present.contains(task.draft.title)) makeTask(task, note, result);
    }
}

void ImportRun::makeTask(const ImportedTask& imported, CDNote& note, ImportedNote& result) {
    TaskDraft draft = imported.draft;
    draft.linkedNote = &note;
    CDTask& task = tasks_.create(context_, std::move(draft));
    // Stamps no later than the run, so that undoing it knows the tasks that were changed since.
    task.createdAt = std::min(imported.createdAt.value_or(report_.started), report_.started);
    task.updatedAt = std::min(imported.updatedAt.value_or(report_.started), report_.started);
    if (imported.completedAt) task.completedAt = *imported.completedAt;
    result.taskIDs.push_back(*task.id);
}

void ImportRun::keepSource(CDNote& note, ImportDraft& draft) {
    note.originalFormat = draft.originalFormat;
    note.importedFrom = draft.importedFrom;
    bytesInBatch_ += draft.originalSource.size() + note.html->size();
    note.originalSource = std::move(draft.originalSource);
    if (!draft.metadata.empty()) note.importMetadata = metadataJSON(draft.metadata);
}

/// Files that an earlier import brought and the note no longer has. What a revision shows stays,
/// and so does what the user attached.
void ImportRun::dropFormerAttachments(CDNote& note, const Intake& intake) {
    for (CDAttachment* attachment : note.attachments.all()) {
        if (intake.wasTaken(attachment) || attachment->sourceKind != std::string("import")) {
            continue;
        }
        if (!attachments_.referringRevisions(*attachment).empty()) continue;
        context_.remove(*attachment);
    }
}

void ImportRun::replaceTags(CDNote& note, const ImportDraft& draft) {
    const std::vector<CDTag*> wanted = tags(draft.tags);
    for (CDTag* former : note.tags.all()) {
        if (std::ranges::find(wanted, former) == wanted.end()) notes_.removeTag(note, *former);
    }
    for (CDTag* tag : wanted) {
        notes_.addTag(note, *tag);
    }
}

/// The identifier that links of other notes expect, unless an earlier run gave it to another note.
std::optional<Uuid> ImportRun::freeIdentifier(const ImportDraft& draft) {
    if (!draft.id || !isContinued_) return draft.id;
    CDNote* present = notes_.findNote(context_, *draft.id);
    if (present == nullptr) return draft.id;
    const bool isHalf = !present->importFingerprint && present->originalFormat
                        && *present->originalFormat == draft.originalFormat;
    if (!isHalf) return std::nullopt;
    // The earlier run was killed between the files of this note: it is made afresh.
    context_.remove(*present);
    return draft.id;
}

/// A note with many bytes of files is saved before it is complete. It is listed from then on, so
/// that nothing is in the library that the report does not know.
void ImportRun::saveHalfway(const ImportedNote& soFar) {
    if (!halfway_) {
        halfway_ = report_.notes.size();
        report_.add(soFar);
    }
    writeReport();
    context_.save();
    FAIL_POINT("import.halfwaySaved");
    context_.releaseLargeValues();
    bytesInBatch_ = 0;
}

void ImportRun::count(ImportedNote note) {
    const bool isSkipped = note.outcome == ImportOutcome::skipped;
    if (halfway_) {
        report_.replace(*halfway_, std::move(note));
        halfway_.reset();
    } else {
        report_.add(std::move(note));
    }
    ++(isSkipped ? skippedInBatch_ : notesInBatch_);
    if (notesInBatch_ >= notesPerBatch || skippedInBatch_ >= skippedPerBatch
        || bytesInBatch_ > bytesPerBatch) {
        save();
    }
}

/// The report's own rows. The main one is written anew only when the batches since then are half as
/// many notes as it holds: all writing together stays within a few times the report.
void ImportRun::writeReport() {
    if (!hasBegun_) reports_.begin(context_, report_, environment_.calendar);
    hasBegun_ = true;
    if (report_.notes.size() == listed_) return;
    constexpr std::size_t fewNotes = 2'000;
    if (report_.notes.size() - rewritten_ > std::max(fewNotes, rewritten_ / 2)) {
        reports_.rewrite(context_, report_);
        rewritten_ = report_.notes.size();
    } else {
        reports_.append(context_, report_, listed_);
    }
    listed_ = report_.notes.size();
}

void ImportRun::save() {
    writeReport();
    context_.save();
    FAIL_POINT("import.batchSaved");
    context_.reset();
    notesInBatch_ = 0;
    skippedInBatch_ = 0;
    bytesInBatch_ = 0;
}

ImportReport ImportRun::finish(bool isComplete, std::optional<ImportCheck> check) {
    if (!hasBegun_) save();
    report_.check = check;
    if (isComplete) report_.finished = environment_.clock.now();
    reports_.rewrite(context_, report_);
    context_.save();
    context_.reset();
    return std::move(report_);
}

CDNotebook* ImportRun::notebook(const std::vector<std::string>& path) {
    if (path.empty()) return nullptr;
    const std::string key = foldedPath(path);
    if (const auto known = notebookIDs_.find(key); known != notebookIDs_.end()) {
        if (auto* found = context_.find<CDNotebook>(known->second)) return found;
    }
    CDNotebook* made = notebooks_.findOrCreatePath(context_, path);
    notebookIDs_[key] = *made->id;
    return made;
}

std::vector<CDTag*> ImportRun::tags(const std::vector<std::string>& names) {
    std::vector<CDTag*> result;
    const auto addTag = [&](const std::string& name) {
        CDTag* found = tag(name);
        if (found != nullptr && std::ranges::find(result, found) == result.end()) {
            result.push_back(found);
        }
    };
    for (const std::string& name : names) {
        addTag(name);
    }
    if (options_.tag) addTag(*options_.tag);
    return result;
}

CDTag* ImportRun::tag(const std::string& name) {
    const std::string key = text::caseFolded(text::trimmed(name));
    if (const auto known = tagIDs_.find(key); known != tagIDs_.end()) {
        if (auto* found = context_.find<CDTag>(known->second)) return found;
    }
    CDTag* found = tagService_.findOrCreate(context_, name);
    if (found != nullptr) tagIDs_[key] = *found->id;
    return found;
}

}  // namespace tesserine
