#include "updates/UpdateChecks.h"

#include "base/Preferences.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace tesserine {
namespace {

TEST(UpdateChecks, HappenOnceADayWhereTheyMay) {
    const test::TemporaryFolder folder;
    UpdateSource source{.hasService = true, .program = folder / "tesserine"};
    Preferences preferences = Preferences::inMemory();
    const Instant now = *Instant::parseISO("2026-03-14T09:00:00Z");
    const auto isDue = [&] { return updates::isDue(preferences, source, now); };
    EXPECT_TRUE(isDue()) << "never before";

    struct Case {
        const char* lastCheck;
        bool isDue;
    };
    for (const auto& [lastCheck, expected] :
         {Case{"2026-03-13T09:00:01Z", false},
          Case{"2026-03-13T08:59:59Z", true},
          Case{"2027-01-01T00:00:00Z", true},  // the clock was wrong then
          Case{"yesterday", true}}) {
        preferences.set(updates::lastCheckKey, lastCheck);
        EXPECT_EQ(isDue(), expected) << lastCheck;
    }
    updates::noteCheck(preferences, now, UpdateOffer{.isRequired = true});
    EXPECT_TRUE(isDue()) << "what is required is said at every start";
    updates::noteCheck(preferences, now, UpdateOffer{});
    EXPECT_FALSE(isDue());

    preferences.remove(updates::lastCheckKey);
    preferences.set(updates::automaticKey, false);
    EXPECT_FALSE(isDue()) << "the user forbade it";
    preferences.remove(updates::automaticKey);
    source.hasService = false;
    EXPECT_FALSE(isDue()) << "there is nowhere to look";
    source.hasService = true;
    source.program = "/usr/bin/tesserine-desktop";
    EXPECT_FALSE(isDue()) << "the package manager does it";
}

TEST(UpdateChecks, LeaveProgramsOfThePackageManagerAlone) {
    const test::TemporaryFolder folder;
    const auto isOwned = [](const std::filesystem::path& program) {
        return UpdateSource{.program = program}.isOwnedByPackages();
    };
    EXPECT_FALSE(isOwned(folder / "tesserine"));
    EXPECT_TRUE(isOwned(folder / "gone" / "tesserine"));
    for (const char* place : {"/usr/bin/t", "/usr/lib/t/t", "/snap/t/1/t", "/app/bin/t", ""}) {
        EXPECT_TRUE(isOwned(place)) << place;
    }
}

TEST(UpdateChecks, RememberTheVersionThatWasSkipped) {
    Preferences preferences = Preferences::inMemory();
    const Release release{.stamp = {*AppVersion::parse("99.0")}};
    EXPECT_TRUE(offerOf(release, updates::situation(preferences)));
    updates::skip(preferences, release);
    EXPECT_FALSE(offerOf(release, updates::situation(preferences)));
    EXPECT_TRUE(offerOf({.stamp = {*AppVersion::parse("99.1")}}, updates::situation(preferences)));
}

}  // namespace
}  // namespace tesserine
