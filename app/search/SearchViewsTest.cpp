#include "app/look/Theme.h"
#include "app/search/MarkedLine.h"
#include "app/search/ResultDelegate.h"
#include "app/search/ResultsModel.h"
#include "app/search/SearchField.h"
#include "app/search/SearchResults.h"
#include "app/state/WindowFixture.h"
#include "app/testing/WidgetFaultsFixture.h"
#include "search/SearchCoordinator.h"
#include "search/SearchStatement.h"
#include "search/SearchSuggestions.h"

#include <gtest/gtest.h>
#include <QAbstractButton>
#include <QApplication>
#include <QImage>
#include <QInputDialog>
#include <QLabel>
#include <QListView>
#include <QListWidget>
#include <QPainter>
#include <QTest>
#include <QVBoxLayout>

#include <string>
#include <vector>

namespace tesserine::app {
namespace {

/// A field above something else that takes keys, and what it says.
class SearchFieldTest : public ::testing::Test {
public:
    SearchFieldTest() {
        auto* const column = new QVBoxLayout(&window);
        for (QLineEdit* line : {static_cast<QLineEdit*>(&field), &other}) {
            column->addWidget(line);
        }
        QObject::connect(&field, &SearchField::suggestionsWanted, &field, [this](auto& typed) {
            const auto made = [](const char* title, const char* replacement) {
                SearchSuggestion suggestion;
                suggestion.title = title;
                suggestion.replacement = replacement;
                return suggestion;
            };
            field.setSuggestions(typed, {made("garden", "garden "), made("tag:", "tag:")});
        });
        QObject::connect(&field, &SearchField::searched, [this](const QString& query) {
            said += "search " + query.toStdString() + ";";
        });
        QObject::connect(&field, &SearchField::left, [this] { said += "left;"; });
        QObject::connect(&field, &SearchField::resultsWanted, [this] { said += "results;"; });
        window.show();
        QApplication::setActiveWindow(&window);
        field.setFocus();
    }
    bool areShown() { return field.findChild<QListWidget*>("suggestions")->isVisible(); }

    QWidget window;
    SearchField field;
    QLineEdit other;
    std::string said;
};

TEST_F(SearchFieldTest, EscapeClosesTheSuggestionsBeforeItLeaves) {
    QTest::keyClicks(&field, "ga");
    ASSERT_TRUE(areShown());
    QTest::keyClick(&field, Qt::Key_Escape);
    EXPECT_FALSE(areShown());
    EXPECT_EQ(said, "");
    QTest::keyClick(&field, Qt::Key_Down);
    QTest::keyClick(&field, Qt::Key_Escape);
    EXPECT_EQ(said, "results;left;");
}

TEST_F(SearchFieldTest, TabTakesASuggestionAndOtherwiseGoesOn) {
    QTest::keyClicks(&field, "g");
    QTest::keyClick(&field, Qt::Key_Tab);
    EXPECT_EQ(said, "search garden;") << "the first one when none is chosen";
    EXPECT_FALSE(areShown());
    QTest::keyClick(&field, Qt::Key_Tab);
    EXPECT_TRUE(other.hasFocus());
}

TEST_F(SearchFieldTest, AFilterThatIsTakenGoesOnBeingTyped) {
    QTest::keyClicks(&field, "t");
    QTest::keyClick(&field, Qt::Key_Up);  // round to the last
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_EQ(field.text(), "tag:");
    EXPECT_TRUE(areShown()) << "for what may follow";
    EXPECT_EQ(said, "");
    other.setFocus();
    EXPECT_FALSE(areShown()) << "nothing hangs over what is typed into elsewhere";
    field.setSuggestions("tag:", {SearchSuggestion{}});
    EXPECT_FALSE(areShown()) << "nor does a late answer";
}

class ResultsTest : public test::WindowFixture {
public:
    ~ResultsTest() override { results.reset(); }

