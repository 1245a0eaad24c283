#include "core/export/MarkdownRenderer.h"

#include <gtest/gtest.h>

#include <string>

namespace tesserine {
namespace {

struct Case {
    const char* html;
    const char* markdown;
};

TEST(MarkdownRenderer, WritesBlocksInTheirMarkdownForm) {
    for (const auto& [html, markdown] : {
             Case{"<h1>a</h1><p>b</p><hr><p>c<br>d</p>", "# a\n\nb\n\n---\n\nc\\\nd\n"},
             Case{"<p></p><div><p>a</p><div>b</div></div>c", "a\n\nb\n\nc\n"},
             Case{
                 "<ul><li>a</li><li>b<ul><li>c</li></ul></li><li></li></ul>",
                 "- a\n- b\n    - c\n-\n"},
             Case{"<ol start=\"3\"><li>a<p>b</p></li><li>c</li></ol>", "3. a\n\n    b\n4. c\n"},
             // Two lists stay two.
             Case{"<ul><li>a</li></ul><ul><li>b</li></ul>", "- a\n\n* b\n"},
             Case{
                 "<ul class=\"ts-checklist\"><li data-checked=\"true\">a</li>"
                 "<li data-checked=\"false\"><pre>b</pre></li></ul>",
                 "- [x] a\n- [ ]\n    ```\n    b\n    ```\n"},
             // As far in as the number is wide.
             Case{"<ol start=\"1000\"><li>a<p>b</p></li></ol>", "1000. a\n\n      b\n"},
             Case{
                 "<blockquote><p>a</p><ul><li>b</li></ul></blockquote><blockquote></blockquote>",
                 "> a\n>\n> - b\n\n>\n"},
             Case{"<pre><code>a\n\n```b```\n</code></pre>", "````\na\n\n```b```\n\n````\n"},
             Case{
                 "<table><tr><th style=\"text-align: right\">a</th><th>b|c</th></tr>"
                 "<tr><td></td><td>1<br><code>d|e</code></td></tr></table>",
                 "| a | b\\|c |\n| --: | --- |\n| | 1<br><code>d\\|e</code> |\n"},
             Case{"", ""},
         }) {
        SCOPED_TRACE(html);
        EXPECT_EQ(markdownOf(html), markdown);
    }
}

TEST(MarkdownRenderer, LeavesHTMLWhereMarkdownHasNoForm) {
    for (const std::string html : {
             "<dl><dt>a</dt><dd>b</dd></dl>",
             "<div class=\"ts-encrypted\" data-ts-cipher=\"QUJD\">🔒 Encrypted text</div>",
             "<table><tr><td colspan=\"2\">a</td></tr></table>",
             "<table><tr><td>a</td><td>b</td></tr><tr><td>c</td></tr></table>",
             "<table><tr><td><ul><li>a</li></ul></td></tr></table>",
             "<ol start=\"-1\"><li>a</li></ol>",
             "<u>a</u> <mark>b</mark> <span style=\"color: #ff0000\">c</span>",
             "<span class=\"ts-unsupported\">Image</span>",
         }) {
        EXPECT_EQ(markdownOf(html), html + "\n");
    }
    // A line that is empty would end it.
    EXPECT_EQ(
        markdownOf("<dl><dd><pre>a\n\nb</pre></dd></dl>"),
        "<dl><dd><pre>a&#10;&#10;b</pre></dd></dl>\n");
}

TEST(MarkdownRenderer, MarksTextOnlyWhereAMarkIsRead) {
    for (const auto& [html, markdown] : {
             Case{"<strong>a</strong> <em>b</em> <s>c</s>", "**a** *b* ~~c~~\n"},
             Case{"a<strong> b </strong>c", "a **b** c\n"},  // not inside of the spaces
             Case{"<em> <strong> a</strong></em>", "_**a**_\n"},
             Case{"a<strong> </strong>b<em></em>", "a b\n"},
             Case{"<strong><em>a</em></strong>", "**_a_**\n"},
             Case{"<em>a</em><em>b</em>", "*a*_b_\n"},
             Case{"<s><em>a</em></s>", "~~*a*~~\n"},
             Case{"<em>a</em><em>b</em>c", "*a*<em>b</em>c\n"},  // "_" does nothing in a word
             Case{"in<strong>wo</strong>rd", "in**wo**rd\n"},
             Case{"<strong>a:</strong>b", "<strong>a:</strong>b\n"},
             Case{"日<strong>「本」</strong>語", "日<strong>「本」</strong>語\n"},
             Case{"<strong>a<br></strong>b", "<strong>a\\\n</strong>b\n"},
             Case{"a<br><br>", "a<br><br>\n"},
             Case{"<code>a`b</code> <code>`c`</code>", "``a`b`` `` `c` ``\n"},
             Case{"<code>a<em>b</em></code>", "<code>a*b*</code>\n"},
         }) {
        SCOPED_TRACE(html);
        EXPECT_EQ(markdownOf(html), markdown);
    }
}

TEST(MarkdownRenderer, EscapesTextThatLooksLikeMarkup) {
    for (const auto& [html, markdown] : {
             Case{"a*b_c`d[e]\\&lt;f>", "a\\*b\\_c\\`d\\[e\\]\\\\\\<f>\n"},
             Case{"# a - b + c 1. d > e", "\\# a - b + c 1. d > e\n"},
             Case{"<p>#a</p><p>#######</p><p>-a</p><p>1.5</p>", "#a\n\n#######\n\n-a\n\n1.5\n"},
             Case{"<p>+ a</p><p>-</p><p>---</p><p>12) a</p>", "\\+ a\n\n\\-\n\n\\---\n\n12\\) a\n"},
             Case{"a<br>&gt; b<br>==<br>- c", "a\\\n\\> b\\\n\\==\\\n\\- c\n"},
             Case{"&amp;amp; &amp;#10; &amp; &amp;x", "\\&amp; \\&#10; & &x\n"},
             Case{"a&nbsp;b", "a&nbsp;b\n"},
             Case{"~5 a", "~5 a\n"},
             Case{"~5~ a", "\\~5\\~ a\n"},
             Case{"==a== b == c", "\\==a== b == c\n"},
             Case{"a!<a href=\"x\">b</a>!", "a\\![b](x)!\n"},
             Case{"http://a www.a", "http://a www.a\n"},
             // No link in a link.
             Case{"<a href=\"x\">http://a www.a a@b</a>", "[http\\://a www\\.a a\\@b](x)\n"},
             Case{"<h2>a #</h2>", "## a \\#\n"},
         }) {
        SCOPED_TRACE(html);
        EXPECT_EQ(markdownOf(html), markdown);
    }
}

TEST(MarkdownRenderer, WritesLinksPicturesAndFiles) {
    for (const auto& [html, markdown] : {
             Case{
                 "<a href=\"https://e.org/?a=1&amp;b=2\">https://e.org/?a=1&amp;b=2</a>",
                 "<https://e.org/?a=1&b=2>\n"},
             Case{"<a href=\"https://e.org\">e[]<em>f</em></a>", "[e\\[\\]*f*](https://e.org)\n"},
             Case{"<a href=\"https://e.org/a (b)\">c</a>", "[c](<https://e.org/a (b)>)\n"},
             Case{
                 R"(<a href="https://e.org/\&amp;lt;" title='a "b"'>c</a>)",
                 "[c](https://e.org/\\\\\\&lt; \"a \\\"b\\\"\")\n"},
             Case{"<a>b</a>", "<a>b</a>\n"},
             Case{R"(<img src="a.png" alt="b [c]" width="10">)", "![b \\[c\\]](a.png)\n"},
         }) {
        SCOPED_TRACE(html);
        EXPECT_EQ(markdownOf(html), markdown);
    }
    const MarkdownOptions options{.headingShift = 1, .addressOf = [](std::string_view address) {
                                      return "files/"
                                             + std::string(address.substr(address.find("//") + 2));
                                  }};
    EXPECT_EQ(
        markdownOf(
            "<h1>a</h1><h6>b</h6><img src=\"tesserine-attachment://C\">"
            "<div data-ts-attachment=\"D\" data-ts-kind=\"pdf\">e.pdf</div>"
            "<dl><dd><a href=\"tesserine://note/F\">g</a></dd></dl>",
            options),
        "## a\n\n###### b\n\n![](files/C)\n\n[e.pdf](files/D)\n\n"
        "<dl><dd><a href=\"files/note/F\">g</a></dd></dl>\n");
}

TEST(MarkdownRenderer, LeavesOutAddressesThatLeadNowhere) {
    EXPECT_EQ(
        markdownOf(
            "<a href=\"tesserine://note/A\" lang=\"en\">b</a> <img src=\"c\" alt=\"d\">"
            "<div data-ts-attachment=\"E\">f.pdf</div>",
            {.addressOf = [](std::string_view) { return std::string(); }}),
        "b <span class=\"ts-unsupported\">d</span>\n\nf.pdf\n");
}

TEST(MarkdownRenderer, AsksTheReaderWhatWouldBeLost) {
    std::string asked;
    const MarkdownOptions options{.readBack = [&](const std::string& markdown) {
        asked += markdown + "|";
        return markdown == "a" ? "<p>a</p>" : "";
    }};
    // The second paragraph comes back as something else; an address is hidden from the reader.
    EXPECT_EQ(
        markdownOf("<p>a</p><p style=\"text-align: left\">http://b</p>", options),
        "a\n\n<p style=\"text-align: left\">http://b</p>\n");
    EXPECT_EQ(asked, "a|http\\://b|");

    // Spaces stay where they are.
    EXPECT_EQ(
        markdownOf(
            "<p> a<strong>b </strong>c </p>",
            {.readBack = [](const std::string&) { return "<p> a<strong>b </strong>c </p>"; }}),
        "&#32;a<strong>b </strong>c&#32;\n");
}

TEST(MarkdownRenderer, TakesLargeBodiesInItsStride) {
    const auto repeated = [](std::string_view text, std::size_t count) {
        std::string output;
        for (std::size_t i = 0; i < count; ++i) {
            output += text;
        }
        return output;
    };
    for (const std::string& html :
         {repeated("<br>", 20'000),
          repeated("<em></em>", 20'000),
          repeated("<em> a </em>", 20'000),
          "<strong>" + repeated("<em></em>", 20'000) + "</strong>",
          "<p>" + std::string(200'000, '`') + "</p>",
          "<pre>" + repeated("\n", 200'000) + "</pre>",
          "<ul>" + repeated("<li>a<p>b</p></li>", 20'000) + "</ul>",
          repeated("<blockquote>", 60) + repeated("a<br>", 2'000)}) {
        SCOPED_TRACE(html.substr(0, 40));
        EXPECT_LT(markdownOf(html).size(), 10 * html.size() + 1'000'000);
    }
}

}  // namespace
}  // namespace tesserine
