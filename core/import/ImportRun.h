#pragma once

#include "core/import/ImportReports.h"
#include "core/import/ImportTypes.h"
#include "core/services/AttachmentService.h"
#include "core/services/NotebookService.h"
#include "core/services/NoteService.h"
#include "core/services/TagService.h"
#include "core/tasks/TaskService.h"

#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tesserine {

class StoreContext;

/// Takes the files of one note while its body is made.
class AttachmentIntake {
public:
    AttachmentIntake() = default;
    AttachmentIntake(const AttachmentIntake&) = delete;
    AttachmentIntake& operator=(const AttachmentIntake&) = delete;
    virtual ~AttachmentIntake() = default;

    /// The note's attachment with these bytes; with `recognisedText` it needs no recognition any
    /// more. Throws `AttachmentError`.
    virtual const CDAttachment& take(
        AttachmentDraft draft, const std::optional<std::string>& recognisedText = {}) = 0;
};

/// A task as an importer hands it over with its note.
struct ImportedTask {
    TaskDraft draft{};
    std::optional<Instant> createdAt{};
    std::optional<Instant> updatedAt{};
    std::optional<Instant> completedAt{};
};

/// One note as an importer hands it over.
struct ImportDraft {
    std::string title{};
    std::string fingerprint{};
    std::optional<Uuid> id{};
    std::optional<Instant> createdAt{};
    std::optional<Instant> updatedAt{};
    std::vector<std::string> notebookPath{};  ///< from the top; empty: in no notebook
    std::vector<std::string> tags{};
    std::optional<std::string> sourceURL{};
    bool isPinned = false;
    std::optional<NoteLocation> location{};
    std::optional<Instant> reminderAt{};
    std::vector<ImportedTask> tasks{};
    std::string originalFormat{};
    Bytes originalSource{};
    std::string importedFrom{};
    std::vector<std::pair<std::string, std::string>> metadata{};
    std::vector<std::string> warnings{};
    /// Makes the body, not sanitised yet; called once, when the note is going in as `noteID`. May
    /// add warnings.
    std::function<std::string(
        const Uuid& noteID, AttachmentIntake& intake, std::vector<std::string>& warnings)>
        body{};
};

/// The fingerprint by which an imported note is known again: the SHA-256, in hexadecimal digits, of
/// format, title, date of creation (or nothing) and body, each but the last followed by a line
/// break. `canonicalHTML` is the body before it names any attachment or note of the library.
std::string importFingerprint(
    std::string_view format,
    std::string_view title,
    const std::optional<Instant>& createdAt,
    std::string_view canonicalHTML);

/// A running import: puts notes into the library in batches, keeps its report there, and forgets
/// the context's objects after each batch, so that memory does not grow with the source.
///
/// What is saved stays, and is listed in the report, however the run ends. On the thread that owns
/// the context, which is the run's alone.
class ImportRun {
public:
    static constexpr std::size_t notesPerBatch = 50;
    static constexpr std::size_t skippedPerBatch = 1'000;
    /// Files of more bytes than this are not kept waiting for the end of a batch.
    static constexpr std::uint64_t bytesPerBatch = 32'000'000;

    /// `file` names the source in the report. An import of the same source that was stopped is
    /// continued: its seed is used again. `environment` outlives the run. Throws `StoreError`.
    ImportRun(
        StoreContext& context,
        const ImportEnvironment& environment,
        const ImportOptions& options,
        std::string format,
        std::string file,
        std::size_t found);

    const Uuid& seed() const { return report_.seed; }
    bool isContinued() const { return isContinued_; }

    /// Puts the note in as the duplicate policy says, and saves when the batch is full. What is
    /// wrong with the note makes it a failed one; throws `StoreError` when the library fails.
    ImportedNote add(ImportDraft draft);
    /// Counts a note that could not be read.
    ImportedNote addFailure(std::string title, std::string sentence);
    /// Saves what is pending without ending the run.
    void save();
    /// Saves and closes the report; `isComplete` when every note was dealt with.
    ImportReport finish(bool isComplete, std::optional<ImportCheck> check = {});

private:
    class Intake;

    void put(ImportDraft& draft, ImportedNote& result);
    void create(ImportDraft& draft, ImportedNote& result);
    void replace(ImportDraft& draft, CDNote& note, ImportedNote& result);
    void keepSource(CDNote& note, ImportDraft& draft);
    void takeDetails(CDNote& note, const ImportDraft& draft, ImportedNote& result);
    void makeTask(const ImportedTask& imported, CDNote& note, ImportedNote& result);
    void dropFormerAttachments(CDNote& note, const Intake& intake);
    void replaceTags(CDNote& note, const ImportDraft& draft);
    std::optional<Uuid> freeIdentifier(const ImportDraft& draft);
    void saveHalfway(const ImportedNote& soFar);
    void count(ImportedNote note);
    void writeReport();
    CDNotebook* notebook(const std::vector<std::string>& path);
    std::vector<CDTag*> tags(const std::vector<std::string>& names);
    CDTag* tag(const std::string& name);

    // Fixed after construction.
    StoreContext& context_;
    const ImportEnvironment& environment_;
    const ImportOptions options_;
    const NoteService notes_;
    const NotebookService notebooks_;
    const TagService tagService_;
    const AttachmentService attachments_;
    const TaskService tasks_;
    const ImportReports reports_;
    bool isContinued_ = false;

    ImportReport report_;
    std::size_t listed_ = 0;     // notes of the report that are in the library's copy of it
    std::size_t rewritten_ = 0;  // of these, in its main row
    bool hasBegun_ = false;
    std::size_t notesInBatch_ = 0;
    std::size_t skippedInBatch_ = 0;
    std::uint64_t bytesInBatch_ = 0;
    std::optional<std::size_t> halfway_;  // number of a note that was saved before it was complete
    std::unordered_map<std::string, Uuid> tagIDs_;       // by case-folded name
    std::unordered_map<std::string, Uuid> notebookIDs_;  // by case-folded path
};

}  // namespace tesserine
