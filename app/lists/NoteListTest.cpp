#include "app/lists/NoteList.h"

#include "app/lists/NoteListView.h"
#include "app/lists/Pickers.h"
#include "app/state/WindowFixture.h"

#include <gtest/gtest.h>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMessageBox>
#include <QTest>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;

class NoteListTest : public test::WindowFixture {
public:
    NoteListTest() {
        window.resize(600, 400);
        list.resize(320, 400);
        QObject::connect(&list, &NoteList::noteChosen, [this](const std::optional<Uuid>& note) {
            chosen = note;
        });
        QObject::connect(&list, &NoteList::noteMade, [this](const Uuid& note) { made = note; });
        window.show();
    }

    /// Newer than those before.
    CDNote& add(const std::string& title) {
        clock.advance(std::chrono::minutes(1));
        return addNote(title);
    }
    /// As a disk that is full or may only be read does.
    void blockPreferences() {
        std::filesystem::path lock = setting().preferencesFile;
        lock += ".lock";
        std::filesystem::remove(lock);
        std::filesystem::create_directory(lock);
    }
    std::string titles() {
        std::string text;
        for (int row = 0; row < list.model().rowCount(); ++row) {
            text += list.model().summary(row).title.toStdString() + ";";
        }
        return text;
    }
    /// Types into the picker that is open, and takes its first row.
    std::string pickBy(const QString& letters) {
        auto* const field = window.findChild<QLineEdit*>("pickerField");
        auto* const rows = window.findChild<QListView*>("pickerList");
        if (field == nullptr || rows == nullptr) return "no picker";
        QTest::keyClicks(field, letters);
        std::string first = "nothing";
        if (rows->model()->rowCount() > 0) {
            first = rows->model()->index(0, 0).data().toString().toStdString();
        }
        QTest::keyClick(field, Qt::Key_Return);
        settle();
        return first;
    }

    QWidget window;
    NoteList list{*environment, &window};
    std::optional<Uuid> chosen;
    std::optional<Uuid> made;
};

TEST_F(NoteListTest, ThePlaceOfANoteThatGoesIsTakenByTheNextOne) {
    const CDNote& third = add("third");
    const CDNote& second = add("second");
    const CDNote& first = add("first");
    list.showPlace({Kind::allNotes});
    EXPECT_EQ(chosen, *first.id) << "the first note is open from the start";
    list.choose(*second.id);
    list.moveToTrash();
    EXPECT_EQ(titles(), "first;third;");
    EXPECT_EQ(chosen, *third.id);
    list.moveToTrash();
    EXPECT_EQ(chosen, *first.id) << "the last line is followed by the one above";
    list.moveToTrash();
    EXPECT_EQ(chosen, std::nullopt);
    EXPECT_EQ(titles(), "");
}

TEST_F(NoteListTest, AMenuIsOfTheNotesItWasOpenedForWhateverOthersChangeMeanwhile) {
    CDNote& chosenNote = add("chosen");
    const CDNote& neighbour = add("neighbour");
    std::vector<Uuid> moved;
    QObject::connect(&list, &NoteList::moveWanted, [&](const auto& notes) { moved = notes; });
    for (const QString entry : {"Move to Trash", "Move to Notebook…", "Pin"}) {
        SCOPED_TRACE(entry.toStdString());
        environment->notes().restoreFromTrash(chosenNote);
        context().save();
        list.showPlace({Kind::allNotes}, *chosenNote.id);
        emit list.view().customContextMenuRequested({5, 5});
        auto* const menu = list.findChild<QMenu*>("noteMenu");
        ASSERT_NE(menu, nullptr);
        environment->notes().moveToTrash(chosenNote);
        context().save();
        EXPECT_EQ(chosen, *neighbour.id) << "which has taken its place";
        for (QAction* const action : menu->actions()) {
            if (action->text() == entry) action->trigger();
        }
        EXPECT_FALSE(neighbour.trashedAt);
        EXPECT_FALSE(neighbour.isPinned);
        delete menu;
    }
    EXPECT_EQ(moved, std::vector{*chosenNote.id});
}

TEST_F(NoteListTest, ANoteThatIsNotListedYetIsChosenOnceItIs) {
    add("Plan");
    list.showPlace({Kind::allNotes});
    list.createNote();
    ASSERT_TRUE(chosen.has_value());
    EXPECT_EQ(made, chosen) << "it is to be written";
    EXPECT_EQ(list.model().rowCount(), 2);
}

