#include "app/editor/ForeignHTML.h"

#include "app/editor/PasteRules.h"
#include "core/body/AttributedTextWriter.h"
#include "core/body/CanonicalBody.h"

#include <gtest/gtest.h>

#include <string>

namespace tesserine::app {
namespace {

// What programs really put on the clipboard, cut down to one of each kind.

constexpr const char* browser =
    R"(<article style="color: rgb(34, 34, 34); font-family: Georgia; font-weight: 400;)"
    R"( white-space: normal;"><h1>Tomatoes</h1><p class="lead">Sow in <strong>March</strong>.)"
    R"( See <a href="/guide?id=3">the guide</a>.</p><h2 id="steps" style="color: rgb(0, 102, 68);">)"
    R"(Steps</h2><ol><li>Fill</li><li>Sow<ul><li>two each</li></ul></li></ol>)"
    R"(<div class="tip" style="background: rgb(238, 255, 238); padding: 8px;"><p>Tip: )"
    R"(<mark>from below</mark>.</p></div><pre><code class="language-sh" style="background: )"
    R"(rgb(238, 238, 238);">water
sleep</code></pre><img src="https://example.org/t.jpg" alt="A tomato" width="40" height="30">)"
    R"(<svg width="20"><circle cx="10" cy="10" r="8"></circle></svg><form><input name="mail">)"
    R"(<button>Subscribe</button></form><p>E=mc<sup>2</sup>, <del>old</del></p></article>)";

constexpr const char* wordProcessor =
    R"(<!DOCTYPE html><html><head><meta name="generator" content="Writer"/><style type="text/css">
p { line-height: 115% }</style></head><body lang="en-US" dir="ltr"><h1>Report</h1>
<p style="line-height: 100%">Some <b>bold</b>, <strike>struck</strike>, <font color="#c9211e">)"
    R"(<font size="4" style="font-size: 16pt">red</font></font>
and <span style="background: #ffff00">marked</span> words.</p>
<p align="center" style="line-height: 100%">In
the middle</p>
<p style="line-height: 100%"><br/>

</p>
<ul>
	<li><p style="line-height: 100%">First</p>
	<ul>
		<li><p style="line-height: 100%">Inner</p>
	</ul>
	<li><p style="line-height: 100%">Second</p>
</ul>
<p>A footnote<a class="sdfootnoteanc" href="#sdfootnote1sym"><sup>1</sup></a>
in it.</p>
<table width="100%" cellpadding="0"><col width="128*"/>
	<tr valign="top">
		<td style="border: none"><p>Item</p>
		</td>
		<td style="border: none"><p>3.50</p><p>each</p>
		</td>
	</tr>
</table></body></html>)";

constexpr const char* spreadsheet =
    R"(<table cellspacing="0" border="0"><colgroup width="88"></colgroup>
	<tr><td height="17" align="left">Seeds</td>
		<td align="right" sdval="3.5" sdnum="1033;">3.5</td></tr>
	<tr><td height="17" align="left">Sum</td>
		<td align="left"><br></td></tr>
</table>)";

constexpr const char* mail =
    R"(<body bgcolor="#FFFFFF" text="#000000"><p>Hello,</p><p><font face="Arial">see you at )"
    R"(<b>four</b>.<br></font></p><div class="moz-cite-prefix">Ann wrote:<br></div>)"
    R"(<blockquote type="cite" cite="mid:1@example.org"><pre class="moz-quote-pre" wrap="">When?
The <a href="mailto:ann@example.org">usual</a> way?
</pre></blockquote><p><br></p><img src="cid:part1@example.org" alt="logo">)"
    R"(<img src="https://tracker.example.org/p.gif" width="1" height="1"></body>)";

constexpr const char* document =
    R"(<meta charset='utf-8'><b style="font-weight:normal;" id="docs-internal-guid-1">)"
    R"(<h1 dir="ltr" style="line-height:1.38"><span style="font-size:20pt;color:#000000;)"
    R"(font-weight:700;">Plan</span></h1><p dir="ltr"><span style="font-weight:700;">Bold</span>)"
    R"(<span style="font-weight:400;"> and </span><span style="font-style:italic">slanted</span>)"
    R"(<span style="text-decoration:line-through;"> gone</span></p><ul><li dir="ltr" )"
    R"(aria-level="1"><p dir="ltr" role="presentation"><span>one</span></p></li></ul></b><br>)";

