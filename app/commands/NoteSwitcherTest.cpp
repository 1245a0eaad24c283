#include "app/commands/NoteSwitcher.h"

#include "app/commands/NoteTitles.h"
#include "app/state/WindowFixture.h"

#include <gtest/gtest.h>
#include <QLineEdit>
#include <QListView>
#include <QTest>

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

TEST_F(NoteSwitcherTest, TheChosenNoteIsTold) {
    QWidget window;
    window.resize(700, 500);
    window.show();
    auto* const switcher = new NoteSwitcher(*environment, &window);
    std::vector<Uuid> chosen;
    QObject::connect(switcher, &NoteSwitcher::noteChosen, &window, [&](const Uuid& note) {
        chosen.push_back(note);
    });
    switcher->open();
    auto& field = *switcher->findChild<QLineEdit*>("pickerField");
    const QAbstractItemModel& rows = *switcher->findChild<QListView*>("pickerList")->model();
    QTest::keyClicks(&field, "year");
    ASSERT_TRUE(waitUntil([&] { return rows.rowCount() == 1; }));
    QTest::keyClick(&field, Qt::Key_Return);
    ASSERT_EQ(chosen.size(), 1U);
    EXPECT_EQ(*context().get<CDNote>(chosen.front(), "note").title, "Plan of the year");
    settle();
}

}  // namespace
}  // namespace tesserine::app
