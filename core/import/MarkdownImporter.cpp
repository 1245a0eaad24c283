#include "core/import/MarkdownImporter.h"

#include "base/Files.h"
#include "base/Text.h"
#include "core/import/ImportPreviewRun.h"
#include "core/import/ImportRun.h"
#include "core/import/LinkRepair.h"
#include "core/import/LocalReferences.h"
#include "core/import/MarkdownNote.h"
#include "core/import/NoteLinks.h"
#include "core/services/Limits.h"
#include "core/store/StoreContext.h"

#include <exception>
#include <map>

namespace tesserine {
namespace {

constexpr const char* unexpectedFile = "The file could not be read as a note.";

/// Where a note goes: below the chosen notebook, or into the notebooks that its front matter or its
/// folders name.
std::vector<std::string> notebookPath(
    const SourceFolder& folder,
    const SourceFile& file,
    const MarkdownProperties& properties,
    const ImportOptions& options) {
    std::vector<std::string> path = options.notebook;
    if (!properties.notebookPath.empty()) {
        path.insert(path.end(), properties.notebookPath.begin(), properties.notebookPath.end());
        return path;
    }
    if (!folder.isWholeFolder(file.root)) return path;
    if (path.empty()) path.push_back(text::composed(folder.rootName(file.root)));
    const std::filesystem::path parents = std::filesystem::path(file.relative).parent_path();
    for (const auto& part : parents) {
        path.push_back(text::composed(text::sanitized(part.string())));
    }
    return path;
}

/// References of a note that is going into the library.
class WrittenReferences final : public LocalReferences {
public:
    WrittenReferences(
        const SourceIndex& index,
        const SourceFile& from,
        const ImportOptions& options,
        const Uuid& noteID,
        NoteLinks& links,
        AttachmentIntake& intake,
        std::vector<std::string>& warnings)
        : LocalReferences(index, from, options.keepsRemoteImages, warnings),
          folder_(index.folder),
          noteID_(noteID),
          links_(links),
          intake_(intake) {}

private:
    std::optional<std::string> noteAddress(std::size_t note) override {
        const auto id = links_.address(note, noteID_);
        if (!id) return std::nullopt;
        return NoteService::noteURL(*id);
    }
    std::optional<std::string> fileElement(const SourceFile& file) override {
        const auto known = elements_.find(file.relative);
        if (known != elements_.end()) return known->second;
        return elements_[file.relative] = readElement(file);
    }
    std::optional<std::string> readElement(const SourceFile& file) {
        AttachmentDraft draft{.filename = SourceFolder::name(file)};
        try {
            draft.data =
                files::read(folder_.path(file), limits::attachmentBytes, files::Links::refuse);
        } catch (const FileError& error) {
            const bool isTooLarge = error.kind() == FileError::Kind::tooLarge;
            warn(isTooLarge ? AttachmentError::tooLarge(draft.filename).what() : error.what());
            return std::nullopt;
        }
        return element(std::move(draft));
    }
    std::optional<std::string> dataElement(std::string_view type, Bytes bytes) override {
        return element({.declaredType = std::string(type), .data = std::move(bytes)});
    }
    std::optional<std::string> element(AttachmentDraft draft) {
        try {
            return AttachmentService::bodyElement(intake_.take(std::move(draft)));
        } catch (const AttachmentError& error) {
            warn(error.what());
            return std::nullopt;
        }
    }

    const SourceFolder& folder_;
    const Uuid noteID_;
    NoteLinks& links_;
    AttachmentIntake& intake_;
    std::map<std::string, std::optional<std::string>> elements_;  // of the files of this note
};

/// Looks where the references of a note lead, and takes nothing.
class CountedReferences final : public LocalReferences {
public:
    CountedReferences(
        const SourceIndex& index,
        const SourceFile& from,
        const ImportOptions& options,
        std::vector<std::string>& warnings)
        : LocalReferences(index, from, options.keepsRemoteImages, warnings),
          folder_(index.folder) {}

