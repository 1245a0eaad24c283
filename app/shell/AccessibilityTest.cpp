// Whether everything that can be reached by Tab tells a screen reader what it is: on every page, in
// every area of the settings, and in every dialog that a command opens.

#include "app/pages/SettingsPage.h"
#include "app/shell/ShellFixture.h"
#include "app/shell/WindowRooms.h"

#include <QAccessible>
#include <QDialog>
#include <QListWidget>

#include <set>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;

bool isReachedByTab(const QWidget& widget) {
    return widget.isVisible() && widget.isEnabled() && (widget.focusPolicy() & Qt::TabFocus) != 0
           && widget.focusProxy() == nullptr;
}

/// Where a widget stands: its own name and those around it.
std::string pathOf(const QWidget& widget) {
    std::string path;
    for (const QWidget* one = &widget; one != nullptr; one = one->parentWidget()) {
        const QString name = one->objectName();
        path += one->metaObject()->className() + ("(" + name.toStdString() + ") < ");
    }
    return path;
}

/// Counts what can be reached within `root`, and names whatever has no name.
int expectNames(const QWidget& root) {
    int reached = 0;
    for (QWidget* const widget : root.findChildren<QWidget*>()) {
        if (!isReachedByTab(*widget)) continue;
        ++reached;
        QAccessibleInterface* const told = QAccessible::queryAccessibleInterface(widget);
        EXPECT_TRUE(told != nullptr && !told->text(QAccessible::Name).isEmpty()) << pathOf(*widget);
    }
    return reached;
}

class Accessibility : public test::ShellFixture {
public:
    void fill() {
        CDNote& note = addNote(
            "Plan",
            "<p>Of the <a href=\"https://example.org\">year</a></p>"
            "<ul class=\"ts-checklist\"><li data-checked=\"false\">one</li></ul>");
        note.tags.add(*environment->tags().findOrCreate(context(), "work"));
        noteID = *note.id;
        taskID = *addTask("Call Ann tomorrow 9am #Work @phone p1 every week").id;
        environment->savedSearches().create(context(), "Plans", "plan");
        context().save();
    }
    /// With everything that is put into it later.
    void openWindow() {
        fill();
        window();
        addRooms(window(), commands(), *environment);
    }

    Uuid noteID;
    Uuid taskID;
};

TEST_F(Accessibility, EveryPageNamesWhatCanBeReached) {
    openWindow();
    for (const char* address :
         {"notes",
          "pinned",
          "reminders",
          "templates",
          "inbox",
          "today",
          "upcoming",
          "tasks",
          "completed",
          "calendar",
          "trash",
          "search/plan",
          "search/",
          "task-templates"}) {
        SCOPED_TRACE(address);
        const auto place = Place::fromAddress(address);
        ASSERT_TRUE(place);
        window().go(*place);
        settle();
        EXPECT_GT(expectNames(window()), 5);
    }
    for (const Place& place : {Place{Kind::note, noteID}, Place{Kind::task, taskID}}) {
        SCOPED_TRACE(place.address());
        window().go(place);
        settle();
        EXPECT_GT(expectNames(window()), 10);
    }
}

TEST_F(Accessibility, EveryCommandOpensWhatNamesItsControls) {
    openWindow();
    window().go({Kind::note, noteID});
    settle();
    for (const char* id :
         {"note.tags",      "note.move",        "note.reminder",     "note.versions",
          "view.outline",   "find.open",        "find.replace",      "view.backlinks",
          "go.switcher",    "go.palette",       "help.keys",         "help.about",
          "library.import", "library.export",   "note.fromTemplate", "notebook.new",
          "assistant.ask",  "view.todayWindow", "tab.new",           "task.new"}) {
        SCOPED_TRACE(id);
        commands().trigger(id);
        settle();
        for (QWidget* const shown : QApplication::topLevelWidgets()) {
            if (!shown->isVisible()) continue;
            expectNames(*shown);
            if (shown != &window()) shown->close();
        }
        settle();
    }
}

TEST_F(Accessibility, EveryAreaOfTheSettingsNamesItsControls) {
    openWindow();
    SettingsPage page(*environment);
    addRoomSettings(page, *environment);
    page.show();
    for (const char* area :
         {"general", "editor", "search", "storage", "sync", "assistant", "exchange", "updates"}) {
        SCOPED_TRACE(area);
        page.showPage(area);
        settle();
        EXPECT_GT(expectNames(page), 1);
    }
}

}  // namespace
}  // namespace tesserine::app
