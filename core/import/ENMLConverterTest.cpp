#include "core/import/ENMLConverter.h"

#include "core/body/CanonicalBody.h"
#include "core/import/ENMLDocument.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tesserine {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string picture =
    "<img src=\"tesserine-attachment://0A1B2C3D-0000-4000-8000-00000000000F\">";

/// Knows one picture, one note and one group of tasks.
class KnownReferences final : public ENMLReferences {
public:
    std::optional<std::string> file(std::string_view md5) override {
        if (md5 != "f00d") return std::nullopt;
        return picture;
    }
    std::optional<std::string> noteAddress(std::string_view linkText) override {
        if (linkText != "The plan") return std::nullopt;
        return "tesserine://note/0A1B2C3D-0000-4000-8000-00000000000F";
    }
    std::string taskGroup(std::string_view id) override {
        return "<p>tasks of " + std::string(id) + "</p>";
    }
};

struct Result {
    std::string html;
    std::vector<std::string> warnings;
};

Result converted(const std::string& enml, bool keepsRemoteImages = false) {
    KnownReferences references;
    Result result;
    const HTMLDocument document = parsedENML("<en-note>" + enml + "</en-note>");
    result.html =
        canonicalBody(htmlFromENML(document, references, keepsRemoteImages, result.warnings)).html;
    return result;
}

TEST(ENMLConverter, EveryConstructBecomesWhatABodyHolds) {
    struct Case {
        const char* what;
        const char* enml;
        std::string html;
    };
    const std::string checklist = "<ul class=\"ts-checklist\">";
    const std::string done = "<li data-checked=\"true\">";
    const std::string open = "<li data-checked=\"false\">";
    for (
        const auto& [what, enml, html] : {
            Case{
                "plain text",
                "<div>a</div><div><br/></div><div>b</div>",
                "<div>a</div><div><br></div><div>b</div>"},
            Case{
                "empty elements",
                "<div/>a<span/>b<a/>c<br clear=\"none\"/>d",
                "<div></div>ab<a></a>c<br>d"},
            Case{
                "references of HTML",
                "<div>a&nbsp;b &eacute; &amp;amp; &lt;i&gt;</div>",
                "<div>a&nbsp;b é &amp;amp; &lt;i&gt;</div>"},
            Case{
                "styles",
                "<span style=\"font-weight: bold; font-style:italic\">a</span>"
                "<span style=\"text-decoration: underline line-through\">b</span>"
                "<span style=\"font-weight: 400\">c</span>",
                "<strong><em>a</em></strong><u><s>b</s></u>c"},
            Case{
                "colours",
                "<span style=\"color: rgb(255, 0, 0)\">a</span><font color=\"#00F\">b</font>"
                "<span style=\"color: rgb(0,0,0); background-color: white\">c</span>",
                "<span style=\"color: #ff0000\">a</span><span style=\"color: #0000ff\">b</span>c"},
            Case{
                "highlights of both ages",
                "<span style=\"background-color: rgb(255, 250, 165);-evernote-highlight:true;\">a"
                "</span><span style=\"--en-highlight:yellow;background-color: #ffef9e;\">b</span>",
                "<mark style=\"background-color: #fffaa5\">a</mark>"
                "<mark style=\"background-color: #ffef9e\">b</mark>"},
            Case{
                "check boxes in blocks are one list",
                "<div><en-todo checked=\"true\"/>Milk</div>\n<div><span><en-todo/></span>Bread</div>"
                "<div>text</div><p><en-todo checked=\"false\"/>Tea</p>",
                checklist + done + "Milk</li>" + open + "Bread</li></ul><div>text</div>" + checklist
                    + open + "Tea</li></ul>"},
            Case{
                "check boxes between line breaks",
                "<en-todo/>Milk <b>now</b><br/><en-todo checked=\"true\"/>Bread<br/>text",
                checklist + open + "Milk <strong>now</strong></li>" + done + "Bread</li></ul>text"},
            Case{
                "several check boxes in a block",
                "<div><en-todo/>a<br/><en-todo checked=\"true\"/>b</div>",
                checklist + open + "a</li>" + done + "b</li></ul>"},
            Case{
                "check boxes in items",
                "<ul><li><div>plain</div></li><li><div><en-todo/>a</div></li></ul>",
                "<ul><li>plain</li></ul>" + checklist + open + "a</li></ul>"},
            Case{
                "a check box in a cell",
                "<table><tr><td><en-todo/>a</td><td><div><en-todo/>b</div></td></tr></table>",
                "<table><tr><td>" + checklist + open + "a</li></ul></td><td>" + checklist + open
                    + "b</li></ul></td></tr></table>"},
            Case{
                "checklists of newer notes",
                "<ul style=\"--en-todo:true;\"><li style=\"--en-checked:true;\"><div>a</div></li>"
                "<li style=\"--en-checked:false;\"><div>b</div></li></ul>",
                checklist + done + "a</li>" + open + "b</li></ul>"},
            Case{
                "code",
                "<div style=\"-en-codeblock:true; box-sizing: border-box\"><div>if (a &lt; b) {</div>"
                "<div><br/></div>\n<div>    <b>go</b>();</div><div>}</div></div>",
                "<pre>if (a &lt; b) {\n\n    go();\n}</pre>"},
            Case{
                "lists and cells without wrappers",
                "<ol start=\"3\"><li><div>a</div></li><li><div>b</div><div>c</div></li></ol>"
                "<table><tr><td><div>x</div></td><td><p style=\"text-align:right\">y</p></td></tr>"
                "</table>",
                "<ol start=\"3\"><li>a</li><li><div>b</div><div>c</div></li></ol><table><tr><td>x</td>"
                "<td><p style=\"text-align: right\">y</p></td></tr></table>"},
            Case{
                "nested lists",
                "<ul><li><div>a</div><ul><li><div>b</div></li></ul></li></ul>",
                "<ul><li>a<ul><li>b</li></ul></li></ul>"},
            Case{
                "files",
                "<div><en-media hash=\" F00D\" type=\"image/png\"/></div>",
                "<div>" + picture + "</div>"},
            Case{
                "tasks", "<div style=\"--en-task-group:true; --en-id:G1\"/>", "<p>tasks of g1</p>"},
            Case{
                "links",
                "<a href=\"evernote:///view/1/s1/x/x/\" style=\"color:#69aa35\">The <b>plan</b></a>"
                " <a href=\"https://example.org/?a=1&amp;b=2\">web</a>",
                "<a href=\"tesserine://note/0A1B2C3D-0000-4000-8000-00000000000F\">The "
                "<strong>plan</strong></a> <a href=\"https://example.org/?a=1&amp;b=2\">web</a>"},
            Case{
                "what only we may say",
                "<div class=\"ts-encrypted\" data-ts-cipher=\"x\">a</div><div data-ts-attachment="
                "\"0A1B2C3D-0000-4000-8000-00000000000F\">b</div><img src=\"tesserine-attachment://"
                "0A1B2C3D-0000-4000-8000-00000000000F\" alt=\"c\"/>",
                "<div>a</div><div>b</div><span class=\"ts-unsupported\">c</span>"},
        }) {
        SCOPED_TRACE(what);
        const Result result = converted(enml);
        EXPECT_EQ(result.html, html);
        EXPECT_THAT(result.warnings, IsEmpty());
    }
}

