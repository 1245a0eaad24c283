#include "app/shell/MainWindow.h"

#include "app/commands/Commands.h"
#include "app/desktop/TodayWindow.h"
#include "app/editor/NoteEditor.h"
#include "app/lists/NoteActions.h"
#include "app/lists/NoteList.h"
#include "app/lists/NoteListView.h"
#include "app/lists/PlaceWords.h"
#include "app/lists/Sidebar.h"
#include "app/look/Notice.h"
#include "app/look/Theme.h"
#include "app/search/SearchField.h"
#include "app/search/SearchResults.h"
#include "app/shell/FirstPaint.h"
#include "app/shell/NotesPane.h"
#include "app/shell/OpenTabs.h"
#include "app/shell/TopBar.h"
#include "app/state/AppEnvironment.h"
#include "app/state/SyncControl.h"
#include "app/tasks/TaskCommands.h"
#include "app/tasks/TaskListModel.h"
#include "app/tasks/TaskListPage.h"
#include "app/tasks/TaskListView.h"
#include "app/tasks/TasksPage.h"
#include "base/UserError.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QListView>
#include <QMenuBar>
#include <QMimeData>
#include <QScopedValueRollback>
#include <QSplitter>
#include <QStackedWidget>
#include <QTabBar>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;

constexpr QSize usualSize(1240, 800);
constexpr int sidebarWidth = 232;
constexpr int narrowestSidebar = 160;
constexpr int widestSidebar = 420;
constexpr int longestTabTitle = 40;
constexpr std::chrono::seconds timeToRead{1};

/// What is done to the notes that are chosen. Moving to the trash is not: a place of the sidebar
/// may be meant.
constexpr const char* ofChosenNotes[] = {
    "note.pin",
    "note.tags",
    "note.move",
    "note.copyLink",
    "note.duplicate",
    "note.saveAsTemplate",
    "note.export"};

/// A column of the window, without any space of its own.
QVBoxLayout* makeColumn(QSplitter* splitter) {
    auto* const column = new QVBoxLayout(new QWidget(splitter));
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    return column;
}

/// Anything else in a note, such as a file or a program's own scheme, is not opened by a click.
bool isOfTheWeb(const QUrl& url) {
    return url.scheme() == "https" || url.scheme() == "http" || url.scheme() == "mailto";
}

QStringList localFiles(const QMimeData& dragged) {
    QStringList files;
    for (const QUrl& url : dragged.urls()) {
        if (url.isLocalFile()) files << url.toLocalFile();
    }
    return files;
}

bool showsTasks(Kind kind) { return TasksPage::shows(kind) || kind == Kind::taskTemplates; }

bool isTrashed(const Uuid& id, StoreContext& context) {
    const auto* note = context.find<CDNote>(id);
    return note != nullptr && note->trashedAt.get().has_value();
}

/// Whether a new task can be typed there.
bool takesTasks(Kind kind) {
    return TasksPage::shows(kind) && kind != Kind::reminders && kind != Kind::completed;
}

}  // namespace

MainWindow::MainWindow(AppEnvironment& environment, Commands& commands)
    : environment_(environment),
      commands_(commands),
      sidebar_(new Sidebar(environment)),
      tabBar_(new QTabBar),
      splitter_(new QSplitter(this)),
      left_(makeColumn(splitter_)),
      right_(makeColumn(splitter_)),
      content_(new QStackedWidget),
      notes_(new NotesPane(environment, commands, content_)),
      searchField_(new SearchField),
      tabs_{History({.place = {Kind::allNotes}})},
      tabsBefore_(std::make_unique<const OpenTabs>(
          OpenTabs::read(environment.preferences().string(tabsKey).value_or("")))) {
    setObjectName("mainWindow");
    build();
    connectParts();
    connectSearch();
    restoreLayout();
    restoreTabs();
    returnTo(current());
    sidebar_->setFocus();  // where nothing is listed; not the button that hides it
    focusContent();
    afterFirstPaint(*this, [this, keys = current().keys] {
        notes_->beginToFollow();
        giveKeysBack(keys);
    });
}

MainWindow::~MainWindow() {
    disconnect(qApp, nullptr, this, nullptr);  // what goes now gives up its keys
}

