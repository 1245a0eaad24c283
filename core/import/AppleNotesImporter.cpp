#include "core/import/AppleNotesImporter.h"

#include "base/Encoding.h"
#include "base/Files.h"
#include "base/Text.h"
#include "core/import/AppleNoteContent.h"
#include "core/import/ImportPreviewRun.h"
#include "core/import/ImportRun.h"
#include "core/import/LinkRepair.h"
#include "core/import/MarkdownImporter.h"
#include "core/import/Reconciliation.h"
#include "core/store/StoreContext.h"

#include <algorithm>
#include <optional>

namespace tesserine {
namespace {

namespace fs = std::filesystem;

constexpr const char* storeName = "NoteStore.sqlite";
constexpr const char* unexpected = "The note could not be read.";

/// The store that the sources name; none when they are exported files.
std::optional<fs::path> storeIn(const std::vector<fs::path>& sources) {
    if (sources.size() != 1) return std::nullopt;
    const fs::path& source = sources.front();
    if (fs::is_regular_file(source / storeName)) return source / storeName;
    const std::string extension = text::asciiLowercased(source.extension().string());
    const bool isStore = extension == ".sqlite" && fs::is_regular_file(source);
    return isStore ? std::optional(source) : std::nullopt;
}

SHA256Digest digestOf(const fs::path& file) {
    SHA256Digest digest{};
    try {
        const auto bytes = fromHex(sha256HexOfFile(file));
        std::ranges::copy(*bytes, digest.begin());
    } catch (const FileError&) {
        // No file has this digest: it counts as one that is missing.
    }
    return digest;
}

std::vector<SHA256Digest> digestsOf(const std::vector<fs::path>& files) {
    std::vector<SHA256Digest> digests;
    digests.reserve(files.size());
    for (const fs::path& file : files) {
        digests.push_back(digestOf(file));
    }
    return digests;
}

/// One run over the notes of a store.
class AppleNotesSession {
public:
    AppleNotesSession(
        StoreContext& context,
        const ImportEnvironment& environment,
        const fs::path& file,
        const ImportOptions& options,
        const ImportControl& control)
        : context_(context),
          environment_(environment),
          options_(options),
          control_(control),
          title_(text::sanitized(fs::absolute(file).lexically_normal().string())),
          store_(file),
          files_(fs::absolute(file).parent_path()) {
        for (std::size_t i = 0; i < notes().size(); ++i) {
            const auto identifier = Uuid::parse(notes()[i].identifier);
            if (identifier) numbers_.emplace(identifier->text(), i);
        }
    }

    ImportReport run();
    ImportPreview preview();

private:
    const std::vector<AppleNote>& notes() const { return store_.notes(); }
    void report(std::size_t done, std::string_view current) const {
        if (control_.progress) control_.progress({done, notes().size(), current});
    }
    void scan();
    std::vector<Uuid> expectedIDs(const Uuid& seed) const;
    ImportDraft draftOf(AppleNoteContent& content) const;
    /// Does `work` with a note; what is wrong with it goes to `fail` as a sentence.
    template <class Work, class Fail>
    auto withNote(const AppleNote& note, Work work, Fail fail);
    ImportedNote importNote(ImportRun& run, NoteLinks& links, std::size_t number);

