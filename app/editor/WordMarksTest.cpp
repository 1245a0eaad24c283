#include "app/editor/WordMarks.h"

#include "app/editor/EditorFixture.h"

#include <QTextBlock>

namespace tesserine::app {
namespace {

TEST(WordMarks, TakeTheWordsOfAQueryAndNotItsConditions) {
    struct Case {
        const char* query;
        QStringList words;
    };
    for (const auto& [query, words] : {
             Case{"tea garden", {"tea", "garden"}},
             Case{R"(tag:travel "green tea" -draft)", {"green tea"}},
             Case{"(rain OR snow) AND win*", {"rain", "snow", "win"}},
             Case{R"(an "open quote)", {"an", "open", "quote"}},
             Case{"in:trash", {}},
         }) {
        EXPECT_EQ(soughtWords(query), words) << query;
    }
}

class MarkedNote : public test::EditorFixture {
public:
    /// What is marked, with a bar between.
    std::string marked(const QString& words) {
        editor.showWords(words);
        QStringList texts;
        for (const QTextEdit::ExtraSelection& mark : editor.body().extraSelections()) {
            texts.append(mark.cursor.selectedText());
        }
        return texts.join('|').toStdString();
    }
};

TEST_F(MarkedNote, MarksWhatAHitWasFoundFor) {
    openNote("<p>Notes on |tea</p><ul><li>Café in the <strong>gard</strong>en, teapot</li>"
             "<li>Steam: green tea only</li></ul>");
    EXPECT_EQ(marked("tea garden"), "tea|garden|teapot|tea");
    EXPECT_EQ(marked("cafe"), "Café");
    EXPECT_EQ(marked("green TEA"), "green tea") << "words that stand together come first";
    EXPECT_EQ(editor.body().textCursor().block().text(), "Steam: green tea only");
    EXPECT_EQ(marked("green tea only\nnotes on tea"), "Notes on tea|green tea only");
    EXPECT_EQ(marked("coffee"), "");
}

/// Accents of one unit, of two, and of two at once.
TEST_F(MarkedNote, FoldsAccentsAsTheSearchDoes) {
    openNote("<p>|poci\u0105g do S\u0142upska, t\u0119sknota, Scho\u0308ne Schildkr\u00f6te, "
             "Vi\u1ec7t</p>");
    struct Case {
        const char* words;
        const char* marked;
    };
    for (const auto& [words, expected] : {
             Case{"pociag train", "poci\u0105g"},
             Case{"schildkrote tesknota", "t\u0119sknota|Schildkr\u00f6te"},
             Case{"schone", "Scho\u0308ne"},
             Case{"sch\u00f6ne", "Scho\u0308ne"},
             Case{"viet", "Vi\u1ec7t"},
             Case{"s\u0142upska", "S\u0142upska"},
         }) {
        EXPECT_EQ(marked(words), expected);
    }
}

TEST_F(MarkedNote, GoesToTheTableThatHoldsTheWords) {
    std::string text = "<p>|first</p>";
    for (int i = 0; i < 60; ++i) {
        text += "<p>line</p>";
    }
    const std::string filler = text.substr(text.find("<p>line"));
    text +=
        "<table><tbody><tr><td>Schildkr\u00f6te</td><td>t\u0119sknota</td></tr></tbody></table>";
    openNote(text + filler + "<p>nostalgia</p>");
    const auto isSelected = [this] {
        return editor.body().textCursor().selectedText() == QChar::ObjectReplacementCharacter;
    };
    for (const char* words : {"schildkrote tesknota", "tesknota", "nostalgia tesknota"}) {
        SCOPED_TRACE(words);
        editor.body().moveCursor(QTextCursor::Start);
        editor.showWords(words);
        EXPECT_TRUE(isSelected());
        QTextCursor table = editor.body().textCursor();
        table.setPosition(table.selectionStart());
        const QRect place = editor.body().cursorRect(table);
        EXPECT_TRUE(editor.body().viewport()->rect().contains(place.center())) << place.top();
    }
    editor.showWords("nostalgia");
    EXPECT_FALSE(isSelected());
}

TEST_F(MarkedNote, LosesItsMarksWhenItIsChanged) {
    openNote("<p>tea|</p>");
    EXPECT_EQ(marked("tea"), "tea");
    type("x");
    EXPECT_TRUE(editor.body().extraSelections().isEmpty());
    EXPECT_EQ(marked("xte"), "xtea");
    openNote("<p>other tea|</p>");
    EXPECT_TRUE(editor.body().extraSelections().isEmpty());
}

/// Marks hold cursors, and one that goes while the document empties itself is used by it later.
TEST_F(MarkedNote, LetsItsMarksGoBeforeItsWordsGo) {
    const auto replaced = [this](const std::function<void()>& replace) {
        openNote("<p>tea|</p>");
        EXPECT_EQ(marked("tea"), "tea");
        qsizetype left = -1;
        const QObject listener;
        QObject::connect(&document(), &QTextDocument::contentsChanged, &listener, [&] {
            if (left < 0) left = editor.body().extraSelections().size();
        });
        replace();
        return left;
    };
    EXPECT_EQ(replaced([this] { editor.close(); }), 0);
    EXPECT_EQ(replaced([this] { editor.open(*addNote("Other", "<p>x</p>").id); }), 0);
    EXPECT_EQ(replaced([this] { document().setContent(attributedText("<p>y</p>")); }), 0);
}

}  // namespace
}  // namespace tesserine::app