TEST(ForeignHTML, OfRealProgramsKeepsItsSenseAndLosesItsClutter) {
    struct Case {
        const char* from;
        const char* clip;
        const char* body;
        const char* leftOut;
    };
    for (const auto& [from, clip, body, leftOut] : {
             Case{
                 "a web page",
                 browser,
                 "<h1>Tomatoes</h1><p>Sow in <strong>March</strong>. See the guide.</p>"
                 "<h2>Steps</h2><ol><li>Fill</li><li>Sow<ul><li>two each</li></ul></li></ol>"
                 "<p>Tip: <mark>from below</mark>.</p><pre><code>water\nsleep</code></pre>"
                 "<p><img src=\"https://example.org/t.jpg\" alt=\"A tomato\" width=\"40\" "
                 "height=\"30\"></p><p>E=mc<sup>2</sup>, <s>old</s></p>",
                 "Left out: form fields and drawings. "
                 "1 picture stays on the web and is not loaded."},
             Case{
                 "a word processor",
                 wordProcessor,
                 "<h1>Report</h1><p>Some <strong>bold</strong>, <s>struck</s>, red and "
                 "<mark>marked</mark> words.</p><p style=\"text-align: center\">In the middle</p>"
                 "<ul><li>First<ul><li>Inner</li></ul></li><li>Second</li></ul>"
                 "<p>A footnote<sup>1</sup> in it.</p>"
                 "<table><tr><td>Item</td><td>3.50<br>each</td></tr></table>",
                 ""},
             Case{
                 "a spreadsheet",
                 spreadsheet,
                 "<table><tr><td>Seeds</td><td>3.5</td></tr><tr><td>Sum</td><td></td></tr></table>",
                 ""},
             Case{
                 "a mail",
                 mail,
                 "<p>Hello,</p><p>see you at <strong>four</strong>.</p><p>Ann wrote:</p>"
                 "<blockquote><p>When?<br>The <a href=\"mailto:ann@example.org\">usual</a> way?"
                 "</p></blockquote>",
                 "Left out: pictures of the other program."},
             Case{
                 "a document on the web",
                 document,
                 "<h1>Plan</h1><p><strong>Bold</strong> and <em>slanted</em><s> gone</s></p>"
                 "<ul><li>one</li></ul>",
                 ""},
         }) {
        SCOPED_TRACE(from);
        const paste::Pasted pasted = paste::fromHTML(clip);
        EXPECT_EQ(canonicalBody(canonicalHTML(pasted.text)).html, body);
        EXPECT_EQ(pasted.leftOut, leftOut);
    }
}

TEST(ForeignHTML, SaysInElementsWhatStylesMean) {
    struct Case {
        const char* foreign;
        const char* plain;
    };
    for (
        const auto& [foreign, plain] : {
            Case{"<span style='font-weight: 600'>a</span>", "<strong>a</strong>"},
            Case{"<span style='font-weight: 500'>a</span>", "a"},
            Case{"<b style='FONT-WEIGHT: Normal'>a</b>", "a"},
            Case{"<i style='font-style:normal'>a</i>", "a"},
            Case{
                "<span style='font-style: oblique; text-decoration: underline line-through'>a</span>",
                "<em><u><s>a</s></u></em>"},
            Case{
                "<u style='text-decoration:underline'>a</u>",
                "<u style=\"text-decoration:underline\">a</u>"},
            Case{"x<span style='vertical-align: super'>2</span>", "x<sup>2</sup>"},
            // The ground of a page is no mark, whichever way it is written.
            Case{"<span style='background-color: rgb(255, 255, 255)'>a</span>", "a"},
            Case{"<span style='background: #f5f5f0'>a</span>", "a"},
            Case{"<span style='background-color: rgb(255, 242, 0)'>a</span>", "<mark>a</mark>"},
            Case{"<span style='background: url(x.png)'>a</span>", "a"},
            Case{"<a href='#top'>a</a><a href='x:y'>b</a>", "a<a href=\"x:y\">b</a>"},
            Case{"<p>a<br><br></p><p>b<br>c</p>", "<p>a</p><p>b<br>c</p>"},
            Case{"<p style='text-align: justify'>a</p>", "<p>a</p>"},
            Case{
                "<p dir=rtl align=right>a</p>", "<p dir=\"rtl\" style=\"text-align: right\">a</p>"},
            Case{"<span style='font-weight'>a</span><span style=':;:'>b</span>", "ab"},
        }) {
        EXPECT_EQ(paste::plainHTML(foreign).html, plain) << foreign;
    }
}

}  // namespace
}  // namespace tesserine::app
