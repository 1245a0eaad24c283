#include "core/body/AttributedText.h"

#include "base/Text.h"
#include "core/body/AttributedTextReader.h"
#include "core/body/AttributedTextWriter.h"
#include "core/body/CanonicalBody.h"
#include "core/body/HTMLSerializer.h"
#include "core/body/RandomBodyFixture.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <string>
#include <string_view>

namespace tesserine {
namespace {

using Kind = BlockStyle::Kind;

constexpr std::array<std::string_view, 10> kindNames{
    "h", "code", "bullet", "number", "check", "preserved", "locked", "p", "quote", "rule"};

/// One line for each paragraph, as "bullet+1 [x] centred: text", with "¶" for a line break and "◆"
/// for an object.
std::string shown(const AttributedText& text) {
    std::string lines;
    std::size_t start = 0;
    for (const AttributedText::Paragraph& paragraph : text.paragraphs) {
        lines += kindNames[static_cast<std::size_t>(kindOf(paragraph))];
        if (kindOf(paragraph) == Kind::heading) lines += std::to_string(paragraph.style->level);
        if (paragraph.indent > 0) lines += "+" + std::to_string(paragraph.indent);
        if (paragraph.startNumber) lines += "#" + std::to_string(*paragraph.startNumber);
        if (paragraph.isChecked) lines += " [x]";
        if (paragraph.alignment == AttributedText::Alignment::center) lines += " centred";
        if (paragraph.beginsBlock) lines += " anew";
        std::u16string line = text.text.substr(start, paragraph.length - 1);
        std::ranges::replace(line, AttributedText::lineBreak, u'¶');
        std::ranges::replace(line, AttributedText::objectCharacter, u'◆');
        lines += ": " + text::fromUTF16(line) + "\n";
        start += paragraph.length;
    }
    return lines;
}

void expectKept(const std::string& body) { ASSERT_EQ(canonicalHTML(attributedText(body)), body); }

TEST(AttributedText, KeepsEveryCanonicalBodyToTheLetter) {
    test::BodyMaker maker(11);
    for (int i = 0; i < 3'000 && !testing::Test::HasFatalFailure(); ++i) {
        expectKept(canonicalBody(i % 3 == 0 ? maker.mutated(maker.soup()) : maker.soup()).html);
    }
    for (int i = 0; i < 2'000 && !testing::Test::HasFatalFailure(); ++i) {
        expectKept(canonicalBody(HTMLSerializer::serialize(maker.tree().root())).html);
    }
}

TEST(AttributedText, ShowsEveryBlockAsWhatItIs) {
    struct Case {
        const char* html;
        const char* paragraphs;
    };
    for (const auto& [html, paragraphs] : {
             Case{"", ""},
             Case{"<p>a</p><div>b</div><p></p>", "p: a\np: b\np: \n"},
             Case{R"(<p style="text-align: center" dir="rtl">a</p>)", "preserved: ◆\n"},
             Case{R"(<p dir="rtl" style="text-align: center">a</p>)", "p centred: a\n"},
             Case{"a<p>b</p>c<strong>d</strong>", "p: a\np: b\np: cd\n"},
             Case{"<h1>a</h1><h6>b</h6><hr>", "h1: a\nh6: b\nrule: \n"},
             Case{"<p>a<br>b<img src=\"http://e.org/x.png\"></p>", "p: a¶b◆\n"},
             // Lists nest by indent.
             Case{
                 "<ul><li>a<ol start=\"3\"><li>b</li><li>c</li></ol></li><li>d</li></ul>",
                 "bullet: a\nnumber+1#3: b\nnumber+1: c\nbullet: d\n"},
             Case{
                 "<ul class=\"ts-checklist\"><li data-checked=\"true\">a</li>"
                 "<li data-checked=\"false\"></li></ul>",
                 "check [x]: a\ncheck: \n"},
             Case{"<ul><li><p>a</p><ul><li>b</li></ul></li></ul>", "bullet: a\nbullet+1: b\n"},
             Case{"<ul><li><ul><li>b</li></ul></li></ul>", "bullet: \nbullet+1: b\n"},
             Case{"<ul><li>a</li></ul><ol><li>b</li></ol>", "bullet: a\nnumber anew: b\n"},
             Case{"<ul><li>a</li></ul><ul><li>b</li></ul>", "bullet: a\nbullet anew: b\n"},
             Case{
                 "<ul><li>a<ul><li>b</li></ul><ul><li>c</li></ul></li></ul>",
                 "bullet: a\nbullet+1: b\nbullet+1 anew: c\n"},
             // Lines of code; neighbours that are two blocks stay two.
             Case{"<pre>a\n  b\n</pre><pre>c</pre>", "code: a\ncode:   b\ncode: \ncode anew: c\n"},
             Case{
                 "<pre><code>\n\n<em>a\nb</em></code></pre>", "code: \ncode: \ncode: a\ncode: b\n"},
             Case{
                 "<blockquote>a<p>b</p></blockquote><blockquote><p>c</p></blockquote>",
                 "quote: a\nquote: b\nquote anew: c\n"},
             // Containers leave what is in them to be edited.
             Case{
                 "<div><div>a</div><div><ul><li>b</li></ul></div></div><ul><li>c</li></ul>",
                 "p: a\nbullet: b\nbullet: c\n"},
             Case{"<div><pre>a\nb</pre></div>", "code: a\ncode: b\n"},
             // What no editor changes.
             Case{
                 "<div class=\"ts-encrypted\" data-ts-cipher=\"QQ==\">🔒 Encrypted text</div>",
                 "locked: ◆\n"},
             Case{"<table><tr><td>a</td></tr></table>", "preserved: ◆\n"},
             Case{"<ul><li>a<p>b</p></li></ul><dl><dt>c</dt></dl>", "preserved: ◆\npreserved: ◆\n"},
             Case{
                 "<div data-ts-attachment=\"0A1B2C3D-0000-4000-8000-00000000000F\" "
                 "data-ts-kind=\"pdf\">a.pdf</div>",
                 "preserved: ◆\n"},
             // Characters that mean something else in the text.
             Case{"<p>\u2028<code>a\nb</code>\u2029\uFFFC</p>", "p: ◆a◆b◆◆\n"},
         }) {
        SCOPED_TRACE(html);
        const AttributedText text = attributedText(html);
        EXPECT_TRUE(!isCanonical(html) || canonicalHTML(text) == html);
        EXPECT_EQ(shown(text), paragraphs);
    }
}

/// The marks of each run, as "strong.em*(text)", with "*" for one that stands apart.
std::string shownRuns(const AttributedText& text) {
    std::string runs;
    for (const AttributedText::Run& run : text.runs) {
        for (const InlineMark& mark : run.style.marks) {
            runs += (runs.empty() || runs.back() == ')' ? "" : ".");
            runs += html::nameOf(mark.element);
            if (mark.isApart) runs += "*";
        }
        const std::string piece = text::fromUTF16(text.text.substr(run.start, run.length));
        runs += "(" + (run.style.object.empty() ? piece : run.style.object) + ")";
    }
    return runs;
}

TEST(AttributedText, KeepsHowElementsNestAndWhereTheyEnd) {
    struct Case {
        const char* html;
        const char* runs;
    };
    for (const auto& [html, runs] : {
             Case{"<p><strong><em>a</em>b</strong></p>", "strong.em(a)strong(b)"},
             Case{"<p><em><strong>a</strong></em></p>", "em.strong(a)"},
             Case{"<p><s>a</s><s>b</s><s>c</s></p>", "s(a)s*(b)s(c)"},
             Case{"<p><s>a</s> <s>b</s></p>", "s(a)s(b)"},
             Case{"<p><u>a</u><u><em>b</em></u></p>", "u(a)u*.em(b)"},
             Case{"<p><u></u>a<u><em></em></u></p>", "(<u></u>)u(<em></em>)"},
             Case{"<pre><u>a\nb</u></pre>", "u(a\nb)"},
             Case{
                 "<p>a<span class=\"ts-unsupported\">Image</span></p>",
                 "(<span class=\"ts-unsupported\">Image</span>)"},
         }) {
        SCOPED_TRACE(html);
        const AttributedText text = attributedText(html);
        EXPECT_EQ(canonicalHTML(text), html);
        EXPECT_EQ(shownRuns(text), runs);
    }

    const AttributedText text =
        attributedText("<p><a href=\"https://e.org/?a=1&amp;b=2\"><span style=\"color: #ff0000; "
                       "background-color: #00ff00\">a</span></a></p>");
    const InlineStyle& style = text.runs.at(0).style;
    EXPECT_EQ(style.link(), "https://e.org/?a=1&b=2");
    EXPECT_EQ(style.color(), "#ff0000");
    EXPECT_EQ(style.background(), "#00ff00");
    EXPECT_FALSE(style.has(HTMLElement::strong));
}

TEST(AttributedText, WritesWhatWasEdited) {
    using Paragraph = AttributedText::Paragraph;
    const auto written = [](std::u16string text, std::vector<Paragraph> paragraphs) {
        AttributedText edited;
        edited.text = std::move(text);
        edited.paragraphs = std::move(paragraphs);
        return canonicalHTML(edited);
    };
    const BlockStyle bullet{Kind::bullet};
    const BlockStyle code{Kind::codeBlock};
    EXPECT_EQ(written(u"a  b   c\n", {{.length = 9}}), "<p>a &nbsp;b &nbsp; c</p>");
    EXPECT_EQ(written(u"last", {{.length = 4}}), "<p>last</p>");
    // Nobody can stand two levels below the item before.
    EXPECT_EQ(
        written(
            u"a\nb\nc\n",
            {{.length = 2, .style = bullet, .indent = 1},
             {.length = 2, .style = bullet, .indent = 8},
             {.length = 2, .style = bullet}}),
        "<ul><li>a<ul><li>b</li></ul></li><li>c</li></ul>");
    EXPECT_EQ(written(u"a\n  b\n\n", {{2, code}, {4, code}, {1, code}}), "<pre>a\n  b\n</pre>");
    // Bare text that was split, and text put beside what is no text, are told apart.
    EXPECT_EQ(
        written(
            u"a\nb\n",
            {{.length = 2, .holder = AttributedText::Holder::none},
             {.length = 2, .holder = AttributedText::Holder::none}}),
        "a<p>b</p>");
    EXPECT_EQ(written(u"a\n", {{2, BlockStyle{Kind::divider}}}), "<hr><p>a</p>");

    AttributedText table = attributedText("<table><tr><td>a</td></tr></table>");
    table.text = u"x" + table.text.substr(0, 1) + u"y\n";
    table.paragraphs[0].length = 4;
    table.runs[0].start = 1;
    EXPECT_EQ(canonicalHTML(table), "<p>x</p><table><tr><td>a</td></tr></table><p>y</p>");
}

/// A text as an editor may leave it: paragraphs and marks of any kind in any order.
AttributedText randomText(test::SeededRandom& random) {
    constexpr std::array elements{
        HTMLElement::strong, HTMLElement::em, HTMLElement::code, HTMLElement::a, HTMLElement::span};
    const auto below = [&](std::uint64_t bound) { return static_cast<int>(random.below(bound)); };
    AttributedText text;
    text.containers = {{}, {.parent = 1}};
    for (int i = below(12); i >= 0; --i) {
        AttributedText::Paragraph paragraph{
            .style = BlockStyle{static_cast<Kind>(below(kindNames.size())), below(8)},
            .indent = below(10),
            .alignment = static_cast<AttributedText::Alignment>(below(5)),
            .holder = static_cast<AttributedText::Holder>(below(5)),
            .beginsBlock = below(3) == 0,
            .container = static_cast<std::uint32_t>(below(6) == 0 ? below(3) : 0)};
        const std::size_t start = text.text.size();
        for (int piece = below(4); piece > 0; --piece) {
            const std::size_t pieceStart = text.text.size();
            text.text += std::u16string_view(u"ab  c\u2028 d").substr(below(3));
            InlineStyle style;
            for (int mark = below(3); mark > 0; --mark) {
                style.marks.push_back({.element = elements[random.below(elements.size())]});
                if (style.marks.back().element != HTMLElement::a) continue;
                style.marks.back().attributes = {{"href", "https://example.org"}};
            }
            text.runs.push_back({pieceStart, text.text.size() - pieceStart, style});
        }
        text.text += u'\n';
        paragraph.length = text.text.size() - start;
        text.paragraphs.push_back(std::move(paragraph));
    }
    return text;
}

std::string lettersOf(std::string text) {
    std::erase_if(text, [](char c) { return c < 'a' || c > 'd'; });
    return text;
}

TEST(AttributedText, LosesNoTextWhateverItLooksLike) {
    test::SeededRandom random(12);
    for (int i = 0; i < 2'000; ++i) {
        const AttributedText text = randomText(random);
        const CanonicalBody body = canonicalBody(canonicalHTML(text));
        ASSERT_EQ(lettersOf(body.plainText), lettersOf(text::fromUTF16(text.text))) << body.html;
    }
}

TEST(AttributedText, IsReadAndWrittenInLinearTime) {
    const auto secondsFor = [](int count) {
        std::string source;
        for (int i = 0; i < count; ++i) {
            source += "<div><ul><li>a <strong>b</strong><strong>c</strong><ul><li>d</ul></ul>e";
        }
        const std::string body = canonicalBody(source).html;
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(canonicalHTML(attributedText(body)), body);
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    const double once = secondsFor(4'000);
    EXPECT_LT(secondsFor(16'000), 16 * once + 0.2);  // a square would be 16 times as much and more
}

}  // namespace
}  // namespace tesserine
