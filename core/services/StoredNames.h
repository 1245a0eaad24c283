#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tesserine {

/// The name a notebook is stored under: trimmed, "Untitled Notebook" when nothing is left.
std::string storedNotebookName(std::string_view name);
/// The name a saved search is stored under: trimmed, "Untitled Search" when nothing is left.
std::string storedSavedSearchName(std::string_view name);
/// The name a tag is stored under: trimmed; none when nothing is left, and then no tag is made.
std::optional<std::string> storedTagName(std::string_view name);

/// A colour as it is stored, `#3366CC`; takes six hexadecimal digits in either case, with or
/// without "#". Anything else is none.
std::optional<std::string> storedColor(std::string_view color);

}  // namespace tesserine