    StoreContext& context_;
    const ImportEnvironment& environment_;
    const ImportOptions& options_;
    const ImportControl& control_;
    const std::string title_;
    AppleNoteStore store_;
    const AppleNoteFiles files_;
    AppleNoteNumbers numbers_;
    std::vector<std::vector<SHA256Digest>> digests_;  // note by note, as `scan` finds them
};

template <class Work, class Fail>
auto AppleNotesSession::withNote(const AppleNote& note, Work work, Fail fail) {
    try {
        AppleNoteContent content(note, store_, files_);
        return work(content);
    } catch (const StoreError&) {
        throw;  // the library fails, not the note
    } catch (const UserError& error) {
        return fail(error.what());
    } catch (const std::exception&) {
        environment_.log.error("import: a note could not be read");
        return fail(unexpected);
    }
}

/// Digests the files before anything is written: what is in the library at the end is compared with
/// what was read here.
void AppleNotesSession::scan() {
    const auto add = [this](const AppleNoteContent& content) {
        digests_.push_back(digestsOf(content.files()));
    };
    for (const AppleNote& note : notes()) {
        if (control_.stop.stop_requested()) return;
        withNote(note, add, [this](const char*) { digests_.emplace_back(); });
    }
}

ImportReport AppleNotesSession::run() {
    scan();
    ImportRun run(context_, environment_, options_, appleNotesFormat, title_, notes().size());
    NoteLinks links(expectedIDs(run.seed()));
    Reconciliation reconciliation;
    std::size_t done = 0;
    while (done < notes().size() && !control_.stop.stop_requested()) {
        const ImportedNote note = importNote(run, links, done);
        const bool isNew = note.outcome != ImportOutcome::skipped;
        reconciliation.expect(
            note.noteID, isNew ? std::move(digests_[done]) : std::vector<SHA256Digest>{});
        links.settle(done, note.noteID);
        report(++done, note.title);
    }
    run.save();
    repairLinks(context_, run, links);
    run.save();
    if (done < notes().size()) return run.finish(false);
    const auto check = reconciliation.run(context_, control_.stop);
    return run.finish(check.has_value(), check);
}

std::vector<Uuid> AppleNotesSession::expectedIDs(const Uuid& seed) const {
    std::vector<Uuid> result;
    result.reserve(notes().size());
    for (const AppleNote& note : notes()) {
        result.push_back(importedNoteID(seed, std::to_string(note.key)));
    }
    return result;
}

ImportDraft AppleNotesSession::draftOf(AppleNoteContent& content) const {
    ImportDraft draft = content.draft();
    draft.notebookPath.insert(
        draft.notebookPath.begin(), options_.notebook.begin(), options_.notebook.end());
    draft.importedFrom = storeName;
    return draft;
}

ImportedNote AppleNotesSession::importNote(ImportRun& run, NoteLinks& links, std::size_t number) {
    const auto import = [&](AppleNoteContent& content) {
        ImportDraft draft = draftOf(content);
        draft.id = links.expected(number);
        draft.body = [&](const Uuid& id, AttachmentIntake& intake, auto& warnings) {
            return content.body(id, numbers_, links, intake, warnings);
        };
        ImportedNote result = run.add(std::move(draft));
        const bool isOld = run.isContinued() && result.outcome == ImportOutcome::skipped;
        if (!isOld) return result;
        for (const std::string& identifier : content.linkedNotes()) {
            const auto linked = numbers_.find(identifier);
            if (linked != numbers_.end()) links.foundLink(linked->second, *result.noteID);
        }
        return result;
    };
    const AppleNote& note = notes()[number];
    return withNote(
        note, import, [&](const char* sentence) { return run.addFailure(note.title, sentence); });
}

ImportPreview AppleNotesSession::preview() {
    ImportPreviewRun preview(context_, environment_, options_);
    std::size_t done = 0;
    for (const AppleNote& note : notes()) {
        if (control_.stop.stop_requested()) break;
        const auto add = [&](AppleNoteContent& content) {
            preview.add(draftOf(content), [&](auto&) {
                ImportPreviewRun::Files files;
                for (const fs::path& file : content.files()) {
                    ++files.count;
                    files.byteCount += SourceFolder::times(file).byteCount;
                }
                return files;
            });
        };
        withNote(
            note, add, [&](const char* sentence) { preview.addFailure(note.title, sentence); });
        report(++done, note.title);
    }
    return preview.finish();
}

}  // namespace

ImportPreview AppleNotesImporter::preview(
    StoreContext& context,
    const std::vector<fs::path>& sources,
    const ImportOptions& options,
    const ImportControl& control) const {
    if (const auto store = storeIn(sources)) {
        return AppleNotesSession(context, environment_, *store, options, control).preview();
    }
    return MarkdownImporter(environment_, appleNotesFiles)
        .preview(context, sources, options, control);
}

ImportReport AppleNotesImporter::run(
    StoreContext& context,
    const std::vector<fs::path>& sources,
    const ImportOptions& options,
    const ImportControl& control) const {
    if (const auto store = storeIn(sources)) {
        return AppleNotesSession(context, environment_, *store, options, control).run();
    }
    return MarkdownImporter(environment_, appleNotesFiles).run(context, sources, options, control);
}

}  // namespace tesserine
