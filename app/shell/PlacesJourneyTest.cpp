#include "app/shell/ShellFixture.h"

#include <QAbstractButton>
#include <QDialog>
#include <QSplitter>
#include <QTabBar>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;

/// Where one is in the window: places, tabs, and the way back to them, also at the next start.
class PlacesJourney : public test::ShellFixture {
public:
    std::string place() { return window().current().place.address(); }
};

TEST_F(PlacesJourney, BackForwardAndTabsRememberPlacesAndNotes) {
    CDNote& plan = addNote("Plan");
    CDNote& bill = addNote("Bill");
    environment->notes().moveToTrash(addNote("Old"));
    context().save();
    window().go({Kind::note, *plan.id});
    window().go({Kind::trash});
    window().go({Kind::note, *bill.id});
    EXPECT_EQ(openTitle(), "Bill");
    press(Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(place(), "tesserine://trash");
    press(Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(openTitle(), "Plan");
    press(Qt::Key_Right, Qt::AltModifier);
    EXPECT_EQ(place(), "tesserine://trash");

    press(Qt::Key_T, Qt::ControlModifier);
    window().go({Kind::pinned});
    auto* tabs = window().findChild<QTabBar*>("tabs");
    EXPECT_EQ(tabs->count(), 2);
    press(Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_EQ(place(), "tesserine://trash");
    press(Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(tabs->count(), 1);
    EXPECT_EQ(place(), "tesserine://pinned");
}

TEST_F(PlacesJourney, ANoteThatWasRestoredIsThereWhenOneComesBackToTheTrash) {
    CDNote& diary = addNote("Diary");
    const Uuid bill = *addNote("Bill").id;
    environment->notes().moveToTrash(diary);
    context().save();
    window().go({Kind::trash});
    list().choose(*diary.id);
    ASSERT_EQ(openTitle(), "Diary");
    for (auto* const button : editor().findChildren<QAbstractButton*>()) {
        if (button->text() != "Restore") continue;
        button->setFocus();
        button->click();
        break;
    }
    settle();
    ASSERT_EQ(openTitle(), "Diary");
    ASSERT_EQ(list().model().rowCount(), 0);
    window().go({Kind::note, bill});
    press(Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(place(), "tesserine://trash");
    EXPECT_EQ(openTitle(), "Diary");
}

TEST_F(PlacesJourney, BackLeadsToNotesOfTheListThatWereReadNotToThoseOnlyPassed) {
    for (const char* title : {"Six", "Five", "Four", "Three", "Two", "One"}) {
        addNote(title);
        clock.advance(std::chrono::minutes(1));
    }
    const auto read = [this] { clock.advance(std::chrono::seconds(2)); };
    const auto back = [this] {
        press(Qt::Key_Left, Qt::AltModifier);
        return openTitle();
    };
    window();
    settle();
    for (int row : {0, 1, 2}) {
        clickNote(row);
        read();
    }
    EXPECT_EQ(back(), "Two");
    EXPECT_EQ(back(), "One");
    press(Qt::Key_Right, Qt::AltModifier);
    EXPECT_EQ(openTitle(), "Two");

    read();
    for (int i = 0; i < 3; ++i) {
        press(Qt::Key_Down);
    }
    EXPECT_EQ(openTitle(), "Five");
    EXPECT_EQ(back(), "Two") << "the arrow keys are one step";
    EXPECT_EQ(back(), "One");

    read();
    press(Qt::Key_N, Qt::ControlModifier);
    EXPECT_EQ(openTitle(), "");
    type("New");
    EXPECT_EQ(back(), "One");
    EXPECT_FALSE(commands().action("go.back").isEnabled());

    read();
    list().setFocus();
    clickNote(2);
    const std::string gone = openTitle();
    read();
    press(Qt::Key_Delete);
    EXPECT_NE(openTitle(), gone);
    EXPECT_EQ(back(), "One") << "what went to the trash is no step";

    read();
    clickNote(2);
    const Uuid second = *window().notes().openedNote();
    read();
    clickNote(3);
    environment->notes().moveToTrash(*context().find<CDNote>(second));
    context().save();
    back();
    EXPECT_NE(window().notes().openedNote(), second) << "nor is it opened where it is not listed";
    EXPECT_EQ(window().current().note, window().notes().openedNote());
}

TEST_F(PlacesJourney, TheNextStartGoesOnWhereTheWindowWasClosed) {
    CDNote& plan = addNote("Plan");
    CDNotebook& work = environment->notebooks().findOrCreate(context(), "Work");
    context().save();
    window().go({Kind::note, *plan.id});
    window().openTab({Kind::notebook, *work.id});
    window().openTab({Kind::today});
    press(Qt::Key_Tab, Qt::ControlModifier);  // round to the first
    press(Qt::Key_F9);
    window().notes().splitter().setSizes({410, 600});
    const int listWidth = window().notes().splitter().sizes().front();
    window().close();
    closeWindow();

    environment->notebooks().remove(context(), work);
    context().save();
    EXPECT_EQ(place(), "tesserine://notes");
    EXPECT_EQ(openTitle(), "Plan");
    auto* tabs = window().findChild<QTabBar*>("tabs");
    EXPECT_EQ(tabs->count(), 2) << "the notebook is gone";
    EXPECT_EQ(tabs->tabText(1), "Today");
    EXPECT_FALSE(window().sidebar().isVisible());
    EXPECT_EQ(window().notes().splitter().sizes().front(), listWidth);
    press(Qt::Key_F9);
    EXPECT_TRUE(window().sidebar().isVisible());
}

TEST_F(PlacesJourney, AStartGoesOnInTheNoteThatHadTheKeysWhereItWasLeft) {
    std::string text;
    for (int i = 0; i < 100; ++i) {
        text += "<p>line</p>";
    }
    const Uuid first = *addNote("Plan & more", "<p>a</p>").id;
    const Uuid second = *addNote("Diary", text + "<p>the end</p>").id;
    window().go({Kind::note, first});
    window().openTab({Kind::note, second});
    editor().body().setFocus();
    press(Qt::Key_End, Qt::ControlModifier);
    press(Qt::Key_Left);
    press(Qt::Key_Left);
    window().close();
    closeWindow();

    const auto* tabs = window().findChild<QTabBar*>("tabs");
    EXPECT_EQ(tabs->tabText(0), "Plan && more") << "it is named without being visited";
    ASSERT_EQ(openTitle(), "Diary");
    EXPECT_TRUE(editor().body().hasFocus());
    type("X");
    EXPECT_EQ(editor().body().textCursor().block().text(), "the eXnd");
    const QRect cursor = editor().body().cursorRect();
    EXPECT_TRUE(editor().body().viewport()->rect().contains(cursor));
    list().setFocus();
    window().close();
    closeWindow();

    ASSERT_EQ(openTitle(), "Diary");
    EXPECT_FALSE(editor().body().hasFocus()) << "the list had the keys";

    window().go({.kind = Kind::search, .text = "plan"});
    window().close();
    closeWindow();
    window();
    ASSERT_NE(QApplication::focusWidget(), nullptr);
    EXPECT_EQ(QApplication::focusWidget()->objectName(), "searchField") << "a query goes on";
}

TEST_F(PlacesJourney, AStartAmongTasksHasTheKeysThere) {
    environment->preferences().set("tesserine.reduceMotion", true);
    const CDTask& task = addTask("Call Ann today");
    for (const auto& [where, keys] : {
             std::pair{Kind::today, "taskList"},
             std::pair{Kind::calendar, "calendarGrid"},
             std::pair{Kind::completed, "sidebar"},  // nothing is listed yet
         }) {
        window().go({where});
        window().close();
        closeWindow();
        window();
        ASSERT_NE(QApplication::focusWidget(), nullptr) << keys;
        EXPECT_EQ(QApplication::focusWidget()->objectName(), keys);
    }
    window().go({Kind::today});
    window().close();
    closeWindow();
    press(Qt::Key_Down);
    press(Qt::Key_Space);
    EXPECT_TRUE(task.completedAt);
}

TEST_F(PlacesJourney, ASearchThatTheNextStartGoesOnWithCanBeKept) {
    window().go({.kind = Kind::search, .text = "ferry"});
    window().close();
    closeWindow();
    EXPECT_EQ(place(), "tesserine://search/ferry");
    commands().trigger("search.save");
    EXPECT_NE(window().findChild<QDialog*>("saveSearchDialog"), nullptr);
}

TEST_F(PlacesJourney, WhereAPlaceWasDeletedMeanwhileTabsAndBackShowAllNotes) {
    CDNotebook& work = environment->notebooks().findOrCreate(context(), "Work");
    CDTag& errands = *environment->tags().findOrCreate(context(), "errands");
    context().save();
    window().go({Kind::tag, *errands.id});
    window().go({Kind::notebook, *work.id});
    window().openTab({Kind::trash});
    environment->notebooks().remove(context(), work);
    environment->tags().remove(context(), errands);
    context().save();
    auto* tabs = window().findChild<QTabBar*>("tabs");
    tabs->setCurrentIndex(0);
    EXPECT_EQ(place(), "tesserine://notes");
    EXPECT_EQ(tabs->tabText(0), "All Notes");
    press(Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(place(), "tesserine://notes");
    press(Qt::Key_Left, Qt::AltModifier);
    EXPECT_FALSE(commands().action("go.back").isEnabled()) << "the way back went on";
    tabs->setCurrentIndex(1);
    EXPECT_EQ(place(), "tesserine://trash");
}

TEST_F(PlacesJourney, WhatIsNotThereIsToldAndTheWindowStays) {
    window().go({Kind::today});
    window().go({Kind::note, Uuid::random(random)});
    EXPECT_EQ(place(), "tesserine://today");
    EXPECT_NE(window().findChild<QMessageBox*>("notice"), nullptr);
}

}  // namespace
}  // namespace tesserine::app
