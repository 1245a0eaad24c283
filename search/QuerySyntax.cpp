#include "search/QuerySyntax.h"

#include "base/Text.h"

#include <algorithm>
#include <array>

namespace tesserine {

namespace {

bool isAboutTasks(const QueryFilter& filter) {
    if (filter.field == QueryField::due || filter.field == QueryField::priority) return true;
    static constexpr std::array<std::string_view, 4> states{"task", "open", "done", "overdue"};
    return filter.field == QueryField::is
           && std::ranges::any_of(
               states, [&](std::string_view state) { return filter.says(state); });
}

}  // namespace

bool QueryFilter::says(std::string_view value) const {
    return std::ranges::any_of(
        values, [&](const QueryValue& own) { return text::asciiLowercased(own.text) == value; });
}

bool Query::asksForTasks() const {
    bool asks = false;
    forEachNode(root, [&](const QueryNode& node) {
        asks = asks || (node.kind == QueryNode::Kind::filter && isAboutTasks(node.filter));
    });
    return asks;
}

}  // namespace tesserine
