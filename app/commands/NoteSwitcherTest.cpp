#include "app/commands/NoteSwitcher.h"

#include "app/commands/NoteTitles.h"
#include "app/state/WindowFixture.h"

#include <gtest/gtest.h>
#include <QLineEdit>
#include <QListView>
#include <QTest>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace tesserine::app {
namespace {

class NoteSwitcherTest : public test::WindowFixture {
protected:
    NoteSwitcherTest() {
        CDNotebook& work = *environment->notebooks().findOrCreatePath(context(), {"Work"});
        addNote("Plan of the year", "", &work);
        later();
        addNote("Planets");
        later();
        addNote("", "<p>No title, only text</p>");
        later();
        environment->notes().moveToTrash(addNote("Old plan"));
        context().save();
    }
    void later() { clock.advance(std::chrono::minutes(1)); }

    std::string titles(const QString& typed, std::size_t limit = 50) {
        std::string all;
        for (const NoteTitle& note : notesByTitle(context(), typed, limit, [] { return false; })) {
            all += (note.title + (note.notebook.isEmpty() ? "" : " in " + note.notebook) + "\n")
                       .toStdString();
        }
        return all;
    }
};

TEST_F(NoteSwitcherTest, FindsNotesByTheirTitlesTheLastChangedFirst) {
    EXPECT_EQ(titles(""), "No title, only text\nPlanets\nPlan of the year in Work\n");
    EXPECT_EQ(titles("plan"), "Planets\nPlan of the year in Work\n");
    EXPECT_EQ(titles("poy"), "Plan of the year in Work\n");
    EXPECT_EQ(titles("plan", 1), "Planets\n");
    EXPECT_EQ(titles("plans"), "Planets\n");
}

TEST_F(NoteSwitcherTest, TheBestOfManyAreThoseThatAllTogetherPutFirst) {
    std::mt19937 dice(5);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same throws every time
    constexpr const char* words[] = {"plan", "garden", "year", "a", "Paris", "notes of", "2026"};
    for (int note = 0; note < 120; ++note) {
        std::string title;
        for (auto left = 1 + dice() % 4; left > 0; --left)
            title += std::string(words[dice() % 7]) + " ";
        if (dice() % 2 == 0) later();
        environment->notes().createNote(context(), {.title = title});
    }
    context().save();
    const auto ids = [this](const QString& typed, std::size_t limit) {
        std::vector<Uuid> all;
        for (const auto& note : notesByTitle(context(), typed, limit, [] { return false; }))
            all.push_back(note.id);
        return all;
    };
    for (const char* typed : {"plan", "gp", "year plan", "a", "of 26", "zz"}) {
        SCOPED_TRACE(typed);
        const auto all = ids(typed, 1000);
        for (const std::size_t limit : {1U, 2U, 7U, 50U}) {
            const auto end = all.begin() + std::ptrdiff_t(std::min(limit, all.size()));
            EXPECT_EQ(ids(typed, limit), std::vector<Uuid>(all.begin(), end)) << limit;
        }
    }
    EXPECT_GT(ids("year plan", 1000).size(), 5U) << "words in any order";
}

TEST_F(NoteSwitcherTest, OnlyTheLastQuestionIsAnsweredAndNoneOnceItIsClosed) {
    QWidget window;
    window.resize(260, 500);
    window.show();
    auto* const switcher = new NoteSwitcher(*environment, &window, "Find a note");
    switcher->open();
    EXPECT_LE(switcher->width(), window.width()) << "also in a narrow window";
    auto& field = *switcher->findChild<QLineEdit*>("pickerField");
    const QAbstractItemModel& rows = *switcher->findChild<QListView*>("pickerList")->model();
    int answers = 0;
    QObject::connect(&rows, &QAbstractItemModel::modelReset, [&answers] { ++answers; });
    for (const char* typed : {"p", "pl", "planets"})
        field.setText(typed);
    environment->waitForBackground();
    settle();
    EXPECT_EQ(answers, 1);
    EXPECT_EQ(rows.rowCount(), 1);

    field.setText("year");
    QTest::keyClick(&field, Qt::Key_Escape);
    settle();
    environment->waitForBackground();
    settle();
    EXPECT_EQ(window.findChild<NoteSwitcher*>(), nullptr);
}

TEST_F(NoteSwitcherTest, TheChosenNoteIsTold) {
    QWidget window;
    window.resize(700, 500);
    window.show();
    auto* const switcher = new NoteSwitcher(*environment, &window, "Find a note");
    std::vector<Uuid> chosen;
    QObject::connect(switcher, &NoteSwitcher::noteChosen, &window, [&](const Uuid& note) {
        chosen.push_back(note);
    });
    switcher->open();
    auto& field = *switcher->findChild<QLineEdit*>("pickerField");
    const QAbstractItemModel& rows = *switcher->findChild<QListView*>("pickerList")->model();
    ASSERT_TRUE(waitUntil([&] { return rows.rowCount() == 3; }));
    QTest::keyClicks(&field, "year");
    QTest::keyClick(&field, Qt::Key_Return);  // before it is answered
    ASSERT_TRUE(waitUntil([&] { return chosen.size() == 1; }));
    EXPECT_EQ(*context().get<CDNote>(chosen.front(), "note").title, "Plan of the year");
    settle();
}

}  // namespace
}  // namespace tesserine::app
