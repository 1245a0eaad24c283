#include "search/LegacySavedSearches.h"

#include "base/JSON.h"
#include "base/Preferences.h"
#include "base/Text.h"
#include "core/store/StoreContext.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <vector>

namespace tesserine {

namespace {

/// The parts of a query between spaces; a space inside quotes is part of one.
std::vector<std::string> partsOf(std::string_view query) {
    std::vector<std::string> parts;
    std::string part;
    bool isQuoted = false;
    for (const char c : query) {
        if (c == '"') isQuoted = !isQuoted;
        if (c != ' ' || isQuoted) {
            part += c;
        } else if (!part.empty()) {
            parts.push_back(std::exchange(part, {}));
        }
    }
    if (!part.empty()) parts.push_back(part);
    return parts;
}

/// 7 for "created:day-7" and the field "created:".
std::optional<int> daysBack(std::string_view part, std::string_view field) {
    const std::string beginning = std::string(field) + "day-";
    if (!text::asciiLowercased(part).starts_with(beginning)) return std::nullopt;
    part.remove_prefix(beginning.size());
    int days = 0;
    const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), days);
    const bool isNumber = error == std::errc() && end == part.data() + part.size();
    if (!isNumber || days < 0 || days > 36'500) return std::nullopt;
    return days;
}

/// One part in today's syntax; empty when it asks for what there is no more.
std::string rewrittenPart(const std::string& typed) {
    const std::string sign = typed.starts_with('-') ? "-" : "";
    const std::string part = typed.substr(sign.size());
    const std::string lower = text::asciiLowercased(part);
    if (lower.starts_with("todo:")) return "";
    if (lower.starts_with("intitle:")) return sign + "title:" + part.substr(8);
    // “Created since then” is now said by a date and what comes after it.
    if (const auto days = daysBack(part, "created:")) {
        return sign + "after:" + std::to_string(*days + 1) + "d";
    }
    if (const auto days = daysBack(part, "updated:")) {
        return sign + "updated:" + std::to_string(*days) + "d";
    }
    return typed;
}

std::string textOf(const boost::json::object& object, std::string_view key) {
    const auto* const found = object.if_contains({key.data(), key.size()});
    if (found == nullptr || !found->is_string()) return "";
    return text::sanitized(std::string(std::string_view(found->as_string())));
}

}  // namespace

std::string LegacySavedSearches::rewritten(std::string_view query) {
    const auto parts = partsOf(query);
    std::vector<std::string> kept;
    bool isAny = false;
    for (const std::string& part : parts) {
        const bool isMark = text::asciiLowercased(part) == "any:";
        isAny = isAny || isMark;
        std::string today = isMark ? "" : rewrittenPart(part);
        if (!today.empty()) kept.push_back(std::move(today));
    }
    if (!isAny && kept == parts) return std::string(query);
    std::string line;
    for (const std::string& part : kept) {
        if (!line.empty()) line += isAny ? " OR " : " ";
        line += part;
    }
    return line;
}

bool LegacySavedSearches::isDue() const {
    return preferences_.json(preferenceKey).has_value()
           || preferences_.integer(syntaxKey).value_or(0) < syntax;
}

void LegacySavedSearches::migrate(StoreContext& context) {
    importKept(context);
    const bool isOld = preferences_.integer(syntaxKey).value_or(0) < syntax;
    if (isOld) rewriteAll(context);
    context.save();
    // Only now: what was not saved is tried again.
    preferences_.remove(preferenceKey);
    if (isOld) preferences_.set(syntaxKey, syntax);
}

void LegacySavedSearches::importKept(StoreContext& context) {
    const auto written = preferences_.json(preferenceKey);
    if (!written) return;
    const boost::json::value kept = json::parse(*written);
    if (!kept.is_array()) return;
    for (const boost::json::value& entry : kept.as_array()) {
        if (!entry.is_object()) continue;
        const std::string name = textOf(entry.as_object(), "name");
        const std::string query = textOf(entry.as_object(), "query");
        const auto known = searches_.named(context, name);
        // A search that was brought over before may have been rewritten since.
        const bool isThere = std::ranges::any_of(known, [&](const CDSavedSearch* search) {
            const std::string own = search->query.valueOr("");
            return own == query || own == rewritten(query);
        });
        if (!isThere) searches_.create(context, name, query);
    }
}

void LegacySavedSearches::rewriteAll(StoreContext& context) {
    for (CDSavedSearch* search : searches_.list(context)) {
        const std::string query = search->query.valueOr("");
        const std::string today = rewritten(query);
        if (today != query) searches_.setQuery(*search, today);
    }
}

}  // namespace tesserine