    SearchResults& shown() {
        if (!results) {
            results = std::make_unique<SearchResults>(*environment);
            QObject::connect(results.get(), &SearchResults::queryWanted, [this](auto& query) {
                wanted = query.toStdString();
            });
            results->resize(320, 500);
            results->setVisible(true);
        }
        return *results;
    }
    /// Whether an answer or a refusal came.
    bool search(const QString& text) {
        bool isTold = false;
        const QObject listener;
        SearchRunner& runner = shown().runner();
        const auto take = [&isTold] { isTold = true; };
        QObject::connect(&runner, &SearchRunner::answered, &listener, take);
        QObject::connect(&runner, &SearchRunner::failed, &listener, take);
        shown().search(text, SearchRunner::Typing::finished);
        return waitUntil([&] { return isTold; });
    }
    /// All texts that can be read now, a line for each.
    std::string texts() {
        std::string all;
        for (const QLabel* label : shown().findChildren<QLabel*>()) {
            if (label->isVisible()) all += label->text().toStdString() + "\n";
        }
        return all;
    }
    void press(const char* name) {
        for (QAbstractButton* button : shown().findChildren<QAbstractButton*>()) {
            const bool isIt = button->text() == name || button->accessibleName() == name;
            if (isIt && button->isVisible()) return button->click();
        }
        ADD_FAILURE() << "no button " << name;
    }

    std::unique_ptr<SearchResults> results;
    std::string wanted;
};

TEST_F(ResultsTest, WhatHidesEverythingIsNamedAndCanBeDropped) {
    addNote("Garden plan", "<p>Roses.</p>");
    environment->search().catchUp();
    ASSERT_TRUE(search("roses tag:home"));
    EXPECT_NE(texts().find("Without “tag:home” there would be results."), std::string::npos)
        << texts();
    press("Search without It");
    EXPECT_EQ(wanted, "roses");
    press("Save this search");
    auto* const dialog = shown().findChild<QInputDialog*>("saveSearchDialog");
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->textValue(), "roses tag:home");
    dialog->reject();
    EXPECT_EQ(test::layoutFaults(shown()), "");
    EXPECT_EQ(test::namelessControls(shown()), "");