void MainWindow::build() {
    commands_.fill(*menuBar());
    tabBar_->setObjectName("tabs");
    tabBar_->setAccessibleName("Tabs");
    tabBar_->setAutoHide(true);
    tabBar_->setTabsClosable(true);
    tabBar_->setDocumentMode(true);
    tabBar_->setExpanding(false);
    tabBar_->setDrawBase(false);
    tabBar_->addTab(QString());
    content_->addWidget(notes_);

    auto* bar = new TopBar(commands_);
    bar->setField(searchField_);
    right_->addWidget(bar);
    right_->addWidget(tabBar_);
    right_->addWidget(content_, 1);

    left_->addWidget(sidebar_, 1);
    left_->parentWidget()->setMinimumWidth(narrowestSidebar);
    left_->parentWidget()->setMaximumWidth(widestSidebar);
    splitter_->setHandleWidth(1);
    splitter_->setChildrenCollapsible(false);
    splitter_->setStretchFactor(1, 1);
    splitter_->setSizes({sidebarWidth, usualSize.width() - sidebarWidth});
    setCentralWidget(splitter_);
    setAcceptDrops(true);
    resize(usualSize);
}

void MainWindow::connectParts() {
    connect(sidebar_, &Sidebar::placeChosen, this, &MainWindow::go);
    connect(sidebar_, &Sidebar::newTabWanted, this, &MainWindow::openTab);
    connect(&notes_->list(), &NoteList::newTabWanted, this, [this](const Uuid& note) {
        openTab({Kind::note, note});
    });
    connect(notes_, &NotesPane::noteOpened, this, &MainWindow::followNote);
    connect(notes_, &NotesPane::editorMade, this, &MainWindow::connectEditor);
    takeTaskDrops();
    connect(tabBar_, &QTabBar::currentChanged, this, [this](int index) {
        if (!isTurning_) showTab(index);
    });
    connect(tabBar_, &QTabBar::tabCloseRequested, this, &MainWindow::closeTab);
    connect(&environment_, &AppEnvironment::libraryChanged, this, &MainWindow::followLibrary);
    connect(qApp, &QApplication::focusChanged, this, &MainWindow::followKeys);
}

void MainWindow::connectEditor(NoteEditor& editor) {
    for (const auto& [note, place] : tabsBefore_->places) {
        editor.setPlaceIn(note, place);
    }
    connect(&editor, &NoteEditor::linkActivated, this, [this](const QString& address) {
        if (const auto place = Place::fromAddress(address.toStdString())) return go(*place);
        const QUrl url(address);
        if (isOfTheWeb(url)) QDesktopServices::openUrl(url);
    });
    connect(&editor, &NoteEditor::noteChosen, this, [this](const Uuid& note) {
        go({Kind::note, note});
    });
    connect(&editor, &NoteEditor::fileActivated, this, [](const QString& path) {
        QDesktopServices::openUrl(QUrl::fromLocalFile(path));
    });
    connect(&editor, &NoteEditor::titleChanged, this, &MainWindow::settle);
}

TasksPage& MainWindow::tasks() {
    if (tasks_ != nullptr) return *tasks_;
    tasks_ = new TasksPage(environment_, commands_, content_);
    content_->addWidget(tasks_);
    connect(tasks_, &TasksPage::noteChosen, this, [this](const Uuid& note) {
        go({Kind::note, note});
    });
    return *tasks_;
}

/// Tasks that are dropped on a project, a label or a day of the sidebar.
void MainWindow::takeTaskDrops() {
    sidebar_->takeDrops(
        tasksMimeType,
        {Kind::project, Kind::inbox, Kind::today, Kind::label, Kind::tag},
        [this](const Place& place, const QMimeData& dragged) {
            const TaskCommands tasks(environment_, this);
            const auto dropped = draggedTasks(dragged);
            const bool isLabel = place.kind == Kind::label || place.kind == Kind::tag;
            if (isLabel) return tasks.addLabel(dropped, place.id);
            StoreContext& context = environment_.context();
            if (place.kind == Kind::today) {
                return tasks.setDue(
                    dropped,
                    TaskDue{.date = environment_.calendar().startOfDay(environment_.now())});
            }
            const bool isInbox = place.kind == Kind::inbox;
            tasks.move(dropped, isInbox ? *environment_.projects().inbox(context).id : place.id);
        });
}

const Stop& MainWindow::current() const {
    return tabs_[static_cast<std::size_t>(tabBar_->currentIndex())].current();
}

History& MainWindow::history() { return tabs_[static_cast<std::size_t>(tabBar_->currentIndex())]; }

void MainWindow::setNoticeLine(QWidget* line) { right_->insertWidget(0, line); }

void MainWindow::setStatusStrip(QWidget* strip) { left_->addWidget(strip); }

void MainWindow::setPanel(QWidget* panel) { splitter_->addWidget(panel); }

void MainWindow::setSidebarVisible(bool isVisible) { left_->parentWidget()->setVisible(isVisible); }

