#pragma once

#include "app/shell/History.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tesserine::app {

/// Where the tabs of a window are, kept so that the next start goes on there.
struct OpenTabs {
    std::vector<Stop> stops{};  ///< one for each tab
    std::size_t chosen = 0;

    /// Reads what `text` wrote; lines that say nothing are left out.
    static OpenTabs read(const std::string& text);
    /// One line for each tab: the address of its place, and that of the note that is open in it.
    /// "> " stands before the chosen one.
    std::string text() const;
};

}  // namespace tesserine::app
