#include "app/editor/ForeignHTML.h"

#include "app/editor/ForeignLists.h"
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

constexpr const char* listsOfParagraphs =
    R"(<html xmlns:o="urn:schemas-microsoft-com:office:office"><head><title>Plan</title>
<!--[if gte mso 9]><xml><w:WordDocument></w:WordDocument></xml><![endif]-->
<style><!-- @list l0:level1 {mso-level-number-format:bullet;} p.MsoNormal {margin:0cm} --></style>
</head><body lang=EN-GB><!--StartFragment-->
<p class=MsoNormal><b>To do</b><o:p></o:p></p>
<p class=MsoListParagraphCxSpFirst style='text-indent:-18.0pt;mso-list:l0 level1 lfo1'>)"
    R"(<![if !supportLists]><span style='font-family:Symbol'><span style='mso-list:Ignore'>·)"
    R"(<span style='font:7.0pt "Times New Roman"'>&nbsp;&nbsp;&nbsp; </span></span></span>)"
    R"(<![endif]>Sow <i>tomatoes</i><o:p></o:p></p>

<p class=MsoListParagraphCxSpMiddle style='margin-left:72.0pt;mso-list:l0 level2 lfo1'>)"
    R"(<!--[if !supportLists]--><b><span style='mso-list:Ignore'>o<span>&nbsp; </span></span></b>)"
    R"(<!--[endif]-->two each</p>
<p class=MsoListParagraphCxSpLast style='mso-list:l0 level1 lfo1'><![if !supportLists]>)"
    R"(<span style='mso-list:Ignore'>·</span><![endif]>Water</p>
<p class=MsoNormal>Then:<o:p></o:p></p>
<p class=MsoListParagraph style='mso-list:l1 level1 lfo2'><span style='mso-list:Ignore'>3.)"
    R"(</span>Wait</p>
<p class=MsoListParagraph style='mso-list:l1 level1 lfo2'><span style='mso-list:Ignore'>4.)"
    R"(</span>Eat<br></p>
<p class=MsoNormal><![if !vml]><img width=20 height=20 src="file:///C:/Temp/image001.png">)"
    R"(<![endif]>The end.</p><!--EndFragment--></body></html>)";

constexpr const char* officeSheet =
    R"(<html xmlns:x="urn:schemas-microsoft-com:office:excel"><head><style><!--table
	{mso-displayed-decimal-separator:"\.";} .xl65 {font-weight:700;} --></style></head><body>
<table border=0 cellpadding=0 cellspacing=0 width=128 style='border-collapse:collapse'>
<!--StartFragment--> <col width=64 span=2 style='width:48pt'>
 <tr height=20 style='height:15.0pt'>
  <td height=20 class=xl65 width=64 style='height:15.0pt;width:48pt'>Seeds</td>
  <td align=right width=64>3.5</td>
 </tr><!--EndFragment--></table></body></html>)";

constexpr const char* oneCell =
    R"(<html><body><table border=0><!--StartFragment--><col width=64><tr height=20>
<td height=20 align=right>42.50</td></tr><!--EndFragment--></table></body></html>)";

constexpr const char* webMail =
    R"(<div dir="ltr">Hello Ann,<div><br></div><div>see <a href="https://example.org/x">this</a>.)"
    R"(</div><div class="gmail_signature"><div dir="ltr">-- <br>Bob</div></div></div><br>)"
    R"(<div class="gmail_quote"><div dir="ltr" class="gmail_attr">On Mon, Ann wrote:<br></div>)"
    R"(<blockquote class="gmail_quote" style="margin:0px 0px 0px 0.8ex;border-left:1px solid )"
    R"(rgb(204,204,204);padding-left:1ex"><div dir="ltr">When?<div>And where?</div></div>)"
    R"(<blockquote type="cite">Soon</blockquote></blockquote></div>)"
    R"(<img src="https://mail.example.org/open.gif" width="1" height="1" style="display:none">)";

constexpr const char* newsletter =
    R"(<div style="display:none;max-height:0">What you read in the list of mails</div>
