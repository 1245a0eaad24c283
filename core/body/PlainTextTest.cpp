#include "core/body/PlainText.h"

#include "core/body/AttributedText.h"
#include "core/body/NoteOutline.h"

#include <gtest/gtest.h>

#include <string>

namespace tesserine {
namespace {

struct PlainTextCase {
    const char* html;
    const char* text;
};

TEST(PlainText, SetsBlocksCellsAndItemsApart) {
    for (const auto& [html, text] : {
             PlainTextCase{"<p>a</p><p>b</p>", "a\nb"},
             PlainTextCase{"<p>a</p><p></p><p>b</p>", "a\nb"},
             PlainTextCase{"a<div>b<div>c</div></div>d", "a\nb\nc\nd"},
             PlainTextCase{"a<b>b</b><x-unknown>c</x-unknown>", "abc"},
             PlainTextCase{"a<br>b", "a\nb"},
             PlainTextCase{"<p>a</p><br><br><br><br><p>b</p>", "a\n\nb"},
             PlainTextCase{"<br>a<br><br>", "\na"},  // only the end is trimmed
             PlainTextCase{"a<hr>b", "a\n———\nb"},
             PlainTextCase{"<hr><hr>", "———\n———"},
             PlainTextCase{R"(a<img><img alt=""><img alt="b">c)", "abc"},
             PlainTextCase{
                 "<ul><li>a</li><li data-checked=true>b</li><li data-checked>c</li></ul>",
                 "• a\n[x] b\n[ ] c"},
             PlainTextCase{
                 "<ul><li data-checked=TRUE>a<ul><li>b</li></ul></li></ul>c", "[ ] a\n• b\nc"},
             PlainTextCase{"<ul><li><p>a</p></li></ul>", "•\na"},
             PlainTextCase{
                 "a<table><tr><td>1</td><td>2</td></tr><tr><th></th><td>3</td></tr></table>b",
                 "a\n1\t2\n\t3\nb"},
             PlainTextCase{
                 "<table><tbody><td>1</td></tbody><tfoot><td>2</td></tfoot></table>", "1\t2"},
             PlainTextCase{"<table><caption>a</caption><td>b</td></table>", "a\nb"},
             PlainTextCase{
                 "<dl><dt>a</dt><dd>b</dd></dl><figure>c<figcaption>d</figcaption></figure>",
                 "a\nb\nc\nd"},
             PlainTextCase{"<pre>  a\n\n\n    b \t\n</pre>c", "a\n\nb\nc"},
             PlainTextCase{
                 "a &lt;b&gt;<!-- c --><script>d</script>", "a <b>d"},  // nothing is sanitised
             PlainTextCase{"&nbsp;a&nbsp;b&nbsp;", "a b"},
             PlainTextCase{"<p>a&#13;&#10;b&#13;c</p>", "a\nb\rc"},
             PlainTextCase{" \n\t<p> &nbsp;</p>\n", ""},
             PlainTextCase{"\ta", "\ta"},
         }) {
        SCOPED_TRACE(html);
        EXPECT_EQ(PlainText::fromHTML(html), text);
        EXPECT_EQ(PlainText::fromNode(HTMLDocument::parse(html).root()), text);
    }
}

TEST(PlainText, FindsTheFirstLineThatSaysSomething) {
    struct LineCase {
        const char* text;
        std::size_t limit;
        const char* line;
    };
    for (const auto& [text, limit, line] : {
             LineCase{"a\nb", 9, "a"},
             LineCase{"\n \t\n\u00A0\r\n  b c \r\nd", 9, "b c"},
             LineCase{"abc", 3, "abc"},
             LineCase{"abcd", 3, "abc"},
             LineCase{"a b", 2, "a "},  // trimmed first, then cut
             LineCase{"e\u0301👩‍👩‍👧🇩🇪x", 3, "e\u0301👩‍👩‍👧🇩🇪"},
         }) {
        SCOPED_TRACE(text);
        EXPECT_EQ(PlainText::firstLine(text, limit), line);
    }
    EXPECT_EQ(PlainText::firstLine("", 9), std::nullopt);
    EXPECT_EQ(PlainText::firstLine("\n \n\u2003\n", 9), std::nullopt);
}

TEST(PlainText, CutsSnippetsBetweenCharacters) {
    struct SnippetCase {
        std::string text;
        std::size_t limit;
        std::string snippet;
    };
    const std::string white(511, ' ');
    const std::string family = "👩‍👩‍👧";
    for (const auto& [text, limit, snippet] : {
             SnippetCase{"  a   b  ", 10, "a b"},
             SnippetCase{"  a   b  ", 3, "a b"},
             SnippetCase{"  a   b  ", 2, "a"},
             SnippetCase{"  a   b  ", 1, "a"},
             SnippetCase{"a", 0, ""},
             SnippetCase{"a\r\n\tb\u00A0c", 10, "a b\u00A0c"},
             SnippetCase{family + family + family, 2, family + family},
             SnippetCase{" \n", 10, ""},
             // Only the first 512 characters count, or eight times the limit.
             SnippetCase{white + "a", 9, "a"},
             SnippetCase{white + " a", 9, ""},
             SnippetCase{std::string(799, ' ') + "a", 100, "a"},
             SnippetCase{std::string(800, ' ') + "a", 100, ""},
         }) {
        SCOPED_TRACE(text);
        EXPECT_EQ(PlainText::snippet(text, limit), snippet);
    }
}

TEST(PlainText, NamesANoteWithoutATitle) {
    EXPECT_EQ(displayTitle(" a ", "b"), "a");
    EXPECT_EQ(displayTitle(" \n", "\n b \nc"), "b");
    EXPECT_EQ(displayTitle("", std::string(121, 'x')), std::string(120, 'x'));
    EXPECT_EQ(displayTitle("", " \n"), "Untitled");
}

std::string outline(const AttributedText& edited) {
    std::string lines;
    for (const OutlineEntry& entry : NoteOutline::entries(edited)) {
        lines.append(std::to_string(entry.location))
            .append(" h")
            .append(std::to_string(entry.level));
        lines.append(" ").append(entry.text).append("\n");
    }
    return lines;
}

TEST(NoteOutline, ListsHeadingsByTheirPlaceInUTF16) {
    using Kind = BlockStyle::Kind;
    AttributedText edited;
    EXPECT_EQ(outline(edited), "");
    edited.append("🔒 \u00A0a \n", BlockStyle{Kind::heading, 2});
    edited.append("🔒🔒\n", BlockStyle{Kind::paragraph});
    edited.append(" \t\n", BlockStyle{Kind::heading, 1});
    edited.append("plain\u2029", std::nullopt);
    edited.append("b\r", BlockStyle{Kind::heading, 6});
    edited.append("quoted\n", BlockStyle{Kind::quote, 1});
    // One stretch of style over several paragraphs.
    edited.append("c\nd\r\ne", BlockStyle{Kind::heading, 3});
    EXPECT_EQ(outline(edited), "0 h2 🔒 \u00A0a\n21 h6 b\n30 h3 c\n32 h3 d\n35 h3 e\n");
}

}  // namespace
}  // namespace tesserine
