#include "search/SearchAnalyzer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace tesserine {
namespace {

std::string keys(std::string_view text) { return SearchAnalyzer::keyText({{text}}); }

struct AnalyzerCase {
    const char* text;
    const char* keys;
};

void expectKeys(std::initializer_list<AnalyzerCase> cases) {
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(keys(text), expected) << text;
    }
}

TEST(SearchAnalyzer, FindsYearsThatPeopleWriteAbout) {
    expectKeys({
        {"1899 1900 2099 2100", "tsd1899190020992100 tsy1900 tsy2099"},
        {"in 2025, again", "tsy2025"},
        {"(2025)", "tsy2025"},
        {"2025a x2025 02025; 202", ""},
        {"2025\u0301", ""},                // an accent makes it another token
        {"\u0662\u0660\u0662\u0665", ""},  // only ASCII digits
    });
}

TEST(SearchAnalyzer, ReadsNumericDatesInEveryUsualOrder) {
    expectKeys({
        {"2025-01", "tsm202501 tsy2025"},
        {"2025/01", "tsm202501 tsy2025"},
        {"2025.01", "tsn2025p01 tsy2025"},  // an amount, not a month
        {"2025-1", "tsy2025"},
        {"1/2025", "tsm202501 tsy2025"},
        {"01-2025", "tsy2025"},
        {"2025-01-15", "tsm202501 tsx20250115 tsy2025"},
        {"2025.1.5", "tsm202501 tsx20250105 tsy2025"},
        {"12/31/2025", "tsm202512 tsx20251231 tsy2025"},
        {"13/04/2025", "tsm202504 tsx20250413 tsy2025"},
        {"03/04/2025", "tsm202503 tsm202504 tsx20250304 tsx20250403 tsy2025"},
        {"05/05/2025", "tsm202505 tsx20250505 tsy2025"},
        {"15.01.2025", "tsm202501 tsx20250115 tsy2025"},
        {"2025-02-31", "tsm202502 tsx20250231 tsy2025"},  // months are not measured
        {"2025-02-32", "tsm202502 tsy2025"},
        {"2025-13-01", "tsd20251301 tsy2025"},
        {"2025-01-15T10:00", "tsm202501 tsy2025"},  // "15T10" is one token
        {"2025--01", "tsy2025"},
        {"2025-01/15", "tsm202501 tsy2025"},
        {"2025-01-15-3", "tsd202501153 tsy2025"},  // four groups are no date
        {"1/15/25", ""},
    });
}

TEST(SearchAnalyzer, ReadsDatesWithTheNameOfTheMonth) {
    expectKeys({
        {"January 2025", "tsm202501 tsy2025"},
        {"JAN 2025", "tsm202501 tsy2025"},
        {"Sept. 2025", "tsm202509 tsy2025"},
        {"March,  2025", "tsm202503 tsy2025"},
        {"March,   2025", "tsy2025"},  // four characters are too many
        {"January 15, 2025", "tsm202501 tsx20250115 tsy2025"},
        {"15 January 2025", "tsm202501 tsx20250115 tsy2025"},
        {"January 1st, 2025", "tsm202501 tsx20250101 tsy2025"},
        {"22ND of May 2025", "tsm202505 tsy2025"},  // "of" stands between
        {"3RD May 2025", "tsm202505 tsx20250503 tsy2025"},
        {"7 May 2, 2025", "tsm202505 tsx20250502 tsy2025"},
        {"May 45, 2025", "tsm202505 tsy2025"},
        {"15-Jan-2025", "tsm202501 tsx20250115 tsy2025"},
        {"Januar 2025", "tsy2025"},
        {"Mayo 2025 dismay 2025", "tsy2025"},
        {"\u00e9may 2025", "tsy2025"},
        {"January 1850", ""},
    });
}

