#include "core/body/HTMLTokenizer.h"

#include <gtest/gtest.h>

#include <string>

namespace tesserine {
namespace {

/// The tokens of `html` as a person reads them: text in quotation marks, tags with their attributes
/// in brackets.
std::string tokens(std::string html) {
    normalizeNewlines(html);
    HTMLTokenizer tokenizer(html);
    HTMLToken token;
    std::string lines;
    while (tokenizer.next(token)) {
        if (!lines.empty()) lines += ' ';
        const std::string text(token.text);
        switch (token.kind) {
        case HTMLToken::Kind::text: lines += '"' + text + '"'; break;
        case HTMLToken::Kind::comment: lines += '{' + text + '}'; break;
        case HTMLToken::Kind::doctype: lines += "{doctype" + text + '}'; break;
        case HTMLToken::Kind::endTag: lines += '/' + text; break;
        case HTMLToken::Kind::startTag:
            lines += text;
            for (const HTMLAttribute& attribute : token.attributes) {
                lines.append("[").append(attribute.name).append("=");
                lines.append(attribute.value).append("]");
            }
            if (token.isSelfClosing) lines += '/';
            if (html::has(token.element, html::isRawText)) tokenizer.readRawText(token.element);
            break;
        }
    }
    return lines;
}

TEST(HTMLTokenizer, CutsSourceIntoTokens) {
    struct Case {
        const char* html;
        const char* tokens;
    };
    for (const auto& [html, expected] : {
             Case{"a<B>c</B >d", R"("a" b "c" /b "d")"},
             Case{"<p\tCLASS = 'x' b=\"y z\" c=d e>", "p[class=x][b=y z][c=d][e=]"},
             Case{"<a x=1 X=2 y=&quot;>", "a[x=1][y=\"]"},  // the first of two counts
             Case{"<a =x=y>", "a[=x=y]"},
             Case{"<a href=/x/>", "a[href=/x/]"},  // the solidus belongs to the value
             Case{"<br/><br / ><a/b>", "br/ br a[b=]"},
             Case{"<a b='1'c=\"2\">", "a[b=1][c=2]"},
             Case{"<a b=\"\n\">", "a[b=\n]"},
             Case{"</p class=x/>", "/p"},
             // What looks like markup and is text.
             Case{"1 < 2, a<<b, <3", "\"1 < 2, a<\""},  // "<b, <3" is a tag that never ends
             Case{"<", "\"<\""},
             Case{"</", "\"</\""},
             Case{"a &lt;b&gt; <=>", "\"a <b> <=>\""},
             // Comments and what is taken for one.
             Case{"<!--a--b--->c", "{a--b-} \"c\""},
             Case{"<!-->a<!--->b", R"({} "a" {} "b")"},
             Case{"<!--a--!>b", "{a} \"b\""},
             Case{"<!--a-- >b", "{a-- >b}"},
             Case{"<!DOCTYPE html><!x><?y?></ z>", "{doctype html} {x} {?y?} { z}"},
             Case{"<![CDATA[a>b]]>", "{[CDATA[a} \"b]]>\""},
             Case{"a</>b", R"("a" "b")"},
             // Raw text.
             Case{"<script>a<b&amp;</SCRIPT >c", R"(script "a<b&amp;" /script "c")"},
             Case{"<style></styles></style/>", "style \"</styles>\" /style"},
             Case{"<title>a&amp;<b></title>", "title \"a&<b>\" /title"},
             Case{"<textarea></textarea>", "textarea /textarea"},
             Case{"<plaintext>a</plaintext>", "plaintext \"a</plaintext>\""},
             Case{"<xmp>a</xmp", "xmp \"a</xmp\""},
             // The source breaks off: the tag is dropped, the rest stays.
             Case{"a<b c='d", "\"a\""},
             Case{"a<b", "\"a\""},
             Case{"a<b c=", "\"a\""},
             Case{"a<!--b", "\"a\" {b}"},
             Case{"a\r\nb\rc\r\r\nd", "\"a\nb\nc\n\nd\""},
             Case{"", ""},
         }) {
        SCOPED_TRACE(html);
        EXPECT_EQ(tokens(html), expected);
    }
    EXPECT_EQ(tokens(std::string("a\0<\0b>", 6)), "\"a\" b");
}

TEST(HTMLTokenizer, KeepsTheFirst64Attributes) {
    std::string html = "<a";
    for (int i = 0; i < 50'000; ++i) {
        html += " a" + std::to_string(i) + "=x";
    }
    html += ">";
    HTMLTokenizer tokenizer(html);
    HTMLToken token;
    ASSERT_TRUE(tokenizer.next(token));
    ASSERT_EQ(token.attributes.size(), 64U);
    EXPECT_EQ(token.attributes.back().name, "a63");
}

}  // namespace
}  // namespace tesserine
