#include "updates/AppVersion.h"

#include "base/Text.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace tesserine {
namespace {

bool isMadeOfDigits(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

/// None for what is no number or too large for one.
std::optional<std::int64_t> number(std::string_view text) {
    if (!isMadeOfDigits(text)) return std::nullopt;
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc()) return std::nullopt;
    return value;
}

/// The pieces between dots, empty ones too.
std::vector<std::string_view> pieces(std::string_view text) {
    std::vector<std::string_view> result;
    for (;;) {
        const std::size_t dot = text.find('.');
        result.push_back(text.substr(0, dot));
        if (dot == std::string_view::npos) return result;
        text.remove_prefix(dot + 1);
    }
}

AppVersion::Identifier identifier(std::string_view piece) {
    if (const auto value = number(piece)) return *value;
    return std::string(piece);
}

std::weak_ordering compareComponents(const AppVersion& a, const AppVersion& b) {
    const std::size_t count = std::max(a.components.size(), b.components.size());
    const auto component = [](const AppVersion& version, std::size_t place) {
        return place < version.components.size() ? version.components[place] : 0;
    };
    for (std::size_t place = 0; place < count; ++place) {
        const auto order = component(a, place) <=> component(b, place);
        if (std::is_neq(order)) return order;
    }
    return std::weak_ordering::equivalent;
}

}  // namespace

std::optional<AppVersion> AppVersion::parse(std::string_view text) {
    std::string_view rest = text::trimmed(text);
    AppVersion result{.text = std::string(rest)};
    if (rest.starts_with('v') || rest.starts_with('V')) rest.remove_prefix(1);
    rest = rest.substr(0, rest.find('+'));

    const std::size_t hyphen = rest.find('-');
    for (const std::string_view piece : pieces(rest.substr(0, hyphen))) {
        const auto component = number(piece);
        if (!component) return std::nullopt;
        result.components.push_back(*component);
    }
    if (hyphen == std::string_view::npos) return result;
    for (const std::string_view piece : pieces(rest.substr(hyphen + 1))) {
        result.prerelease.push_back(identifier(piece));
    }
    return result;
}

std::weak_ordering operator<=>(const AppVersion& a, const AppVersion& b) {
    if (const auto order = compareComponents(a, b); std::is_neq(order)) return order;
    if (a.prerelease.empty() || b.prerelease.empty()) {
        return a.prerelease.empty() <=> b.prerelease.empty();
    }
    // A variant orders by its alternative first, numbers before texts, and a list that is the
    // beginning of another comes first: both are the rule.
    return a.prerelease <=> b.prerelease;
}

bool VersionStamp::isNewerThan(const VersionStamp& other) const {
    const auto order = version <=> other.version;
    if (std::is_neq(order)) return std::is_gt(order);
    return build && other.build && *build > *other.build;
}

}  // namespace tesserine
