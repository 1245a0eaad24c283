#include "app/look/EmptyState.h"
#include "app/search/MarkedLine.h"
#include "app/search/ResultsModel.h"
#include "app/search/SearchField.h"
#include "app/search/SearchResults.h"
#include "app/search/SearchRunner.h"
#include "app/search/SearchWords.h"
#include "app/state/WindowFixture.h"
#include "search/RecentSearches.h"
#include "search/SearchCoordinator.h"

#include <QLabel>
#include <QListView>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

namespace tesserine::app {
namespace {

class SearchTest : public test::WindowFixture {
public:
    SearchTest() {
        addNote("Invoice for May", "<p>The invoice of the carpenter.</p>");
        addNote("Lisbon", "<p>Train at 9:40.</p>");
        addTask("Pay invoice tomorrow");
        environment->search().catchUp();
    }
    SearchResults& results() {
        if (!results_) results_ = std::make_unique<SearchResults>(*environment);
        return *results_;
    }
    void TearDown() override { results_.reset(); }

    /// The lines of the results once the search for `text` is answered.
    std::string find(const QString& text, bool isExact = false) {
        bool isAnswered = false;
        const auto connection = QObject::connect(
            &results().runner(), &SearchRunner::answered, [&] { isAnswered = true; });
        results().search(text, SearchRunner::Typing::finished, isExact);
        EXPECT_TRUE(waitUntil([&] { return isAnswered; }));
        QObject::disconnect(connection);
        return lines();
    }
    std::string lines() {
        const auto* model = results().list().model();
        std::string text;
        for (int row = 0; row < model->rowCount(); ++row) {
            text += model->index(row, 0).data().toString().toStdString() + ";";
        }
        return text;
    }
    std::string label(const char* name) {
        return results().findChild<QLabel*>(name)->text().toStdString();
    }

private:
    std::unique_ptr<SearchResults> results_;
};

TEST_F(SearchTest, NotesAndTasksAreFoundAndTheQueryIsExplained) {
    EXPECT_EQ(find("invoice"), "Pay invoice;Invoice for May;");
    EXPECT_EQ(label("explanation"), "Notes and tasks containing <b>invoice</b>.");
    EXPECT_EQ(find("lisbon train"), "Lisbon;");
    results().search("   ", SearchRunner::Typing::finished);
    EXPECT_EQ(lines(), "");
    EXPECT_EQ(
        RecentSearches(environment->preferences()).all(),
        (std::vector<std::string>{"lisbon train", "invoice"}));
}

TEST_F(SearchTest, ResultsFollowTheLibraryAndKeepWhatIsChosen) {
    results().setVisible(true);
    ASSERT_EQ(find("invoice"), "Pay invoice;Invoice for May;");
    int opened = 0;
    QObject::connect(&results(), &SearchResults::noteChosen, &results(), [&] { ++opened; });
    results().list().setCurrentIndex(results().list().model()->index(1, 0));
    addNote("Invoice for June", "<p>invoice, invoice</p>");
    environment->search().catchUp();
    ASSERT_TRUE(waitUntil([&] { return results().list().model()->rowCount() == 3; })) << lines();
    EXPECT_EQ(results().list().currentIndex().data().toString(), "Invoice for May");
    EXPECT_EQ(opened, 1) << "what is open is not opened again";
}

TEST_F(SearchTest, NothingIsOfferedInPlaceOfTheOnlyWord) {
    EXPECT_EQ(find("tag:nowhere"), "");
    EXPECT_FALSE(
        results().findChild<EmptyState*>()->findChild<QPushButton*>()->isVisibleTo(&results()));
}

TEST_F(SearchTest, ACorrectedWordIsSaidAndCanBeRefused) {
    EXPECT_EQ(find("carpentar"), "Invoice for May;");
    EXPECT_EQ(
        label("changes"),
        "Searching for <b>carpenter</b>; search instead for <a href=\"exact\">carpentar</a>.");
    EXPECT_EQ(find("carpentar", true), "");
}

TEST_F(SearchTest, WhatWasFoundInAResultIsToldAsItIsWrittenThere) {
    addNote("Kitchen", "<p>Ask the CARPENTER: the carpenter's cousin, too.</p>");
    environment->search().catchUp();
    struct Case {
        const char* query;
        const char* title;
        const char* words;
    };
    for (const auto& [query, title, words] : {
             Case{"carpentar", "Kitchen", "CARPENTER, carpenter"},  // corrected
             Case{"invoice may", "Invoice for May", "Invoice, May, invoice"},
             Case{"9:40", "Lisbon", "9:40"},
             Case{"is:note lisbon", "Lisbon", "Lisbon"},
         }) {
        SCOPED_TRACE(query);
        find(query);
        EXPECT_TRUE(results().foundWords().isEmpty()) << "nothing is chosen yet";
        QListView& list = results().list();
        for (int row = 0; row < list.model()->rowCount(); ++row) {
            const QModelIndex index = list.model()->index(row, 0);
            if (index.data() == title) list.setCurrentIndex(index);
        }
        EXPECT_EQ(results().foundWords().join(", ").toStdString(), words);
    }
}

TEST_F(SearchTest, OnlyTheLastOfManyQuestionsIsAnswered) {
    std::string answers;
    QObject::connect(
        &results().runner(), &SearchRunner::answered, [&answers](const SearchAnswer& answer) {
            answers += answer.text.toStdString() + ";";
        });
    for (const char* typed : {"i", "in", "inv", "invo", "lis"}) {
        results().search(typed, SearchRunner::Typing::goesOn);
    }
    ASSERT_TRUE(waitUntil([&] { return !answers.empty(); }));
    settle();
    EXPECT_EQ(answers, "lis;");
    EXPECT_EQ(lines(), "Lisbon;");
}

TEST_F(SearchTest, ARowSaysWhatItIsToPeopleWhoDoNotSeeIt) {
    find("train");
    const auto* model = results().list().model();
    EXPECT_EQ(
        model->index(0, 0).data(Qt::AccessibleTextRole).toString(), "Note: Lisbon. Train at 9:40.");
}

TEST_F(SearchTest, SuggestionsAreWalkedThroughAndTakenByKeys) {
    SearchField field;
    field.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&field));
    field.setFocus();
    SearchRunner runner(*environment);
    QObject::connect(&field, &SearchField::suggestionsWanted, &runner, &SearchRunner::suggest);
    QObject::connect(&runner, &SearchRunner::suggested, &field, &SearchField::setSuggestions);
    std::string searched;
    QObject::connect(&field, &SearchField::searched, [&searched](const QString& text) {
        searched = text.toStdString();
    });
    auto* list = field.findChild<QListWidget*>("suggestions");
    QTest::keyClicks(&field, "carp");
    ASSERT_TRUE(waitUntil([&] { return list->isVisible(); }));
    QTest::keyClick(&field, Qt::Key_Down);
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_EQ(searched, "carpenter");
    EXPECT_FALSE(list->isVisible());

    field.clear();
    QTest::keyClicks(&field, "carp");
    ASSERT_TRUE(waitUntil([&] { return list->isVisible(); }));
    QTest::keyClick(&field, Qt::Key_Return);  // none chosen
    EXPECT_EQ(searched, "carp");
}

TEST(SearchWords, EveryChangeOfASearchIsSaid) {
    SearchResponse response;
    EXPECT_EQ(changesOf(response), "");
    response.matchedSomeTermsOnly = true;
    EXPECT_EQ(changesOf(response), "Nothing holds all of these words; these hold some of them.");
    response.relaxation = SearchRelaxation{.droppedTerm = "<b>", .resultCount = 3};
    EXPECT_EQ(
        changesOf(response),
        "Nothing holds all of these words; these are without <b>&lt;b&gt;</b>.");
}

}  // namespace
}  // namespace tesserine::app
