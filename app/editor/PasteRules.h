#pragma once

#include "core/body/AttributedText.h"
#include "core/body/Sanitizer.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

/// What becomes of texts that come from elsewhere. Knows no clipboard and no library.
namespace tesserine::app::paste {

/// What HTML comes to as a part of a note: sense stays, clutter goes.
struct Pasted {
    AttributedText text{};
    /// One line for the user that tells what is missing; empty when nothing is.
    std::string leftOut{};
};
/// `html` is any HTML, such as a browser's. Throws `BodyError::tooLarge`.
Pasted fromHTML(std::string_view html);
/// The type under which a part of a note lies on the clipboard, and what it holds: as it was.
inline constexpr const char* bodyType = "application/x-tesserine-body";
Pasted fromBody(std::string_view body);
/// A paragraph for each line; lines of code for `codeBlock`.
AttributedText fromLines(std::string_view text, BlockStyle::Kind kind);

/// What a tab becomes outside of code, where a stored body has none: it would be read as one space.
inline constexpr const char* tab = "    ";

std::string leftOutSentence(const SanitizationReport& report, std::size_t unreachablePictures = 0);

/// Gives every picture and file that `change` answers for another HTML; an empty one takes it out.
using ChangeObject = std::function<std::optional<std::string>(const std::string& html)>;
void changeObjects(AttributedText& text, const ChangeObject& change);

}  // namespace tesserine::app::paste