// Going

void MainWindow::go(const Place& place) {
    if (place.kind == Kind::settings) {
        return emit settingsWanted(QString::fromStdString(place.text));
    }
    if (place.kind == Kind::welcome) return emit welcomeWanted();
    if (titleOf(place, environment_.context()).isEmpty()) {
        return showNotice(this, "What this leads to is not in this library.");
    }
    const Stop stop = stopFor(place);
    if (enter(stop)) {
        history().visit(stop);
        history().replaceNote(notesShown() ? notes_->openedNote() : std::nullopt);
        followKeys();
    }
    settle();
}

/// A note is shown where it is listed already, else among all notes.
Stop MainWindow::stopFor(const Place& place) const {
    if (place.kind != Kind::note) return {.place = place};
    const auto* note = environment_.context().find<CDNote>(place.id);
    const bool isHere = notesShown() && notes_->showsList()
                        && notes_->list().model().rowOf(place.id) >= 0
                        && !notes_->list().model().isLeaving(place.id);
    if (isHere) return {.place = current().place, .note = place.id};
    const bool isInTrash = isTrashed(place.id, environment_.context());
    const bool isTemplate = note != nullptr && bool(note->isTemplate);
    const Kind kind = isInTrash ? Kind::trash : isTemplate ? Kind::templates : Kind::allNotes;
    return {.place = {kind}, .note = place.id};
}

/// By value: what is chosen on the way must not change where it leads.
bool MainWindow::enter(Stop stop) {
    if (!save()) return false;
    const QScopedValueRollback entering(isEntering_, true);
    const Kind kind = stop.place.kind;
    if (kind == Kind::savedSearch) return showSavedSearch(stop.place.id, stop.note);
    if (kind == Kind::search) {
        if (!stop.note && !notes_->showsList() && !notes_->closeNote()) return false;
        const QString query = QString::fromStdString(stop.place.text);
        showSearch(query, SearchRunner::Typing::finished, stop.note);
        return true;
    }
    searchField_->setQuery({});
    if (titleOf(stop.place, environment_.context()).isEmpty()) return false;  // it is gone
    if (showsTasks(kind)) {
        const bool takesKeys = showInstead(tasks());
        kind == Kind::taskTemplates ? tasks_->showTemplates() : tasks_->showPlace(stop.place);
        if (takesKeys) tasks_->focusPage();
        return true;
    }
    if (!NoteScope::isListed(kind)) return false;
    if (showInstead(*notes_)) notes_->list().setFocus();
    // A note that was restored is still shown beside the trash, where one read it last.
    const bool isInTrash = stop.note && isTrashed(*stop.note, environment_.context());
    const bool isShown = !isInTrash || kind == Kind::trash;
    return notes_->showPlace(stop.place, isShown ? stop.note : std::nullopt);
}

/// Tells whether the keys went to what is hidden now; somebody has to take them.
bool MainWindow::showInstead(QWidget& page) {
    const QWidget* const before = content_->currentWidget();
    const bool hadKeys = before->isAncestorOf(focusWidget());
    content_->setCurrentWidget(&page);
    return hadKeys && before != &page;
}

std::vector<Uuid> MainWindow::chosenNotes() const {
    return notesShown() ? notes_->chosen() : std::vector<Uuid>{};
}

bool MainWindow::notesShown() const { return content_->currentWidget() == notes_; }

void MainWindow::focusContent() {
    if (!notesShown()) return tasks_->focusPage();
    notes_->showsList() ? notes_->list().setFocus() : searchResults_->list().setFocus();
}

void MainWindow::goBack() {
    if (!history().canGoBack() || !save()) return;
    returnTo(history().goBack());
}

void MainWindow::goForward() {
    if (!history().canGoForward() || !save()) return;
    returnTo(history().goForward());
}

/// Where a place has gone meanwhile, All Notes stand from now on.
void MainWindow::returnTo(const Stop& stop) {
    const QWidget* const before = focusWidget();
    const bool areOfPlaces = before == searchField_ || content_->isAncestorOf(before);
    const KeyHolder inUnknown = notes_->editorHasKeys() ? KeyHolder::note : KeyHolder::list;
    const KeyHolder keys = stop.keys == KeyHolder::unknown ? inUnknown : stop.keys;
    const Stop instead{.place = {Kind::allNotes}};
    if (enter(stop)) {
        const auto open = notesShown() ? notes_->openedNote() : std::nullopt;
        if (open) history().replaceNote(open);  // another one where that of the stop is gone
        if (areOfPlaces) giveKeys(keys);
    } else if (enter(instead)) {
        history().replace(instead);
    }
    settle();
}

