#include "core/import/ENEXImporter.h"

#include "base/Text.h"
#include "core/import/ENEXContent.h"
#include "core/import/ENEXReader.h"
#include "core/import/ImportPreviewRun.h"
#include "core/import/ImportRun.h"
#include "core/import/LinkRepair.h"
#include "core/import/Reconciliation.h"
#include "core/store/StoreContext.h"

#include <exception>
#include <functional>
#include <string>
#include <utility>

namespace tesserine {
namespace {

constexpr const char* unexpectedNote = "The note could not be read.";
constexpr const char* changed = "The file was changed while it was imported.";

std::string nameOf(const std::filesystem::path& file) {
    return text::composed(text::sanitized(file.filename().string()));
}

/// The name of the notebook that a file becomes.
std::string notebookName(const std::filesystem::path& file) {
    constexpr std::string_view extension = ".enex";
    std::string name = nameOf(file);
    if (text::asciiLowercased(name).ends_with(extension) && name.size() > extension.size()) {
        name.resize(name.size() - extension.size());
    }
    return name;
}

std::string titleOf(const std::vector<std::filesystem::path>& files) {
    std::string title;
    for (const auto& file : files) {
        title += title.empty() ? "" : ", ";
        title += text::sanitized(std::filesystem::absolute(file).lexically_normal().string());
    }
    return title;
}

/// The files' digests in the order of the note: what must be in the library at the end.
std::vector<SHA256Digest> digestsOf(const ENEXNote& note) {
    std::vector<SHA256Digest> digests;
    for (const ENEXResource& file : note.resources) {
        const bool isNothing = file.byteCount == 0 && file.state == ENEXResource::State::whole;
        if (!isNothing) digests.push_back(file.digest);
    }
    return digests;
}

ImportPreviewRun::Files countOf(const std::vector<ENEXResource>& files) {
    ImportPreviewRun::Files count;
    for (const ENEXResource& file : files) {
        if (file.state != ENEXResource::State::whole || file.byteCount == 0) continue;
        ++count.count;
        count.byteCount += file.byteCount;
    }
    return count;
}

/// One run over the files of an import.
class ENEXSession {
public:
    ENEXSession(
        StoreContext& context,
        const ImportEnvironment& environment,
        const std::vector<std::filesystem::path>& files,
        const ImportOptions& options,
        const ImportControl& control)
        : context_(context),
          environment_(environment),
          files_(files),
          options_(options),
          control_(control) {}

    ImportReport run();
    ImportPreview preview();

private:
    using Take = std::function<void(ENEXNote note, const std::filesystem::path& file)>;

    bool isStopped() const { return control_.stop.stop_requested(); }
    void report(std::size_t done, std::string_view current) const {
        if (control_.progress) control_.progress({done, digests_.size(), current});
    }
    void forEachNote(ENEXReader::Files use, const Take& take) const;
    void scan();
    std::vector<Uuid> expectedIDs(const Uuid& seed) const;
    ImportDraft draftOf(ENEXContent& content, const std::filesystem::path& file) const;
    ImportedNote importNote(
        ImportRun& run,
        NoteLinks& links,
        std::size_t number,
        ENEXNote note,
        const std::filesystem::path& file) const;
    void lookAt(ImportPreviewRun& preview, ENEXNote note, const std::filesystem::path& file) const;

    StoreContext& context_;
    const ImportEnvironment& environment_;
    const std::vector<std::filesystem::path>& files_;
    const ImportOptions& options_;
    const ImportControl& control_;

