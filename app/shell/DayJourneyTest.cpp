// A day's work through the whole window: once by keys alone, once by clicks, which type only what
// is text.

#include "app/commands/NoteSwitcher.h"
#include "app/editor/PassageDialogs.h"
#include "app/search/SearchField.h"
#include "app/search/SearchResults.h"
#include "app/shell/ShellFixture.h"
#include "app/tasks/QuickAddBar.h"
#include "app/tasks/TaskDelegate.h"
#include "app/tasks/TaskListView.h"
#include "app/tasks/TasksPage.h"
#include "core/body/LockedPassages.h"
#include "search/SearchCoordinator.h"

#include <QListView>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QTabBar>
#include <QTimer>
#include <QToolButton>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;
constexpr auto control = Qt::ControlModifier;
constexpr auto controlShift = Qt::ControlModifier | Qt::ShiftModifier;

class DayJourney : public test::ShellFixture {
public:
    CDNote* stored(const std::string& title) {
        return context().fetchFirst<CDNote>({.predicate = {"title == %@", title}});
    }
    CDTask& task(const std::string& title) {
        auto* const found = context().fetchFirst<CDTask>({.predicate = {"title == %@", title}});
        EXPECT_NE(found, nullptr) << title;
        return *found;
    }
    std::string place() { return window().current().place.address(); }

