#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace tesserine {

/// What can stand before a colon in a query.
enum class QueryField {
    tag,
    notebook,
    before,
    after,
    created,
    edited,
    sort,
    type,
    has,
    is,
    scope,  ///< `in:trash` and `in:anywhere`
    title,
    body,
    file,
    near,
    due,
    priority,
    amount,
    account,
};

/// One field as the help and the suggestions show it.
struct QueryFieldInfo {
    QueryField field = QueryField::tag;
    std::string_view name;  ///< without the colon, in lower case
    std::string_view help;
    std::span<const std::string_view> aliases{};
};

/// All fields but `scope`, in the order in which they are offered.
std::span<const QueryFieldInfo> queryFields();
/// By name or alias, ignoring case.
std::optional<QueryField> findQueryField(std::string_view name);

}  // namespace tesserine
