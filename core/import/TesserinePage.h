#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tesserine {

/// The body of a note as it was in the library, read from `page`, an exported one; not sanitised.
/// `addressOf` gives the address inside the library for one relative to the page (decoded); empty
/// where it knows none. None when `page` holds no note.
std::optional<std::string> bodyOfPage(
    std::string_view page, const std::function<std::string(const std::string&)>& addressOf);

}  // namespace tesserine