    ASSERT_TRUE(search("roses"));
    EXPECT_EQ(test::layoutFaults(shown()), "");
    EXPECT_EQ(shown().list().model()->rowCount(), 1);
}

TEST_F(ResultsTest, WithoutAnIndexTheReasonIsSaidAndTheWindowGoesOn) {
    const auto setting = this->setting();
    environment.reset();
    std::filesystem::remove(setting.library / "Search.sqlite");
    std::filesystem::create_directory(setting.library / "Search.sqlite");
    test::putContent(setting.library / "Search.sqlite" / "in the way", "");
    open(setting);
    addNote("Garden plan", "<p>Roses.</p>");
    ASSERT_TRUE(search("roses"));
    EXPECT_NE(texts().find("The search did not work"), std::string::npos) << texts();
}

TEST(MarkedLine, ShowsTextsAsTheyAreWhateverStandsInThem) {
    const std::string open(marker::open);
    const std::string close(marker::close);
    struct Case {
        std::string marked;
        const char* text;
        const char* rich;
    };
    for (const auto& [marked, text, rich] : {
             Case{"a " + open + "b" + close + " c", "a b c", "a <b>b</b> c"},
             Case{"<i>" + open + "&" + close, "<i>&", "&lt;i&gt;<b>&amp;</b>"},
             Case{"one\ntwo\tthree", "one two three", "one two three"},
             Case{open + "whole" + close, "whole", "<b>whole</b>"},
             Case{"", "", ""},
         }) {
        const MarkedLine line(marked);
        EXPECT_EQ(line.text().toStdString(), text);
        EXPECT_EQ(line.richText().toStdString(), rich);
    }
}

TEST(MarkedLine, IsCutAtItsBeginningWhereTheFirstMatchWouldNotBeSeen) {
    const std::string words = "a b one two three four five six seven eight nine ten eleven ";
    const std::string match = std::string(marker::open) + "sigmoid" + std::string(marker::close);
    const MarkedLine line(words + match + " and more");
    const QFontMetrics metrics{QFont()};
    EXPECT_EQ(line.cutFor(metrics, 10'000).text(), line.text());
    for (int width = metrics.horizontalAdvance("…sigmoid…"); width < 600; width += 7) {
        SCOPED_TRACE(width);
        const MarkedLine cut = line.cutFor(metrics, width);
        EXPECT_EQ(cut.matches(), QStringList{"sigmoid"});
        const QString seen = cut.text().left(cut.text().indexOf("sigmoid") + 7);
        EXPECT_LE(metrics.horizontalAdvance(seen + "…"), width) << seen.toStdString();
        const QString rest = cut.text().mid(cut.text().startsWith("…") ? 1 : 0);
        EXPECT_TRUE((" " + line.text()).contains(" " + rest)) << "whole words";
    }
    EXPECT_EQ(MarkedLine(words).cutFor(metrics, 50).text().toStdString(), words) << "no match";
}

TEST_F(ResultsTest, ALineOfATaskSaysNothingThatIsSaidOfNotes) {
    SearchResult found;
    found.updatedAt = clock.now();
    found.tags = {"phone"};
    ResultsModel model;
    ResultDelegate delegate(*environment, model, nullptr);
    const auto detailsOf = [&](SearchKind kind) {
        found.kind = kind;
        model.setResults({found});
        return delegate.details(0).toStdString();
    };
    EXPECT_EQ(detailsOf(SearchKind::note), "09:00  ·  #phone");
    EXPECT_EQ(detailsOf(SearchKind::task), "");
    delegate.setTaskDetails([](const Uuid&) { return QStringList{"Today", "@phone"}; });
    EXPECT_EQ(detailsOf(SearchKind::task), "Today  ·  @phone");
    EXPECT_EQ(detailsOf(SearchKind::note), "09:00  ·  #phone");
}

TEST_F(ResultsTest, ALineIsPaintedWithinItsPlaceHoweverNarrow) {
    const Theme theme(*qApp);
    ResultsModel model;
    SearchResult found;
    const std::string endless = "Donaudampfschifffahrtsgesellschaftskapitänsmützen and more";
    found.title = found.highlightedTitle =
        std::string(marker::open) + endless + std::string(marker::close);
    found.snippet = "שלום " + found.title;
    found.notebook = endless;
    found.tags = {endless, "garden"};
    found.updatedAt = clock.now();
    model.setResults({found, SearchResult{}});
    const ResultDelegate delegate(*environment, model, nullptr);
    constexpr int margin = 30;
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        for (const int width : {90, 160, 320, 900}) {
            for (int row = 0; row < 2; ++row) {
                SCOPED_TRACE(std::to_string(width) + " " + std::to_string(row));
                QStyleOptionViewItem option;
                option.direction = direction;
                const int height = delegate.sizeHint(option, model.index(row)).height();
                option.rect = QRect(margin, margin, width, height);
                QImage picture(
                    width + 2 * margin, height + 2 * margin, QImage::Format_ARGB32_Premultiplied);
                picture.fill(Qt::magenta);
                QPainter painter(&picture);
                painter.setLayoutDirection(direction);
                delegate.paint(&painter, option, model.index(row));
                painter.end();
                int outside = 0;
                for (int y = 0; y < picture.height(); ++y) {
                    for (int x = 0; x < picture.width(); ++x) {
                        const bool isInside = option.rect.contains(x, y);
                        outside += !isInside && picture.pixelColor(x, y) != QColor(Qt::magenta);
                    }
                }
                EXPECT_EQ(outside, 0) << "points outside";
            }
        }
    }
}

}  // namespace
}  // namespace tesserine::app
