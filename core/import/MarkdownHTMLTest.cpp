#include "core/import/MarkdownHTML.h"

#include "core/body/BodyError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tesserine {
namespace {

struct Case {
    const char* markdown;
    const char* html;
};

TEST(MarkdownHTML, BlocksAndSpansBecomeNoteBodyElements) {
    for (
        const auto& [markdown, html] : {
            Case{"One\ntwo\n\nThree  \nfour", "<p>One\ntwo</p><p>Three<br>four</p>"},
            Case{
                "## Plan\n\n---\n> *q*",
                "<h2>Plan</h2><hr><blockquote><p><em>q</em></p></blockquote>"},
            Case{"**b** ~~s~~ `a < b`", "<p><strong>b</strong> <s>s</s> <code>a &lt; b</code></p>"},
            Case{"```c\n\nif (a < b)\n\n```", "<pre><code>\nif (a &lt; b)\n</code></pre>"},
            Case{
                "| a | b |\n|:-:|---|\n| 1 | 2 |",
                "<table><thead><tr><th style=\"text-align: center\">a</th><th>b</th></tr></thead>"
                "<tbody><tr><td style=\"text-align: center\">1</td><td>2</td></tr></tbody></table>"},
            Case{"a &amp; b & c &hellip;", "<p>a &amp; b &amp; c &hellip;</p>"},
            Case{
                "www.example.org, <a@b.c>",
                "<p><a href=\"http://www.example.org\">www.example.org</a>, "
                "<a href=\"mailto:a@b.c\">a@b.c</a></p>"},
            Case{
                R"([x](/u?a=1&b "T \"q\""))",
                R"(<p><a href="/u?a=1&amp;b" title="T &quot;q&quot;">x</a></p>)"},
            Case{
                "![a *b* `c`\nd](p.png \"T\")",
                R"(<p><img src="p.png" alt="a b c d" title="T"></p>)"},
            Case{"![](p.png)", R"(<p><img src="p.png"></p>)"},
            Case{
                "[[Some note]] and [[other#part|text]]",
                "<p><a href=\"tesserine-wiki:Some note\">Some note</a> and "
                "<a href=\"tesserine-wiki:other#part\">text</a></p>"},
            Case{
                "![[a \"b\".png|300]]",
                R"(<p><a href="tesserine-embed:a &quot;b&quot;.png">a "b".png</a></p>)"},
        }) {
        SCOPED_TRACE(markdown);
        EXPECT_EQ(markdownToHTML(markdown).html, html);
    }
}

TEST(MarkdownHTML, ListItemsBeginWithTheirTextAndTaskItemsAreChecklists) {
    for (
        const auto& [markdown, html] : {
            Case{"- a\n- b", "<ul><li>a</li><li>b</li></ul>"},
            Case{"- a\n\n- b\n\n  c", "<ul><li>a</li><li>b<p>c</p></li></ul>"},  // loose
            Case{
                "3. a\n4. b\n   - c",
                "<ol start=\"3\"><li>a</li><li>b<ul><li>c</li></ul></li></ol>"},
            Case{"- > q", "<ul><li><blockquote><p>q</p></blockquote></li></ul>"},
            Case{
                "- [ ] a\n- [x] b\n- [X] c",
                "<ul class=\"ts-checklist\"><li data-checked=\"false\">a</li>"
                "<li data-checked=\"true\">b</li><li data-checked=\"true\">c</li></ul>"},
            // Both kinds in one list.
            Case{
                "- a\n- [ ] b\n- c",
                "<ul><li>a</li></ul><ul class=\"ts-checklist\"><li data-checked=\"false\">b</li></ul>"
                "<ul><li>c</li></ul>"},
            Case{
                "1. a\n2. [ ] b\n3. c",
                "<ol><li>a</li></ol><ul class=\"ts-checklist\"><li data-checked=\"false\">b</li></ul>"
                "<ol start=\"3\"><li>c</li></ol>"},
            Case{
                "- [ ] a\n  - b\n  - [x] c",
                "<ul class=\"ts-checklist\"><li data-checked=\"false\">a<ul><li>b</li></ul>"
                "<ul class=\"ts-checklist\"><li data-checked=\"true\">c</li></ul></li></ul>"},
        }) {
        SCOPED_TRACE(markdown);
        EXPECT_EQ(markdownToHTML(markdown).html, html);
    }
}