    std::vector<std::size_t> notes;  ///< that are linked to
    std::map<std::string, std::uint64_t> files;

private:
    std::optional<std::string> noteAddress(std::size_t note) override {
        notes.push_back(note);
        return NoteService::noteURL({});
    }
    std::optional<std::string> fileElement(const SourceFile& file) override {
        if (!files.contains(file.relative)) {
            const std::uint64_t bytes = SourceFolder::times(folder_.path(file)).byteCount;
            const std::string name = SourceFolder::name(file);
            if (bytes == 0) warn(AttachmentError::empty(name).what());
            if (bytes > limits::attachmentBytes) warn(AttachmentError::tooLarge(name).what());
            if (bytes == 0 || bytes > limits::attachmentBytes) return std::nullopt;
            files[file.relative] = bytes;
        }
        return "<br>";
    }
    std::optional<std::string> dataElement(std::string_view, Bytes bytes) override {
        files["data:" + std::to_string(files.size())] = bytes.size();
        return "<br>";
    }

    const SourceFolder& folder_;
};

/// One run over the files of an import.
class MarkdownSession {
public:
    MarkdownSession(
        StoreContext& context,
        const ImportEnvironment& environment,
        const FileDialect& dialect,
        const std::vector<std::filesystem::path>& sources,
        const ImportOptions& options,
        const ImportControl& control)
        : context_(context),
          environment_(environment),
          dialect_(dialect),
          options_(options),
          control_(control),
          folder_(sources, dialect.isNote, control.stop),
          index_(folder_) {}

    ImportReport run();
    ImportPreview preview();

private:
    std::size_t total() const { return folder_.notes().size() + folder_.problems().size(); }
    void report(std::size_t done, std::string_view current) const {
        if (control_.progress) control_.progress({done, total(), current});
    }
    std::vector<Uuid> expectedIDs(const Uuid& seed) const;
    ImportedNote importNote(ImportRun& run, NoteLinks& links, std::size_t number);
    ImportDraft draftOf(MarkdownNote& note, NoteLinks& links, std::size_t number);
    void findLinks(const MarkdownNote& note, const Uuid& id, std::size_t number, NoteLinks& links);
    void lookAt(ImportPreviewRun& preview, NoteLinks& links, std::size_t number);
    ImportPreviewRun::Files filesOf(
        const HTMLDocument& body, const SourceFile& file, std::vector<std::string>& warnings) const;