TEST_F(NoteListTest, WhatIsSelectedStaysSoWhenTheListIsReadAnew) {
    std::vector<const CDNote*> notes;
    for (int i = 0; i < 300; ++i) {
        clock.advance(std::chrono::seconds(1));
        notes.push_back(&environment->notes().createNote(context(), {.title = "older"}));
    }
    context().save();
    list.showPlace({Kind::allNotes});
    ASSERT_TRUE(waitUntil([&] { return list.model().isComplete(); }));
    QItemSelectionModel& selection = *list.view().selectionModel();
    selection.select(list.model().index(20), QItemSelectionModel::ClearAndSelect);
    for (const int row : {21, 22, 250, 299})
        selection.select(list.model().index(row), QItemSelectionModel::Select);
    auto before = list.selected();
    ASSERT_EQ(before.size(), 5U);

    // So many changes at once that the list starts over; one of the selected notes goes.
    environment->notes().moveToTrash(*context().find<CDNote>(before.back()));
    for (const CDNote* note : notes) {
        clock.advance(std::chrono::seconds(1));
        environment->notes().updateNote(
            context(), *context().find<CDNote>(*note->id), {.title = "newer"});
    }
    context().save();
    ASSERT_TRUE(waitUntil([&] { return list.model().rowCount() == 299; }));
    auto after = list.selected();
    before.pop_back();
    std::ranges::sort(before);
    std::ranges::sort(after);
    EXPECT_EQ(after, before);

    list.view().selectAll();  // of which none is the one to stay with
    list.setOrder(NoteOrder::title);
    ASSERT_TRUE(waitUntil([&] { return list.model().isComplete(); }));
    EXPECT_EQ(list.selected(), std::vector{list.model().noteAt(0)}) << "another order, its top";
    EXPECT_EQ(chosen, list.model().noteAt(0));
}

TEST_F(NoteListTest, TheOrderIsKeptForTheNextStart) {
    add("beta");
    add("Äpfel");
    add("Zebra");
    list.showPlace({Kind::allNotes});
    EXPECT_EQ(titles(), "Zebra;Äpfel;beta;");
    list.setOrder(NoteOrder::title);
    ASSERT_TRUE(waitUntil([&] { return titles() == "Äpfel;beta;Zebra;"; })) << titles();
    NoteList later(*environment);
    later.showPlace({Kind::allNotes});
    ASSERT_TRUE(waitUntil([&] { return later.model().rowCount() == 3; }));
    EXPECT_EQ(later.model().summary(0).title, "Äpfel");
}

TEST_F(NoteListTest, AnOrderThatCannotBeKeptIsToldAndChangesNothing) {
    add("beta");
    add("Äpfel");
    list.showPlace({Kind::allNotes});
    blockPreferences();
    list.setOrder(NoteOrder::title);
    EXPECT_NE(window.findChild<QMessageBox*>("notice"), nullptr);
    EXPECT_EQ(titles(), "Äpfel;beta;");
}

TEST_F(NoteListTest, NotebooksArePickedByAFewLettersOfTheirPath) {
    CDNotebook& work = environment->notebooks().findOrCreate(context(), "Work");
    CDNotebook& plans = environment->notebooks().findOrCreate(context(), "Plans", &work);
    environment->notebooks().findOrCreate(context(), "Plants");
    context().save();
    std::optional<Uuid> picked;
    int times = 0;
    const auto take = [&](const std::optional<Uuid>& notebook) {
        picked = notebook;
        ++times;
    };
    pickNotebook(*environment, &window, take);
    EXPECT_EQ(pickBy("wopl"), "Work / Plans");
    EXPECT_EQ(picked, *plans.id);
    pickNotebook(*environment, &window, take);
    EXPECT_EQ(pickBy("no note"), "No notebook");
    EXPECT_EQ(picked, std::nullopt);
    pickNotebook(*environment, &window, take);
    EXPECT_EQ(pickBy("xyz"), "nothing");
    EXPECT_EQ(times, 2);
}

TEST_F(NoteListTest, ANewTagIsOfferedOnlyWhereThereIsNone) {
    const CDTag& travel = *environment->tags().findOrCreate(context(), "Travel");
    context().save();
    NoteActions::ChosenTag picked;
    const auto take = [&](const NoteActions::ChosenTag& tag) { picked = tag; };
    pickTag(*environment, &window, take);
    EXPECT_EQ(pickBy("travel"), "Travel") << "not a second one that differs in its capitals";
    EXPECT_EQ(picked.id, *travel.id) << "whatever its name is by then";
    pickTag(*environment, &window, take);
    EXPECT_EQ(pickBy("garden"), "garden");
    EXPECT_EQ(picked.name, "garden");
    EXPECT_FALSE(picked.id);
}

}  // namespace
}  // namespace tesserine::app
