#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tesserine {

/// A version number in the manner of Semantic Versioning 2.0, with any count of numeric components.
struct AppVersion {
    /// Of a pre-release: a number when it is made of digits alone, otherwise a text.
    using Identifier = std::variant<std::int64_t, std::string>;

    std::vector<std::int64_t> components;  ///< 2.10.1 gives 2, 10, 1
    std::vector<Identifier> prerelease;    ///< beta.2 gives "beta", 2; empty for a release
    std::string text;                      ///< what it was parsed from, trimmed

    /// Takes "2.3", "v2.3", "2.3.0-beta.2" and "2.3.0+77", whose build metadata does not count.
    /// None when the numeric part is anything but numbers between dots, each below 2^63.
    static std::optional<AppVersion> parse(std::string_view text);

    /// Missing components count as 0, so that 1.2 equals 1.2.0; a pre-release comes before its
    /// release; numbers come before texts; texts compare by code points.
    friend std::weak_ordering operator<=>(const AppVersion& a, const AppVersion& b);
    friend bool operator==(const AppVersion& a, const AppVersion& b) { return std::is_eq(a <=> b); }
};

/// What is compared to decide whether a release is newer: a version and, where known, a build.
///
/// Without a build on one side the build does not count, so "equal" cannot be carried from one pair
/// to the next. A stamp is therefore neither sorted nor used as a key.
struct VersionStamp {
    AppVersion version;
    std::optional<std::int64_t> build{};

    bool isNewerThan(const VersionStamp& other) const;
};

}  // namespace tesserine