TEST(SearchAnalyzer, ReadsAmountsHoweverTheyAreGrouped) {
    expectKeys({
        {"1,234.50", "tsn1234p50"},
        {"1234.50", "tsn1234p50"},
        {"$12.50.", "tsn12p50"},
        {"1,234,567.89", "tsn1234567p89"},
        {"12,345", "tsn12345"},
        {"1,23", ""},
        {"1234,567", ""},
        {"1,234,56", ""},
        {"1.234.567", ""},
        {"1,234.567,890", ""},
        {"1.5,000", ""},
        {"1,234.50USD", "tsn1234"},  // "50USD" is no number and ends the run
        {"12. 50", ""},
        {"1234", ""},
    });
}

TEST(SearchAnalyzer, JoinsTheGroupsOfAccountNumbers) {
    expectKeys({
        {"1234 5678 9012", "tsd123456789012"},
        {"1234-5678", "tsd12345678"},
        {"123 4567", ""},
        {"12345678", "tsd12345678"},
        {"1234  5678", ""},
        {"1234\u00a05678", ""},
        {"5678-9012 3456", "tsd56789012 tsd90123456"},  // a change begins anew at the same group
        {"2025-01-15 1234 5678", "tsd12345678 tsm202501 tsx20250115 tsy2025"},
        {"2025-01-15", "tsm202501 tsx20250115 tsy2025"},  // a date is no account
        {"IBAN1234 5678 9012", "tsd56789012"},
    });
}

TEST(SearchAnalyzer, JoinsTheKeysOfAllTextsOnce) {
    const std::vector<std::string_view> texts = {"", "2025-01", "12.50 2025", ""};
    EXPECT_EQ(SearchAnalyzer::keyText(texts), "tsm202501 tsn12p50 tsy2025");
    EXPECT_EQ(SearchAnalyzer::keyText({}), "");
    // Numbers at the edge of two texts do not meet.
    const std::vector<std::string_view> neighbours = {"1234", "5678"};
    EXPECT_EQ(SearchAnalyzer::keyText(neighbours), "");
}

TEST(SearchAnalyzer, KeepsTheSixHundredKeysThatSortFirst) {
    std::string text;
    for (int i = 1999; i >= 1000; --i) {
        text += std::to_string(i) + ".25; ";
    }
    const std::string kept = keys(text);
    EXPECT_TRUE(kept.starts_with("tsn1000p25 tsn1001p25 "));
    EXPECT_TRUE(kept.ends_with(" tsn1599p25"));
}

TEST(SearchAnalyzer, TellsWhereAKeyStands) {
    const std::string text = "caf\u00e9 1,234.50 on January 15th, 2025!";
    std::string places;
    for (const auto& [key, begin, end] : SearchAnalyzer::find(text)) {
        places += key + "=" + text.substr(begin, end - begin) + "\n";
    }
    EXPECT_EQ(
        places,
        "tsn1234p50=1,234.50\n"
        "tsy2025=2025\n"
        "tsy2025=January 15th, 2025\n"
        "tsm202501=January 15th, 2025\n"
        "tsx20250115=January 15th, 2025\n");
}

TEST(SearchAnalyzer, KnowsItsOwnKeys) {
    for (const char* key :
         {"tsy2025", "tsm202501", "tsx20250115", "tsn12345", "tsn12p50", "tsd12345678"}) {
        EXPECT_TRUE(SearchAnalyzer::isKey(key)) << key;
    }
    for (const char* word :
         {"ts",
          "tsy",
          "tsy20255",
          "tsx2025011",
          "tsnp50",
          "tsn12p",
          "tsd1234567",
          "tsunami",
          "tsn1p2p3",
          "xtsy2025"}) {
        EXPECT_FALSE(SearchAnalyzer::isKey(word)) << word;
    }
}

TEST(SearchAnalyzer, TakesHostileTextsInTheirStride) {
    // A quadratic scanner would take minutes for each.
    constexpr std::size_t size = 1'000'000;
    for (const std::string_view piece :
         {"1", "1 ", "1.", "2025 ", "a1", "a", " ", "\u00e9", "2025,", "01/", "May 2025 ", "- 1"}) {
        std::string text;
        while (text.size() < size) {
            text += piece;
        }
        const auto start = std::chrono::steady_clock::now();
        keys(text);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20)) << piece;
    }
}

}  // namespace
}  // namespace tesserine
