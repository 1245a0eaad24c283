#include "core/import/TextDecoding.h"

#include "base/Encoding.h"
#include "base/Text.h"

#include <gtest/gtest.h>

#include <string_view>

namespace tesserine {
namespace {

using namespace std::string_view_literals;

TEST(TextDecoding, KnownEncodingsAreReadAndOthersTakenForWindows1252) {
    struct Case {
        std::string_view bytes;
        const char* text;
        const char* warning;  // its beginning
    };
    for (const auto& [bytes, text, warning] : {
             Case{""sv, "", ""},
             Case{"é\r\nb\rc\n"sv, "é\nb\nc\n", ""},
             Case{"\xEF\xBB\xBFé"sv, "é", ""},
             Case{"\xFF\xFE\xE9\x00\x3D\xD8\x00\xDE"sv, "é😀", ""},
             Case{"\xFE\xFF\x00\xE9\x00\n"sv, "é\n", ""},
             Case{"\xFF\xFE\xE9\x00\x3D\xD8"sv, "é\uFFFD", ""},  // half a character
             Case{"\xFF\xFE\xE9\x00\x3D"sv, "é\uFFFD", ""},      // half a unit
             Case{"caf\xE9 \x80 \x93q\x94"sv, "café € “q”", "The file is not UTF-8"},
             Case{"éèü \xE9 x"sv, "éèü \uFFFD x", "Some bytes"},  // all but one are
             Case{"\xEF\xBB\xBF\xE9"sv, "\uFFFD", "Some bytes"},  // it says that it is
             Case{"a\0b"sv, "ab", "Characters that no text holds"},
         }) {
        SCOPED_TRACE(text);
        const DecodedText decoded = decodedText(bytesOf(bytes));
        EXPECT_EQ(decoded.text, text);
        EXPECT_EQ(decoded.warning.substr(0, std::string_view(warning).size()), warning);
        EXPECT_EQ(decoded.warning.empty(), std::string_view(warning).empty());
        EXPECT_TRUE(text::isClean(decoded.text));
    }
}

}  // namespace
}  // namespace tesserine
