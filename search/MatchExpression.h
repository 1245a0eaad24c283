#pragma once

#include "search/QuerySyntax.h"

#include <string>
#include <string_view>
#include <vector>

/// Expressions in the syntax of FTS5. Whatever was typed stands in double quotes here, so that none
/// of it can be an operator.
namespace tesserine::match {

/// The columns of `fts` that hold what people wrote. The column of keys is not among them, so that
/// a key typed as a word finds nothing by accident.
inline constexpr std::string_view writtenColumns = "{title body tags notebook attachments}";

/// The words of `text` in their order, as a whole.
std::string phrase(std::string_view text);
/// The same, the last word being the beginning of one.
std::string beginning(std::string_view text);
/// What stands behind a field, which may end in an asterisk.
std::string value(const QueryValue& value);
/// `expression` in one column, or in several in braces.
std::string in(std::string_view columns, const std::string& expression);
/// Of one or more expressions.
std::string allOf(const std::vector<std::string>& expressions);
std::string anyOf(const std::vector<std::string>& expressions);

}  // namespace tesserine::match
