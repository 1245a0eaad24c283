#include "core/body/Sanitizer.h"

#include "core/body/BodyError.h"
#include "core/body/CanonicalBody.h"
#include "core/body/Limits.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace tesserine {
namespace {

std::string written(const SanitizationReport::Counts& counts) {
    std::string text;
    for (const auto& [name, count] : counts) {
        text.append(text.empty() ? "" : " ").append(name).append(":").append(std::to_string(count));
    }
    return text;
}

std::string repeated(std::string_view text, std::size_t count) {
    std::string output;
    for (std::size_t i = 0; i < count; ++i) {
        output += text;
    }
    return output;
}

struct SanitizerCase {
    const char* html;
    const char* stored;
};

TEST(Sanitizer, DropsRenamesKeepsAndUnwrapsElements) {
    struct ElementCase {
        const char* html;
        const char* stored;
        const char* dropped;
        const char* unwrapped;
    };
    for (const auto& [html, stored, dropped, unwrapped] : {
             ElementCase{"<b>x</b><I>y</I>", "<strong>x</strong><em>y</em>", "", ""},
             ElementCase{"<script>alert(1)</script>text", "text", "script:1", ""},
             ElementCase{"<article><p>x</p></article>", "<div><p>x</p></div>", "", ""},
             ElementCase{"<center>x</center><blink>y</blink>", "xy", "", "blink:1 center:1"},
             ElementCase{"<form><p>x</p></form>y", "y", "form:1", ""},
             // Only the outermost counts, and under the name it was given.
             ElementCase{"<svg><script>x</script><b>y</b></svg>", "", "svg:1", ""},
             ElementCase{"<head><title>x</title></head><body>y", "<div>y</div>", "head:1", ""},
             ElementCase{"<textarea><b>x</b></textarea>", "", "textarea:1", ""},
             ElementCase{"<center><form>x</form></center>", "", "form:1", "center:1"},
             ElementCase{"<input>a<input>b", "ab", "input:2", ""},
             // What an element without a rule held may not stand where it stood.
             ElementCase{"<a>x<y-z><a>y</a></y-z></a>", "<a>x</a><a>y</a>", "", "y-z:1"},
             ElementCase{"<p>x<nav>y</nav>", "<p>x</p><div>y</div>", "", ""},
             ElementCase{"<!DOCTYPE html><!-- x --><?xml y?>z", "z", "", ""},
         }) {
        SCOPED_TRACE(html);
        const CanonicalBody body = canonicalBody(html);
        EXPECT_EQ(body.html, stored);
        EXPECT_EQ(written(body.report.droppedElements), dropped);
        EXPECT_EQ(written(body.report.unwrappedElements), unwrapped);
    }
}

TEST(Sanitizer, LeavesTheElementsOfATreeWhereTheyAre) {
    HTMLDocument document;
    HTMLNode& paragraph = document.appendElement(document.root(), "P");
    HTMLNode& section = document.appendElement(paragraph, "section");
    document.appendText(document.appendElement(section, "p"), "x");
    document.appendComment(section, "y");
    document.appendText(document.appendElement(paragraph, "script"), "z");
    EXPECT_EQ(sanitize(document.root()).html, "<p><div><p>x</p></div></p>");
}

TEST(Sanitizer, RemovesWhatRunsOrCallsHome) {
    for (const auto& [html, stored] : {
             SanitizerCase{"<ScRiPt>x</sCrIpT>a<script src=x/>b", "a"},  // never closed
             SanitizerCase{"<svg><script>x</script></svg><math><mi>y</math>a", "a"},
             SanitizerCase{
                 "<img src=x onerror=alert(1)>", "<span class=\"ts-unsupported\">Image</span>"},
             SanitizerCase{"<p onclick=a onmouseover=b ONFOCUS=c id=d name=e>x</p>", "<p>x</p>"},
             SanitizerCase{"<a href=x formaction=y ping=z target=_blank>x</a>", "<a>x</a>"},
             SanitizerCase{"<style>@import url(x)</style><link rel=stylesheet href=x>a", "a"},
             SanitizerCase{"<base href=//e.org><meta http-equiv=refresh content=0>a", "a"},
             SanitizerCase{
                 "<img srcset='http://e.org/a 2x'>", "<span class=\"ts-unsupported\">Image</span>"},
             SanitizerCase{"<p style='background:url(http://e.org)'>x</p>", "<p>x</p>"},
             SanitizerCase{
                 "<div style='position:fixed;text-align:center'>x</div>",
                 "<div style=\"text-align: center\">x</div>"},
             // Read in another way by somebody else.
             SanitizerCase{
                 "<!--><img src=x onerror=y>-->",
                 "<span class=\"ts-unsupported\">Image</span>--&gt;"},
             SanitizerCase{"<![CDATA[<b>x]]>", "x]]&gt;"},
             SanitizerCase{"a<1 b=\"<p>\">", "a&lt;1 b=\"<p>\"&gt;</p>"},
             SanitizerCase{"<noscript><p title=\"</noscript><img src=x onerror=y>\">", ""},
             SanitizerCase{"<xmp><p title=\"</xmp><script>x</script>\">", "&lt;p title=\"\"&gt;"},
             SanitizerCase{"<plaintext><script>x</script>", "&lt;script&gt;x&lt;/script&gt;"},
             SanitizerCase{
                 "<table><style><!--</style><td title='--><img src=x>'>x",
                 "<table><td>x</td></table>"},
             SanitizerCase{"<template><p>x</p></template><select><p>y</select>z", "z"},
             SanitizerCase{
                 "<a title='\"><script>x</script>'>y</a>",
                 "<a title=\"&quot;>&lt;script>x&lt;/script>\">y</a>"},
         }) {
        SCOPED_TRACE(html);
        EXPECT_EQ(canonicalBody(html).html, stored);
    }
}

TEST(Sanitizer, KeepsAddressesThatOpenPagesMailAndNotes) {
    const auto linked = [](const std::string& address) {
        const std::string html = canonicalBody("<a href=\"" + address + "\">x</a>").html;
        constexpr std::string_view before = "<a href=\"";
        if (html == "<a>x</a>") return std::string();
        return html.substr(before.size(), html.rfind("\">") - before.size());
    };
    for (const auto& [address, stored] : {
             SanitizerCase{"https://e.org/?a=1&b=2", "https://e.org/?a=1&amp;b=2"},
             SanitizerCase{" HTTP://E.org/A ", "http://E.org/A"},
             SanitizerCase{
                 "h\tt\ntp&#58;//e.org", "http://e.org"},  // what browsers do not see goes
             SanitizerCase{"mailto:a@e.org", "mailto:a@e.org"},
             SanitizerCase{"tel:+1", "tel:+1"},
             SanitizerCase{
                 "Tesserine://Note/0a1b2c3d-0000-4000-8000-00000000000f",
                 "tesserine://note/0A1B2C3D-0000-4000-8000-00000000000F"},
             SanitizerCase{"tesserine://note/0a1b2c3d", ""},
             SanitizerCase{"tesserine://auth?code=1", ""},
             SanitizerCase{"javascript:x", ""},
             SanitizerCase{"JaVa\tScRiPt&colon;x", ""},
             SanitizerCase{"&#1;java&#10;script:x", ""},
             SanitizerCase{"java&#0;script:x", ""},
             SanitizerCase{"\xC2\xA0javascript:x", ""},
             SanitizerCase{"vbscript:x", ""},
             SanitizerCase{"data:text/html,x", ""},
             SanitizerCase{"file:///etc/passwd", ""},
             SanitizerCase{R"(\\host\share)", ""},
             SanitizerCase{"smb://host", ""},
             SanitizerCase{"ms-msdt:x", ""},
             SanitizerCase{"//e.org", ""},
             SanitizerCase{"page.html", ""},
             SanitizerCase{"https:", ""},
             SanitizerCase{"", ""},
         }) {
        SCOPED_TRACE(address);
        EXPECT_EQ(linked(address), stored);
    }
}

TEST(Sanitizer, KeepsTheImagesThatTheOptionsAllow) {
    constexpr std::string_view html =
        "<img src='HTTP://e.org/a.png' alt=A><img src='data:image/PNG;base64,QU JD'>"
        "<img src='tesserine-attachment://0a1b2c3d-0000-4000-8000-00000000000f' width=010 height=0>"
        "<img src='data:image/svg+xml;base64,QUJD' alt=B><img src='data:image/png,ABC'>"
        "<img src='tesserine-attachment://x' alt=' '>";
    constexpr std::string_view attachment =
        R"(<img src="tesserine-attachment://0A1B2C3D-0000-4000-8000-00000000000F" width="10">)";
    const auto placeholder = [](const std::string& text) {
        return "<span class=\"ts-unsupported\">" + text + "</span>";
    };
    const std::string refused = placeholder("B") + placeholder("Image") + placeholder("Image");

    const CanonicalBody all = canonicalBody(html);
    EXPECT_EQ(
        all.html,
        std::string("<img src=\"http://e.org/a.png\" alt=\"A\">")
            + "<img src=\"data:image/png;base64,QUJD\">" + std::string(attachment) + refused);
    EXPECT_EQ(all.report.unsupportedPlaceholders, 3U);
    EXPECT_EQ(written(all.report.droppedAttributes), "height:1 src:3");

    const CanonicalBody none =
        canonicalBody(html, {.allowRemoteImages = false, .allowDataURIImages = false});
    EXPECT_EQ(
        none.html, placeholder("A") + placeholder("Image") + std::string(attachment) + refused);
    // Listed whether kept or not.
    EXPECT_EQ(none.report.externalImageURLs, std::vector<std::string>{"http://e.org/a.png"});
    EXPECT_EQ(all.report.externalImageURLs, none.report.externalImageURLs);
}

TEST(Sanitizer, KeepsTheAttributesThatBelongToAnElement) {
    for (const auto& [html, stored] : {
             SanitizerCase{
                 "<p class='x ts-checklist ts-unsupported ts-checklist y'>",
                 "<p class=\"ts-checklist ts-unsupported\"></p>"},
             SanitizerCase{
                 "<li data-checked=true><li data-checked=TRUE><li data-checked>",
                 "<li data-checked=\"true\"></li><li data-checked=\"false\"></li>"
                 "<li data-checked=\"false\"></li>"},
             SanitizerCase{"<p data-checked=true start=2 colspan=2 href=https://e.org>", "<p></p>"},
             SanitizerCase{
                 "<ol type=a start=-3><ol type=x start=1.5>",
                 R"(<ol start="-3" type="a"><ol></ol></ol>)"},
             SanitizerCase{
                 "<td colspan=1000 rowspan=1><td colspan=1001 rowspan=0>",
                 R"(<td colspan="1000" rowspan="1"></td><td></td>)"},
             SanitizerCase{
                 "<p dir=RTL lang=' en-GB '><p dir=x lang='e n'>",
                 R"(<p dir="rtl" lang="en-GB"></p><p></p>)"},
             // Colours in one form, the last one that can be read.
             SanitizerCase{
                 "<mark style='color:RED;color:x;background-color: rgb(0 50% 255 / 1)'>x</mark>",
                 "<mark style=\"color: #ff0000; background-color: #0080ff\">x</mark>"},
             SanitizerCase{
                 "<font color=red style='color:#AbC !important'>x</font>",
                 "<span style=\"color: #aabbcc\">x</span>"},
             SanitizerCase{
                 "<span style='color:rgba(0,0,0,.5);background-color:expression(x)'>x</span>",
                 "<span>x</span>"},
             SanitizerCase{
                 "<p style='color:red'>x</p><span style='text-align:left'>y</span>",
                 "<p>x</p><span>y</span>"},
             // An attachment has an identifier or is none.
             SanitizerCase{
                 "<span data-ts-attachment=0a1b2c3d-0000-4000-8000-00000000000f data-ts-kind=pdf>",
                 "<span data-ts-attachment=\"0A1B2C3D-0000-4000-8000-00000000000F\" "
                 "data-ts-kind=\"pdf\"></span>"},
             SanitizerCase{"<div data-ts-attachment=../x data-ts-kind=pdf>", "<div></div>"},
             SanitizerCase{
                 "<div data-ts-attachment=0a1b2c3d-0000-4000-8000-00000000000f data-ts-kind=exe>",
                 "<div data-ts-attachment=\"0A1B2C3D-0000-4000-8000-00000000000F\"></div>"},
         }) {
        SCOPED_TRACE(html);
        EXPECT_EQ(canonicalBody(html).html, stored);
    }
}

TEST(Sanitizer, LocksAPassageOrTakesItForText) {
    for (const auto& [html, stored] : {
             // Whatever else it holds is not the passage.
             SanitizerCase{
                 "<div style='text-align:left' data-ts-cipher=AXr/+w== class='x ts-encrypted'>"
                 "<p>forged</p></div>a",
                 "<div class=\"ts-encrypted\" data-ts-cipher=\"AXr/+w==\">🔒 Encrypted text</div>a"},
             // What is no blob of today may be one of tomorrow.
             SanitizerCase{
                 "<div class=ts-encrypted data-ts-cipher='\"><b>x</b>'>a</div>",
                 "<div class=\"ts-encrypted\" data-ts-cipher=\"&quot;>&lt;b>x&lt;/b>\">"
                 "🔒 Encrypted text</div>"},
             SanitizerCase{"<div class=ts-encrypted>a</div>", "<div>a</div>"},
             SanitizerCase{"<div data-ts-cipher=QUJD>a</div>", "<div>a</div>"},
             SanitizerCase{
                 "<p class='ts-encrypted ts-checklist' data-ts-cipher=QUJD>a</p>",
                 "<p class=\"ts-checklist\">a</p>"},
         }) {
        SCOPED_TRACE(html);
        EXPECT_EQ(canonicalBody(html).html, stored);
    }
}

TEST(Sanitizer, KeepsTextToTheLetterOnlyWherePreformatted) {
    for (const auto& [html, stored] : {
             SanitizerCase{" <p> a \t\n b </p>\n\n<p>c</p> ", "<p> a b </p><p>c</p>"},
             SanitizerCase{"<b>a </b> <i> b</i> <br> c", "<strong>a </strong> <em> b</em> <br> c"},
             SanitizerCase{
                 "<pre>  a\n\tb <b> c\n</b></pre>", "<pre>  a\n\tb <strong> c\n</strong></pre>"},
             SanitizerCase{"<p>a <kbd> b  c </kbd></p>", "<p>a <code> b  c </code></p>"},
             SanitizerCase{"<ul>\n<li>a\n</li>\n</ul>", "<ul><li>a </li></ul>"},
             SanitizerCase{"a&nbsp; &nbsp;b", "a&nbsp; &nbsp;b"},
             SanitizerCase{"a&#1;b\x1F\x7F&#0;", "ab\x7F\uFFFD"},
         }) {
        SCOPED_TRACE(html);
        EXPECT_EQ(canonicalBody(html).html, stored);
    }
}

TEST(Sanitizer, BelowTheDeepestLevelOnlyTextStays) {
    const CanonicalBody body = canonicalBody(repeated("<div>", 64) + "a<p>b</p><b>c</b><br>d");
    EXPECT_EQ(body.html, repeated("<div>", 64) + "a bc d" + repeated("</div>", 64));
    EXPECT_EQ(written(body.report.unwrappedElements), "b:1 br:1 p:1");
    // Elements that are unwrapped stand on a level as well.
    EXPECT_EQ(
        canonicalBody("<x><y><b>a<i>b</i></b>", {.maximumDepth = 3}).html, "<strong>ab</strong>");
    // What must go goes at any depth.
    EXPECT_EQ(canonicalBody(repeated("<div>", 600) + "a<script>b</script>").plainText, "a");
}

TEST(Sanitizer, TakesHostileBodiesInItsStride) {
    const std::string big(2'000'000, 'x');
    EXPECT_EQ(canonicalBody("<p title='" + big + "'>a</p>").html, "<p>a</p>");
    EXPECT_EQ(canonicalBody(repeated("<div>", 100'000) + "a").plainText, "a");
    EXPECT_EQ(canonicalBody(repeated("<b><p>", 100'000) + "a").plainText, "a");
    EXPECT_EQ(canonicalBody(repeated("<", 300'000)).plainText.size(), 300'000U);
    EXPECT_EQ(
        canonicalBody(repeated("<a href=https://e.org/>x", 50'000)).plainText.size(), 50'000U);
    EXPECT_EQ(canonicalBody(repeated("<b>x</i>", 100'000)).plainText.size(), 100'000U);
    EXPECT_EQ(canonicalBody(repeated("<!--", 200'000)).html, "");
    // A long start tag is not multiplied by being reopened.
    const std::string link = "<a href='https://e.org/" + std::string(100'000, 'x') + "'>";
    EXPECT_LT(canonicalBody("<p>" + link + repeated("a<p>", 10'000)).html.size(), 2'500'000U);
    EXPECT_EQ(canonicalBody("a\xFF\xC3<p>\xED\xA0\x80").plainText, "a��\n���");
}

TEST(Sanitizer, RefusesABodyThatIsTooLarge) {
    const std::string tags = "<p></p>";
    const std::string largest(limits::canonicalBodyBytes - tags.size(), 'x');
    EXPECT_EQ(canonicalBody("<p>" + largest).html.size(), limits::canonicalBodyBytes);
    EXPECT_THROW(canonicalBody("<p>" + largest + "x"), BodyError);
    EXPECT_FALSE(isCanonical("<p>" + largest + "x</p>"));
    // The stored form counts, not what it is made of.
    EXPECT_EQ(
        canonicalBody("<p>" + largest + "<x-unknown>").html.size(), limits::canonicalBodyBytes);
}

}  // namespace
}  // namespace tesserine
