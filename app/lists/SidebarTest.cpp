#include "app/lists/Sidebar.h"

#include "app/commands/QuickPicker.h"
#include "app/lists/NoteListModel.h"
#include "app/lists/PlaceCounts.h"
#include "app/lists/SidebarModel.h"
#include "app/state/WindowFixture.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>

#include <chrono>
#include <filesystem>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;

class SidebarTest : public test::WindowFixture {
public:
    Sidebar& sidebar() {
        if (!sidebar_) {
            sidebar_ = std::make_unique<Sidebar>(*environment);
            sidebar_->resize(240, 900);
            sidebar_->show();
            QObject::connect(sidebar_.get(), &Sidebar::placeChosen, [this](const Place& place) {
                chosen += place.address() + ";";
            });
        }
        return *sidebar_;
    }
    void TearDown() override { sidebar_.reset(); }

    /// Every line with its count, indented as the tree is.
    std::string lines(const QModelIndex& parent = {}, const std::string& indent = "") {
        const SidebarModel& model = sidebar().places();
        std::string text;
        for (int row = 0; row < model.rowCount(parent); ++row) {
            const QModelIndex index = model.index(row, 0, parent);
            text += indent + index.data().toString().toStdString();
            const auto count = index.data(SidebarModel::countRole).toULongLong();
            if (count > 0) text += " " + std::to_string(count);
            text += "\n" + lines(index, indent + "  ");
        }
        return text;
    }
    CDNotebook& notebook(const std::string& name, CDNotebook* parent = nullptr) {
        CDNotebook& made = environment->notebooks().findOrCreate(context(), name, parent);
        context().save();
        return made;
    }
    /// Moves what is dragged to a place; whether it could be dropped there.
    bool dragTo(const QMimeData& data, const Place& place) {
        const QPoint where = sidebar().visualRect(sidebar().places().indexOf(place)).center();
        QDragEnterEvent enter(where, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(sidebar().viewport(), &enter);
        QDragMoveEvent move(where, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(sidebar().viewport(), &move);
        return move.isAccepted();
    }
    /// Lets go of it where it was moved to.
    void drop(const QMimeData& data) {
        QDropEvent event({}, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(sidebar().viewport(), &event);
    }
    void dropNotes(const std::vector<const CDNote*>& notes, const Place& place) {
        QMimeData data;
        QByteArray ids;
        for (const CDNote* note : notes) {
            ids += QByteArray::fromStdString(note->id->text() + "\n");
        }
        data.setData(notesMimeType, ids);
        dragTo(data, place);
        drop(data);
    }

    std::string chosen;

private:
    std::unique_ptr<Sidebar> sidebar_;
};

TEST_F(SidebarTest, LinesStayWhereTheyAreWhileOthersCome) {
    for (int number = 0; number < 60; ++number) {
        notebook("Notebook " + std::to_string(number));
    }
    const auto topOf = [this](const Place& place) {
        return sidebar().visualRect(sidebar().places().indexOf(place)).top();
    };
    sidebar().mark({Kind::inbox});
    sidebar().verticalScrollBar()->setValue(sidebar().verticalScrollBar()->maximum());
    const int before = topOf({Kind::inbox});
    environment->projects().create(context(), "Below all that is seen");
    notebook("A notebook above it");
    EXPECT_EQ(topOf({Kind::inbox}), before);

    sidebar().verticalScrollBar()->setValue(0);
    notebook("Another one");
    EXPECT_EQ(sidebar().verticalScrollBar()->value(), 0) << "the place that is marked is not seen";
}

TEST_F(SidebarTest, ListsEveryPlaceWithWhatIsInIt) {
    CDNotebook& work = notebook("Work");
    CDNotebook& plans = notebook("Plans", &work);
    addNote("in work", "", &work);
    CDNote& planned = addNote("in plans", "", &plans);
    environment->notes().addTag(planned, *environment->tags().findOrCreate(context(), "travel"));
    environment->notes().moveToTrash(addNote("old"));
    environment->savedSearches().create(context(), "Tax", "tag:tax");
    addTask("Pay bill today @home #House");
    const std::string expected =
        "Notes\n  All Notes 2\n  Pinned\n  Reminders\n  Templates\n"
        "Notebooks\n  Work 1\n    Plans 1\n"
        "Tags\n  home\n  travel 1\n"
        "Saved Searches\n  Tax\n"
        "Tasks\n  Inbox\n  Today 1\n  Upcoming\n  All Tasks 1\n  Completed\n  Calendar\n  Task Templates\n"
        "Projects\n  House 1\n"
        "Labels\n  home 1\n"
        "Trash 1\n";
    EXPECT_TRUE(waitUntil([&] { return lines() == expected; })) << lines();
}

TEST_F(SidebarTest, RemindersOfNotesAndOpenTasksAreCountedTogether) {
    const Instant soon = clock.now() + std::chrono::hours(1);
    environment->notes().setReminder(addNote("Plan"), soon);
    environment->tasks().setReminder(addTask("Call Ann"), soon);
    CDTask& done = addTask("Pay the bill");
    environment->tasks().setReminder(done, soon);
    environment->tasks().complete(context(), done, environment->calendar());
    context().save();
    auto counts = countPlaces(context(), clock, environment->calendar());
    EXPECT_EQ(counts[Place{Kind::reminders}.address()], 2U);
}

TEST_F(SidebarTest, FollowsTheLibraryWithoutLosingThePlaceOrTheFolding) {
    CDNotebook& work = notebook("Work");
    notebook("Plans", &work);
    const Place place{Kind::notebook, *work.id};
    sidebar().setCurrentIndex(sidebar().places().indexOf(place));
    sidebar().collapse(sidebar().places().indexOf(place));
    EXPECT_EQ(chosen, place.address() + ";");
    notebook("Another");
    const QModelIndex index = sidebar().places().indexOf(place);
    EXPECT_EQ(sidebar().currentIndex(), index);
    EXPECT_FALSE(sidebar().isExpanded(index));
    EXPECT_EQ(chosen, place.address() + ";") << "nothing was chosen anew";
}

TEST_F(SidebarTest, AGroupStaysFoldedAroundThePlaceThatIsShown) {
    const Place place{Kind::notebook, *notebook("Work").id};
    const auto index = [&] { return sidebar().places().indexOf(place); };
    sidebar().setCurrentIndex(index());
    QTest::mouseClick(
        sidebar().viewport(), Qt::LeftButton, {}, sidebar().visualRect(index().parent()).center());
    EXPECT_FALSE(sidebar().isExpanded(index().parent()));
    EXPECT_EQ(sidebar().currentIndex(), index()) << "one is still there";
    notebook("Another");
    EXPECT_FALSE(sidebar().isExpanded(index().parent()));
    EXPECT_EQ(sidebar().currentIndex(), index());
    sidebar().renameCurrent();
    EXPECT_TRUE(sidebar().isExpanded(index().parent())) << "no name is typed out of sight";
}

TEST_F(SidebarTest, AGroupUnfoldedToShowAPlaceStaysSo) {
    const Place place{Kind::notebook, *notebook("Work").id};
    const auto group = [&] { return sidebar().places().indexOf(place).parent(); };
    sidebar().collapse(group());
    sidebar().mark(place);
    ASSERT_TRUE(sidebar().isExpanded(group()));
    notebook("Another");
    EXPECT_TRUE(sidebar().isExpanded(group()));
}

TEST_F(SidebarTest, OnlyTheLeftButtonGoesToAPlace) {
    const Place place{Kind::notebook, *notebook("Work").id};
    std::string tabs;
    QObject::connect(
        &sidebar(), &Sidebar::newTabWanted, [&](const Place& wanted) { tabs += wanted.address(); });
    const QPoint there = sidebar().visualRect(sidebar().places().indexOf(place)).center();
    QTest::mouseClick(sidebar().viewport(), Qt::RightButton, {}, there);
    QTest::mouseClick(sidebar().viewport(), Qt::MiddleButton, {}, there);
    EXPECT_EQ(chosen, "");
    EXPECT_EQ(tabs, place.address());
    QTest::mouseClick(sidebar().viewport(), Qt::LeftButton, {}, there);
    EXPECT_EQ(chosen, place.address() + ";");
}

TEST_F(SidebarTest, FoldsAlsoWhereThatCannotBeKept) {
    CDNotebook& work = notebook("Work");
    notebook("Plans", &work);
    std::filesystem::path lock = setting().preferencesFile;
    lock += ".lock";
    std::filesystem::remove(lock);
    std::filesystem::create_directory(lock);
    const QModelIndex index = sidebar().places().indexOf({Kind::notebook, *work.id});
    sidebar().collapse(index);
    EXPECT_FALSE(sidebar().isExpanded(index));
}

TEST_F(SidebarTest, NotebooksAreMadeRenamedAndDeletedInPlace) {
    addNote("Plan");
    sidebar().createNotebook();
    auto* field = sidebar().findChild<QLineEdit*>();
    ASSERT_NE(field, nullptr);
    QTest::keyClicks(field, "Garden");
    QTest::keyClick(field, Qt::Key_Return);
    settle();
    const CDNotebook* made = environment->notebooks().find(context(), "Garden");
    ASSERT_NE(made, nullptr);

    sidebar().renameCurrent();
    QTest::keyClicks(sidebar().findChild<QLineEdit*>(), "Gardens");
    notebook("Work");  // somebody else makes it meanwhile
    settle();
    field = sidebar().findChild<QLineEdit*>();
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->text(), "Gardens");
    QTest::keyClick(field, Qt::Key_Home, Qt::ShiftModifier);
    notebook("Zebra");
    settle();
    field = sidebar().findChild<QLineEdit*>();
    ASSERT_NE(field, nullptr);
    QTest::keyClicks(field, "Beds");
    EXPECT_EQ(field->text(), "Beds") << "what was selected is replaced";
    QTest::keyClick(field, Qt::Key_Escape);
    settle();

    sidebar().renameCurrent();
    field = sidebar().findChild<QLineEdit*>();
    ASSERT_NE(field, nullptr);
    QTest::keyClicks(field, "work");
    QTest::keyClick(field, Qt::Key_Return);
    settle();
    auto* notice = sidebar().findChild<QMessageBox*>("notice");
    ASSERT_NE(notice, nullptr);
    EXPECT_EQ(notice->text(), "A notebook called “work” already exists here.");
    delete notice;
    EXPECT_EQ(made->name, "Garden");

    sidebar().setCurrentIndex(sidebar().places().indexOf({Kind::notebook, *made->id}));
    sidebar().deleteCurrent();
    auto* question = sidebar().findChild<QMessageBox*>("question");
    ASSERT_NE(question, nullptr);
    EXPECT_EQ(question->text(), "Delete the notebook “Garden”? Its notes stay, in no notebook.");
    for (QAbstractButton* button : question->buttons()) {
        if (button->text() == "Delete Notebook") button->click();
    }
    EXPECT_EQ(environment->notebooks().find(context(), "Garden"), nullptr);
}

TEST_F(SidebarTest, NotebooksAndTagsMoveByTheMenu) {
    CDNotebook& work = notebook("Work");
    CDNotebook& plans = notebook("Plans", &work);
    CDNotebook& home = notebook("Home");
    const auto move = [this](const Place& place, const char* letters) {
        settle();
        const QPoint where = sidebar().visualRect(sidebar().places().indexOf(place)).center();
        QContextMenuEvent event(QContextMenuEvent::Mouse, where, sidebar().mapToGlobal(where));
        QApplication::sendEvent(sidebar().viewport(), &event);
        auto* const menu = sidebar().findChild<QMenu*>("sidebarMenu");
        for (QAction* const action : menu->actions()) {
            if (action->text() == "Move…") action->trigger();
        }
        delete menu;
        auto* const picker = sidebar().findChild<QuickPicker*>();
        auto* const field = picker->findChild<QLineEdit*>();
        QTest::keyClicks(field, letters);
        const int offered = picker->findChild<QListView*>()->model()->rowCount();
        QTest::keyClick(field, Qt::Key_Return);
        delete picker;
        return offered;
    };
    move({Kind::notebook, *work.id}, "home");
    EXPECT_EQ(work.parent.get(), &home);
    EXPECT_EQ(move({Kind::notebook, *home.id}, "plans"), 0) << "stands below it";
    EXPECT_EQ(home.parent.get(), nullptr);
    move({Kind::notebook, *plans.id}, "top");
    EXPECT_EQ(plans.parent.get(), nullptr);

    CDTag& red = *environment->tags().findOrCreate(context(), "red");
    CDTag& color = *environment->tags().findOrCreate(context(), "color");
    context().save();
    settle();
    move({Kind::tag, *red.id}, "color");
    EXPECT_EQ(red.parent.get(), &color);
    EXPECT_FALSE(context().hasChanges());
}

TEST_F(SidebarTest, NotesAreDroppedOnNotebooksTagsAndTheTrash) {
    CDNotebook& work = notebook("Work");
    CDTag& red = *environment->tags().findOrCreate(context(), "red");
    CDNote& plan = addNote("Plan");
    CDNote& bill = addNote("Bill");
    dropNotes({&plan, &bill}, {Kind::notebook, *work.id});
    EXPECT_EQ(plan.notebook.get(), &work);
    EXPECT_EQ(bill.notebook.get(), &work);
    dropNotes({&plan}, {Kind::tag, *red.id});
    EXPECT_TRUE(plan.tags.contains(red));
    dropNotes({&plan}, {Kind::templates});  // takes none
    EXPECT_FALSE(bool(plan.isTemplate));
    dropNotes({&bill}, {Kind::trash});
    EXPECT_TRUE(bill.trashedAt.get().has_value());
    EXPECT_FALSE(context().hasChanges()) << "everything is saved";
}

TEST_F(SidebarTest, WhatIsDraggedOutOfTheTrashIsInItNoMore) {
    CDNotebook& work = notebook("Work");
    const CDTag& red = *environment->tags().findOrCreate(context(), "red");
    CDNote& plan = addNote("Plan");
    for (const Place& place :
         {Place{Kind::notebook, *work.id},
          Place{Kind::tag, *red.id},
          Place{Kind::pinned},
          Place{Kind::allNotes}}) {
        SCOPED_TRACE(place.address());
        environment->notes().moveToTrash(plan);
        context().save();
        dropNotes({&plan}, place);
        EXPECT_FALSE(plan.trashedAt.get().has_value());
    }
    EXPECT_EQ(plan.notebook.get(), &work);
    EXPECT_TRUE(plan.tags.contains(red));
    EXPECT_TRUE(bool(plan.isPinned));
    const auto before = plan.updatedAt.get();
    clock.advance(std::chrono::minutes(1));
    dropNotes({&plan}, {Kind::allNotes});
    EXPECT_EQ(plan.updatedAt.get(), before) << "it is there already";
}

TEST_F(SidebarTest, ATagThatBecomesAnotherOneIsShownAsThat) {
    const CDTag& recipe = *environment->tags().findOrCreate(context(), "recipe");
    const CDTag& recipes = *environment->tags().findOrCreate(context(), "recipes");
    const Place place{Kind::tag, *recipes.id};
    context().save();
    sidebar().mark(place);
    sidebar().renameCurrent();
    auto* const field = sidebar().findChild<QLineEdit*>();
    QTest::keyClicks(field, "Recipe");
    QTest::keyClick(field, Qt::Key_Return);
    settle();
    EXPECT_EQ(chosen, Place({Kind::tag, *recipe.id}).address() + ";");
}

TEST_F(SidebarTest, TheLabelsAreThoseOfTheTasksThatAreOpen) {
    const auto labels = [this] {
        const std::string all = lines();
        return all.substr(std::min(all.find("Labels"), all.size()));
    };
    CDTask& task = addTask("Call Ana @phone");
    EXPECT_TRUE(waitUntil([&] { return labels() == "Labels\n  phone 1\nTrash\n"; })) << lines();
    environment->tasks().complete(context(), task, environment->calendar());
    addTask("Buy nails @errand");  // as many labels as before
    EXPECT_TRUE(waitUntil([&] { return labels() == "Labels\n  errand 1\nTrash\n"; })) << lines();
}

TEST_F(SidebarTest, SaysWhatBecomesOfNotebooksInsideOneThatIsDeleted) {
    CDNotebook& work = notebook("Work");
    CDNotebook& plans = notebook("Plans", &work);
    sidebar().mark({Kind::notebook, *work.id});
    sidebar().deleteCurrent();
    auto* const box = sidebar().findChild<QMessageBox*>("question");
    EXPECT_TRUE(box->text().endsWith("What stands inside it moves to the top."));
    for (QAbstractButton* const button : box->buttons()) {
        if (button->text() == "Delete Notebook") button->click();
    }
    EXPECT_EQ(plans.parent.get(), nullptr);
    EXPECT_EQ(environment->notebooks().find(context(), "Plans"), &plans);
}

TEST_F(SidebarTest, WhatIsDraggedGoesToThePlaceThatWasFramed) {
    const Place work{Kind::notebook, *notebook("Work").id};
    CDNotebook& zebra = notebook("Zebra");
    const Place tag{Kind::tag, *environment->tags().findOrCreate(context(), "red")->id};
    context().save();
    QMimeData data;
    data.setData(
        "application/x-tesserine-notebook",
        QByteArray::fromStdString(Place{Kind::notebook, *zebra.id}.address()));
    const auto picture = [&] {
        const QRect line = sidebar().visualRect(sidebar().places().indexOf(work));
        return sidebar().viewport()->grab(line).toImage();
    };
    const QImage before = picture();
    EXPECT_FALSE(dragTo(data, tag)) << "a notebook is no tag";
    EXPECT_EQ(picture(), before);
    EXPECT_TRUE(dragTo(data, work));
    EXPECT_NE(picture(), before);
    notebook("Alpha");  // made elsewhere: the lines move on below the pointer
    drop(data);
    ASSERT_NE(zebra.parent.get(), nullptr);
    EXPECT_EQ(zebra.parent->name.valueOr(""), "Work");
}

}  // namespace
}  // namespace tesserine::app
