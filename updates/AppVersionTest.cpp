#include "updates/AppVersion.h"

#include <gtest/gtest.h>

#include <string>

namespace tesserine {
namespace {

/// The parts of a version: "2.10|beta:2", numbers of a pre-release marked with "#".
std::string parts(std::string_view text) {
    const auto version = AppVersion::parse(text);
    if (!version) return "none";
    std::string shown;
    for (const auto component : version->components) {
        shown += (shown.empty() ? "" : ".") + std::to_string(component);
    }
    for (const auto& identifier : version->prerelease) {
        const auto* const number = std::get_if<std::int64_t>(&identifier);
        shown += number != nullptr ? "|#" + std::to_string(*number)
                                   : "|" + std::get<std::string>(identifier);
    }
    return shown;
}

TEST(AppVersion, IsReadAsPeopleWriteIt) {
    struct Case {
        const char* text;
        const char* parts;
    };
    for (const auto& [text, expected] : {
             Case{"v2.3", "2.3"},
             Case{" \n V2.3\t", "2.3"},
             Case{"2.3.0+77", "2.3.0"},
             Case{"2.3.0+77-beta", "2.3.0"},
             Case{"1.0.0-beta.2", "1.0.0|beta|#2"},
             Case{"1.0-a-b.01", "1.0|a-b|#1"},
             Case{"1.0-", "1.0|"},
             Case{"1.0-a..b", "1.0|a||b"},
             Case{"9223372036854775807", "9223372036854775807"},
             Case{"9223372036854775808", "none"},
             Case{"2..3", "none"},
             Case{"2.x", "none"},
             Case{"2.3.", "none"},
             Case{"-beta", "none"},
             Case{"vv2", "none"},
             Case{"+2", "none"},
             Case{"2. 3", "none"},
             Case{"\u0662.3", "none"},  // a digit, but not an ASCII one
             Case{"", "none"},
         }) {
        EXPECT_EQ(parts(text), expected) << text;
    }
}

TEST(AppVersion, StandsInTheOrderOfReleases) {
    const char* const ascending[] = {
        "0.9",
        "1.0.0-1",
        "1.0.0-2",
        "1.0.0-11",
        "1.0-",
        "1.0.0-alpha",
        "1.0.0-alpha.1",
        "1.0.0-alpha.beta",
        "1.0.0-beta",
        "1.0.0-beta.2",
        "1.0.0-beta.11",
        "1",
        "1.0.1",
        "1.2",
        "1.10",
        "2"};
    for (const char* const& a : ascending) {
        for (const char* const& b : ascending) {
            EXPECT_EQ(*AppVersion::parse(a) < *AppVersion::parse(b), &a < &b) << a << " and " << b;
        }
    }
    EXPECT_EQ(*AppVersion::parse("1.2"), *AppVersion::parse("v1.2.0+5"));
}

TEST(VersionStamp, CountsBuildsOnlyWhenBothAreKnown) {
    const auto stamp = [](const char* version, std::optional<std::int64_t> build) {
        return VersionStamp{*AppVersion::parse(version), build};
    };
    EXPECT_TRUE(stamp("1.4", 121).isNewerThan(stamp("1.4", 120)));
    EXPECT_FALSE(stamp("1.4", 120).isNewerThan(stamp("1.4", 121)));
    EXPECT_FALSE(stamp("1.4", 120).isNewerThan(stamp("1.4", {})));
    EXPECT_FALSE(stamp("1.4", {}).isNewerThan(stamp("1.4", 120)));
    EXPECT_TRUE(stamp("1.5", 1).isNewerThan(stamp("1.4", 900)));
}

}  // namespace
}  // namespace tesserine