// Tabs

/// By value: that of the present tab may become another one when what was typed is saved.
void MainWindow::openTab(Place place) {  // NOLINT(performance-unnecessary-value-param)
    if (!save()) return;
    tabs_.emplace_back(stopFor(place));
    isTurning_ = true;
    tabBar_->setCurrentIndex(tabBar_->addTab(QString()));
    isTurning_ = false;
    showTab(tabBar_->currentIndex());
}

void MainWindow::closeTab(int index) {
    if (tabs_.size() == 1) {
        close();
        return;
    }
    if (!save()) return;
    tabs_.erase(tabs_.begin() + index);
    isTurning_ = true;
    tabBar_->removeTab(index);
    isTurning_ = false;
    showTab(tabBar_->currentIndex());
}

void MainWindow::closeCurrentTab() { closeTab(tabBar_->currentIndex()); }

void MainWindow::turnTabs(int steps) {
    const int count = tabBar_->count();
    tabBar_->setCurrentIndex((tabBar_->currentIndex() + steps + count) % count);
}

void MainWindow::showTab(int index) {
    if (index >= 0) returnTo(current());
}

// Following

void MainWindow::settle() {
    const Stop& stop = current();
    QString title = titleOf(stop.place, environment_.context());
    if (stop.note && notesShown()) {
        const bool isOpen = notes_->openedNote() == stop.note;
        const QString typed = isOpen ? notes_->editor().title().text() : QString();
        title = typed.isEmpty() ? titleOf({Kind::note, *stop.note}, environment_.context()) : typed;
    }
    nameTab(tabBar_->currentIndex(), title);
    setWindowTitle(title + " – Tesserine");
    sidebar_->mark(stop.place);
    commands_.action("go.back").setEnabled(history().canGoBack());
    commands_.action("go.forward").setEnabled(history().canGoForward());
    const bool isSearching =
        notesShown() && !notes_->showsList() && !searchField_->text().trimmed().isEmpty();
    commands_.action("search.save").setEnabled(isSearching);
    const bool areNotesChosen = !chosenNotes().empty();
    for (const char* const command : ofChosenNotes) {
        commands_.action(command).setEnabled(areNotesChosen);
    }
}

void MainWindow::nameTab(int tab, const QString& title) {
    tabBar_->setTabText(tab, title.left(longestTabTitle).replace('&', "&&"));
}

void MainWindow::followNote(const std::optional<Uuid>& note) {
    environment_.syncControl().setViewedNote(note);
    const bool isChosenHere = !isEntering_ && notesShown();
    if (isChosenHere) {
        const auto& before = current().note;
        const bool isStep = note && before && note != before && wasRead(*before);
        isStep ? history().visit({.place = current().place, .note = note})
               : history().replaceNote(note);
        followKeys();
    }
    if (note != viewed_) {
        viewed_ = note;
        viewedSince_ = environment_.now();
    }
    if (isChosenHere) settle();
}

/// Whether one comes back to the note, when another one of the list is chosen: those that arrow
/// keys pass are not shown for long, and one that went is not there any more. Results of a search
/// are no steps, for Escape leads out of it with one.
bool MainWindow::wasRead(const Uuid& note) const {
    if (viewed_ != note || environment_.now() - viewedSince_ < timeToRead) return false;
    if (!notes_->showsList()) return false;
    const bool isInTrash = isTrashed(note, environment_.context());
    const NoteListModel& listed = notes_->list().model();
    return isInTrash == notes_->list().isTrash() && listed.rowOf(note) >= 0
           && !listed.isLeaving(note);
}

Place MainWindow::placeOfOpenNote() const {
    const auto note = notes_->openedNote();
    const bool isThere = note && environment_.context().find<CDNote>(*note) != nullptr;
    return isThere ? Place{Kind::note, *note} : Place{Kind::allNotes};
}

/// The tasks of a project that goes are in the Inbox afterwards.
Place MainWindow::placeOfOpenTask() const {
    if (const auto task = tasks_->editedTask()) return {Kind::task, *task};
    return {current().place.kind == Kind::label ? Kind::allTasks : Kind::inbox};
}

/// A place that is gone leaves its tab where the note or task that is open stands now; a saved
/// search asks what it asks now.
void MainWindow::followLibrary(const std::vector<ObjectChange>& changes) {
    const Place place = current().place;
    const bool isChanged =
        place.kind == Kind::savedSearch
        && std::ranges::find(changes, std::optional(place.id), &ObjectChange::uuid)
               != changes.end();
    if (titleOf(place, environment_.context()).isEmpty()) {
        go(notesShown() ? placeOfOpenNote() : placeOfOpenTask());
    } else if (isChanged) {
        showSavedSearch(place.id, notes_->openedNote());
    }
    settle();
}

