#include "core/body/HTMLTreeBuilder.h"

#include "core/body/HTMLNode.h"
#include "core/body/HTMLSerializer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace tesserine {
namespace {

/// The tree of `html`, written out.
std::string tree(const std::string& html) {
    return HTMLSerializer::serialize(HTMLDocument::parse(html).root());
}

struct Case {
    const char* html;
    const char* tree;
};

TEST(HTMLTreeBuilder, ClosesWhatTheNextTagCannotStandIn) {
    for (
        const auto& [html, expected] : {
            Case{"<p>a<p>b", "<p>a</p><p>b</p>"},
            Case{"<p>a<div>b</div>c</p>", "<p>a</p><div>b</div>c<p></p>"},
            Case{"<p>a<span>b<ul>", "<p>a<span>b</span></p><ul></ul>"},
            Case{"<p><table><td><p>a<p>b", "<p></p><table><td><p>a</p><p>b</p></td></table>"},
            Case{"<p>a<b>b</b>c", "<p>a<b>b</b>c</p>"},
            Case{
                "<ul><li>a<li>b<ul><li>c</ul>d",
                "<ul><li>a</li><li>b<ul><li>c</li></ul>d</li></ul>"},
            Case{"<li>a<div><li>b", "<li>a<div></div></li><li>b</li>"},
            Case{"<dl><dt>a<dd>b<dt>c", "<dl><dt>a</dt><dd>b</dd><dt>c</dt></dl>"},
            Case{
                "<table><tr><td>a<th>b<tr><td>c",
                "<table><tr><td>a</td><th>b</th></tr><tr><td>c</td></tr></table>"},
            Case{
                "<table><thead><tr><td>a<tbody><tr><td>b",
                "<table><thead><tr><td>a</td></tr></thead><tbody><tr><td>b</td></tr></tbody></table>"},
            Case{
                "<table><caption>a<colgroup><col><tr><td>b</table>c",
                "<table><caption>a</caption><colgroup><col></colgroup>"
                "<tr><td>b</td></tr></table>c"},
            Case{
                "<table><td><table><td>a</table>b",
                "<table><td><table><td>a</td></table>b</td></table>"},
            Case{"<h1>a<h2>b</h1>c", "<h1>a</h1><h2>b</h2>c"},
            Case{
                "<select><option>a<option>b<optgroup><option>c",
                "<select><option>a</option><option>b</option>"
                "<optgroup><option>c</option></optgroup></select>"},
            Case{"<a>a<a>b", "<a>a</a><a>b</a>"},
            Case{"<head><title>a</title><body>b", "<head><title>a</title></head><body>b</body>"},
        }) {
        SCOPED_TRACE(html);
        EXPECT_EQ(tree(html), expected);
    }
}

TEST(HTMLTreeBuilder, MatchesEndTags) {
    for (const auto& [html, expected] : {
             Case{"a</b>c</div>", "ac"},
             Case{"a</p>b</br>c</hr>", "a<p></p>b<br>c"},
             Case{"<div><p>a</div>b", "<div><p>a</p></div>b"},
             Case{"<div><table><td>a</div>b</table>c", "<div><table><td>ab</td></table>c</div>"},
             Case{"<ul><li>a<ul></li></ul>b", "<ul><li>a<ul></ul>b</li></ul>"},
             Case{"<x-y>a<z>b</x-y>c", "<x-y>a<z>b</z></x-y>c"},
             Case{"<html><body>a</body></html>b", "<html><body>a</body></html>b"},
             Case{"<en-note><div>a</en-note>", "<en-note><div>a</div></en-note>"},
         }) {
        SCOPED_TRACE(html);
        EXPECT_EQ(tree(html), expected);
    }
}

TEST(HTMLTreeBuilder, LetsMisnestedFormattingGoOn) {
    for (
        const auto& [html, expected] : {
            Case{"<b><i>x</b>y</i>z", "<b><i>x</i></b><i>y</i>z"},
            Case{"<p><b>x<p>y</b>z", "<p><b>x</b></p><p><b>y</b>z</p>"},
            Case{"<p><b>x</p>\n<p>y</p>", "<p><b>x</b></p>\n<p><b>y</b></p>"},
            Case{
                "<p><a href=x><div>y</div></a>z",
                R"(<p><a href="x"></a></p><div><a href="x">y</a></div>z)"},
            Case{"<ul><li><b>x</li><li>y</ul>", "<ul><li><b>x</b></li><li><b>y</b></li></ul>"},
            Case{"<b><i><u></b></i>x", "<b><i><u></u></i></b><u>x</u>"},
            Case{"<b><div>x</b>y", "<b><div>x</div></b>y"},  // blocks are not reopened
            // It neither leaves a cell nor enters one.
            Case{"<td><b>x<td>y", "<td><b>x</b></td><td>y</td>"},
            Case{
                "<p><b>x<table><td>y</table>z", "<p><b>x</b></p><table><td>y</td></table><b>z</b>"},
            Case{"<form><b>x</form>y", "<form><b>x</b></form>y"},
            // The eight innermost.
            Case{
                "<p><a><b><i><u><s><tt><em><big><sub><sup>x</p>y",
                "<p><a><b><i><u><s><tt><em><big><sub><sup>x</sup></sub></big></em></tt></s></u></i>"
                "</b></a></p><i><u><s><tt><em><big><sub><sup>y</sup></sub></big></em></tt></s></u></i>"},
        }) {
        SCOPED_TRACE(html);
        EXPECT_EQ(tree(html), expected);
    }
}

TEST(HTMLTreeBuilder, KnowsVoidRawAndForeignElements) {
    for (const auto& [html, expected] : {
             Case{"<br>a<img src=x>b<wbr>", "<br>a<img src=\"x\">b<wbr>"},
             Case{"<div/>a", "<div>a</div>"},  // HTML ignores the solidus
             Case{"<en-media/>a<o:p/>b", "<en-media></en-media>a<o:p></o:p>b"},
             Case{
                 "<svg/>a<svg><g/><style/>b</svg>c",
                 "<svg></svg>a<svg><g></g><style></style>b</svg>c"},
             Case{"<script>a<b></script>c", "<script>a&lt;b&gt;</script>c"},
             Case{
                 "<pre>\n\na</pre><textarea>\nb</textarea>",
                 "<pre>\n\na</pre><textarea>b</textarea>"},
             Case{"<pre><b>\na", "<pre><b>\na</b></pre>"},
             Case{
                 "<table> <tr>\n<td> a </td> </tr> b </table>",
                 "<table><tr><td> a </td></tr> b </table>"},
             Case{"<tr>a<!-- --> <!-- -->b", "<tr>a b</tr>"},
         }) {
        SCOPED_TRACE(html);
        EXPECT_EQ(tree(html), expected);
    }
}

std::string manyTimes(std::string_view text, int count) {
    std::string output;
    for (int i = 0; i < count; ++i) {
        output += text;
    }
    return output;
}

struct DepthMeter {
    void enter(const HTMLNode& /*node*/) { deepest = std::max(deepest, ++depth); }
    void leave(const HTMLNode& /*node*/) { --depth; }

    int depth = -1;
    int deepest = 0;
};

TEST(HTMLTreeBuilder, BoundsTheDepth) {
    const std::string deep = manyTimes("<div>", 100'000) + "x<br><script>y</script>z";
    const HTMLDocument document = HTMLDocument::parse(deep);
    DepthMeter meter;
    walk(document.root(), meter);
    EXPECT_EQ(meter.deepest, 514);  // 512 and a script with its text
    // What is never text stays apart from the text below the limit as well.
    const std::string below =
        manyTimes("<div>", 512) + "<svg><svg><b>a</b></svg>b</svg>c<script>d</script><p>e";
    EXPECT_EQ(
        tree(below),
        manyTimes("<div>", 512) + "<svg>ab</svg>c<script>d</script>e" + manyTimes("</div>", 512));
}

}  // namespace
}  // namespace tesserine