    /// Chooses a command of the palette by some letters of its title.
    void command(const QString& letters) {
        press(Qt::Key_P, controlShift);
        type(letters);
        press(Qt::Key_Return);
        settle();
        // Without a desktop nobody gives the window its focus back after a pop-up.
        window().activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window()));
    }
    void clickOn(QWidget& widget) { QTest::mouseClick(&widget, Qt::LeftButton); }
    /// A button of the window that does this command.
    void clickButton(const char* name) {
        for (auto* const button : window().findChildren<QToolButton*>()) {
            if (button->isVisible() && button->accessibleName() == name) return clickOn(*button);
        }
        ADD_FAILURE() << "no button " << name;
    }
    void drop(const Place& place, const QMimeData& dragged) {
        Sidebar& sidebar = window().sidebar();
        const QModelIndex index = sidebar.places().indexOf(place);
        sidebar.scrollTo(index);
        const QPoint point = sidebar.visualRect(index).center();
        QDragEnterEvent enter(
            point, Qt::CopyAction | Qt::MoveAction, &dragged, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(sidebar.viewport(), &enter);
        QDragMoveEvent move(
            point, Qt::CopyAction | Qt::MoveAction, &dragged, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(sidebar.viewport(), &move);
        QDropEvent event(
            point, Qt::CopyAction | Qt::MoveAction, &dragged, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(sidebar.viewport(), &event);
    }
};

TEST_F(DayJourney, PassesByKeysAlone) {
    press(Qt::Key_N, control);
    type("Lisbon in May");
    press(Qt::Key_Return);
    type("# Packing");
    press(Qt::Key_Return);
    type("[] passports");
    press(Qt::Key_Return, control);  // ticks it
    press(Qt::Key_T, control | Qt::AltModifier);
    type("travel");
    press(Qt::Key_Return);
    press(Qt::Key_Escape);

    press(Qt::Key_N, controlShift);
    type("Book the train tomorrow 9am");
    press(Qt::Key_Return);
    type("Call Ana");
    press(Qt::Key_Return);
    command("inbox");
    EXPECT_EQ(place(), "tesserine://inbox");
    auto& list = *window().tasks().findChild<TaskListView*>();
    ASSERT_TRUE(waitUntil([&] { return list.model()->rowCount() == 2; }));
    list.setFocus(Qt::TabFocusReason);
    press(Qt::Key_End);
    press(Qt::Key_Home);
    press(Qt::Key_1);
    press(Qt::Key_Space);
    ASSERT_TRUE(waitUntil([&] {
        return task("Book the train").completedAt.get().has_value()
               || task("Call Ana").completedAt.get().has_value();
    }));

    press(Qt::Key_P, control);
    type("lisb");
    auto& found = *window().findChild<NoteSwitcher*>()->findChild<QListView*>("pickerList");
    ASSERT_TRUE(waitUntil([&] { return found.model()->rowCount() > 0; }));
    press(Qt::Key_Return);
    settle();
    EXPECT_EQ(openTitle(), "Lisbon in May");
    EXPECT_EQ(
        stored("Lisbon in May")->html,
        "<h1>Packing</h1><ul class=\"ts-checklist\"><li data-checked=\"true\">passports</li></ul>");
    press(Qt::Key_F2);
    type("Lisbon in June");
    press(Qt::Key_S, control);
    const CDNote* const lisbon = stored("Lisbon in June");
    ASSERT_NE(lisbon, nullptr);
    ASSERT_EQ(lisbon->tags.all().size(), 1U);
    EXPECT_EQ(lisbon->tags.all().front()->name, "travel");

    environment->search().catchUp();
    press(Qt::Key_F, controlShift);
    type("passports");
    auto& results = window().searchResults().list();
    ASSERT_TRUE(waitUntil([&] { return results.model()->rowCount() == 1; }));
    press(Qt::Key_Escape);
    press(Qt::Key_Left, Qt::AltModifier);
    command("all notes");
    EXPECT_EQ(place(), "tesserine://notes");
    press(Qt::Key_Delete);
    EXPECT_TRUE(lisbon->trashedAt.get().has_value());
    command("calendar");
    EXPECT_EQ(place(), "tesserine://calendar");
}

TEST_F(DayJourney, PassesByTheMouse) {
    CDNotebook& work = environment->notebooks().findOrCreate(context(), "Work");
    const CDTag& errand = *environment->tags().findOrCreate(context(), "errand");
    addNote("Minutes");
    addTask("Call Ana");
    addTask("Write the report");
    window();

    clock.advance(std::chrono::minutes(1));
    clickButton("New Note");
    clickOn(editor().title());
    type("Plan");
    clickOn(*editor().body().viewport());
    type("by train");
    clickPlace({Kind::allNotes});
    ASSERT_EQ(titles(), "Plan;Minutes;");
    clickNote(1);
    EXPECT_EQ(openTitle(), "Minutes");
    EXPECT_EQ(stored("Plan")->html, "<p>by train</p>");

    const std::unique_ptr<QMimeData> note(list().model().mimeData({list().model().index(0, 0)}));
    drop({Kind::notebook, *work.id}, *note);
    EXPECT_EQ(stored("Plan")->notebook.get(), &work);
    clickPlace({Kind::notebook, *work.id});
    EXPECT_EQ(titles(), "Plan;");

    clickPlace({Kind::inbox});
    auto& tasks = *window().tasks().findChild<TaskListView*>();
    ASSERT_TRUE(waitUntil([&] { return tasks.model()->rowCount() == 2; }));
    const QModelIndex first = tasks.model()->index(0, 0);
    const std::unique_ptr<QMimeData> dragged(tasks.model()->mimeData({first}));
    drop({Kind::today}, *dragged);
    const auto dueToday = context().fetch<CDTask>({.predicate = {"dueDate != nil"}});
    ASSERT_EQ(dueToday.size(), 1U);
    EXPECT_EQ(dueToday.front()->dueDate, Instant::parseISO("2026-03-14T00:00:00Z"));
    drop({Kind::tag, *errand.id}, *dragged);
    EXPECT_TRUE(dueToday.front()->labels.contains(errand));
    const Place label{Kind::label, *errand.id};
    ASSERT_TRUE(waitUntil([&] { return window().sidebar().places().indexOf(label).isValid(); }));
    window().sidebar().scrollTo(window().sidebar().places().indexOf(label));
    clickPlace(label);
    ASSERT_TRUE(waitUntil([&] { return tasks.model()->rowCount() == 1; }));
    clickPlace({Kind::today});
    clickPlace({Kind::trash});
    clickButton("Back");
    EXPECT_EQ(place(), "tesserine://today");
    clickButton("Sidebar");
    EXPECT_FALSE(window().sidebar().isVisible());
}

TEST_F(DayJourney, ALockedPassageIsFoundNoMore) {
    CDNote& note = addNote("Keys", "<p>The key is swordfish.</p>");
    list().choose(*note.id);
    editor().body().setFocus();
    press(Qt::Key_A, control);
    command("lock selection");
    auto* const dialog = window().findChild<LockDialog*>();
    ASSERT_NE(dialog, nullptr);
    for (const char* field : {"passphrase", "confirmation"}) {
        QTest::keyClicks(dialog->findChild<QLineEdit*>(field), "correct horse");
    }
    // Earlier versions of the note hold the text as well, and are asked about.
    QTimer answering;
    QObject::connect(&answering, &QTimer::timeout, [] {
        auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box != nullptr && box->button(QMessageBox::Yes) != nullptr) {
            box->button(QMessageBox::Yes)->click();
        }
    });
    answering.start(20);
    dialog->accept();
    ASSERT_TRUE(waitUntil([&] { return lockedPassages(note.html.valueOr("")).size() == 1; }));
    EXPECT_EQ(note.html->find("swordfish"), std::string::npos);
    environment->search().catchUp();
    const auto found = [this](const char* word) {
        bool isAnswered = false;
        const QObject listener;
        auto& results = window().searchResults();
        QObject::connect(
            &results.runner(), &SearchRunner::answered, &listener, [&] { isAnswered = true; });
        window().go({.kind = Kind::search, .text = word});
        EXPECT_TRUE(waitUntil([&] { return isAnswered; }));
        return results.list().model()->rowCount();
    };
    EXPECT_EQ(found("keys"), 1);
    EXPECT_EQ(found("swordfish"), 0);
}

TEST_F(DayJourney, TakesBackWhatWasDoneToTasksFromTheSidebarAndTheMenu) {
    CDTask& banners = addTask("Order banners");
    CDNote& note = addNote("Lisbon", "<p>In May</p>");
    window().go({Kind::note, *note.id});
    editor().body().setFocus();
    type("Not ");
    ASSERT_TRUE(window().save());
    window().go({Kind::allTasks});
    window().focusContent();
    auto& list = *window().tasks().findChild<TaskListView*>();
    list.selectTask(*banners.id);
    press(Qt::Key_2);
    press(Qt::Key_1);
    ASSERT_EQ(banners.priority, 1);
    clickPlace({Kind::inbox});
    settle();
    ASSERT_TRUE(window().sidebar().hasFocus());
    press(Qt::Key_Z, control);
    EXPECT_EQ(banners.priority, 2);

    QMenu* edit = nullptr;
    for (const QAction* const one : window().menuBar()->actions()) {
        if (one->menu()->actions().contains(&commands().action("find.open"))) edit = one->menu();
    }
    ASSERT_NE(edit, nullptr);
    const auto offered = [&](const char* title) {
        emit edit->aboutToShow();
        for (QAction* const one : edit->actions()) {
            if (one->text() == title) return one;
        }
        return static_cast<QAction*>(nullptr);
    };
    EXPECT_TRUE(offered("Redo")->isEnabled());
    ASSERT_TRUE(offered("Undo")->isEnabled());
    offered("Undo")->trigger();
    EXPECT_EQ(banners.priority, 4);
    EXPECT_FALSE(offered("Undo")->isEnabled());
    offered("Redo")->trigger();
    EXPECT_EQ(banners.priority, 2);

    window().newTask("Call Ana");
    settle();
    offered("Undo")->trigger();
    EXPECT_EQ(banners.priority, 2) << "the keys are in a text";
    EXPECT_EQ(context().count<CDTask>(), 1U);
    window().newTask("");
    settle();
    offered("Undo")->trigger();
    EXPECT_EQ(banners.priority, 4) << "nothing is in the bar to take back";
    offered("Redo")->trigger();
    EXPECT_EQ(banners.priority, 2);

    window().go({Kind::note, *note.id});
    settle();
    EXPECT_EQ(offered("Undo"), &commands().action("edit.undo"));
    offered("Undo")->trigger();
    EXPECT_EQ(banners.priority, 2) << "among notes it is theirs";
    EXPECT_EQ(note.plainText, "Not In May") << "not saved yet";
    ASSERT_TRUE(window().save());
    EXPECT_EQ(note.plainText, "In May");
}

}  // namespace
}  // namespace tesserine::app