void MainWindow::newNote() {
    const bool isFitting = notesShown() && notes_->showsList() && !notes_->list().isTrash();
    if (!isFitting) go({Kind::allNotes});
    if (save()) notes_->list().createNote();
}

void MainWindow::newTask(const QString& sentence) {
    if (!takesTasks(current().place.kind)) go({Kind::inbox});
    tasks().beginTask(sentence);
}

void MainWindow::present() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    QMainWindow::show();
    raise();
    activateWindow();
}

TodayWindow& MainWindow::todayWindow() {
    if (todayWindow_) return *todayWindow_;
    todayWindow_ = std::make_unique<TodayWindow>(environment_);
    todayWindow_->takeKeys(commands_);
    connect(todayWindow_.get(), &TodayWindow::chosen, this, [this](const Place& place) {
        present();
        go(place);
    });
    connect(
        todayWindow_.get(),
        &TodayWindow::visibilityChanged,
        &commands_.action("view.todayWindow"),
        &QAction::setChecked);
    return *todayWindow_;
}

bool MainWindow::save() { return notes_->save() && (tasks_ == nullptr || tasks_->flush()); }

// Files from outside: the editor takes its own, the rest of the window imports them

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (!localFiles(*event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    const QStringList files = localFiles(*event->mimeData());
    if (files.isEmpty()) return;
    event->setDropAction(Qt::CopyAction);  // they stay where they are
    event->accept();
    emit importWanted(files);
}

// The window itself

void MainWindow::restoreLayout() {
    const auto value = [this](std::string_view key) {
        const std::string text = environment_.preferences().string(key).value_or("");
        return QByteArray::fromBase64(QByteArray::fromStdString(text));
    };
    restoreGeometry(value(geometryKey));
    splitter_->restoreState(value(panesKey));
    notes_->splitter().restoreState(value(listKey));
    setSidebarVisible(environment_.preferences().boolean(sidebarKey).value_or(true));
}

/// What a tab is called: after the note that is open in it, else after its place. Empty where that
/// is gone.
QString MainWindow::tabTitle(const Stop& stop) const {
    QString place = titleOf(stop.place, environment_.context());
    if (place.isEmpty() || !stop.note) return place;
    const QString note = titleOf({Kind::note, *stop.note}, environment_.context());
    return note.isEmpty() ? place : note;
}

/// What is gone meanwhile, or belongs to another library, is left out.
void MainWindow::restoreTabs() {
    const OpenTabs& kept = *tabsBefore_;
    const QScopedValueRollback turning(isTurning_, true);
    for (std::size_t i = 0; i < kept.stops.size(); ++i) {
        const QString title = tabTitle(kept.stops[i]);
        if (title.isEmpty()) continue;
        tabs_.emplace_back(kept.stops[i]);
        const int tab = tabBar_->addTab(QString());
        nameTab(tab, title);
        if (i == kept.chosen) tabBar_->setCurrentIndex(tab);
    }
    if (tabs_.size() == 1) return;
    tabs_.erase(tabs_.begin());  // that of a first start
    tabBar_->removeTab(0);
}

OpenTabs MainWindow::openTabs() const {
    OpenTabs open{.chosen = static_cast<std::size_t>(tabBar_->currentIndex())};
    open.places = tabsBefore_->places;  // of what was not opened since
    for (const History& tab : tabs_) {
        const Stop& stop = tab.current();
        open.stops.push_back(stop);
        const auto place = stop.note ? notes_->placeIn(*stop.note) : std::nullopt;
        if (place) open.places[*stop.note] = *place;
    }
    return open;
}

void MainWindow::keepLayout() {
    try {
        Preferences& preferences = environment_.preferences();
        preferences.set(geometryKey, saveGeometry().toBase64().toStdString());
        preferences.set(panesKey, splitter_->saveState().toBase64().toStdString());
        preferences.set(listKey, notes_->splitter().saveState().toBase64().toStdString());
        preferences.set(sidebarKey, !left_->parentWidget()->isHidden());
        preferences.set(tabsKey, openTabs().text());
    } catch (const UserError& error) {
        environment_.log().warning(std::string("the window's layout: ") + error.what());
    }
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (!save()) return event->ignore();
    keepLayout();
    event->accept();
    emit closed();
}

}  // namespace tesserine::app
