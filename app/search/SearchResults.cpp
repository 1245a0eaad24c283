#include "app/search/SearchResults.h"

#include "app/look/EmptyState.h"
#include "app/look/IconButton.h"
#include "app/look/Theme.h"
#include "app/search/MarkedLine.h"
#include "app/search/ResultDelegate.h"
#include "app/search/ResultsModel.h"
#include "app/search/SearchWords.h"
#include "app/state/AppEnvironment.h"
#include "base/UserError.h"
#include "search/RecentSearches.h"

#include <QInputDialog>
#include <QLabel>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStackedLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace tesserine::app {
namespace {

constexpr int refreshDelay = 300;  // milliseconds
constexpr int nameWidth = 400;

const EmptyState::Content nothingTyped{
    "search",
    "Search everything",
    "Words are looked for in notes, tasks and attached files. Filters narrow it down: tag:travel, "
    "notebook:Work, is:pinned, updated:week, type:pdf."};

QLabel* richLabel(const char* name, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    label->setTextFormat(Qt::RichText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    label->hide();
    return label;
}

QListView* resultList(QWidget* parent) {
    auto* list = new QListView(parent);
    list->setObjectName("searchResultList");
    list->setAccessibleName("Search results");
    list->setFrameShape(QFrame::NoFrame);
    list->setUniformItemSizes(true);
    list->setMouseTracking(true);
    list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    return list;
}

}  // namespace

SearchResults::SearchResults(AppEnvironment& environment, QWidget* parent)
    : QWidget(parent),
      environment_(environment),
      runner_(new SearchRunner(environment, this)),
      model_(new ResultsModel(this)),
      explanation_(richLabel("explanation", this)),
      changes_(richLabel("changes", this)),
      hints_(richLabel("hints", this)),
      keep_(new IconButton("star", "Save this search", this)),
      list_(resultList(this)),
      delegate_(new ResultDelegate(environment, *model_, list_)),
      empty_(new EmptyState(nothingTyped, this)) {
    build();
    connect(runner_, &SearchRunner::answered, this, &SearchResults::show);
    connect(runner_, &SearchRunner::failed, this, [this](const QString& sentence) {
        model_->setResults({});
        empty_->setContent({"warning", "The search did not work", sentence});
        stack_->setCurrentWidget(empty_);
    });
    connect(changes_, &QLabel::linkActivated, this, &SearchResults::follow);
    connect(keep_, &QToolButton::clicked, this, &SearchResults::keep);
    connect(empty_, &EmptyState::acted, this, [this] { emit queryWanted(withoutDropped_); });
    connect(
        list_->selectionModel(),
        &QItemSelectionModel::currentChanged,
        this,
        &SearchResults::choose);
    // Also the line that is the current one, after one has looked elsewhere in its note.
    connect(list_, &QListView::clicked, this, &SearchResults::choose);
    connect(list_, &QListView::activated, this, &SearchResults::open);
    refreshTimer_.setSingleShot(true);
    connect(&refreshTimer_, &QTimer::timeout, this, &SearchResults::refresh);
    connect(&environment, &AppEnvironment::searchIndexChanged, this, [this] {
        if (!refreshTimer_.isActive()) refreshTimer_.start(refreshDelay);
    });
}

void SearchResults::build() {
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
    setFocusProxy(list_);
    list_->setModel(model_);
    list_->setItemDelegate(delegate_);
    explanation_->setFont(Theme::font(TextRole::caption));
    explanation_->setForegroundRole(QPalette::PlaceholderText);
    hints_->setFont(Theme::font(TextRole::caption));
    keep_->setObjectName("saveSearch");

    auto* texts = new QVBoxLayout;
    texts->setSpacing(space::tiny);
    texts->addWidget(explanation_);
    texts->addWidget(changes_);
    texts->addWidget(hints_);
    auto* header = new QHBoxLayout;
    header->setContentsMargins(space::large, space::medium, space::small, space::small);
    header->addLayout(texts, 1);
    header->addWidget(keep_, 0, Qt::AlignTop);
    stack_ = new QStackedLayout;
    stack_->addWidget(list_);
    stack_->addWidget(empty_);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addLayout(header);
    column->addLayout(stack_, 1);
    keep_->hide();
    stack_->setCurrentWidget(empty_);
}

void SearchResults::chooseNone() {
    const QScopedValueRollback marking(isMarking_, true);
    list_->setCurrentIndex({});
}

void SearchResults::chooseWhenFound(const Uuid& note) {
    chooseNone();
    read_ = note;
}

void SearchResults::chooseAnewWhenFound(const Uuid& note) {
    chooseWhenFound(note);
    isReadAnew_ = true;
}

void SearchResults::takeKeys() {
    const QModelIndex chosen = list_->currentIndex();
    const QScopedValueRollback marking(isMarking_, true);
    list_->setFocus();
    list_->setCurrentIndex(chosen);
}

void SearchResults::keep() {
    auto* const dialog = new QInputDialog(this);
    dialog->setObjectName("saveSearchDialog");
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle("Save Search");
    dialog->setLabelText("Name of the search");
    dialog->setTextValue(query_.left(60));
    dialog->resize(nameWidth, dialog->sizeHint().height());
    connect(dialog, &QInputDialog::textValueSelected, this, [this, query = query_](auto& name) {
        keepAs(name, query);
    });
    dialog->open();
}

/// A name that is taken most likely means that search, with another query from now on.
void SearchResults::keepAs(const QString& name, const QString& query) {
    const auto known =
        environment_.savedSearches().named(environment_.context(), name.toStdString());
    if (known.empty()) return add(name, query);
    auto* const box = new QMessageBox(
        QMessageBox::Question,
        "Save Search",
        QString("There is a saved search “%1” already.").arg(name.trimmed()),
        QMessageBox::Cancel,
        this);
    box->setObjectName("question");
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    auto* const both = box->addButton("Keep Both", QMessageBox::AcceptRole);
    connect(both, &QPushButton::clicked, this, [this, name, query] { add(name, query); });
    const auto* const instead = box->addButton("Change It", QMessageBox::AcceptRole);
    connect(instead, &QPushButton::clicked, this, [this, query, id = *known.front()->id] {
        auto* const search = environment_.context().find<CDSavedSearch>(id);
        if (search == nullptr) return;
        environment_.savedSearches().setQuery(*search, query.toStdString());
        environment_.save(this);
    });
    box->setDefaultButton(both);  // which loses nothing
    box->open();
}

void SearchResults::add(const QString& name, const QString& query) {
    environment_.savedSearches().create(
        environment_.context(), name.toStdString(), query.toStdString());
    environment_.save(this);
}

void SearchResults::search(const QString& text, SearchRunner::Typing typing, bool isExact) {
    query_ = text.trimmed();
    read_.reset();
    isReadAnew_ = false;
    typing_ = typing;
    isExact_ = isExact;
    if (query_.isEmpty()) {
        runner_->forget();
        show({});
        return;
    }
    if (shown_.isEmpty()) stack_->setCurrentWidget(list_);  // empty until the answer is there
    runner_->search(text, typing, isExact);
    if (typing == SearchRunner::Typing::goesOn) return;
    try {
        RecentSearches(environment_.preferences()).remember(query_.toStdString());
    } catch (const UserError& error) {
        environment_.log().warning(std::string("recent searches: ") + error.what());
    }
}

QStringList SearchResults::foundWords() const {
    const QModelIndex chosen = list_->currentIndex();
    if (!chosen.isValid()) return {};
    const SearchResult& found = model_->result(chosen.row());
    QStringList words =
        MarkedLine(found.highlightedTitle).matches() + MarkedLine(found.snippet).matches();
    words.removeDuplicates();
    return words;
}

/// The index has more or less to say than it had.
void SearchResults::refresh() {
    if (isVisible() && !query_.isEmpty()) runner_->search(query_, typing_, isExact_);
}

void SearchResults::show(const SearchAnswer& answer) {
    const int current = list_->currentIndex().row();
    const bool isSameQuestion = answer.text == std::exchange(shown_, answer.text);
    const auto read = std::exchange(read_, std::nullopt);
    const bool isReadAnew = std::exchange(isReadAnew_, false);
    const auto chosen =
        isSameQuestion && current >= 0 ? std::optional(model_->result(current).id) : read;
    const int scrolled = isSameQuestion ? list_->verticalScrollBar()->value() : 0;
    const auto setText = [](QLabel& label, const QString& text) {
        label.setText(text);
        label.setVisible(!text.isEmpty());
    };
    setText(*explanation_, MarkedLine(answer.explanation).richText());
    setText(*changes_, changesOf(answer.response));
    QStringList hints;
    for (const std::string& hint : answer.response.hints) {
        hints << QString::fromStdString(hint).toHtmlEscaped();
    }
    if (std::ssize(answer.response.results) == SearchRunner::mostResults) {
        hints << QString("The first %1 are shown.").arg(SearchRunner::mostResults);
    }
    setText(*hints_, hints.join("<br>"));
    keep_->setVisible(!query_.isEmpty());
    model_->setResults(answer.response.results);
    chooseNone();  // or the toolkit would choose the first one where the list has the keys
    if (model_->rowCount() == 0) return showEmpty(answer);
    stack_->setCurrentWidget(list_);
    if (chosen) goOn(*chosen, current);
    list_->verticalScrollBar()->setValue(scrolled);
    if (read) list_->scrollTo(list_->currentIndex());
    if (isReadAnew) choose(list_->currentIndex());
}

/// Makes a line the current one without opening it again. Where it is gone the next one takes its
/// place for who walks through the list; who writes stays in the note.
void SearchResults::goOn(const Uuid& found, int line) {
    if (const auto row = model_->rowOf(found)) {
        const QScopedValueRollback marking(isMarking_, true);
        list_->setCurrentIndex(model_->index(*row));
    } else if (list_->hasFocus()) {
        list_->setCurrentIndex(model_->index(std::min(line, model_->rowCount() - 1)));
    }
}

void SearchResults::showEmpty(const SearchAnswer& answer) {
    const auto& relaxation = answer.response.relaxation;
    const QString dropped =
        relaxation ? QString::fromStdString(relaxation->droppedTerm) : QString();
    withoutDropped_ = relaxation ? QString(answer.text).remove(dropped).simplified() : QString();
    if (answer.text.isEmpty()) {
        empty_->setContent(nothingTyped);
    } else if (!withoutDropped_.isEmpty()) {
        empty_->setContent(
            {"search",
             "Nothing was found",
             QString("Without “%1” there would be results.").arg(dropped),
             "Search without It"});
    } else {
        empty_->setContent(
            {"search",
             "Nothing was found",
             "Fewer words find more. Words in quotation marks must stand together."});
    }
    stack_->setCurrentWidget(empty_);
}

void SearchResults::follow(const QString& link) {
    if (link == "exact") search(query_, SearchRunner::Typing::finished, true);
}

/// A task is shown elsewhere: walking through the results must not leave them.
void SearchResults::choose(const QModelIndex& index) {
    if (!index.isValid() || isMarking_) return;
    const SearchResult& found = model_->result(index.row());
    found.kind == SearchKind::task ? emit taskChosen() : emit noteChosen(found.id);
}

void SearchResults::open(const QModelIndex& index) {
    const SearchResult& found = model_->result(index.row());
    found.kind == SearchKind::task ? emit taskOpened(found.id) : emit noteOpened(found.id);
}

}  // namespace tesserine::app
