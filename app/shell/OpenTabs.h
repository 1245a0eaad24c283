#pragma once

#include "app/editor/BodyEdit.h"
#include "app/shell/History.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace tesserine::app {

/// Where the tabs of a window are, kept so that the next start goes on there.
struct OpenTabs {
    std::vector<Stop> stops{};  ///< one for each tab
    std::size_t chosen = 0;
    /// Where the cursor stood in notes that had the keys, and what was seen of them.
    std::map<Uuid, BodyPlace> places{};

    /// Reads what `text` wrote; lines that say nothing are left out.
    static OpenTabs read(const std::string& text);
    /// One line for each tab: the address of its place, and that of the note that is open in it.
    /// Where that note had the keys its place follows: "17" is the cursor, "17,9,-4" says that the
    /// first line that was seen holds position 9, and stood at -4 pixels. "> " stands before the
    /// chosen one.
    std::string text() const;
};

}  // namespace tesserine::app
