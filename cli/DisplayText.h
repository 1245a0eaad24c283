#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Text on a terminal: how wide it is, and how it is kept from giving the terminal orders.
namespace tesserine::cli {

/// Columns that `text` takes: combining marks none, East Asian wide characters and emoji two.
std::size_t displayWidth(std::string_view text);

/// `text` shortened to at most `columns` columns, with "…" where something is missing.
std::string fitted(std::string_view text, std::size_t columns);

/// `text` as one harmless line: line breaks and tabs become spaces; other controls and marks that
/// change the writing direction are removed.
std::string oneLine(std::string_view text);

/// `text` with its lines, but without the controls that a terminal would obey.
std::string harmless(std::string_view text);

}  // namespace tesserine::cli
