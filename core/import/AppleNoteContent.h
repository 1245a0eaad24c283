#pragma once

#include "core/import/AppleNoteFiles.h"
#include "core/import/AppleNoteHTML.h"
#include "core/import/AppleNoteStore.h"
#include "core/import/ImportRun.h"
#include "core/import/NoteLinks.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace tesserine {

/// What reports and imported notes name as their origin.
inline constexpr const char* appleNotesFormat = "apple-notes";

/// Where notes of an import stand in it, by their identifiers in Apple Notes.
using AppleNoteNumbers = std::unordered_map<std::string, std::size_t>;

/// One note of a store of Apple Notes on its way into the library.
class AppleNoteContent {
public:
    /// Reads the note's text and what it shows. Everything outlives the content. Throws
    /// `SQLiteDatabase::Error`, `BodyError` and, when the text is damaged, `AppleNotesError`.
    AppleNoteContent(const AppleNote& note, AppleNoteStore& store, const AppleNoteFiles& files);

    /// Everything but the body, which needs the library; `draft.body` is left empty.
    ImportDraft draft();
    /// The body of the note `noteID`, whose files are taken in.
    std::string body(
        const Uuid& noteID,
        const AppleNoteNumbers& numbers,
        NoteLinks& links,
        AttachmentIntake& intake,
        std::vector<std::string>& warnings);

    /// The identifiers of the notes that it links to.
    const std::vector<std::string>& linkedNotes() const { return linked_; }
    /// The files that it shows, each once.
    std::vector<std::filesystem::path> files() const;

private:
    /// What an attachment of the text is, and where its file lies.
    struct Part {
        AppleAttachment attachment;
        std::optional<std::filesystem::path> file;
    };
    class References;
    class Marks;
    class WrittenReferences;

    void takeTitle();
    const Part& part(const AppleSpan& span);

    const AppleNote& note_;
    AppleNoteStore& store_;
    const AppleNoteFiles& files_;
    Bytes source_;
    std::string title_;
    std::string canonical_;  // with marks in the place of what it refers to
    std::vector<AppleParagraph> paragraphs_;
    std::unordered_map<std::string, Part> parts_;  // by identifier, as far as they were asked for
    std::vector<std::string> tags_;
    std::vector<std::string> linked_;
};

}  // namespace tesserine
