#pragma once

#include "base/Text.h"
#include "core/model/NoteEntities.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace tesserine {

class Calendar;

/// What a single note is exported as.
enum class NoteFileForm : std::uint8_t {
    page,  ///< a standalone HTML document that holds its pictures
    markdown,
    text,
};

/// The form that the extension of `file` asks for: .html, .htm, .md, .markdown or .txt.
std::optional<NoteFileForm> noteFileFormOf(const std::filesystem::path& file);

/// Whether a file of that name may be replaced.
enum class NoteFileTarget : std::uint8_t { newFile, anyFile };

/// Writes the note to `file` in that form; links to other notes stay links into the library.
/// Pictures and files of a note in Markdown go into a new folder beside it, "NAME files", and
/// nothing of them stays when the note cannot be written. Throws `FileError`.
void writeNoteFile(
    const CDNote& note,
    NoteFileForm form,
    const std::filesystem::path& file,
    NoteFileTarget target,
    const Calendar& calendar,
    const text::Collator& collator);

}  // namespace tesserine
