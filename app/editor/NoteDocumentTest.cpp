#include "app/editor/NoteDocument.h"

#include "app/editor/ListRules.h"
#include "bench/NoteGenerator.h"
#include "core/body/AttributedTextReader.h"
#include "core/body/AttributedTextWriter.h"
#include "core/body/CanonicalBody.h"
#include "core/body/HTMLSerializer.h"
#include "core/body/RandomBodyFixture.h"

#include <gtest/gtest.h>
#include <QTextBlock>
#include <QTextCursor>

#include <string>

namespace tesserine::app {
namespace {

void expectKept(NoteDocument& document, const std::string& body) {
    document.setContent(attributedText(body));
    ASSERT_EQ(document.html(), body);
    // Piece by piece as well, some at once at the end.
    document.beginContent(attributedText(body));
    for (int i = 0; i < 9; ++i) {
        document.addContent(7);
    }
    document.completeContent();
    ASSERT_EQ(document.html(), body);
}

TEST(NoteDocument, KeepsEveryCanonicalBodyToTheLetter) {
    NoteDocument document;
    test::BodyMaker maker(17);
    for (int i = 0; i < 400 && !testing::Test::HasFatalFailure(); ++i) {
        expectKept(
            document, canonicalBody(i % 3 == 0 ? maker.mutated(maker.soup()) : maker.soup()).html);
        expectKept(document, canonicalBody(maker.code()).html);
        expectKept(document, canonicalBody(HTMLSerializer::serialize(maker.tree().root())).html);
    }
    // Units by which the document would end a paragraph.
    expectKept(document, canonicalBody("<p>a\uFDD0b\uFDD1\u2029c&#13;d</p>").html);
    // Elements that reach over several lines of code.
    for (const char* body :
         {"<pre><code>a\n\nb</code> </pre>",
          "<pre>x <em>a\nb</em>\n<em>c</em></pre>",
          "<pre><code>a <em>b\nc</em>\nd</code></pre><pre><em>e</em>\n</pre>"}) {
        expectKept(document, canonicalBody(body).html);
    }
    expectKept(document, "");
    expectKept(document, "<p></p>");
}

TEST(NoteDocument, KeepsTheBodiesOfALibrary) {
    NoteDocument document;
    const bench::NoteGenerator generator(100);
    for (std::size_t i = 0; i < generator.noteCount() && !testing::Test::HasFatalFailure(); ++i) {
        expectKept(document, generator.note(i).html);
    }
}

/// The document with `body`; "|" marks where the cursor stands.
class EditedDocument {
public:
    explicit EditedDocument(const std::string& body) {
        document.setContent(attributedText(body));
        cursor = document.find("|");
        cursor.removeSelectedText();
        document.clearUndoRedoStacks();
    }

    NoteDocument document;
    QTextCursor cursor;
};

TEST(NoteDocument, PutsParagraphsWhereTheCursorStands) {
    struct Case {
        const char* body;
        const char* inserted;
        const char* result;
    };
    for (const auto& [body, inserted, result] : {
             Case{"<p>a|b</p>", "<p><em>x</em></p>", "<p>a<em>x</em>b</p>"},
             Case{"<h1>a|b</h1>", "<p>x</p>", "<h1>axb</h1>"},
             Case{"<p>a|b</p>", "<h2>x</h2>", "<p>a</p><h2>x</h2><p>b</p>"},
             Case{"<p>|b</p>", "<h2>x</h2><p>y</p>", "<h2>x</h2><p>y</p><p>b</p>"},
             Case{"<p>a|</p>", "<h2>x</h2><p>y</p>", "<p>a</p><h2>x</h2><p>y</p>"},
             Case{"<p>|</p>", "<ul><li>x</li><li>y</li></ul>", "<ul><li>x</li><li>y</li></ul>"},
             Case{"<div><p>a|</p></div>", "<pre>x\ny</pre>", "<div><p>a</p><pre>x\ny</pre></div>"},
             Case{
                 "<p>a|</p>",
                 "<table><tr><td>x</td></tr></table>",
                 "<p>a</p><table><tr><td>x</td></tr></table>"},
         }) {
        SCOPED_TRACE(body);
        EditedDocument edited(body);
        const std::string before = edited.document.html();
        edited.document.insert(edited.cursor, attributedText(canonicalBody(inserted).html));
        EXPECT_EQ(canonicalBody(edited.document.html()).html, canonicalBody(result).html);
        edited.document.undo();
        EXPECT_EQ(edited.document.html(), before);
    }
}

TEST(NoteDocument, KeepsWhatReachesOverLinesOfCodeWhenOneIsTypedAndTakenBack) {
    EditedDocument edited("<pre>x <em>one|\ntwo\nthree</em></pre>");
    const std::string before = edited.document.html();
    edited.cursor.insertText("s");
    EXPECT_EQ(edited.document.html(), "<pre>x <em>ones\ntwo\nthree</em></pre>");
    editing::newLine(edited.document, edited.cursor);
    EXPECT_NE(edited.document.html().find("\ntwo\nthree</em></pre>"), std::string::npos);
    while (edited.document.isUndoAvailable()) {
        edited.document.undo();
    }
    EXPECT_EQ(edited.document.html(), before);
}

TEST(NoteDocument, ChangesStylesInsideTheSelectionOnly) {
    EditedDocument edited("<p>one <em>two</em> three</p><h1>four|</h1>");
    QTextCursor selection(&edited.document);
    selection.setPosition(2);
    selection.setPosition(5, QTextCursor::KeepAnchor);
    edited.document.changeStyles(selection, [](InlineStyle& style) {
        style.marks.push_back({.element = HTMLElement::strong});
    });
    EXPECT_EQ(
        edited.document.html(),
        "<p>on<strong>e </strong><em><strong>t</strong>wo</em> three</p><h1>four</h1>");
    edited.document.undo();
    EXPECT_EQ(edited.document.html(), "<p>one <em>two</em> three</p><h1>four</h1>");
}

TEST(NoteDocument, CopiesPartsOfParagraphs) {
    EditedDocument edited("<h1>one</h1><p>two <em>three</em></p>|");
    QTextCursor selection(&edited.document);
    selection.setPosition(1);
    selection.setPosition(10, QTextCursor::KeepAnchor);
    EXPECT_EQ(
        canonicalHTML(edited.document.content(selection)), "<h1>ne</h1><p>two <em>th</em></p>");
}

}  // namespace
}  // namespace tesserine::app
