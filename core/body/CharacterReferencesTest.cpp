#include "core/body/CharacterReferences.h"

#include <gtest/gtest.h>

#include <string>

namespace tesserine {
namespace {

std::string decoded(std::string_view text, html::ReferenceContext context) {
    std::string output;
    html::appendDecoded(output, text, context);
    return output;
}

TEST(CharacterReferences, AreDecodedAsBrowsersDo) {
    struct Case {
        const char* text;
        const char* inText;
        const char* inAttribute;
    };
    for (const auto& [text, inText, inAttribute] : {
             Case{"a &amp; b", "a & b", "a & b"},
             Case{"&amp;lt;", "&lt;", "&lt;"},  // once only
             Case{"&copy 2", "© 2", "© 2"},
             Case{"&copyx", "©x", "&copyx"},  // an unfinished name in an address
             Case{"?a=1&copy=2", "?a=1©=2", "?a=1&copy=2"},
             Case{"&notit;", "¬it;", "&notit;"},  // the longest name that fits
             Case{"&notin;", "∉", "∉"},
             Case{"&NotEqualTilde;", "\u2242\u0338", "\u2242\u0338"},  // two characters
             Case{"&CounterClockwiseContourIntegral;", "∳", "∳"},      // the longest name
             Case{"&AMP&GT&quot", "&>\"", "&>\""},
             Case{"&Amp; &unknown; & &; &", "&Amp; &unknown; & &; &", "&Amp; &unknown; & &; &"},
             Case{"&#65;&#x42;&#X63&#100", "ABcd", "ABcd"},
             Case{"&#;&#x;&#xg;", "&#;&#x;&#xg;", "&#;&#x;&#xg;"},
             Case{"&#x80;&#150;&#x81;", "€–\u0081", "€–\u0081"},  // as in Windows-1252
             Case{"&#0;&#xD800;&#x110000;", "���", "���"},
             Case{"&#x1F512;", "🔒", "🔒"},
             Case{"&#13;", "\r", "\r"},
         }) {
        SCOPED_TRACE(text);
        EXPECT_EQ(decoded(text, html::ReferenceContext::text), inText);
        EXPECT_EQ(decoded(text, html::ReferenceContext::attribute), inAttribute);
    }
}

TEST(CharacterReferences, OfAnyLengthAreRead) {
    const std::string digits(500'000, '9');
    EXPECT_EQ(decoded("&#" + digits + ";x", html::ReferenceContext::text), "�x");
    EXPECT_EQ(decoded("&#" + std::string(500'000, '0') + "65;", html::ReferenceContext::text), "A");
    const std::string letters(500'000, 'a');
    EXPECT_EQ(decoded("&" + letters, html::ReferenceContext::text), "&" + letters);
    const std::string ampersands(500'000, '&');
    EXPECT_EQ(decoded(ampersands, html::ReferenceContext::text), ampersands);
}

}  // namespace
}  // namespace tesserine
