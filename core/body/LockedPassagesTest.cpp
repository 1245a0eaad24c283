#include "core/body/LockedPassages.h"

#include "core/body/AttributedTextReader.h"
#include "core/body/AttributedTextWriter.h"
#include "core/body/CanonicalBody.h"
#include "core/body/PassageSelection.h"

#include <gtest/gtest.h>

#include <string>

namespace tesserine {
namespace {

/// A body with every place of a passage locked; "-" when it cannot be.
std::string locked(const char* body, std::string_view passage) {
    AttributedText text = attributedText(body);
    const auto places = placesOf(text, passage);
    if (places.empty()) return "-";
    for (auto place = places.rbegin(); place != places.rend(); ++place) {
        if (!isLockable(text, *place)) return "-";
        lockRange(text, *place, "QQ==");
    }
    const std::string html = canonicalHTML(text);
    EXPECT_TRUE(isCanonical(html)) << html;
    EXPECT_EQ(canonicalHTML(attributedText(html)), html);
    // Blocks are shown short.
    std::string shown = html;
    for (std::size_t at = shown.find("<div class"); at != std::string::npos;
         at = shown.find("<div class")) {
        shown.replace(at, lockedBlock("QQ==").size(), "🔒");
    }
    return shown;
}

TEST(PassageSelection, PutsOneBlockInThePlaceOfAPassage) {
    struct Case {
        const char* body;
        const char* passage;
        const char* locked;
    };
    for (const auto& [body, passage, expected] : {
             Case{"<p>a</p><p>secret</p><p>b</p>", "secret", "<p>a</p>🔒<p>b</p>"},
             Case{"<p>the secret word</p>", "secret", "<p>the</p>🔒<p>word</p>"},
             Case{"<p>secret</p>", " secret\n", "🔒"},
             // Elements that reach over an edge go on at both sides.
             Case{
                 "<p><strong>a se</strong><em>cret b</em></p>",
                 "secret",
                 "<p><strong>a</strong></p>🔒<p><em>b</em></p>"},
             Case{"<p>a<strong>b</strong></p><p><u>c</u>d</p>", "b\nc", "<p>a</p>🔒<p>d</p>"},
             Case{"<p>a&nbsp;b<br>c</p><p>d</p>", "a b\nc\nd", "🔒"},
             // In a list, a quote, code, a heading, a container.
             Case{
                 "<ul><li>a</li><li>b secret</li><li>c</li></ul>",
                 "secret",
                 "<ul><li>a</li><li>b</li></ul>🔒<ul><li>c</li></ul>"},
             Case{"<ol start=\"3\"><li>x</li><li>y</li></ol>", "x", "🔒<ol><li>y</li></ol>"},
             Case{"<blockquote><p>x y</p></blockquote>", "x", "🔒<blockquote><p>y</p></blockquote>"},
             Case{"<pre>a\nb\nc</pre>", "b", "<pre>a</pre>🔒<pre>c</pre>"},
             Case{"<h2>x y</h2>", "y", "<h2>x</h2>🔒"},
             Case{
                 "<div dir=\"rtl\"><p>a</p><p>b</p></div>",
                 "a",
                 "<div dir=\"rtl\">🔒<p>b</p></div>"},
             // Wherever it stands.
             Case{"<p>x a x</p><h1>x</h1>", "x", "🔒<p>a</p>🔒🔒"},
             // What is no text, or is in what cannot be edited, is not locked.
             Case{"<p>a</p>", "b", "-"},
             Case{"<p>a</p>", " \n", "-"},
             Case{"<table><tr><td>a</td></tr></table>", "a", "-"},
             Case{"<p>\uFFFC</p>", "\uFFFC", "-"},
             Case{
                 "<div class=\"ts-encrypted\" data-ts-cipher=\"QQ==\">🔒 Encrypted text</div>",
                 "Encrypted",
                 "-"},
         }) {
        SCOPED_TRACE(body);
        EXPECT_EQ(locked(body, passage), expected);
    }
}

TEST(PassageSelection, SealsPlainText) {
    const AttributedText text = attributedText("<p>a<br>b</p><ul><li><em>c</em>d</li></ul>");
    EXPECT_EQ(plainText(text, {0, text.text.size()}), "a\nb\ncd");
    EXPECT_EQ(plainText(text, {2, 3}), "b\nc");
}

TEST(LockedPassages, AreFoundWhereverTheyStand) {
    const std::string body = R"(<p>&lt;div class="ts-encrypted" data-ts-cipher="no"&gt;</p>)"
                             + lockedBlock("QUJD") + "<ul><li>" + lockedBlock("REVG")
                             + "</li></ul>";
    ASSERT_TRUE(isCanonical(body));
    const auto passages = lockedPassages(body);
    ASSERT_EQ(passages.size(), 2U);
    EXPECT_EQ(passages[0].blob, "QUJD");
    EXPECT_EQ(passages[1].blob, "REVG");
    EXPECT_EQ(
        withoutLock(body, passages[1], "a & b\n\nc"),
        body.substr(0, passages[1].start) + "<p>a &amp; b</p><p></p><p>c</p></li></ul>");
    EXPECT_EQ(withoutLock(lockedBlock("x"), lockedPassages(lockedBlock("x"))[0], ""), "<p></p>");
    EXPECT_TRUE(lockedPassages("<div class=\"ts-encrypted\" data-ts-cipher=\"").empty());
}

}  // namespace
}  // namespace tesserine
