#include "app/editor/BodyEdit.h"

#include "app/editor/EditorFixture.h"
#include "app/look/Theme.h"
#include "core/body/CanonicalBody.h"
#include "core/model/NoteEntities.h"

#include <QMenu>
#include <QTextBlock>
#include <QTextLayout>

namespace tesserine::app {
namespace {

using BodyEditTest = test::EditorFixture;

std::string list(const std::string& items) { return "<ul>" + items + "</ul>"; }

TEST_F(BodyEditTest, TypingShapesParagraphs) {
    struct Case {
        const char* body;
        const char* keys;
        std::string result;
    };
    const Case cases[] = {
        {"<p>|</p>", "# One\ntwo", "<h1>One</h1><p>two</p>"},
        {"<p>|</p>", "### x", "<h3>x</h3>"},
        {"<p>|</p>", "- a\nb\n\nc", list("<li>a</li><li>b</li>") + "<p>c</p>"},
        {"<p>|</p>", "- a\n\tb\n\nc", list("<li>a<ul><li>b</li></ul></li><li>c</li>")},
        {"<p>|</p>", "1. a\nb", "<ol><li>a</li><li>b</li></ol>"},
        {"<p>|</p>", "7. a", "<ol start=\"7\"><li>a</li></ol>"},
        {"<p>|</p>",
         "[x] a\nb",
         "<ul class=\"ts-checklist\"><li data-checked=\"true\">a</li>"
         "<li data-checked=\"false\">b</li></ul>"},
        {"<p>|</p>", "> a\nb\n\nc", "<blockquote><p>a</p><p>b</p></blockquote><p>c</p>"},
        {"<p>|</p>", "```\nif\n\tx\n\ny", "<pre>if\n\tx</pre><p>y</p>"},
        {"<p>|</p>", "---\nx", "<hr><p>x</p>"},
        {"<p>a|b</p>", "# ", "<p>a# b</p>"},
        // Words of their own keep what they mean.
        {"<pre>|</pre>", "# x", "<pre># x</pre>"},
        {"<h1>a|b</h1>", "\n", "<h1>a</h1><h1>b</h1>"},
        {"<h1>|a</h1>", "\n", "<p></p><h1>a</h1>"},
        // Backspace takes styles away before it joins.
        {"<ul><li>a<ul><li>|b</li></ul></li></ul>", "\b", list("<li>a</li><li>b</li>")},
        {"<ul><li>a</li><li>|b</li></ul>", "\b", list("<li>a</li>") + "<p>b</p>"},
        {"<ul><li>a</li><li>|b</li></ul>", "\b\b", list("<li>ab</li>")},
        {"<p>a</p><hr><p>|b</p>", "\b", "<p>a</p><p>b</p>"},
        // Nothing is typed into what cannot be edited.
        {"<p>a</p><table><tr><td>x</td></tr></table><p>|b</p>",
         "\bc",
         "<p>a</p><table><tr><td>x</td></tr></table><p>c</p><p>b</p>"},
        {"<table><tr><td>x</td></tr></table><p>|</p>", "\b\bc", "<p>c</p>"},
        {"<p>a|</p><table><tr><td>x</td></tr></table>",
         "\x7F\n",
         "<p>a</p><p></p><table><tr><td>x</td></tr></table>"},
        {"<ul><li>a|</li></ul><table><tr><td>x</td></tr></table>",
         "\x7F\bc",
         "<ul><li>ac</li></ul><table><tr><td>x</td></tr></table>"},
        // Addresses become links; what is typed behind a link is none.
        {"<p>|</p>",
         "see https://a.org/b. ok",
         "<p>see <a href=\"https://a.org/b\">https://a.org/b</a>. ok</p>"},
        {"<p><a href=\"https://a.org\">a|</a></p>", "b", "<p><a href=\"https://a.org\">a</a>b</p>"},
    };
    for (const auto& [body, keys, result] : cases) {
        SCOPED_TRACE(std::string(body) + keys);
        openNote(body);
        type(keys);
        EXPECT_EQ(canonicalBody(html()).html, result);
    }
}

TEST_F(BodyEditTest, EveryCommandIsOneStepToUndo) {
    const std::string body =
        "<p>|one</p><ul class=\"ts-checklist\"><li data-checked=\"false\">two</li></ul><p>three|</p>";
    struct Case {
        const char* command;
        const char* result;
    };
    for (const auto& [command, result] : {
             Case{
                 "format.bold",
                 "<p><strong>one</strong></p><ul class=\"ts-checklist\"><li data-checked=\"false\">"
                 "<strong>two</strong></li></ul><p><strong>three</strong></p>"},
             Case{"format.heading2", "<h2>one</h2><h2>two</h2><h2>three</h2>"},
             Case{"format.bullets", "<ul><li>one</li><li>two</li><li>three</li></ul>"},
             Case{"format.codeBlock", "<pre>one\ntwo\nthree</pre>"},
             Case{"format.quote", "<blockquote><p>one</p><p>two</p><p>three</p></blockquote>"},
             Case{
                 "format.tick",
                 "<p>one</p><ul class=\"ts-checklist\"><li data-checked=\"true\">two</li></ul>"
                 "<p>three</p>"},
         }) {
        SCOPED_TRACE(command);
        openNote(body);
        const std::string before = html();
        commands.trigger(command);
        EXPECT_EQ(html(), result);
        commands.trigger("edit.undo");
        EXPECT_EQ(html(), before);
        commands.trigger("edit.redo");
        EXPECT_EQ(html(), result);
    }
}

TEST_F(BodyEditTest, UndoingLeavesTheCursorWhereTheChangeWas) {
    for (const char* command :
         {"format.bold", "format.lineUp", "format.heading2", "format.bullets", "format.clear"}) {
        SCOPED_TRACE(command);
        openNote("<p>zero</p><p>one</p><p>two |words|</p><p>three</p>");
        commands.trigger(command);
        commands.trigger("edit.undo");
        EXPECT_EQ(editor.body().textCursor().blockNumber(), 2);
    }
}

TEST_F(BodyEditTest, ColoursScriptsAndAlignmentAreChosenAndTakenAway) {
    const auto inColor = [](const char* element, const char* style, const std::string& words) {
        return "<p><" + std::string(element) + " style=\"" + style + "\">" + words + "</" + element
               + "></p>";
    };
    struct Case {
        std::string body;
        const char* command;
        const char* choice;  // from the menu; none: there is no menu
        std::string result;
    };
    const Case cases[] = {
        {"<p>|a|</p>", "format.textColor", "Red", inColor("span", "color: #d64545", "a")},
        {"<p>|a|</p>",
         "format.highlightColor",
         "Green",
         inColor("mark", "background-color: #c8f0cd", "a")},
        {"<p><mark>|a|</mark></p>",
         "format.highlightColor",
         "Yellow",
         inColor("mark", "background-color: #fff3a3", "a")},
        {inColor("span", "color: #112233; background-color: #445566", "|a|"),
         "format.textColor",
         "Usual Colour",
         inColor("span", "background-color: #445566", "a")},
        {inColor("span", "color: #112233", "|a|"), "format.textColor", "Usual Colour", "<p>a</p>"},
        {"<p><mark>|a|</mark></p>", "format.highlightColor", "No Highlight", "<p>a</p>"},
        {"<p>H|2|O</p>", "format.subscript", nullptr, "<p>H<sub>2</sub>O</p>"},
        {"<p>H<sub>|2|</sub>O</p>", "format.superscript", nullptr, "<p>H<sup>2</sup>O</p>"},
        {"<p>|a</p><pre>b|</pre>",
         "format.alignCenter",
         nullptr,
         "<p style=\"text-align: center\">a</p><pre>b</pre>"},
        {"<ul><li style=\"text-align: right\">|a</li></ul>",
         "format.alignUsual",
         nullptr,
         "<ul><li>a</li></ul>"},
    };
    for (const auto& [body, command, choice, result] : cases) {
        SCOPED_TRACE(body + command);
        const CDNote& note = openNote(body);
        const std::string before = html();
        commands.trigger(command);
        if (choice != nullptr) {
            auto* const menu = editor.findChild<QMenu*>("colorMenu");
            ASSERT_NE(menu, nullptr);
            for (QAction* action : menu->actions()) {
                if (action->text() == choice) action->trigger();
            }
            menu->close();
            settle();
        }
        EXPECT_EQ(html(), result);
        ASSERT_TRUE(editor.save());
        EXPECT_EQ(*note.html, result) << "as it is stored";
        commands.trigger("edit.undo");
        EXPECT_EQ(html(), before);
    }
}

TEST_F(BodyEditTest, AnotherThemeLeavesWhatCanBeUndone) {
    Theme theme(*qobject_cast<QApplication*>(QCoreApplication::instance()));
    theme.setScheme(Theme::Scheme::light);
    settle();  // another test may have left other colours behind
    const CDNote& note = openNote("<p>a <a href=\"https://e.org\">link</a>|</p><blockquote><p>"
                                  "<mark>m</mark></p></blockquote>");
    type(" one");
    commands.trigger("format.quote");
    commands.trigger("edit.undo");
    ASSERT_TRUE(editor.save());
    const std::int64_t version = *note.contentVersion;
    theme.setScheme(Theme::Scheme::dark);
    settle();
    EXPECT_TRUE(editor.save());
    EXPECT_EQ(*note.contentVersion, version) << "colours are no change of the note";
    const auto formats = document().findBlock(2).layout()->formats();
    ASSERT_FALSE(formats.isEmpty());
    EXPECT_EQ(formats.front().format.foreground().color(), Theme::colors().accent);
    commands.trigger("edit.redo");
    EXPECT_TRUE(html().starts_with("<blockquote><p>a <a")) << html();
    commands.trigger("edit.undo");
    commands.trigger("edit.undo");
    EXPECT_EQ(
        html(),
        *addNote(
             "",
             "<p>a <a href=\"https://e.org\">link</a></p><blockquote><p>"
             "<mark>m</mark></p></blockquote>")
             .html);
}

TEST_F(BodyEditTest, TheColumnIsAsWideWithABarThatScrollsAsWithout) {
    openNote("<p>short|</p>");
    const int width = editor.body().lineWrapColumnOrWidth();
    std::string longBody;
    for (int i = 0; i < 100; ++i) {
        longBody += "<p>line</p>";
    }
    openNote(longBody);
    QApplication::processEvents();
    EXPECT_EQ(editor.body().lineWrapColumnOrWidth(), width);
    openNote("<p>short|</p>");
    QApplication::processEvents();
    EXPECT_EQ(editor.body().lineWrapColumnOrWidth(), width);
}

TEST_F(BodyEditTest, LinesMoveWithWhatTheyAre) {
    openNote("<h1>a</h1><p></p><ul><li>b|</li><li>c</li></ul>");
    press(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(html(), "<h1>a</h1><ul><li>b</li></ul><p></p><ul><li>c</li></ul>");
    press(Qt::Key_Up, Qt::AltModifier);
    press(Qt::Key_Up, Qt::AltModifier);  // there is nothing above
    EXPECT_EQ(html(), "<ul><li>b</li></ul><h1>a</h1><p></p><ul><li>c</li></ul>");
    for (int i = 0; i < 4; ++i) {
        press(Qt::Key_Down, Qt::AltModifier);
    }
    EXPECT_EQ(html(), "<h1>a</h1><p></p><ul><li>c</li><li>b</li></ul>");
    type("!");
    EXPECT_EQ(html(), "<h1>a</h1><p></p><ul><li>c</li><li>b!</li></ul>");
    while (document().isUndoAvailable()) {
        commands.trigger("edit.undo");
    }
    EXPECT_EQ(html(), "<h1>a</h1><p></p><ul><li>b</li><li>c</li></ul>");
}

TEST_F(BodyEditTest, KeysActOnAllThatIsSelected) {
    struct Case {
        const char* body;
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        std::string result;
        const char* selected;  // lines are separated by "/"
    };
    const Case cases[] = {
        {"<ul><li>a</li><li>|b</li><li>c|</li></ul>",
         Qt::Key_Tab,
         {},
         list("<li>a<ul><li>b</li><li>c</li></ul></li>"),
         "b/c"},
        {"<ul><li>a<ul><li>|b</li></ul></li><li>c|</li></ul>",
         Qt::Key_Backtab,
         Qt::ShiftModifier,
         list("<li>a</li><li>b</li><li>c</li>"),
         "b/c"},
        {"<h1>|a</h1><ul class=\"ts-checklist\"><li data-checked=\"true\">b|</li></ul>",
         Qt::Key_X,
         {},
         "<h1>x</h1>",
         ""},
        {"<p>a</p><p>|b</p><h2>c|</h2><p>d</p>",
         Qt::Key_Up,
         Qt::AltModifier,
         "<p>b</p><h2>c</h2><p>a</p><p>d</p>",
         "b/c"},
        {"<p>a</p><p>|b</p><h2>c|</h2><p>d</p>",
         Qt::Key_Down,
         Qt::AltModifier,
         "<p>a</p><p>d</p><p>b</p><h2>c</h2>",
         "b/c"},
        // A line whose beginning only is selected stays.
        {"<p>|a</p><p>|b</p><p>c</p>",
         Qt::Key_Down,
         Qt::AltModifier,
         "<p>b</p><p>a</p><p>c</p>",
         "a/"},
        // Past what cannot be edited, and to the ends.
        {"<table><tr><td>x</td></tr></table><p>|a</p><p>b|</p>",
         Qt::Key_Up,
         Qt::AltModifier,
         "<p>a</p><p>b</p><table><tr><td>x</td></tr></table>",
         "a/b"},
        {"<p>|a</p><p>b|</p>", Qt::Key_Up, Qt::AltModifier, "<p>a</p><p>b</p>", "a/b"},
    };
    for (const auto& [body, key, modifiers, result, selected] : cases) {
        SCOPED_TRACE(body);
        openNote(body);
        const std::string before = html();
        press(key, modifiers);
        EXPECT_EQ(canonicalBody(html()).html, result);
        const QString words = editor.body().textCursor().selectedText();
        EXPECT_EQ(QString(words).replace(QChar::ParagraphSeparator, '/').toStdString(), selected);
        while (document().isUndoAvailable()) {
            commands.trigger("edit.undo");
        }
        EXPECT_EQ(html(), before);
    }
}

TEST_F(BodyEditTest, ATableThatIsSelectedGoesByDeleteAndNotByWords) {
    const std::string table = "<table><tr><td>92.00</td></tr></table>";
    struct Case {
        std::string body;
        std::string keys;
        std::string result;
    };
    for (const auto& [body, keys, result] : {
             Case{"<p>a</p>" + table, "93", "<p>a</p>" + table + "<p>93</p>"},
             Case{table + "<p>a</p>", "9", table + "<p>9</p><p>a</p>"},
             Case{"<p>a</p>" + table, "\n9", "<p>a</p>" + table + "<p>9</p>"},
             Case{"<p>a</p>" + table, "\x7F", "<p>a</p>"},
         }) {
        SCOPED_TRACE(body + keys);
        openNote(body);
        QTextCursor object = document().find(QString(QChar::ObjectReplacementCharacter));
        editor.body().setTextCursor(object);
        type(keys);
        EXPECT_TRUE(canonicalBody(html()).html.starts_with(result)) << html();
    }
}

TEST_F(BodyEditTest, AParagraphThatIsTypedOverStaysOne) {
    struct Case {
        const char* body;
        const char* result;
    };
    for (const auto& [body, result] : {
             Case{"<p>a</p><p>|b</p><h2>|c</h2>", "<p>a</p><p>x</p><h2>c</h2>"},
             Case{"<p>|a</p><p>b</p><h2>|c</h2>", "<p>x</p><h2>c</h2>"},
             Case{"<p>|a</p><hr>", "<p>xa</p><hr>"},
             Case{"<p>a|a</p><p>|b</p>", "<p>axb</p>"},
         }) {
        SCOPED_TRACE(body);
        openNote(body);
        const std::string before = html();
        type("x");
        EXPECT_EQ(canonicalBody(html()).html, result);
        commands.trigger("edit.undo");
        EXPECT_EQ(html(), before);
    }
}

TEST_F(BodyEditTest, AClickOnTheBoxTicksAnItem) {
    openNote("<p>a</p><ul class=\"ts-checklist\"><li data-checked=\"false\">x</li>"
             "<li data-checked=\"false\">y</li></ul>");
    settle();
    const BlockPainter painter(document());
    const QRectF box = painter.boxOf(document().findBlockByNumber(2));
    QTest::mouseClick(
        editor.body().viewport(), Qt::LeftButton, Qt::NoModifier, box.center().toPoint());
    EXPECT_EQ(
        html(),
        "<p>a</p><ul class=\"ts-checklist\"><li data-checked=\"false\">x</li>"
        "<li data-checked=\"true\">y</li></ul>");
}

}  // namespace
}  // namespace tesserine::app
