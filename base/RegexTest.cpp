#include "base/Regex.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace tesserine {
namespace {

TEST(Regex, FindsByteRangesInUTF8) {
    const Regex regex("(é+)(x)?(\\d)");
    const std::string text = "ü éé7 é8";
    const auto first = regex.find(text);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->group(text, 0), "éé7");
    EXPECT_EQ(first->groups[0].begin, 3U);
    EXPECT_FALSE(first->groups[2]);
    EXPECT_EQ(first->group(text, 2), "");
    EXPECT_EQ(first->group(text, 3), "7");

    const auto second = regex.find(text, first->groups[0].end);
    ASSERT_TRUE(second);
    EXPECT_EQ(second->group(text, 0), "é8");
    EXPECT_FALSE(regex.find(text, text.size() + 1));
}

TEST(Regex, MatchesWholeTextsAndIgnoresCaseWhenAsked) {
    const Regex regex("stra(ss|ß)e", Regex::Case::insensitive);
    EXPECT_TRUE(regex.matches("STRASSE"));
    EXPECT_FALSE(regex.matches("STRASSE "));
    EXPECT_TRUE(regex.find("eine Strasse"));
    EXPECT_TRUE(Regex("").matches({}));
}

TEST(Regex, GoesThroughAllMatchesUntilToldToStop) {
    const Regex regex("\\w+|$");
    std::vector<std::string> found;
    const std::string text = "one two three";
    regex.forEach(text, [&](const Regex::Match& match) {
        found.emplace_back(match.group(text, 0));
        EXPECT_TRUE(regex.find("again"));  // the same expression inside its own walk
        return true;
    });
    EXPECT_EQ(found, (std::vector<std::string>{"one", "two", "three", ""}));

    found.clear();
    regex.forEach(text, [&](const Regex::Match& match) {
        found.emplace_back(match.group(text, 0));
        return found.size() < 2;
    });
    EXPECT_EQ(found.size(), 2U);
}

TEST(Regex, ASearchWithoutEndCountsAsNoMatch) {
    const Regex catastrophic("(a+)+b");
    const std::string text(40, 'a');
    EXPECT_FALSE(catastrophic.find(text));
    EXPECT_FALSE(catastrophic.matches(text));
    EXPECT_TRUE(catastrophic.find("aab"));  // and it still works

    const Regex deep("(x|y)*z");
    EXPECT_FALSE(deep.find(std::string(5'000'000, 'x')));
}

TEST(Regex, ServesSeveralThreadsAtOnce) {
    const Regex regex("n(\\d+)");
    std::vector<std::jthread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&regex, i] {
            const std::string text = "xx n" + std::to_string(i);
            for (int j = 0; j < 500; ++j) {
                const auto match = regex.find(text);
                ASSERT_TRUE(match);
                ASSERT_EQ(match->group(text, 1), std::to_string(i));
            }
        });
    }
}

}  // namespace
}  // namespace tesserine