    // What the first reading of a run finds, note by note.
    std::vector<std::vector<SHA256Digest>> digests_;
    NoteTitles titles_;
};

void ENEXSession::forEachNote(ENEXReader::Files use, const Take& take) const {
    for (const std::filesystem::path& file : files_) {
        ENEXReader reader(file, use);
        while (!isStopped()) {
            auto note = reader.next();
            if (!note) break;
            take(std::move(*note), file);
        }
    }
}

/// Counts what is there before anything is written: links lead to notes that come later, and what
/// is in the library at the end is compared with what was read here.
void ENEXSession::scan() {
    forEachNote(ENEXReader::Files::digests, [&](const ENEXNote& note, const auto&) {
        if (!note.failure) titles_.add(digests_.size(), note.title);
        digests_.push_back(digestsOf(note));
    });
}

ImportReport ENEXSession::run() {
    scan();
    ImportRun run(context_, environment_, options_, enexFormat, titleOf(files_), digests_.size());
    NoteLinks links(expectedIDs(run.seed()));
    Reconciliation reconciliation;
    std::size_t done = 0;
    forEachNote(ENEXReader::Files::content, [&](ENEXNote note, const std::filesystem::path& file) {
        if (done == digests_.size()) {
            run.addFailure(nameOf(file), changed);
            return;
        }
        const ImportedNote result = importNote(run, links, done, std::move(note), file);
        const bool isNew = result.outcome != ImportOutcome::skipped;
        reconciliation.expect(
            result.noteID, isNew ? std::move(digests_[done]) : std::vector<SHA256Digest>{});
        links.settle(done, result.noteID);
        report(++done, result.title);
    });
    run.save();
    repairLinks(context_, run, links);
    run.save();
    const bool isComplete = done == digests_.size() && !isStopped();
    if (!isComplete) return run.finish(false);
    const auto check = reconciliation.run(context_, control_.stop);
    return run.finish(check.has_value(), check);
}

std::vector<Uuid> ENEXSession::expectedIDs(const Uuid& seed) const {
    std::vector<Uuid> result;
    result.reserve(digests_.size());
    for (std::size_t i = 0; i < digests_.size(); ++i) {
        result.push_back(importedNoteID(seed, std::to_string(i)));
    }
    return result;
}

ImportDraft ENEXSession::draftOf(ENEXContent& content, const std::filesystem::path& file) const {
    ImportDraft draft = content.draft();
    draft.notebookPath = options_.notebook;
    if (draft.notebookPath.empty()) draft.notebookPath.push_back(notebookName(file));
    draft.importedFrom = nameOf(file);
    return draft;
}

ImportedNote ENEXSession::importNote(
    ImportRun& run,
    NoteLinks& links,
    std::size_t number,
    ENEXNote note,
    const std::filesystem::path& file) const {
    if (note.failure) return run.addFailure(note.title, *note.failure);
    const std::string title = note.title;
    try {
        ENEXContent content(std::move(note), environment_, options_);
        ImportDraft draft = draftOf(content, file);
        draft.id = links.expected(number);
        draft.body =
            [&](const Uuid& id, AttachmentIntake& intake, std::vector<std::string>& warnings) {
                return content.body(id, titles_, links, intake, warnings);
            };
        ImportedNote result = run.add(std::move(draft));
        const bool isOld = run.isContinued() && result.outcome == ImportOutcome::skipped;
        if (!isOld) return result;
        for (const std::size_t linked : content.linkedNotes(titles_)) {
            links.foundLink(linked, *result.noteID);
        }
        return result;
    } catch (const StoreError&) {
        throw;  // the library fails, not the note
    } catch (const UserError& error) {
        return run.addFailure(title, error.what());
    } catch (const std::exception&) {
        environment_.log.error("import: a note could not be read");
        return run.addFailure(title, unexpectedNote);
    }
}

ImportPreview ENEXSession::preview() {
    ImportPreviewRun preview(context_, environment_, options_);
    std::size_t done = 0;
    forEachNote(ENEXReader::Files::names, [&](ENEXNote note, const std::filesystem::path& file) {
        lookAt(preview, std::move(note), file);
        report(++done, preview.last().title);
    });
    return preview.finish();
}

void ENEXSession::lookAt(
    ImportPreviewRun& preview, ENEXNote note, const std::filesystem::path& file) const {
    if (note.failure) return preview.addFailure(note.title, *note.failure);
    const std::string title = note.title;
    try {
        ENEXContent content(std::move(note), environment_, options_);
        preview.add(draftOf(content, file), [&](auto&) { return countOf(content.files()); });
    } catch (const StoreError&) {
        throw;
    } catch (const UserError& error) {
        preview.addFailure(title, error.what());
    }
}

}  // namespace

ImportPreview ENEXImporter::preview(
    StoreContext& context,
    const std::vector<std::filesystem::path>& files,
    const ImportOptions& options,
    const ImportControl& control) const {
    return ENEXSession(context, environment_, files, options, control).preview();
}

ImportReport ENEXImporter::run(
    StoreContext& context,
    const std::vector<std::filesystem::path>& files,
    const ImportOptions& options,
    const ImportControl& control) const {
    return ENEXSession(context, environment_, files, options, control).run();
}

}  // namespace tesserine
