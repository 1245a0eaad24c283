#include "app/commands/Commands.h"
#include "app/editor/NoteEditor.h"
#include "app/editor/WordMarks.h"
#include "app/lists/NoteList.h"
#include "app/search/SearchField.h"
#include "app/search/SearchResults.h"
#include "app/shell/MainWindow.h"
#include "app/shell/NotesPane.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/TaskRow.h"
#include "app/tasks/TaskWords.h"

#include <QListView>
#include <QMenu>
#include <QStackedWidget>

/// What the window does about searching: its field, its results, and the way between them.
namespace tesserine::app {

using Kind = Place::Kind;

namespace {

/// What lists say of a task; nothing where it was deleted meanwhile.
QStringList detailsOf(const Uuid& id, AppEnvironment& environment) {
    const auto* const task = environment.context().find<CDTask>(id);
    if (task == nullptr) return {};
    const TaskRow row = TaskRow::of(*task, environment.collator());
    QStringList details;
    if (const auto due = row.due()) {
        details << TaskWords(environment.now(), environment.calendar()).due(*due);
    }
    if (!row.project.isEmpty()) details << "#" + row.project;
    for (const QString& label : row.labels) {
        details << "@" + label;
    }
    return details;
}

}  // namespace

void MainWindow::connectSearch() {
    connect(searchField_, &SearchField::suggestionsWanted, this, [this](const QString& typed) {
        searchResults().runner().suggest(typed);
    });
    connect(searchField_, &SearchField::typed, this, &MainWindow::followTyping);
    connect(searchField_, &SearchField::searched, this, &MainWindow::endTyping);
    connect(searchField_, &SearchField::left, this, [this] {
        if (current().place.kind == Kind::search) goBack();
        focusContent();
    });
    connect(searchField_, &SearchField::resultsWanted, this, [this] {
        QListView& results = searchResults().list();
        results.setFocus();
        if (!results.currentIndex().isValid()) {
            results.setCurrentIndex(results.model()->index(0, 0));
        }
    });
}

SearchResults& MainWindow::searchResults() {
    if (searchResults_ == nullptr) makeSearchResults();
    return *searchResults_;
}

void MainWindow::makeSearchResults() {
    searchResults_ = new SearchResults(environment_, content_);
    searchResults_->hide();  // until it stands beside the note
    commands_.attach(CommandContext::lists, searchResults_->list());
    searchResults_->setTaskDetails(
        [&environment = environment_](const Uuid& task) { return detailsOf(task, environment); });
    connect(
        &searchResults_->runner(),
        &SearchRunner::suggested,
        searchField_,
        &SearchField::setSuggestions);
    searchResults_->list().setContextMenuPolicy(Qt::CustomContextMenu);
    connect(
        &searchResults_->list(),
        &QWidget::customContextMenuRequested,
        this,
        &MainWindow::showResultMenu);
    const auto openHit = [this](const Uuid& note) {
        if (!notes_->openNote(note)) return false;
        const QStringList words =
            searchResults_->foundWords() + soughtWords(searchResults_->query());
        notes_->editor().showWords(words.join('\n'));
        return true;
    };
    connect(searchResults_, &SearchResults::noteChosen, this, openHit);
    connect(searchResults_, &SearchResults::taskChosen, notes_, &NotesPane::showTaskChosen);
    connect(searchResults_, &SearchResults::noteOpened, this, [this, openHit](const Uuid& note) {
        if (openHit(note)) notes_->focusEditor();
    });
    connect(searchResults_, &SearchResults::taskOpened, this, [this](const Uuid& task) {
        go({Kind::task, task});
    });
    connect(searchResults_, &SearchResults::queryWanted, this, [this](const QString& query) {
        go({.kind = Kind::search, .text = query.toStdString()});
    });
}

/// Of the note that is chosen. A task has its menu among the tasks.
void MainWindow::showResultMenu(const QPoint& where) {
    QListView& results = searchResults_->list();
    const auto note = notes_->openedNote();
    if (!note || !results.currentIndex().isValid()) return;
    const auto* stored = environment_.context().find<CDNote>(*note);
    if (stored == nullptr) return;
    auto* const menu = new QMenu(&results);
    menu->setObjectName("resultMenu");
    menu->setAttribute(Qt::WA_DeleteOnClose);
    notes_->list().fillMenu(*menu, {*note}, stored->trashedAt.get().has_value());
    menu->popup(results.viewport()->mapToGlobal(where));
}

void MainWindow::showSearch(
    const QString& query, SearchRunner::Typing typing, const std::optional<Uuid>& note) {
    const bool isTyped = searchField_->text().trimmed() == query.trimmed();
    if (!isTyped) searchField_->setQuery(query);
    const QWidget* const before = focusWidget();
    content_->setCurrentWidget(notes_);
    if (!notes_->showBeside(&searchResults(), *searchResults().list().model())) return;
    const bool areKeysLost = before != nullptr && !before->isVisible();
    if (areKeysLost) searchField_->setFocus();
    if (note) notes_->openNote(*note);
    if (!notes_->openedNote()) searchResults_->chooseNone();
    searchResults_->search(query, typing);
    if (note) searchResults_->chooseWhenFound(*note);
}

/// The first character goes to the search, the others change what is searched for.
void MainWindow::followTyping(const QString& text) {
    const Place place{.kind = Kind::search, .text = text.toStdString()};
    if (current().place.kind == Kind::search) {
        history().replacePlace(place);
    } else {
        if (text.trimmed().isEmpty() || !save()) return;
        history().visit({.place = place});
    }
    showSearch(text, SearchRunner::Typing::goesOn);
    followKeys();
    settle();
}

/// The note that is read meanwhile stays, and shows what is searched for now.
void MainWindow::endTyping(const QString& text) {
    const QString query = text.trimmed();
    if (query.isEmpty()) return;
    const Place place{.kind = Kind::search, .text = query.toStdString()};
    if (current().place.kind != Kind::search) return go(place);
    history().replacePlace(place);
    showSearch(query, SearchRunner::Typing::finished);
    if (const auto read = notes_->openedNote()) searchResults_->chooseAnewWhenFound(*read);
    settle();
}

bool MainWindow::showSavedSearch(const Uuid& id, const std::optional<Uuid>& note) {
    const auto* search = environment_.context().find<CDSavedSearch>(id);
    if (search == nullptr) return false;
    return enter(
        {.place = {.kind = Kind::search, .text = search->query.valueOr("")}, .note = note});
}

}  // namespace tesserine::app