<table role="presentation" width="100%" bgcolor="#eeeeee"><tbody><tr><td align="center">
<table width="600"><tr><td><h1 style="color:#336">News</h1></td></tr>
<tr><td><table role="none"><tr><td><p>Left</p><p>still left</p></td><td>Right</td></tr></table></td></tr>
<tr><td><table><tr><th>Item</th><th>Price</th></tr><tr><td>Seeds</td><td>3.50</td></tr></table></td></tr>
</table></td></tr></tbody></table>)";

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
                 "a word processor whose lists are paragraphs",
                 listsOfParagraphs,
                 "<p><strong>To do</strong></p><ul><li>Sow <em>tomatoes</em><ul><li>two each</li>"
                 "</ul></li><li>Water</li></ul><p>Then:</p>"
                 "<ol start=\"3\"><li>Wait</li><li>Eat</li></ol><p>The end.</p>",
                 "Left out: pictures of the other program."},
             Case{
                 "the sheet of an office suite",
                 officeSheet,
                 "<table><tr><td>Seeds</td><td>3.5</td></tr></table>",
                 ""},
             Case{"one cell of a sheet", oneCell, "<p>42.50</p>", ""},
             Case{
                 "a mail on the web",
                 webMail,
                 "<p>Hello Ann,</p><p>see <a href=\"https://example.org/x\">this</a>.</p>"
                 "<p>-- <br>Bob</p><p>On Mon, Ann wrote:</p><blockquote><p>When?</p>"
                 "<p>And where?</p><p>Soon</p></blockquote>",
                 ""},
             Case{
                 "a newsletter",
                 newsletter,
                 "<h1>News</h1><p>Left</p><p>still left</p><p>Right</p>"
                 "<table><tr><th>Item</th><th>Price</th></tr>"
                 "<tr><td>Seeds</td><td>3.50</td></tr></table>",
                 ""},
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
                "<p style='font: 12px x; font-weight: 700'>a <b>b</b></p><p>c</p>",
                "<p><strong>a <b>b</b></strong></p><p>c</p>"},
            Case{
                "<p dir=rtl align=right>a</p>", "<p dir=\"rtl\" style=\"text-align: right\">a</p>"},
            // Marks stand around words only, in each paragraph by itself.
            Case{"<b><p>a</p> <p>b</p></b>", "<p><b>a</b></p> <p><b>b</b></p>"},
            Case{"<b><i></i> </b>a", " a"},
            Case{"<a href='x:y'><img src='x:z'></a>", "<a href=\"x:y\"><img src=\"x:z\"></a>"},
            // A quotation has paragraphs only.
            Case{
                "<blockquote>a<ul><li><p>b</p><li>c</ul><ol><li>d<li>e</ol></blockquote>f",
                "<blockquote><p>a</p><p>• b</p><p>• c</p><p>1. d</p><p>2. e</p></blockquote>f"},
            Case{
                "<blockquote><i>a<div>b</div></i><table><tr><td>1<td>2</table>c</blockquote>",
                "<blockquote><p><i>a</i></p><p><i>b</i></p></blockquote>"
                "<table><tr><td>1</td><td>2</td></tr></table><blockquote><p>c</p></blockquote>"},
            Case{"<blockquote><br><div> </div></blockquote>a", "a"},
            Case{"<span style='font-weight'>a</span><span style=':;:'>b</span>", "ab"},
        }) {
        EXPECT_EQ(paste::plainHTML(foreign).html, plain) << foreign;
    }
}

TEST(ForeignHTML, ReadsListsFromWhatStandsBeforeTheirItems) {
    struct Case {
        const char* label;
        paste::Numbering numbering;
    };
    for (const auto& [label, numbering] : {
             Case{"·  ", {}},
             Case{"o", {}},
             Case{"\u2013", {}},
             Case{"", {}},
             Case{"1.", {true, 1}},
             Case{" 12) ", {true, 12}},
             Case{"(3)", {true, 3}},
             Case{"1.2.", {true, 2}},
             Case{"a.", {true, {}}},
             Case{"iv)", {true, {}}},
             Case{"99999999999999999999.", {true, {}}},
         }) {
        EXPECT_EQ(paste::numberingOf(label), numbering) << label;
    }

    const auto item = [](const char* list, const char* label, const char* words) {
        return std::string("<p style='mso-list:") + list + "'><span style='mso-list:Ignore'>"
               + label + "</span>" + words + "</p>\n";
    };
    struct Lists {
        std::string foreign;
        const char* plain;
    };
    for (const auto& [foreign, plain] : {
             // A level that is skipped, and one that was never begun.
             Lists{
                 item("l0 level2 lfo1", "-", "a") + item("l0 level4 lfo1", "-", "b")
                     + item("l0 level1 lfo1", "-", "c"),
                 "<ul><li>a<ul><li>b</li></ul></li></ul><ul><li>c</li></ul>"},
             // Two lists one after another count each by itself.
             Lists{
                 item("l0 level1 lfo1", "1.", "a") + item("l1 level1 lfo2", "1.", "b"),
                 "<ol><li>a</li></ol><ol><li>b</li></ol>"},
             // They end with what holds them, and with anything in between.
             Lists{
                 "<div>" + item("l0 level1", "1.", "a") + "</div>" + item("l0 level1", "2.", "b"),
                 "<div><ol><li>a</li></ol></div><ol start=\"2\"><li>b</li></ol>"},
             Lists{
                 item("l0 level1", "-", "a") + "between" + item("l0 level1", "-", "b"),
                 "<ul><li>a</li></ul>\nbetween<ul><li>b</li></ul>"},
             // Not in a list at all.
             Lists{"<p style='mso-list:none'>a</p>", "<p>a</p>"},
             Lists{"<p style='mso-list:levels'>a</p>", "<p>a</p>"},
             Lists{"<span style='mso-list:Ignore'>a</span>", "a"},
             // Hidden, with what it holds; what follows finds its labels all the same.
             Lists{
                 "<div style='display: none'>" + item("l0 level1", "-", "a")
                     + "<table></table></div>" + item("l0 level1", "7.", "b"),
                 "<ol start=\"7\"><li>b</li></ol>"},
         }) {
        EXPECT_EQ(paste::plainHTML(foreign).html, plain) << foreign;
    }
}

}  // namespace
}  // namespace tesserine::app
