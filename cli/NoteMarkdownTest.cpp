#include "cli/NoteMarkdown.h"

#include "cli/BodyInput.h"
#include "core/body/CanonicalBody.h"

#include <gtest/gtest.h>

namespace tesserine::cli {
namespace {

TEST(NoteMarkdown, GivesTheBodyBackByteForByte) {
    for (
        const std::string html : {
            "<h1>a</h1><p><strong>b</strong> <em>c</em> <s>d</s> <code>e</code><br>f</p><hr>",
            "<p><strong><em>a</em></strong><em>b</em> <u>c</u><mark>d</mark> 1<sup>st</sup></p>",
            "<ul><li>a<ul><li>b</li></ul></li></ul><ul><li>c</li></ul><ol start=\"7\"><li>d</li></ol>",
            "<ul class=\"ts-checklist\"><li data-checked=\"true\">a</li>"
            "<li data-checked=\"false\">b<ul class=\"ts-checklist\">"
            "<li data-checked=\"false\"></li></ul></li></ul>",
            "<ul><li><pre><code>a\n\n  b\n</code></pre></li><li><blockquote><p>c</p></blockquote></li></ul>",
            "<ol start=\"99\"><li>a<p>b</p></li><li>c<p>d</p></li></ol>",
            "<table><thead><tr><th>a|b</th><th style=\"text-align: center\">c</th></tr></thead>"
            "<tbody><tr><td></td><td style=\"text-align: center\"><code>d|e</code></td></tr></tbody></table>",
            "<p>*a* _b_ `c` [d](e) &lt;f&gt; \\g &amp;amp; ~h~ ==i== ![[j]] http://k l@m.n www.o.p</p>",
            "<p># a</p><p>1. b</p><p>- c</p><p>+ d</p><p>&gt; e</p><p>---</p><p>f<br>---<br>=</p>",
            "<p><a href=\"https://e.org/?a=1&amp;b=(2)\" title=\"&quot;t&quot;\">[c]</a>"
            "<img src=\"tesserine-attachment://0A1B2C3D-0000-4000-8000-00000000000F\" width=\"9\"></p>",
            // Markdown has no form for these: they are HTML in it.
            "<p></p><div>a</div><p style=\"text-align: right\">b</p><pre>\tc\n\n</pre>",
            "<dl><dt>a</dt><dd><pre>b\n\nc</pre></dd></dl><table><tr><td colspan=\"2\">d</td></tr></table>",
            "<div class=\"ts-encrypted\" data-ts-cipher=\"QUJD\">🔒 Encrypted text</div>",
            "",
        }) {
        const NoteMarkdown markdown = markdownOfNote(html);
        EXPECT_EQ(canonicalBody(htmlFromMarkdown(markdown.text)).html, html) << markdown.text;
        EXPECT_TRUE(markdown.isLossless) << html;
    }
    // Text in no paragraph comes back in one.
    EXPECT_FALSE(markdownOfNote("a<p>b</p>").isLossless);
}

}  // namespace
}  // namespace tesserine::cli
