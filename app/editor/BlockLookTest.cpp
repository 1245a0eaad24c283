#include "app/editor/BlockLook.h"

#include "app/editor/BlockPainter.h"
#include "app/editor/EditorFixture.h"
#include "app/look/Theme.h"

#include <QTextBlock>
#include <QTextLayout>

#include <array>
#include <cmath>

namespace tesserine::app {
namespace {

class BlockLook : public test::EditorFixture {
public:
    /// The colours of the theme at a place of the only paragraph: of the word, of its ground.
    std::array<QColor, 2> colorsAt(int place) {
        std::array<QColor, 2> colors;
        for (const QTextLayout::FormatRange& range : document().begin().layout()->formats()) {
            const bool isThere = range.start <= place && place < range.start + range.length;
            if (!isThere) continue;
            if (range.format.hasProperty(QTextFormat::ForegroundBrush)) {
                colors[0] = range.format.foreground().color();
            }
            if (range.format.hasProperty(QTextFormat::BackgroundBrush)) {
                colors[1] = range.format.background().color();
            }
        }
        return colors;
    }
};

TEST_F(BlockLook, TheThemeColoursWhatTheWriterDidNot) {
    const Colors& colors = Theme::colors();
    const QColor none;
    struct Case {
        const char* body;
        QColor word;
        QColor ground;
    };
    for (
        const auto& [body, word, ground] : {
            Case{"<p>a</p>", none, none},
            Case{"<p><a href=\"https://e.org\">a</a></p>", colors.accent, none},
            Case{"<p><code>a</code></p>", none, colors.code},
            Case{"<p><code><mark>a</mark></code></p>", none, colors.highlight},
            Case{"<blockquote><p>a</p></blockquote>", colors.secondaryText, none},
            Case{"<h5>a</h5>", colors.secondaryText, none},
            Case{"<h1>a</h1>", none, none},
            Case{
                "<ul class=\"ts-checklist\"><li data-checked=\"true\">a</li></ul>",
                colors.secondaryText,
                none},
            // The writer's own colours stay, and a ground of their own keeps its words dark.
            Case{
                "<blockquote><p><span style=\"color: #d64545\">a</span></p></blockquote>",
                none,
                none},
            Case{
                "<blockquote><p><mark style=\"background-color: #fff3a3\">a</mark></p></blockquote>",
                none,
                none},
        }) {
        openNote(body);
        EXPECT_EQ(colorsAt(0)[0], word) << body;
        EXPECT_EQ(colorsAt(0)[1], ground) << body;
    }
}

TEST_F(BlockLook, ColoursFollowWhatIsTypedAndChanged) {
    openNote("<p><code>ab|</code> c</p>");
    type("d");
    EXPECT_EQ(colorsAt(2)[1], Theme::colors().code);
    commands.trigger("format.quote");
    EXPECT_EQ(colorsAt(4)[0], Theme::colors().secondaryText);
    commands.trigger("edit.undo");
    EXPECT_EQ(colorsAt(4)[0], QColor());
}

/// How much lighter one colour is than another, from 1 to 21 (WCAG 2, contrast ratio).
double contrast(const QColor& one, const QColor& other) {
    const auto luminance = [](const QColor& color) {
        const auto part = [](double value) {
            return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * part(color.redF()) + 0.7152 * part(color.greenF())
               + 0.0722 * part(color.blueF());
    };
    const double first = luminance(one) + 0.05;
    const double second = luminance(other) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

TEST_F(BlockLook, WordsCanBeReadOnEveryGroundInBothSchemes) {
    Theme theme(*qobject_cast<QApplication*>(QCoreApplication::instance()));
    for (const auto scheme : {Theme::Scheme::light, Theme::Scheme::dark}) {
        theme.setScheme(scheme);
        const Colors& colors = Theme::colors();
        for (const QColor& ground : {colors.surface, colors.code, colors.highlight}) {
            EXPECT_GE(contrast(colors.text, ground), 4.5) << ground.name().toStdString();
        }
        for (const QColor& word : {colors.secondaryText, colors.accent}) {
            EXPECT_GE(contrast(word, colors.surface), 4.5) << word.name().toStdString();
        }
    }
}

TEST_F(BlockLook, BoxesStandWhereReadingBegins) {
    const std::string items =
        "<li data-checked=\"false\">one</li><li data-checked=\"false\">two</li></ul>";
    openNote("<ul class=\"ts-checklist\">" + items);
    settle();
    const double middle = document().textWidth() / 2;
    EXPECT_LT(BlockPainter(document()).boxOf(document().begin()).right(), middle);
    openNote("<ul class=\"ts-checklist\"><li data-checked=\"false\">אחת שתיים</li></ul>");
    settle();
    const QRectF box = BlockPainter(document()).boxOf(document().begin());
    EXPECT_GT(box.left(), middle);
    EXPECT_LE(box.right(), document().textWidth());
    QTest::mouseClick(
        editor.body().viewport(), Qt::LeftButton, Qt::NoModifier, box.center().toPoint());
    EXPECT_NE(html().find("data-checked=\"true\""), std::string::npos);
}

}  // namespace
}  // namespace tesserine::app