    StoreContext& context_;
    const ImportEnvironment& environment_;
    const FileDialect& dialect_;
    const ImportOptions& options_;
    const ImportControl& control_;
    const SourceFolder folder_;
    const SourceIndex index_;
};

ImportReport MarkdownSession::run() {
    ImportRun run(context_, environment_, options_, dialect_.format, folder_.title(), total());
    std::size_t done = 0;
    for (const auto& [name, sentence] : folder_.problems()) {
        run.addFailure(name, sentence);
        report(++done, name);
    }
    NoteLinks links(expectedIDs(run.seed()));
    for (std::size_t i = 0; i < folder_.notes().size(); ++i) {
        if (control_.stop.stop_requested()) break;
        const ImportedNote note = importNote(run, links, i);
        links.settle(i, note.noteID);
        report(++done, note.title);
    }
    run.save();
    repairLinks(context_, run, links);
    return run.finish(done == total() && !control_.stop.stop_requested());
}

std::vector<Uuid> MarkdownSession::expectedIDs(const Uuid& seed) const {
    std::vector<Uuid> result;
    result.reserve(folder_.notes().size());
    for (const SourceFile& file : folder_.notes()) {
        result.push_back(importedNoteID(seed, std::to_string(file.root) + "/" + file.relative));
    }
    return result;
}

ImportedNote MarkdownSession::importNote(ImportRun& run, NoteLinks& links, std::size_t number) {
    const SourceFile& file = folder_.notes()[number];
    try {
        MarkdownNote note = readMarkdownNote(dialect_, folder_, file, environment_, options_);
        ImportedNote result = run.add(draftOf(note, links, number));
        const bool isOld = run.isContinued() && result.outcome == ImportOutcome::skipped;
        if (isOld) findLinks(note, *result.noteID, number, links);
        return result;
    } catch (const StoreError&) {
        throw;  // the library fails, not the note
    } catch (const UserError& error) {
        return run.addFailure(SourceFolder::name(file), error.what());
    } catch (const std::exception&) {
        environment_.log.error("import: a file could not be read as a note");
        return run.addFailure(SourceFolder::name(file), unexpectedFile);
    }
}

ImportDraft MarkdownSession::draftOf(MarkdownNote& note, NoteLinks& links, std::size_t number) {
    const SourceFile& file = folder_.notes()[number];
    MarkdownProperties& properties = note.properties;
    ImportDraft draft{
        .title = note.title,
        .fingerprint = note.fingerprint,
        .id = links.expected(number),
        .createdAt = note.createdAt,
        .updatedAt = note.updatedAt,
        .notebookPath = notebookPath(folder_, file, properties, options_),
        .tags = properties.tags,
        .sourceURL = properties.sourceURL,
        .isPinned = properties.isPinned,
        .originalFormat = dialect_.format,
        .originalSource = std::move(note.source),
        .importedFrom = SourceFolder::name(file),
        .metadata = properties.metadata,
        .warnings = note.warnings,
    };
    if (!note.body) {
        draft.body = [&note](const Uuid&, AttachmentIntake&, std::vector<std::string>&) {
            return std::move(note.html);
        };
        return draft;
    }
    draft.body = [this, &note, &links, &file](
                     const Uuid& id, AttachmentIntake& intake, std::vector<std::string>& warnings) {
        WrittenReferences references(index_, file, options_, id, links, intake, warnings);
        return withResolvedReferences(*note.body, references);
    };
    return draft;
}

/// Remembers where a note leads that an earlier run put in: what it links to may get another
/// identifier in this run than that run expected.
void MarkdownSession::findLinks(
    const MarkdownNote& note, const Uuid& id, std::size_t number, NoteLinks& links) {
    if (!note.body) return;
    std::vector<std::string> warnings;
    CountedReferences references(index_, folder_.notes()[number], options_, warnings);
    withResolvedReferences(*note.body, references);
    for (const std::size_t linked : references.notes) {
        links.foundLink(linked, id);
    }
}

ImportPreview MarkdownSession::preview() {
    ImportPreviewRun preview(context_, environment_, options_);
    NoteLinks links(std::vector<Uuid>(folder_.notes().size()));  // are not asked
    std::size_t done = 0;
    for (const auto& [name, sentence] : folder_.problems()) {
        preview.addFailure(name, sentence);
        report(++done, name);
    }
    for (std::size_t i = 0; i < folder_.notes().size(); ++i) {
        if (control_.stop.stop_requested()) break;
        lookAt(preview, links, i);
        report(++done, preview.last().title);
    }
    return preview.finish();
}

void MarkdownSession::lookAt(ImportPreviewRun& preview, NoteLinks& links, std::size_t number) {
    const SourceFile& file = folder_.notes()[number];
    try {
        MarkdownNote note = readMarkdownNote(dialect_, folder_, file, environment_, options_);
        const ImportDraft draft = draftOf(note, links, number);
        preview.add(draft, [&](std::vector<std::string>& warnings) {
            return note.body ? filesOf(*note.body, file, warnings) : ImportPreviewRun::Files{};
        });
    } catch (const StoreError&) {
        throw;
    } catch (const UserError& error) {
        preview.addFailure(SourceFolder::name(file), error.what());
    } catch (const std::exception&) {
        preview.addFailure(SourceFolder::name(file), unexpectedFile);
    }
}

ImportPreviewRun::Files MarkdownSession::filesOf(
    const HTMLDocument& body, const SourceFile& file, std::vector<std::string>& warnings) const {
    CountedReferences references(index_, file, options_, warnings);
    withResolvedReferences(body, references);
    ImportPreviewRun::Files files{.count = references.files.size()};
    for (const auto& [name, bytes] : references.files) {
        files.byteCount += bytes;
    }
    return files;
}

}  // namespace

ImportPreview MarkdownImporter::preview(
    StoreContext& context,
    const std::vector<std::filesystem::path>& sources,
    const ImportOptions& options,
    const ImportControl& control) const {
    return MarkdownSession(context, environment_, *dialect_, sources, options, control).preview();
}

ImportReport MarkdownImporter::run(
    StoreContext& context,
    const std::vector<std::filesystem::path>& sources,
    const ImportOptions& options,
    const ImportControl& control) const {
    return MarkdownSession(context, environment_, *dialect_, sources, options, control).run();
}

}  // namespace tesserine
