#include "search/QueryFields.h"

#include "base/Text.h"

#include <algorithm>
#include <array>
#include <string>

namespace tesserine {

namespace {

constexpr std::array<std::string_view, 1> tagAliases{"label"};
constexpr std::array<std::string_view, 1> notebookAliases{"in"};
constexpr std::array<std::string_view, 1> createdAliases{"date"};
constexpr std::array<std::string_view, 3> editedAliases{"updated", "modified", "since"};
constexpr std::array<std::string_view, 1> titleAliases{"intitle"};
constexpr std::array<std::string_view, 1> fileAliases{"filename"};

constexpr std::array<QueryFieldInfo, 18> table{{
    {QueryField::tag, "tag", "notes carrying a tag", tagAliases},
    {QueryField::notebook, "notebook", "notes in a notebook", notebookAliases},
    {QueryField::before, "before", "written before a date"},
    {QueryField::after, "after", "written after a date"},
    {QueryField::created, "created", "written in a year, month or day", createdAliases},
    {QueryField::edited, "edited", "edited since a date", editedAliases},
    {QueryField::sort, "sort", "relevance, newest, oldest"},
    {QueryField::type, "type", "with an attachment of a type, like pdf"},
    {QueryField::has, "has", "with attachment, text, location, reminder, tag"},
    {QueryField::is, "is", "favorite, note, task, trashed, open, done, overdue"},
    {QueryField::title, "title", "with a word in the title", titleAliases},
    {QueryField::body, "body", "with a word in the text"},
    {QueryField::file, "file", "with an attachment of a name", fileAliases},
    {QueryField::near, "near", "written near a place: latitude,longitude,10km"},
    {QueryField::due, "due", "tasks due on a date"},
    {QueryField::priority, "priority", "tasks of a priority, 1 to 4"},
    {QueryField::amount, "amount", "with an amount, however written"},
    {QueryField::account, "account", "with an account number, however spaced"},
}};

}  // namespace

std::span<const QueryFieldInfo> queryFields() { return table; }

std::optional<QueryField> findQueryField(std::string_view name) {
    const std::string lower = text::asciiLowercased(name);
    const auto* const found = std::ranges::find_if(table, [&](const QueryFieldInfo& info) {
        return info.name == lower || std::ranges::find(info.aliases, lower) != info.aliases.end();
    });
    if (found == table.end()) return std::nullopt;
    return found->field;
}

}  // namespace tesserine
