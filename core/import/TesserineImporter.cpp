#include "core/import/TesserineImporter.h"

#include "base/Digest.h"
#include "base/FailPoint.h"
#include "base/Files.h"
#include "core/body/Limits.h"
#include "core/import/ImportReports.h"
#include "core/import/Reconciliation.h"
#include "core/import/TesserineFolder.h"
#include "core/import/TesserinePage.h"
#include "core/import/TesserineStructure.h"
#include "core/services/AttachmentReferences.h"
#include "core/services/ImageSize.h"
#include "core/services/Limits.h"
#include "core/services/NoteService.h"
#include "core/store/StoreContext.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <unordered_map>

namespace tesserine {
namespace {

namespace fs = std::filesystem;
using Manifest = TesserineManifest;

constexpr std::size_t notesPerBatch = 50;
/// Files of more bytes than this are not kept waiting for the end of a batch.
constexpr std::uint64_t bytesPerBatch = 32'000'000;
constexpr const char* noPage = "Its page is not in the export, or cannot be read.";
constexpr std::uint64_t largestPage = 4 * limits::canonicalBodyBytes;
/// The fingerprint of a note whose files are not all in yet: a run that finds one was killed there.
constexpr const char* unfinished = "tesserine-import-unfinished";

/// Where notes and attachments of the library lie in an export, by path.
using Addresses = std::unordered_map<std::string, std::string>;

Addresses addressesOf(const Manifest& manifest) {
    Addresses addresses;
    for (const auto& note : manifest.notes) {
        addresses.emplace(note.htmlPath, NoteService::noteURL(note.id));
        for (const auto& attachment : note.attachments) {
            if (attachment.path.empty()) continue;
            addresses.emplace(
                attachment.path, std::string(attachmentScheme) + attachment.id.text());
        }
    }
    return addresses;
}

/// What the manifest says of the files that are in the export.
std::vector<SHA256Digest> digestsOf(const Manifest::Note& note) {
    std::vector<SHA256Digest> digests;
    for (const auto& attachment : note.attachments) {
        const auto bytes = fromHex(attachment.sha256);
        SHA256Digest digest{};
        if (attachment.path.empty() || !bytes || bytes->size() != digest.size()) continue;
        std::ranges::copy(*bytes, digest.begin());
        digests.push_back(digest);
    }
    return digests;
}

std::vector<Manifest::Attachment> renumbered(
    std::vector<Manifest::Attachment> records, const std::map<Uuid, Uuid>& newIDs) {
    for (auto& record : records) {
        const auto found = newIDs.find(record.id);
        if (found != newIDs.end()) record.id = found->second;
    }
    return records;
}

/// One import under way.
class LibraryImport {
public:
    LibraryImport(
        const ImportEnvironment& environment,
        StoreContext& context,
        const fs::path& folder,
        const ImportControl& control)
        : environment_(environment),
          context_(context),
          control_(control),
          folder_(folder),
          manifest_(Manifest::read(folder_)),
          addresses_(addressesOf(manifest_)),
          notes_(environment.clock),
          reports_(environment.clock),
          structure_(context, environment.clock) {}

    ImportPreview preview();
    TesserineImport run();

private:
    void begin();
    void addStructure();
    void addNotes();
    void add(const Manifest::Note& record, ImportedNote& result);
    std::string body(const Manifest::Note& record, const std::map<Uuid, Uuid>& newIDs) const;
    std::map<Uuid, Uuid> newAttachmentIDs(const Manifest::Note& record);
    void addAttachments(
        const std::vector<Manifest::Attachment>& records,
        CDNote& note,
        std::vector<std::string>& warnings);
    void addAttachment(
        const Manifest::Attachment& record, CDNote& note, std::vector<std::string>& warnings);
    void addFile(
        const std::string& path, CDAttachment& attachment, std::vector<std::string>& warnings);
    void addSource(
        const Manifest::Note& record, CDNote& note, std::vector<std::string>& warnings) const;
    void stamp(const Manifest::Note& record, CDNote& note) const;
    void save();
    void finish();
    void addRemarks();

