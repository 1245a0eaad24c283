#include "core/export/LibraryExporter.h"

#include "base/Files.h"
#include "base/sqlite/SQLiteDatabase.h"
#include "core/body/PlainText.h"
#include "core/export/ExportFolder.h"
#include "core/export/IndexPage.h"
#include "core/export/ManifestWriter.h"
#include "core/export/MarkdownFile.h"
#include "core/export/NoteFacts.h"
#include "core/export/NotePage.h"
#include "core/export/ReadMe.h"
#include "core/export/TaskList.h"
#include "core/services/Tree.h"
#include "core/store/StoreContext.h"

#include <algorithm>
#include <cassert>
#include <map>
#include <optional>
#include <unordered_map>
#include <utility>

namespace tesserine {
namespace {

constexpr std::string_view noteAddress = "tesserine://note/";

/// Keeps what a context reads as it is now, whatever others write meanwhile.
class Snapshot {
public:
    explicit Snapshot(SQLiteDatabase& reader) : reader_(reader) { reader_.execute("BEGIN;"); }
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;
    ~Snapshot() {
        try {
            reader_.execute("ROLLBACK;");
        } catch (const SQLiteDatabase::Error&) {
            // Nothing was written: there is nothing to lose.
        }
    }

private:
    SQLiteDatabase& reader_;
};

/// Where a notebook's notes go.
struct NotebookPlan {
    std::string folder;
    std::string name;
    std::size_t group = 0;  // of the index
};

/// Where a note goes, without an extension.
struct NotePlan {
    Uuid id;
    std::string path;
    std::int64_t notebook = 0;  // its key
};

/// How a note is shown wherever it is.
struct ShownNote {
    std::string title;
    std::vector<std::string> tags;
};

/// Reads the text only of a note without a title.
std::string titleOf(const CDNote& note) {
    const std::string title = note.title.valueOr("");
    return displayTitle(title, text::isBlank(title) ? note.plainText.valueOr("") : "");
}

/// One export under way.
class ExportRun {
public:
    ExportRun(
        const LibraryExporter::Environment& environment,
        StoreContext& context,
        const std::filesystem::path& parent,
        const ExportOptions& options,
        const ExportControl& control)
        : environment_(environment),
          context_(context),
          options_(options),
          control_(control),
          now_(environment.clock.now()),
          folder_(parent, now_, environment.calendar) {}

    ExportSummary run();

private:
    void readTree();
    void readTasks();
    void planNotes();
    void planAttachments();
    std::string folderFor(const CDNotebook& notebook);
    void exportNotes();
    void exportNote(const CDNote& note, const NotePlan& plan);
    manifest::NoteFiles exportFiles(
        const CDNote& note,
        const NotePlan& plan,
        const std::string& title,
        std::vector<ListedFile>& listed);
    std::string exportAttachment(const CDAttachment& attachment, const std::string& noteTitle);
    void writePages(
        const CDNote& note,
        const std::string& path,
        const ShownNote& shown,
        std::vector<ListedFile> listed);
    void addToIndex(const CDNote& note, const NotePlan& plan, ShownNote shown);
    AddressMap addressesFor(const std::string& path, std::string_view extension) const;
    std::string notePath(const Uuid& id, std::string_view extension) const;
    std::string attachmentPath(const Uuid& id) const;
    void finish();

    const LibraryExporter::Environment& environment_;
    StoreContext& context_;
    const ExportOptions& options_;
    const ExportControl& control_;
    const Instant now_;

