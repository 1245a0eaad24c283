#include "app/shell/WindowCommands.h"

#include "app/commands/CheatSheet.h"
#include "app/commands/CommandPalette.h"
#include "app/commands/Commands.h"
#include "app/commands/NoteSwitcher.h"
#include "app/desktop/TodayWindow.h"
#include "app/editor/BodyEdit.h"
#include "app/editor/NoteEditor.h"
#include "app/lists/NoteActions.h"
#include "app/lists/NoteList.h"
#include "app/lists/NoteListView.h"
#include "app/lists/Pickers.h"
#include "app/lists/Sidebar.h"
#include "app/lists/TagsDialog.h"
#include "app/look/Notice.h"
#include "app/pages/AboutDialog.h"
#include "app/pages/ExportAssistant.h"
#include "app/pages/FileExports.h"
#include "app/pages/ImportAssistant.h"
#include "app/search/SearchField.h"
#include "app/search/SearchResults.h"
#include "app/shell/MainWindow.h"
#include "app/shell/NotesPane.h"
#include "app/state/AppEnvironment.h"
#include "app/state/SyncControl.h"
#include "app/tasks/TaskHistory.h"
#include "app/tasks/TasksPage.h"
#include "app/tasks/UndoBar.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QMenu>
#include <QMetaMethod>
#include <QStandardPaths>
#include <QStatusBar>

#include <optional>
#include <utility>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;

/// The connections, made once; it only lives while they are made.
class Wiring {
public:
    Wiring(MainWindow& window, Commands& commands, AppEnvironment& environment)
        : window_(window), commands_(commands), environment_(environment) {}

    void going() const {
        on("go.back", [&window = window_] { window.goBack(); });
        on("go.forward", [&window = window_] { window.goForward(); });
        constexpr std::pair<const char*, Kind> places[] = {
            {"go.allNotes", Kind::allNotes},
            {"go.pinned", Kind::pinned},
            {"go.reminders", Kind::reminders},
            {"go.templates", Kind::templates},
            {"go.inbox", Kind::inbox},
            {"go.today", Kind::today},
            {"go.upcoming", Kind::upcoming},
            {"go.allTasks", Kind::allTasks},
            {"go.completed", Kind::completed},
            {"go.calendar", Kind::calendar},
            {"go.taskTemplates", Kind::taskTemplates},
            {"go.trash", Kind::trash}};
        for (const auto& [command, kind] : places) {
            on(command, [&window = window_, place = Place{kind}] {
                window.go(place);
                window.focusContent();
            });
        }
        on("app.settings", [&window = window_] { window.go({Kind::settings}); });
        on("help.welcome", [&window = window_] { window.go({Kind::welcome}); });
        on("go.search", [&window = window_] {
            window.searchField().setFocus(Qt::ShortcutFocusReason);
            window.searchField().selectAll();  // also where the keys were there already
        });
        on("go.palette", [&window = window_, &commands = commands_] {
            (new CommandPalette(commands, &window))->open();
        });
        on("go.switcher", [&window = window_, &environment = environment_] {
            auto* switcher = new NoteSwitcher(environment, &window, "Go to a note by its title");
            QObject::connect(switcher, &NoteSwitcher::noteChosen, &window, [&](const Uuid& note) {
                window.go({Kind::note, note});
                window.notes().editor().body().setFocus();  // to read on and write
            });
            switcher->open();
        });
        on("help.keys", [&window = window_, &commands = commands_] {
            auto* sheet = new CheatSheet(commands, &window);
            sheet->setAttribute(Qt::WA_DeleteOnClose);
            sheet->open();
        });
    }

