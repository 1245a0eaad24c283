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

/// The note in that form. Links to other notes stay links into the library.
std::string noteFile(
    const CDNote& note,
    NoteFileForm form,
    const Calendar& calendar,
    const text::Collator& collator);

}  // namespace tesserine
