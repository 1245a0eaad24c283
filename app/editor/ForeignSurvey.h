#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tesserine::app::paste {

/// What is only known of foreign HTML once it was read to the end, to be used while it is read
/// again.
struct Survey {
    /// For each table in the order in which they begin: it only arranges the page, as that of a
    /// newsletter does, or is a single cell of a spreadsheet.
    std::vector<bool> isLayout{};
    /// Of each paragraph that is an item of a list: its number or bullet.
    std::vector<std::string> labels{};
};
Survey surveyed(std::string_view foreign);

}  // namespace tesserine::app::paste
