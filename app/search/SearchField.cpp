#include "app/search/SearchField.h"

#include "app/look/Icon.h"
#include "app/look/Theme.h"
#include "search/SearchSuggestions.h"

#include <QEvent>
#include <QKeyEvent>
#include <QListWidget>

namespace tesserine::app {
namespace {

QString iconOf(SearchSuggestion::Kind kind) {
    switch (kind) {
    case SearchSuggestion::Kind::operatorName: return "filter";
    case SearchSuggestion::Kind::value: return "tag";
    case SearchSuggestion::Kind::word: return "search";
    case SearchSuggestion::Kind::recent: return "history";
    }
    return "search";
}

}  // namespace

SearchField::SearchField(QWidget* parent) : QLineEdit(parent), list_(new QListWidget(this)) {
    setObjectName("searchField");
    setAccessibleName("Search");
    setPlaceholderText("Search notes and tasks");
    setClearButtonEnabled(true);
    addAction(icon("search", Ink::secondary), QLineEdit::LeadingPosition);
    list_->setObjectName("suggestions");
    list_->setAccessibleName("Suggestions");
    list_->setWindowFlags(Qt::ToolTip | Qt::FramelessWindowHint);
    list_->setFocusPolicy(Qt::NoFocus);
    list_->setFocusProxy(this);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    connect(list_, &QListWidget::itemClicked, this, [this] { take(); });
    connect(this, &QLineEdit::textEdited, this, &SearchField::follow);
    connect(this, &QLineEdit::textChanged, this, [this](const QString& text) {
        if (text.isEmpty() && !isModified()) hideSuggestions();
    });
}

void SearchField::setSuggestions(
    const QString& typed, const std::vector<SearchSuggestion>& suggestions) {
    if (typed != text() || !hasFocus()) return;
    list_->clear();
    replacements_.clear();
    for (const SearchSuggestion& suggestion : suggestions) {
        const QString detail = QString::fromStdString(suggestion.detail);
        const QString title = QString::fromStdString(suggestion.title);
        list_->addItem(new QListWidgetItem(
            icon(iconOf(suggestion.kind), Ink::secondary),
            detail.isEmpty() ? title : title + "    " + detail));
        replacements_.push_back(QString::fromStdString(suggestion.replacement));
    }
    if (replacements_.empty()) return hideSuggestions();
    const int height = list_->sizeHintForRow(0) * list_->count() + 2 * list_->frameWidth();
    list_->setGeometry(
        QRect(mapToGlobal(QPoint(0, this->height() + space::hair)), QSize(width(), height)));
    list_->setCurrentRow(-1);
    list_->show();
}

void SearchField::setQuery(const QString& query) {
    setText(query);
    hideSuggestions();
}

bool SearchField::eventFilter(QObject* watched, QEvent* event) {
    return QLineEdit::eventFilter(watched, event);
}

/// Tab takes a suggestion while they are open, instead of leaving the field.
bool SearchField::event(QEvent* event) {
    if (event->type() == QEvent::KeyPress && isOpen()) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Tab) {
            if (list_->currentRow() < 0) list_->setCurrentRow(0);
            take();
            return true;
        }
    }
    if (event->type() == QEvent::FocusOut || event->type() == QEvent::Hide) hideSuggestions();
    return QLineEdit::event(event);
}

void SearchField::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Down: isOpen() ? walk(1) : emit resultsWanted(); return;
    case Qt::Key_Up:
        if (isOpen()) walk(-1);
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (take()) return;
        hideSuggestions();
        emit searched(text());
        return;
    case Qt::Key_Escape: isOpen() ? hideSuggestions() : emit left(); return;
    default: QLineEdit::keyPressEvent(event);
    }
}

void SearchField::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    if (event->reason() != Qt::ActiveWindowFocusReason) selectAll();
}

void SearchField::follow(const QString& text) {
    emit suggestionsWanted(text);
    emit typed(text);
}

bool SearchField::isOpen() const { return list_->isVisible(); }

void SearchField::hideSuggestions() { list_->hide(); }

/// Round both ends, past "none chosen".
void SearchField::walk(int steps) {
    const int places = list_->count() + 1;
    list_->setCurrentRow((list_->currentRow() + 1 + steps + places) % places - 1);
}

bool SearchField::take() {
    const int row = isOpen() ? list_->currentRow() : -1;
    if (row < 0) return false;
    const QString query = replacements_[static_cast<std::size_t>(row)];
    hideSuggestions();
    setText(query);
    // After "tag:" or a word with a space more is typed; anything else is a whole query.
    if (query.endsWith(':')) {
        follow(query);
    } else {
        emit searched(query.trimmed());
    }
    return true;
}

}  // namespace tesserine::app
