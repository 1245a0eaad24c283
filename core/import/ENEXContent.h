#pragma once

#include "core/body/HTMLNode.h"
#include "core/import/ENEXNote.h"
#include "core/import/ImportRun.h"
#include "core/import/ImportTypes.h"
#include "core/import/NoteLinks.h"
#include "core/import/NoteTitles.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tesserine {

/// What reports and imported notes name as their origin.
inline constexpr const char* enexFormat = "enex";

/// One note of an ENEX file on its way into the library.
class ENEXContent {
public:
    /// Reads the note's text. `note` must be a readable one. Throws `BodyError`.
    ENEXContent(ENEXNote note, const ImportEnvironment& environment, const ImportOptions& options);

    /// Everything but the body, which needs the library; `draft.body` is left empty. The source is
    /// moved into it.
    ImportDraft draft();

    /// The body of the note `noteID`. Takes every file of the note in, shown or not.
    std::string body(
        const Uuid& noteID,
        const NoteTitles& titles,
        NoteLinks& links,
        AttachmentIntake& intake,
        std::vector<std::string>& warnings);

    /// The notes that it links to.
    std::vector<std::size_t> linkedNotes(const NoteTitles& titles) const;
    const std::vector<ENEXResource>& files() const { return note_.resources; }

private:
    class WrittenReferences;

    void adoptStrayFile();

    const ImportEnvironment& environment_;
    const ImportOptions& options_;
    ENEXNote note_;
    HTMLDocument enml_;
    std::vector<std::string> linkTexts_;
    std::vector<std::string> warnings_;
    std::string canonical_;  // with marks in the place of what it refers to
    bool hasReferences_ = false;
};

}  // namespace tesserine
