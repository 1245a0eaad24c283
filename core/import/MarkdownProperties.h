#pragma once

#include "base/Calendar.h"
#include "core/import/FrontMatter.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tesserine {

/// What the front matter of a Markdown file says about the note.
///
/// Known keys, in either case: title; tags; created or date; updated or modified; pinned or
/// favorite; notebook (names separated by "/", or a list); source (a web address).
struct MarkdownProperties {
    std::optional<std::string> title;
    std::vector<std::string> tags;
    std::optional<Instant> created;
    std::optional<Instant> updated;
    bool isPinned = false;
    std::vector<std::string> notebookPath;
    std::optional<std::string> sourceURL;
    /// Every other key, and what could not be understood.
    std::vector<std::pair<std::string, std::string>> metadata;
    std::vector<std::string> warnings;
};

/// `calendar` gives the zone of dates that name none.
MarkdownProperties markdownProperties(const FrontMatter& matter, const Calendar& calendar);

/// The names in "Work / Plans", without empty ones.
std::vector<std::string> pathNames(std::string_view text);

}  // namespace tesserine
