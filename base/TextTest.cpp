#include "base/Text.h"

#include "base/UTF8.h"
#include "tests/support/SeededRandom.h"

#include <gtest/gtest.h>
#include <unicode/brkiter.h>
#include <unicode/uniset.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>

#include <algorithm>
#include <thread>
#include <vector>

namespace tesserine {
namespace {

using namespace std::string_literals;

TEST(Text, BadSequencesBecomeOneReplacementForEachMaximalSubpart) {
    struct Case {
        std::string bytes;
        std::string clean;
    };
    for (const auto& [bytes, clean] : {
             Case{"plain", "plain"},
             Case{"a\0b\0"s, "ab"},
             Case{"\xC3\xA9t\xC3\xA9", "été"},
             Case{"\xC0\xAF", "\uFFFD\uFFFD"},  // longer form than needed
             Case{"\xE0\x80\xAF", "\uFFFD\uFFFD\uFFFD"},
             Case{"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},  // a surrogate
             Case{
                 "\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42",
                 "\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA\uFFFD\uFFFDB"},
             Case{
                 "\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41",
                 "\uFFFD\uFFFD\uFFFD\uFFFDA"},  // truncated ones
             Case{"ends \xF0\x9F\x98", "ends \uFFFD"},
             Case{"\xF4\x8F\xBF\xBF", "\U0010FFFF"},
         }) {
        EXPECT_EQ(text::sanitized(bytes), clean);
        EXPECT_EQ(text::isClean(bytes), bytes == clean);
    }
}

TEST(Text, SanitisedBytesAreCleanWhateverTheyWere) {
    test::SeededRandom random(11);
    for (int i = 0; i < 20'000; ++i) {
        std::string bytes(random.below(40), 'x');
        for (char& c : bytes) {
            // Mostly bytes with a meaning in UTF-8, at any distance from an eight-byte border.
            constexpr std::string_view pool =
                "abcdefgh\x80\xBF\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
            c = pool[random.below(pool.size())];
        }
        const std::string clean = text::sanitized(bytes);
        ASSERT_TRUE(text::isClean(clean));
        ASSERT_EQ(text::sanitized(clean), clean);
        const auto expected = icu::UnicodeString::fromUTF8(bytes);
        std::string expectedBytes;
        ASSERT_EQ(clean, expected.toUTF8String(expectedBytes));
    }
}

TEST(Text, TrimsEveryWhiteSpaceOfUnicodeAndNothingElse) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeSet whiteSpace("[:White_Space:]", status);
    ASSERT_TRUE(U_SUCCESS(status));
    for (char32_t scalar = 1; scalar < 0x11000; ++scalar) {
        if (scalar >= 0xD800 && scalar < 0xE000) continue;
        std::string text;
        utf8::append(text, scalar);
        const bool isSpace = whiteSpace.contains(static_cast<UChar32>(scalar));
        std::string padded = text;
        padded.append("x").append(text);
        ASSERT_EQ(text::trimmed(padded), isSpace ? "x" : padded) << text;
        ASSERT_EQ(text::isBlank(" " + text), isSpace) << text;
    }
    EXPECT_EQ(text::trimmed(" \t\r\n\u00A0 a b \u3000\u2029"), "a b");
    EXPECT_EQ(text::trimmed("\u2003 "), "");
    EXPECT_TRUE(text::isBlank(""));
    EXPECT_EQ(text::collapsed(" \t\u3000a\r\n b\u2029\u00A0çà "), "a b çà");
    EXPECT_EQ(text::collapsed("\u2003 "), "");
}

TEST(Text, FoldingComparesNamesAsPeopleDo) {
    EXPECT_EQ(text::caseFolded("STRASSE"), text::caseFolded("straße"));
    EXPECT_EQ(text::caseFolded("ΣΊΣΥΦΟΣ"), text::caseFolded("σίσυφος"));
    EXPECT_NE(text::caseFolded("Café"), text::caseFolded("Cafe"));
    for (const auto& [written, folded] : {
             std::pair{"Café", "cafe"},
             std::pair{"CAFE\u0301", "cafe"},
             std::pair{"İstanbul", "istanbul"},
             std::pair{"Ångström", "angstrom"},
             std::pair{"Ελλάδα", "ελλαδα"},
             std::pair{"Straße", "strasse"},
             std::pair{"한글", "한글"},
             std::pair{"I❤\uFE0FDebian", "i❤debian"},
         }) {
        EXPECT_EQ(text::folded(written), folded);
    }
    // The root locale, whatever the machine's: a Turkish one would make a dotless ı.
    EXPECT_EQ(text::lowercased("INBOX ÄÖÜ Σ"), "inbox äöü σ");
    EXPECT_EQ(text::asciiLowercased("TEXT/Ä"), "text/Ä");
    EXPECT_EQ(text::composed("e\u0301"), "é");
}

TEST(Text, CharactersAreWhatAPersonCounts) {
    struct Case {
        const char* text;
        std::size_t count;
    };
    for (const auto& [text, count] : {
             Case{"", 0},
             Case{"abc", 3},
             Case{"a\r\nb", 3},  // a line break is one character
             Case{"\n\r", 2},
             Case{"e\u0301x", 2},
             Case{"👨‍👩‍👧‍👦!", 2},
             Case{"🇩🇪🇫🇷", 2},
             Case{"👍🏽👍", 2},
             Case{"각\u1100\u1161\u11A8", 2},
             Case{"นี้", 1},
         }) {
        EXPECT_EQ(text::characterCount(text), count) << text;
    }
    EXPECT_EQ(text::prefix("e\u0301👨‍👩‍👧x", 2), "e\u0301👨‍👩‍👧");
    EXPECT_EQ(text::prefix("abc", 0), "");
    EXPECT_EQ(text::prefix("abc", 7), "abc");
}

/// Ends of the clusters by asking ICU for the whole text at once.
std::vector<std::size_t> boundariesOfICU(const std::string& text) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> iterator(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    UText* const view =
        utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &status);
    iterator->setText(view, status);
    std::vector<std::size_t> ends;
    while (iterator->next() != icu::BreakIterator::DONE) {
        ends.push_back(static_cast<std::size_t>(iterator->current()));
    }
    utext_close(view);
    return ends;
}

TEST(Text, ShortCutsFindTheSameCharactersAsTheFullRules) {
    const std::vector<std::u32string> pools = {
        U"ab \r\n\té",
        U"aé\u0301\u200D\uFE0F❤",
        U"👩👨👧\u200D🏽🇩🇪🇫x",
        U"한\u1100\u1161\u11A8a",
        U"aक\u094Dष\u093Fि",
        U"日本—“”€アﾞあ\u3099",
        U"אבجد\u064B\u0600٠a",
    };
    test::SeededRandom random(3);
    for (int i = 0; i < 30'000; ++i) {
        const std::u32string& pool = pools[random.below(pools.size())];
        std::string text;
        const std::uint64_t length = 1 + random.below(12);
        for (std::uint64_t j = 0; j < length; ++j) {
            utf8::append(text, pool[random.below(pool.size())]);
        }
        std::vector<std::size_t> ends;
        text::forEachCharacter(text, [&](std::string_view cluster) {
            ends.push_back((ends.empty() ? 0 : ends.back()) + cluster.size());
            return true;
        });
        ASSERT_EQ(ends, boundariesOfICU(text)) << text;
    }
}

TEST(Text, UTF16KeepsEveryScalarAndReplacesHalfPairs) {
    const std::string text = "a\u00E9\uFFFF\U0001F600\U0010FFFF";
    EXPECT_EQ(text::utf16Length(text), text::toUTF16(text).size());
    EXPECT_EQ(text::fromUTF16(text::toUTF16(text)), text);
    EXPECT_EQ(text::toUTF16("😀"), u"\xD83D\xDE00");
    const std::u16string broken = {u'a', 0xD83D, u'b', 0xDE00, 0xD83D};
    EXPECT_EQ(text::fromUTF16(broken), "a\uFFFDb\uFFFD\uFFFD");
}

std::vector<std::string> sorted(const std::string& locale, std::vector<std::string> names) {
    const text::Collator collator(locale);
    std::ranges::stable_sort(
        names, [&](const auto& a, const auto& b) { return collator.compare(a, b) < 0; });
    return names;
}

TEST(Collator, SortsAsReadersOfTheLocaleExpect) {
    using Names = std::vector<std::string>;
    const Names names = {"zebra", "Öl", "apple", "Äpfel", "Zoo"};
    const Names german = {"Äpfel", "apple", "Öl", "zebra", "Zoo"};
    EXPECT_EQ(sorted("de_DE.UTF-8", names), german);
    EXPECT_EQ(sorted("", names), german);
    EXPECT_EQ(sorted("C.UTF-8", names), german);  // never by bytes
    EXPECT_EQ(sorted("xx_XX", names), german);
    EXPECT_EQ(sorted("sv_SE", names), (Names{"apple", "zebra", "Zoo", "Äpfel", "Öl"}));
}

TEST(Collator, IgnoresCaseButNotAccentsAndServesSeveralThreads) {
    const text::Collator collator("en_GB");
    EXPECT_EQ(collator.compare("Work", "WORK"), 0);
    EXPECT_NE(collator.compare("resume", "résumé"), 0);
    std::vector<std::jthread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int j = 0; j < 1000; ++j) {
                EXPECT_LT(collator.compare("Café", "Caffè"), 0);
            }
        });
    }
}

}  // namespace
}  // namespace tesserine