    void windowAndTabs() const {
        on("tab.new", [&window = window_] { window.openTab(window.current().place); });
        on("tab.close", [&window = window_] { window.closeCurrentTab(); });
        on("tab.next", [&window = window_] { window.turnTabs(1); });
        on("tab.previous", [&window = window_] { window.turnTabs(-1); });
        on("app.quit", [&window = window_] {
            if (window.close()) QApplication::quit();  // also where the tray would keep it
        });
        QStatusBar* bar = window_.statusBar();
        bar->hide();
        QObject::connect(bar, &QStatusBar::messageChanged, bar, [bar](const QString& message) {
            bar->setVisible(!message.isEmpty());
        });
        on("library.save", [&window = window_, &environment = environment_] {
            if (!window.save()) return;
            window.statusBar()->showMessage("Saved", 2'000);
            environment.syncControl().syncNow();
        });
        QAction& sidebar = commands_.action("view.sidebar");
        sidebar.setChecked(
            environment_.preferences().boolean(MainWindow::sidebarKey).value_or(true));
        on("view.sidebar", [&window = window_](bool isOn) { window.setSidebarVisible(isOn); });
        on("view.fullScreen", [&window = window_](bool isOn) {
            isOn ? window.showFullScreen() : window.showNormal();
        });
        on("list.rename", [&window = window_] {
            if (window.sidebar().hasFocus()) return window.sidebar().renameCurrent();
            if (window.notes().openedNote()) window.notes().editTitle();
        });
        on("list.selectAll", [&window = window_] {
            if (window.notes().showsList()) window.notes().list().view().selectAll();
        });
        onSettled("search.save", [&window = window_] { window.searchResults().keep(); });
        on("notebook.new", [&window = window_] { window.sidebar().createNotebook(); });
    }

    void making() const {
        on("note.new", [&window = window_] { window.newNote(); });
        on("task.new", [&window = window_] { window.newTask(); });
        on("note.fromTemplate", [&window = window_, &environment = environment_] {
            pickTemplate(environment, &window, [&](const Uuid& noteTemplate) {
                if (!window.save()) return;
                const auto note = NoteActions(environment, &window)
                                      .createFromTemplate(noteTemplate, window.current().place);
                if (!note) return;
                window.go({Kind::note, *note});
                if (window.notes().openedNote() == note) window.notes().editTitle();
            });
        });
    }

    /// Pages that stand over the window, and the small window of today.
    void pages() const {
        on("library.import", [*this] { openImport({}); });
        on("library.export", [*this] {
            window_.save();
            auto* assistant = new ExportAssistant(
                environment_,
                QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation),
                &window_);
            assistant->setAttribute(Qt::WA_DeleteOnClose);
            assistant->open();
        });
        on("library.calendar", [*this] { exportTasks(environment_, &window_, exported()); });
        onSettled("note.export", [*this] {
            const auto notes = chosen();
            if (notes.empty()) return;
            exportNote(environment_, notes.front(), &window_, exported());
        });
        on("help.about", [&window = window_] {
            auto* about = new AboutDialog(&window);
            about->setAttribute(Qt::WA_DeleteOnClose);
            about->open();
        });
        QObject::connect(
            &window_, &MainWindow::importWanted, &window_, [*this](const QStringList& files) {
                openImport(files);
            });

        on("view.todayWindow",
           [&window = window_](bool isOn) { window.todayWindow().setVisible(isOn); });
    }

    /// What is done to the notes that are chosen; of a search, to the one that is open.
    void notes() const {
        NoteList& list = window_.notes().list();
        onSettled("note.pin", [*this](bool) {
            const auto notes = chosen();
            actions().setPinned(notes, !actions().arePinned(notes));
        });
        on("note.trash", [*this] { moveToTrash(); });
        onSettled("note.duplicate", [*this] {
            const auto copies = actions().duplicate(chosen());
            if (copies.size() == 1) window_.go({Kind::note, copies.front()});
        });
        onSettled("note.saveAsTemplate", [*this] {
            for (const Uuid& note : chosen()) {
                actions().saveAsTemplate(note);
            }
        });
        onSettled("note.tags", [*this] { editTags(); });
        onSettled("note.copyLink", [*this] {
            QString links;
            for (const Uuid& note : chosen()) {
                if (!links.isEmpty()) links += "\n";
                links += QString::fromStdString(NoteService::noteURL(note));
            }
            if (!links.isEmpty()) QApplication::clipboard()->setText(links);
        });
        onSettled("note.move", [*this] { askNotebook(chosen()); });
        QObject::connect(&list, &NoteList::moveWanted, &window_, [*this](const auto& notes) {
            if (window_.save()) askNotebook(notes);
        });
        QObject::connect(&list, &NoteList::tagsWanted, &window_, [*this](const auto& notes) {
            if (window_.save()) askTag(notes);
        });
        QObject::connect(&list, &NoteList::selectionTurned, &window_, [*this] { showPin(); });
        QObject::connect(
            &environment_, &AppEnvironment::libraryChanged, &window_, [*this] { showPin(); });
        commands_.attach(CommandContext::lists, list.view());
        commands_.attach(CommandContext::lists, window_.sidebar());
    }

