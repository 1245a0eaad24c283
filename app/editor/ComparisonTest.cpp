#include "app/editor/Comparison.h"

#include "base/Text.h"
#include "tests/support/SeededRandom.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace tesserine::app {
namespace {

std::string marked(std::u16string_view text, const std::vector<PassageRange>& ranges) {
    std::u16string shown(text);
    for (std::size_t i = ranges.size(); i-- > 0;) {
        shown.insert(ranges[i].end(), u"]");
        shown.insert(ranges[i].start, u"[");
    }
    return text::fromUTF16(shown);
}

std::u16string withoutRanges(std::u16string text, const std::vector<PassageRange>& ranges) {
    for (std::size_t i = ranges.size(); i-- > 0;) {
        text.erase(ranges[i].start, ranges[i].length);
    }
    return text;
}

TEST(Comparison, MarksWholeWords) {
    struct Case {
        const char16_t* before;
        const char16_t* after;
        const char* shownBefore;
        const char* shownAfter;
    };
    for (const auto& [before, after, shownBefore, shownAfter] : {
             Case{u"", u"", "", ""},
             Case{u"one two\n", u"one two\n", "one two\n", "one two\n"},
             Case{u"one two\n", u"one too\n", "one [two]\n", "one [too]\n"},
             Case{u"a\nb\nc\n", u"a\nc\n", "a\n[b\n]c\n", "a\nc\n"},
             Case{u"a\n", u"a\nb\n", "a\n", "a\n[b\n]"},
             Case{u"", u"new", "", "[new]"},
             Case{u"old", u"", "[old]", ""},
             Case{
                 u"the red house\n",
                 u"the house, red\n",
                 "the [red ]house\n",
                 "the house[, red]\n"},
             Case{u"größe 10", u"größer 10", "[größe] 10", "[größer] 10"},
         }) {
        const Comparison comparison = compared(before, after);
        EXPECT_EQ(marked(before, comparison.removed), shownBefore);
        EXPECT_EQ(marked(after, comparison.added), shownAfter);
    }
}

TEST(Comparison, WhatIsNotMarkedIsTheSame) {
    test::SeededRandom random(5);
    const auto text = [&] {
        std::u16string made;
        for (std::size_t i = 0, count = random.below(60); i < count; ++i) {
            made += u"ab \nc"[random.below(5)];
        }
        return made;
    };
    for (int i = 0; i < 2'000; ++i) {
        const std::u16string before = text();
        const std::u16string after = text();
        const Comparison comparison = compared(before, after);
        ASSERT_EQ(
            withoutRanges(before, comparison.removed), withoutRanges(after, comparison.added));
        for (std::size_t place = 0; place < before.size(); ++place) {
            const std::size_t found = comparison.placeAfter(place, Comparison::Side::next);
            ASSERT_LE(found, after.size());
            const bool isGone = std::ranges::any_of(comparison.removed, [&](const auto& range) {
                return place >= range.start && place < range.end();
            });
            if (!isGone) {
                ASSERT_EQ(after[found], before[place]);
            }
        }
    }
}

TEST(Comparison, TextsWithNothingInCommonAreComparedInBoundedTime) {
    std::u16string before = u"same\n";
    std::u16string after = u"same\n";
    for (int i = 0; i < 20'000; ++i) {
        before += u"x" + std::u16string(1, static_cast<char16_t>(u'a' + i % 7)) + u"\n";
        after += u"y" + std::u16string(1, static_cast<char16_t>(u'a' + i % 5)) + u" ";
    }
    const Comparison comparison = compared(before, after);
    ASSERT_EQ(comparison.removed.size(), 1U);
    EXPECT_EQ(comparison.removed.front().start, 5U);
}

}  // namespace
}  // namespace tesserine::app