TEST(MarkdownHTML, PairsOfEqualsSignsMark) {
    for (const auto& [markdown, html] : {
             Case{"==a== b ==c d==.", "<p><mark>a</mark> b <mark>c d</mark>.</p>"},
             Case{"==a *b* c==", "<p><mark>a <em>b</em> c</mark></p>"},
             Case{"*==a==*", "<p><em><mark>a</mark></em></p>"},
             Case{"日==本==語", "<p>日<mark>本</mark>語</p>"},
             // None of these is a pair.
             Case{"if a == b or c == d", "<p>if a == b or c == d</p>"},
             Case{"a==b and c==d", "<p>a==b and c==d</p>"},
             Case{"==a *b== c*", "<p>==a <em>b== c</em></p>"},
             Case{"==a\n\nb==", "<p>==a</p><p>b==</p>"},
             Case{"===a===, \\==b==", "<p>===a===, ==b==</p>"},
             Case{"`==a==`", "<p><code>==a==</code></p>"},
         }) {
        SCOPED_TRACE(markdown);
        EXPECT_EQ(markdownToHTML(markdown).html, html);
    }
}

TEST(MarkdownHTML, RawHTMLStaysButCannotSwallowWhatFollows) {
    for (const auto& [markdown, html] : {
             Case{"a <u>b</u> c", "<p>a <u>b</u> c</p>"},
             Case{"<div id=\"x\">\n*a*\n</div>\n\nb", "<div id=\"x\">\n*a*\n</div>\n<p>b</p>"},
             Case{"<script>\nx()\n</script>\n\nb", "<script>\nx()\n</script>\n<p>b</p>"},
             Case{"write <title> there", "<p>write &lt;title> there</p>"},
             Case{"see <title>a</title> b", "<p>see <title>a</title> b</p>"},
             Case{"<div title=\"a\n\nb > c", "&lt;div title=\"a\n<p>b &gt; c</p>"},
             Case{"<div><!-- a\n\nb", "<div>&lt;!-- a\n<p>b</p>"},
             Case{"<iframe src=x>\n\nb", "&lt;iframe src=x>\n<p>b</p>"},
         }) {
        SCOPED_TRACE(markdown);
        EXPECT_EQ(markdownToHTML(markdown).html, html);
        EXPECT_TRUE(markdownToHTML(markdown).hasReferences);
    }
}

TEST(MarkdownHTML, PlainTextKeepsItsLinesAndAngleBrackets) {
    const MarkdownReading plain{.isPlainText = true};
    EXPECT_EQ(
        markdownToHTML("#include <stdio.h>\nline\n\n<b>x</b>", plain).html,
        "<p>#include &lt;stdio.h&gt;<br>line</p><p>&lt;b&gt;x&lt;/b&gt;</p>");
}

TEST(MarkdownHTML, FirstTopHeadingIsFoundAndCanBeTakenOut) {
    for (const auto& [markdown, heading] : {
             Case{"intro\n\n# A *b*\n\n# C", "A <em>b</em>"},
             Case{"Title\n=====\ntext", "Title"},
             Case{"#\n\n# Second", "Second"},
             Case{"> # quoted\n\n- # item\n\n# top", "top"},
         }) {
        SCOPED_TRACE(markdown);
        EXPECT_EQ(markdownToHTML(markdown).heading(), heading);
    }
    EXPECT_FALSE(markdownToHTML("## only\n\n```\n# code\n```").hasHeading());

    MarkdownHTML taken = markdownToHTML("a\n\n# T\n\nb");
    taken.removeHeading();
    EXPECT_EQ(taken.html, "<p>a</p><p>b</p>");
}

TEST(MarkdownHTML, TagWordsAreCollectedOnlyWhenAskedFor) {
    const char* text =
        "#one text #two/three, (#vier-5) #éß\n\nno: a#b \\#c `#d` #123 ##e http://x.org/#f "
        "[#g](x) &#35;";
    EXPECT_THAT(
        markdownToHTML(text, {.recognisesTags = true}).tags,
        testing::ElementsAre("one", "two/three", "vier-5", "éß"));
    EXPECT_THAT(markdownToHTML(text).tags, testing::IsEmpty());
}

std::string repeated(std::string_view part, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i) {
        result += part;
    }
    return result;
}

// Each of these took minutes, or all memory, somewhere.
TEST(MarkdownHTML, HostileTextsEndSoon) {
    constexpr std::size_t many = 50'000;
    for (const std::string& text : {
             repeated("[", many),
             repeated("![[", many),
             repeated("*a_ ", many),
             repeated("<", many),
             repeated("<a \"", many),
             repeated("`x``", many),
             repeated("==a", many),
             repeated("==a==", many),
             repeated("<title>", many),
             repeated("- ", many),
             repeated(">", many),
             repeated("| ", many) + "\n" + repeated("|-", many),
             repeated("&", many),
             repeated("http://a.b ", many),
             repeated("www.a.b\n", many),
         }) {
        SCOPED_TRACE(text.substr(0, 8));
        EXPECT_LT(markdownToHTML(text).html.size(), 40 * text.size());
    }
    // A reference that is used often makes more HTML than a note may hold.
    const std::string reference = "[a]: <x" + repeated("y", 100'000) + ">\n\n";
    EXPECT_THROW(markdownToHTML(reference + repeated("[a]", 10'000)), BodyError);
}

}  // namespace
}  // namespace tesserine