    std::map<std::int64_t, NotebookPlan> notebooks_;  // by key; 0: notes in none
    std::vector<NotePlan> notes_;
    std::unordered_map<Uuid, std::size_t> notePlaces_;  // in notes_
    std::unordered_map<Uuid, std::string> attachmentPaths_;
    std::vector<IndexGroup> index_;
    ManifestWriter manifest_;
    ManifestWriter::Content content_;
    std::string taskList_;
    ExportSummary summary_;
    ExportFolder folder_;  // goes first: pages that it still makes ask for paths
};

ExportSummary ExportRun::run() {
    const Snapshot snapshot(context_.reader());
    summary_.directory = folder_.path();
    readTree();
    if (options_.includeTasks) readTasks();
    planNotes();
    if (options_.includeAttachments) planAttachments();
    exportNotes();
    finish();
    return std::move(summary_);
}

void ExportRun::readTree() {
    const std::string unfiledFolder = folder_.newPath("notes", unfiled);
    auto notebooks = context_.fetch<CDNotebook>();
    tree::sortByName(notebooks, environment_.collator);
    for (const auto& row : tree::rows(notebooks)) {
        content_.notebooks.push_back(manifest::record(*row.object));
        index_.emplace_back(tree::pathText(*row.object));
        notebooks_[row.object->key()] = {
            folderFor(*row.object), row.object->name.valueOr(""), index_.size() - 1};
    }
    index_.emplace_back(std::string(unfiled));
    notebooks_[0] = {unfiledFolder, std::string(unfiled), index_.size() - 1};

    auto tags = context_.fetch<CDTag>();
    tree::sortByName(tags, environment_.collator);
    for (const CDTag* const tag : tags) {
        content_.tags.push_back(manifest::record(*tag));
    }
}

/// A folder inside that of the parent, unless paths would get too long for a file system.
std::string ExportRun::folderFor(const CDNotebook& notebook) {
    constexpr std::size_t longestParent = 1'000;
    const CDNotebook* const parent = notebook.parent;
    const auto found = parent == nullptr ? notebooks_.end() : notebooks_.find(parent->key());
    const bool isInside = found != notebooks_.end() && found->second.folder.size() <= longestParent;
    return folder_.newPath(isInside ? found->second.folder : "notes", notebook.name.valueOr(""));
}

void ExportRun::readTasks() {
    // The order of the lists is that of the library: an import keeps it.
    const FetchRequest inOrder{.sort = {{"sortIndex"}, {"createdAt"}}};
    for (const CDProject* const project : context_.fetch<CDProject>(inOrder)) {
        content_.projects.push_back(manifest::record(*project));
    }
    const auto tasks = context_.fetch<CDTask>(inOrder);
    for (const CDTask* const task : tasks) {
        content_.tasks.push_back(manifest::record(*task, environment_.collator));
    }
    for (const CDTaskTemplate* const taskTemplate :
         context_.fetch<CDTaskTemplate>({.sort = {{"createdAt"}}})) {
        content_.taskTemplates.push_back(manifest::record(*taskTemplate));
    }
    taskList_ = taskListOf(tasks, environment_.calendar, environment_.collator);
    summary_.tasksWritten = tasks.size();
}

void ExportRun::planNotes() {
    const std::string condition = options_.includeTrash ? "" : "trashedAt == nil";
    const FetchRequest newestFirst{
        .predicate = {condition}, .sort = {{"updatedAt", SortDescriptor::Order::descending}}};
    context_.visitRows<CDNote>(newestFirst, [this](const ListedRow& row) {
        const auto id = row.get(&CDNote::id);
        if (!id) return;
        const std::int64_t key = row.key(&CDNote::notebook);
        const std::int64_t notebook = notebooks_.contains(key) ? key : 0;
        const std::string title = row.get(&CDNote::title).value_or("");
        notePlaces_.emplace(*id, notes_.size());
        notes_.push_back(
            {*id, folder_.newPath(notebooks_[notebook].folder, title, {".html", ".md"}), notebook});
    });
}

/// Their places are known before any page is written: a body may refer to those of other notes.
void ExportRun::planAttachments() {
    const std::string condition = options_.includeTrash ? "" : "note.trashedAt == nil";
    const FetchRequest request{.predicate = {condition}, .sort = {{"id"}}};
    context_.visitRows<CDAttachment>(request, [this](const ListedRow& row) {
        const auto id = row.get(&CDAttachment::id);
        if (!id || row.key(&CDAttachment::note) == 0) return;
        const std::string filename = row.get(&CDAttachment::filename).value_or("");
        attachmentPaths_.emplace(*id, folder_.newFilePath("attachments", filename));
    });
}

void ExportRun::exportNotes() {
    constexpr std::size_t notesPerReset = 50;
    for (const NotePlan& plan : notes_) {
        if (control_.stop.stop_requested()) throw ExportError::cancelled();
        // What was read before is not needed any more.
        if (summary_.notesWritten % notesPerReset == 0) context_.reset();
        exportNote(context_.get<CDNote>(plan.id, "The note"), plan);
        context_.releaseLargeValues();
        ++summary_.notesWritten;
        if (!control_.progress) continue;
        control_.progress(
            {.notesWritten = summary_.notesWritten,
             .totalNotes = notes_.size(),
             .attachmentsWritten = summary_.attachmentsWritten,
             .bytesWritten = folder_.bytesWritten(),
             .currentNotebook = notebooks_[plan.notebook].name});
    }
}

void ExportRun::exportNote(const CDNote& note, const NotePlan& plan) {
    ShownNote shown{.title = titleOf(note), .tags = tagNames(note, environment_.collator)};
    std::vector<ListedFile> listed;
    manifest::NoteFiles files = exportFiles(note, plan, shown.title, listed);
    writePages(note, plan.path, shown, std::move(listed));
    manifest_.addNote(manifest::record(note, shown.tags, std::move(files)));
    ++content_.counts.notes;
    if (note.trashedAt) ++content_.counts.trashedNotes;
    addToIndex(note, plan, std::move(shown));
}

manifest::NoteFiles ExportRun::exportFiles(
    const CDNote& note,
    const NotePlan& plan,
    const std::string& title,
    std::vector<ListedFile>& listed) {
    manifest::NoteFiles files{.html = plan.path + ".html"};
    if (options_.includeMarkdown) files.markdown = plan.path + ".md";
    for (const CDAttachment* const attachment : note.attachments.all()) {
        const std::string path = exportAttachment(*attachment, title);
        files.attachments.push_back(manifest::record(*attachment, path));
        listed.push_back(
            {attachment->filename.valueOr(""),
             path.empty() ? "" : addressFrom(files.html, path),
             static_cast<std::uint64_t>(attachment->byteCount.valueOr(0))});
        context_.releaseLargeValues();  // one file in memory is enough
    }
    const bool hasSource = note.originalFormat == "enex" && note.originalSource;
    if (options_.includeOriginalImportSource && hasSource) {
        files.originalSource = folder_.newPath("original-source", title, {".xml"}) + ".xml";
        folder_.write(files.originalSource, *note.originalSource);
    }
    return files;
}

/// Writes the file and tells its path; empty for one that is not written.
std::string ExportRun::exportAttachment(
    const CDAttachment& attachment, const std::string& noteTitle) {
    const auto planned = attachmentPaths_.find(attachment.id.valueOr(Uuid()));
    if (planned == attachmentPaths_.end()) return {};
    const auto& data = attachment.fileData.get();
    if (!data) {
        folder_.wait();  // pages that are being made ask for paths
        attachmentPaths_.erase(planned);
        summary_.warnings.push_back(
            "Attachment on “" + noteTitle + "” had no stored bytes and was skipped.");
        return {};
    }
    folder_.write(planned->second, *data);
    ++summary_.attachmentsWritten;
    summary_.attachmentBytes += data->size();
    return planned->second;
}

void ExportRun::writePages(
    const CDNote& note,
    const std::string& path,
    const ShownNote& shown,
    std::vector<ListedFile> listed) {
    NotePage page{
        .title = shown.title,
        .facts = factsOf(note, shown.tags, environment_.calendar),
        .body = note.html.valueOr(""),
        .files = std::move(listed)};
    const std::size_t size = page.body.size();
    if (options_.includeMarkdown) {
        folder_.write(
            path + ".md",
            size,
            [head = markdownHeadOf(note, environment_.collator),
             body = page.body,
             addressOf = addressesFor(path, ".md")] {
                return markdownFileOf(head, body, addressOf);
            });
    }
    folder_.write(
        path + ".html", size, [page = std::move(page), addressOf = addressesFor(path, ".html")] {
            return htmlPage(page, addressOf);
        });
}

void ExportRun::addToIndex(const CDNote& note, const NotePlan& plan, ShownNote shown) {
    index_[notebooks_[plan.notebook].group].add(
        {.title = std::move(shown.title),
         .address = addressFrom("index.html", plan.path + ".html"),
         .date = environment_.calendar.longDate(note.updatedAt.valueOr(now_)),
         .tags = std::move(shown.tags)});
}

/// The addresses of a body as they are written in the note's file `path` with `extension`.
AddressMap ExportRun::addressesFor(const std::string& path, std::string_view extension) const {
    return [this, path, extension](std::string_view address) -> std::string {
        const bool isNote = address.starts_with(noteAddress);
        if (!isNote && !address.starts_with(attachmentAddress)) return std::string(address);
        const std::size_t prefix = isNote ? noteAddress.size() : attachmentAddress.size();
        const auto id = Uuid::parse(address.substr(prefix));
        if (!id) return {};
        const std::string target = isNote ? notePath(*id, extension) : attachmentPath(*id);
        return target.empty() ? "" : addressFrom(path, target);
    };
}

/// Where a note of the export lies; empty for any other.
std::string ExportRun::notePath(const Uuid& id, std::string_view extension) const {
    const auto found = notePlaces_.find(id);
    return found == notePlaces_.end() ? "" : notes_[found->second].path + std::string(extension);
}

std::string ExportRun::attachmentPath(const Uuid& id) const {
    const auto found = attachmentPaths_.find(id);
    return found == attachmentPaths_.end() ? "" : found->second;
}

void ExportRun::finish() {
    manifest::Counts& counts = content_.counts;
    counts.notebooks = content_.notebooks.size();
    counts.tags = content_.tags.size();
    counts.attachments = summary_.attachmentsWritten;
    counts.attachmentBytes = summary_.attachmentBytes;
    counts.tasks = content_.tasks.size();
    counts.projects = content_.projects.size();
    counts.taskTemplates = content_.taskTemplates.size();
    content_.appVersion = options_.appVersion;
    content_.exportedAt = now_;
    if (options_.includeTasks) folder_.write("tasks.md", taskList_);
    folder_.write("index.html", indexPage(index_));
    folder_.write(
        "README.txt", readMeOf(counts, dateText(now_, environment_.calendar), options_.appVersion));
    folder_.finish();
    manifest_.write(folder_.path() / "manifest.json", content_);
}

/// An export among the library's own files would look like a part of it.
void refuseInside(const std::filesystem::path& library, const std::filesystem::path& parent) {
    if (library.empty()) return;
    const auto home = std::filesystem::weakly_canonical(library);
    const auto target = std::filesystem::weakly_canonical(parent);
    const auto [end, rest] = std::ranges::mismatch(home, target);
    if (end != home.end()) return;
    throw ExportError::writeFailed("An export cannot go into the folder of the library itself.");
}

}  // namespace

ExportSummary LibraryExporter::run(
    StoreContext& context,
    const std::filesystem::path& parent,
    const ExportOptions& options,
    const ExportControl& control) const {
    assert(!context.hasChanges() && "an export forgets the objects of its context");
    try {
        refuseInside(environment_.library, parent);
        return ExportRun(environment_, context, parent, options, control).run();
    } catch (const FileError& error) {
        throw ExportError::writeFailed(error.what());
    } catch (const std::filesystem::filesystem_error& error) {
        throw ExportError::writeFailed(error.code().message());
    }
}

}  // namespace tesserine