    // Fixed after construction.
    const ImportEnvironment& environment_;
    StoreContext& context_;
    const ImportControl& control_;
    const TesserineFolder folder_;
    const Manifest manifest_;
    const Addresses addresses_;
    const NoteService notes_;
    const ImportReports reports_;

    TesserineStructure structure_;
    Reconciliation reconciliation_;
    TesserineImport result_;
    std::size_t listed_ = 0;  // notes of the report that are in the library's copy of it
    std::uint64_t bytesInBatch_ = 0;
};

ImportPreview LibraryImport::preview() {
    ImportPreview preview{.found = manifest_.notes.size()};
    for (const auto& notebook : manifest_.notebooks) {
        preview.notebooks.push_back(notebook.path);
    }
    for (const auto& tag : manifest_.tags) {
        preview.tags.push_back(tag.name);
    }
    std::ranges::sort(preview.notebooks);
    std::ranges::sort(preview.tags);
    for (const auto& record : manifest_.notes) {
        if (control_.stop.stop_requested()) break;
        ImportedNote note{.title = record.title, .outcome = ImportOutcome::imported};
        const auto page = folder_.file(record.htmlPath);
        if (notes_.findNote(context_, record.id) != nullptr) {
            note.outcome = ImportOutcome::skipped;
            ++preview.duplicates;
        } else if (!page) {
            note.outcome = ImportOutcome::failed;
            note.warnings.emplace_back(noPage);
            ++preview.unreadable;
        } else {
            preview.sourceBytes += fs::file_size(*page);
        }
        for (const auto& attachment : record.attachments) {
            if (attachment.path.empty()) continue;
            ++preview.attachments;
            preview.attachmentBytes += static_cast<std::uint64_t>(attachment.byteCount);
        }
        preview.notes.push_back(std::move(note));
    }
    return preview;
}

TesserineImport LibraryImport::run() {
    begin();
    addStructure();
    addNotes();
    result_.tasks = structure_.addTasks(manifest_.tasks, control_.stop);
    finish();
    return std::move(result_);
}

void LibraryImport::begin() {
    ImportReport& report = result_.report;
    report.id = Uuid::random(environment_.random);
    report.format = "tesserine";
    report.file = folder_.title();
    report.started = environment_.clock.now();
    report.found = manifest_.notes.size();
    reports_.begin(context_, report, environment_.calendar);
    save();
}

void LibraryImport::addStructure() {
    result_.notebooks = structure_.addNotebooks(manifest_.notebooks);
    result_.tags = structure_.addTags(manifest_.tags);
    result_.projects = structure_.addProjects(manifest_.projects);
    result_.taskTemplates = structure_.addTaskTemplates(manifest_.taskTemplates);
    save();
}

void LibraryImport::addNotes() {
    for (const auto& record : manifest_.notes) {
        if (control_.stop.stop_requested()) return;
        ImportedNote note{.title = record.title, .outcome = ImportOutcome::imported};
        try {
            add(record, note);
        } catch (const StoreError&) {
            throw;
        } catch (const UserError& error) {
            note.outcome = ImportOutcome::failed;
            note.noteID.reset();
            note.warnings.emplace_back(error.what());
        }
        if (note.outcome != ImportOutcome::skipped) {
            reconciliation_.expect(note.noteID, digestsOf(record));
        }
        result_.report.add(std::move(note));
        const std::size_t done = result_.report.notes.size();
        if (done % notesPerBatch == 0 || bytesInBatch_ > bytesPerBatch) save();
        if (control_.progress) control_.progress({done, manifest_.notes.size(), record.title});
    }
    save();
}

void LibraryImport::add(const Manifest::Note& record, ImportedNote& result) {
    result.noteID = record.id;
    if (CDNote* const present = notes_.findNote(context_, record.id)) {
        if (present->importFingerprint != std::string(unfinished)) {
            result.outcome = ImportOutcome::skipped;
            return;
        }
        context_.remove(*present);
        context_.save();
    }
    const std::map<Uuid, Uuid> newIDs = newAttachmentIDs(record);
    CDNote& note = notes_.createNote(
        context_,
        {.title = record.title,
         .html = body(record, newIDs),
         .notebook = structure_.notebook(record.notebookID),
         .tags = structure_.tags(record.tags),
         .sourceURL = record.sourceURL,
         .id = record.id});
    note.importFingerprint = unfinished;
    addAttachments(renumbered(record.attachments, newIDs), note, result.warnings);
    addSource(record, note, result.warnings);
    stamp(record, note);
    note.importFingerprint = std::nullopt;
}

/// The body of the page as it was in the library. Throws `FileError` when there is none.
std::string LibraryImport::body(
    const Manifest::Note& record, const std::map<Uuid, Uuid>& newIDs) const {
    const auto page = folder_.read(record.htmlPath, largestPage);
    const fs::path folder = fs::path(record.htmlPath).parent_path();
    const auto addressOf = [&](const std::string& address) -> std::string {
        const auto found = addresses_.find((folder / address).lexically_normal().string());
        return found == addresses_.end() ? "" : found->second;
    };
    const auto body = page ? bodyOfPage(textOf(*page), addressOf) : std::nullopt;
    if (!body) throw FileError(FileError::Kind::notFound, noPage);
    return newIDs.empty() ? *body : withReplacedReferences(*body, newIDs);
}

/// For attachments whose identifier another note of the library has.
std::map<Uuid, Uuid> LibraryImport::newAttachmentIDs(const Manifest::Note& record) {
    std::map<Uuid, Uuid> newIDs;
    for (const auto& attachment : record.attachments) {
        if (context_.find<CDAttachment>(attachment.id) == nullptr) continue;
        newIDs.emplace(attachment.id, Uuid::random(environment_.random));
    }
    return newIDs;
}

void LibraryImport::addAttachments(
    const std::vector<Manifest::Attachment>& records,
    CDNote& note,
    std::vector<std::string>& warnings) {
    std::size_t missing = 0;
    std::set<Uuid> added;
    for (const auto& record : records) {
        const bool isNew = added.insert(record.id).second;
        if (!isNew || added.size() > limits::attachmentsPerNote) continue;
        addAttachment(record, note, warnings);
        if (record.path.empty()) ++missing;
        if (bytesInBatch_ <= bytesPerBatch) continue;
        context_.save();
        context_.releaseLargeValues();
        bytesInBatch_ = 0;
    }
    if (missing == 0) return;
    warnings.push_back("The bytes of " + counted(missing, "file") + " are not in the export.");
}

void LibraryImport::addAttachment(
    const Manifest::Attachment& record, CDNote& note, std::vector<std::string>& warnings) {
    auto& attachment = context_.insert<CDAttachment>();
    attachment.id = record.id;
    attachment.note = &note;
    attachment.filename = files::safeName(record.filename);
    attachment.mimeType = mime::normalised(record.mimeType);
    attachment.byteCount = record.byteCount;
    attachment.sha256 = record.sha256;
    attachment.createdAt = environment_.clock.now();
    attachment.ocrText = record.ocrText;
    attachment.ocrStatus = record.ocrText ? "done" : mime::ocrStatus(*attachment.mimeType);
    attachment.extractedText = record.extractedText;
    attachment.sourceKind = record.sourceKind;
    attachment.integrityVerified = record.integrityVerified;
    if (!record.path.empty()) addFile(record.path, attachment, warnings);
}

void LibraryImport::addFile(
    const std::string& path, CDAttachment& attachment, std::vector<std::string>& warnings) {
    const std::string name = "“" + *attachment.filename + "” ";
    auto data = folder_.read(path, limits::attachmentBytes);
    if (!data || data->empty()) {
        warnings.push_back(name + "is not in the export, or cannot be read.");
        return;
    }
    if (std::string digest = sha256Hex(*data); digest != attachment.sha256) {
        warnings.push_back(name + "does not hold the bytes that were exported.");
        attachment.sha256 = std::move(digest);
        attachment.integrityVerified = false;
    }
    attachment.byteCount = static_cast<std::int64_t>(data->size());
    if (const auto size = imageSize(*data); size && attachment.mimeType->starts_with("image/")) {
        attachment.width = size->width;
        attachment.height = size->height;
    }
    ++result_.report.attachments;
    result_.report.attachmentBytes += data->size();
    bytesInBatch_ += data->size();
    attachment.fileData = std::move(*data);
}

void LibraryImport::addSource(
    const Manifest::Note& record, CDNote& note, std::vector<std::string>& warnings) const {
    note.originalFormat = record.originalFormat;
    note.importMetadata = record.importMetadata;
    if (record.originalSourcePath.empty()) return;
    note.originalSource = folder_.read(record.originalSourcePath, limits::attachmentBytes);
    if (!note.originalSource) {
        warnings.emplace_back("The source it was imported from is not in the export.");
    }
}

/// What the note service sets by itself is put back to what it was.
void LibraryImport::stamp(const Manifest::Note& record, CDNote& note) const {
    const double latitude = record.latitude.value_or(0);
    const double longitude = record.longitude.value_or(0);
    const bool isPlace = record.latitude && record.longitude && std::abs(latitude) <= 90
                         && std::abs(longitude) <= 180;
    if (isPlace) notes_.setLocation(note, NoteLocation{latitude, longitude});
    note.isPinned = record.isPinned;
    note.isTemplate = record.isTemplate;
    note.reminderAt = record.reminderAt;
    note.trashedAt = record.trashedAt;
    note.updatedAt = record.updatedAt.value_or(environment_.clock.now());
    note.createdAt = record.createdAt.value_or(*note.updatedAt);
    NoteService::reconcilePin(note);
}

void LibraryImport::save() {
    if (listed_ < result_.report.notes.size()) {
        reports_.append(context_, result_.report, listed_);
        listed_ = result_.report.notes.size();
    }
    context_.save();
    FAIL_POINT("import.batchSaved");
    context_.reset();
    bytesInBatch_ = 0;
}

void LibraryImport::finish() {
    ImportReport& report = result_.report;
    const bool isNew = report.skipped < report.notes.size();
    if (isNew) report.check = reconciliation_.run(context_, control_.stop);
    if (!control_.stop.stop_requested()) report.finished = environment_.clock.now();
    reports_.rewrite(context_, report);
    context_.save();
    context_.reset();
    addRemarks();
}

void LibraryImport::addRemarks() {
    const auto withRevisions = static_cast<std::size_t>(std::ranges::count_if(
        manifest_.notes, [](const auto& note) { return note.revisionCount > 0; }));
    if (withRevisions > 0) {
        result_.remarks.push_back(
            "Earlier versions of " + counted(withRevisions, "note")
            + " are not part of an export and did not come along.");
    }
    if (manifest_.unreadable > 0) {
        result_.remarks.push_back(
            counted(manifest_.unreadable, "record") + " of the manifest could not be read.");
    }
}

}  // namespace

ImportPreview TesserineImporter::preview(
    StoreContext& context, const fs::path& folder, const ImportControl& control) const {
    return LibraryImport(environment_, context, folder, control).preview();
}

TesserineImport TesserineImporter::run(
    StoreContext& context, const fs::path& folder, const ImportControl& control) const {
    return LibraryImport(environment_, context, folder, control).run();
}

}  // namespace tesserine
