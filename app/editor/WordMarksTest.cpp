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