    /// Where tasks are shown the menu and the sidebar take back what was done to them; the page of
    /// tasks has the keys for itself.
    void undoing() const {
        turnTasks(
            "edit.undo", "undo()", QKeySequence::Undo, &TaskHistory::canUndo, &TaskHistory::undo);
        turnTasks(
            "edit.redo", "redo()", QKeySequence::Redo, &TaskHistory::canRedo, &TaskHistory::redo);
    }

private:
    /// Stands in for a command of notes. What is typed is turned by its field.
    void turnTasks(
        const char* command,
        const char* slotOfFields,
        QKeySequence::StandardKey keyOfFields,
        bool (TaskHistory::*can)() const,
        void (TaskHistory::*turn)(QWidget*)) const {
        TaskHistory& history = TaskHistory::of(environment_);
        QAction& ofNotes = commands_.action(command);
        auto* const ofTasks = new QAction(ofNotes.icon(), ofNotes.text(), &window_);
        ofTasks->setObjectName(QString("%1.tasks").arg(command));
        ofTasks->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        const auto takeKeys = [ofTasks, &ofNotes] { ofTasks->setShortcuts(ofNotes.shortcuts()); };
        const auto offer = [ofTasks, &history, can] { ofTasks->setEnabled((history.*can)()); };
        takeKeys();
        offer();
        QObject::connect(&commands_, &Commands::keysChanged, ofTasks, takeKeys);
        QObject::connect(&history, &TaskHistory::turned, ofTasks, offer);
        const auto areShown = [&window = window_] {
            return TasksPage::shows(window.current().place.kind);
        };
        QObject::connect(ofTasks, &QAction::triggered, &window_, [=, &history, &window = window_] {
            if (!areShown()) return;
            QWidget* const keys = window.focusWidget();
            const int slot = keys == nullptr ? -1 : keys->metaObject()->indexOfSlot(slotOfFields);
            const bool isOwn = slot >= 0 && turnsItself(*keys, keyOfFields);
            if (!isOwn) return (history.*turn)(&window);
            keys->metaObject()->method(slot).invoke(keys);
        });
        window_.sidebar().addAction(ofTasks);
        for (QObject* const place : ofNotes.associatedObjects()) {
            auto* const menu = qobject_cast<QMenu*>(place);
            if (menu == nullptr) continue;
            QObject::connect(menu, &QMenu::aboutToShow, ofTasks, [=, &ofNotes] {
                QAction* const shown = areShown() ? ofTasks : &ofNotes;
                QAction* const other = areShown() ? &ofNotes : ofTasks;
                if (!menu->actions().contains(other)) return;
                menu->insertAction(other, shown);
                menu->removeAction(other);
            });
        }
    }

    /// A part of the window may handle the command already.
    template <class Handle>
    void on(std::string_view command, Handle handle) const {
        if (!commands_.action(command).isEnabled()) {
            commands_.on(command, &window_, std::move(handle));
        }
    }

    /// Whether it is offered, `MainWindow::settle` says; it may have done so already.
    template <class Handle>
    void onSettled(std::string_view command, Handle handle) const {
        commands_.on(command, &window_, std::move(handle));
    }

    void openImport(const QStringList& files) const {
        window_.save();
        auto* assistant = new ImportAssistant(environment_, &window_);
        assistant->setAttribute(Qt::WA_DeleteOnClose);
        QObject::connect(
            assistant,
            &ImportAssistant::imported,
            &window_,
            [&window = window_](const std::optional<Uuid>& first) {
                if (first) window.go({Kind::note, *first});
            });
        std::vector<std::filesystem::path> paths;
        for (const QString& file : files) {
            paths.emplace_back(file.toStdString());
        }
        if (!paths.empty() && !assistant->begin(paths)) {
            showNotice(&window_, "Tesserine cannot import this file: " + paths.front().string());
            delete assistant;
            return;
        }
        assistant->open();
    }

    FileWritten exported() const {
        return [bar = window_.statusBar()](const QString& file) {
            bar->showMessage("Exported to " + QDir::toNativeSeparators(file), 5'000);
        };
    }

    NoteActions actions() const { return {environment_, &window_}; }

    /// What was typed into them is saved before anything is done to them.
    NoteActions::Notes chosen() const {
        return window_.save() ? window_.chosenNotes() : NoteActions::Notes{};
    }

    /// In the sidebar what has the focus is a notebook or the like, not a note.
    void moveToTrash() const {
        if (window_.sidebar().hasFocus()) return window_.sidebar().deleteCurrent();
        const auto notes = chosen();
        if (notes.empty()) return;
        NoteList& list = window_.notes().list();
        const bool areSelected = window_.notes().showsList() && !list.selected().empty();
        if (!areSelected) return list.trash(notes);
        list.setFocus();
        list.moveToTrash();
    }

    void askNotebook(const NoteActions::Notes& notes) const {
        if (notes.empty()) return;
        pickNotebook(environment_, &window_, [*this, notes](const auto& notebook) {
            actions().move(notes, notebook);
        });
    }

    /// Those of one note stand above it, those of several have a dialog.
    void editTags() const {
        const auto notes = chosen();
        if (notes.size() == 1) return window_.notes().editor().editTags();
        if (!notes.empty()) askTags(notes);
    }

    void askTags(const NoteActions::Notes& notes) const {
        auto* dialog = new TagsDialog(environment_, notes, &window_);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->open();
    }

    void askTag(const NoteActions::Notes& notes) const {
        if (notes.size() > 1) return askTags(notes);
        pickTag(environment_, &window_, [*this, notes](const auto& tag) {
            actions().changeTags(notes, {tag}, {});
        });
    }

    void showPin() const {
        const auto notes = window_.chosenNotes();
        commands_.action("note.pin").setChecked(!notes.empty() && actions().arePinned(notes));
    }

    MainWindow& window_;
    Commands& commands_;
    AppEnvironment& environment_;
};

}  // namespace

void handleWindowCommands(MainWindow& window, Commands& commands, AppEnvironment& environment) {
    const Wiring wiring(window, commands, environment);
    wiring.going();
    wiring.windowAndTabs();
    wiring.making();
    wiring.pages();
    wiring.notes();
    wiring.undoing();
    commands.attach(CommandContext::everywhere, window);
    window.settle();
}

}  // namespace tesserine::app
