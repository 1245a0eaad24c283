#include "search/MatchExpression.h"

#include <cassert>

namespace tesserine::match {

namespace {

std::string joined(const std::vector<std::string>& expressions, std::string_view word) {
    assert(!expressions.empty() && "there is something to join");
    if (expressions.size() == 1) return expressions.front();
    std::string all = "(";
    for (const std::string& expression : expressions) {
        if (all.size() > 1) all += word;
        all += expression;
    }
    return all + ")";
}

}  // namespace

std::string phrase(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + '"';
}

std::string beginning(std::string_view text) { return phrase(text) + "*"; }

std::string value(const QueryValue& value) {
    return value.isBeginning() ? beginning(value.stem()) : phrase(value.stem());
}

std::string in(std::string_view columns, const std::string& expression) {
    return std::string(columns) + " : " + expression;
}

std::string allOf(const std::vector<std::string>& expressions) {
    return joined(expressions, " AND ");
}

std::string anyOf(const std::vector<std::string>& expressions) {
    return joined(expressions, " OR ");
}

}  // namespace tesserine::match