TEST(ENMLConverter, WhatIsLostIsSaid) {
    const Result result =
        converted("<en-crypt hint=\"h\" cipher=\"AES\">c2VjcmV0</en-crypt><en-media hash=\"beef\"/>"
                  "<a href=\"evernote:///view/1\">One</a><a href=\"EVERNOTE:///view/2\">Two</a>");
    const std::string lost = "<div class=\"ts-unsupported\">";
    EXPECT_EQ(
        result.html,
        lost + "Encrypted in Evernote</div>" + lost + "Missing attachment</div>OneTwo");
    EXPECT_THAT(
        result.warnings,
        ElementsAre(
            "A file that the text shows is not in the export.",
            "An encrypted part could not be taken over; it is kept in the original source.",
            "2 links to notes that are not clearly some of this import became text."));
}

TEST(ENMLConverter, RemotePicturesAreLinksUnlessTheyAreWanted) {
    const std::string enml = R"(<img src="https://example.org/a.png" alt="A"/>)";
    EXPECT_EQ(converted(enml).html, R"(<a href="https://example.org/a.png">A</a>)");
    EXPECT_EQ(converted(enml, true).html, R"(<img src="https://example.org/a.png" alt="A">)");
}

TEST(ENMLConverter, HostileTextsAreBoundedAndKeepTheirWords) {
    const auto repeated = [](const std::string& text, std::size_t count) {
        std::string result;
        for (std::size_t i = 0; i < count; ++i) {
            result += text;
        }
        return result;
    };
    struct Case {
        const char* what;
        std::string enml;
    };
    for (const auto& [what, enml] : {
             Case{"deep blocks", repeated("<div>", 200'000) + "word"},
             Case{"deep spans", repeated("<span style=\"color:red\">", 20'000) + "word"},
             Case{"deep lists", repeated("<ul><li>", 20'000) + "word"},
             Case{
                 "many boxes in a line", "<span>" + repeated("<en-todo/>", 20'000) + "word</span>"},
             Case{
                 "many boxes in a block",
                 "<div>" + repeated("<en-todo/><br/>", 20'000) + "word</div>"},
             Case{"many blocks in an item", "<li>" + repeated("<div></div>", 20'000) + "word</li>"},
             Case{"open tags", repeated("<a b='", 20'000) + "'>word"},
             Case{"entities", "<!DOCTYPE x [<!ENTITY a \"aaaa\">]>&a;&a; word"},
         }) {
        SCOPED_TRACE(what);
        const Result result = converted(enml);
        EXPECT_THAT(result.html, HasSubstr("word"));
        EXPECT_LT(result.html.size(), 6'000'000U);
    }
    EXPECT_THAT(
        converted(repeated("<div>", 100) + "word").warnings,
        ElementsAre("A part was nested too deep; its text was kept."));
}

}  // namespace
}  // namespace tesserine
