#include "app/editor/FindBar.h"

#include "app/commands/Commands.h"
#include "app/look/FlowLayout.h"
#include "app/look/IconButton.h"
#include "app/look/Theme.h"
#include "app/state/DateWords.h"
#include "core/body/PlainText.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTextBlock>
#include <QVBoxLayout>

#include <algorithm>
#include <initializer_list>

namespace tesserine::app {
namespace {

constexpr int markDelay = 200;  // milliseconds without a change

QLineEdit* field(const QString& name, const QString& purpose, QWidget* parent) {
    auto* const made = new QLineEdit(parent);
    made->setObjectName(name);
    made->setPlaceholderText(purpose);
    made->setAccessibleName(purpose);
    made->setClearButtonEnabled(true);
    made->setMinimumWidth(60);
    made->setMaximumWidth(320);
    return made;
}

/// Where `sought` stands in a paragraph that begins at `position`.
void addPlaces(
    std::vector<PassageRange>& places, int position, const QString& text, const QString& sought) {
    qsizetype at = text.indexOf(sought, 0, Qt::CaseInsensitive);
    for (; at >= 0; at = text.indexOf(sought, at + sought.size(), Qt::CaseInsensitive)) {
        places.push_back(
            {static_cast<std::size_t>(position + at), static_cast<std::size_t>(sought.size())});
    }
}

bool isObject(const NoteDocument& note, const PassageRange& range) {
    return note.characterAt(static_cast<int>(range.start)) == QChar::ObjectReplacementCharacter;
}

/// Where the words stand, in the order of the text. A no-break space counts as a space. A table
/// and whatever else is one object is one place, however often they stand in it.
std::vector<PassageRange> occurrences(const NoteDocument& note, const QString& words) {
    std::vector<PassageRange> places;
    if (words.isEmpty()) return places;
    std::vector<PassageRange> objects;
    for (QTextBlock block = note.begin(); block.isValid(); block = block.next()) {
        const QString text = block.text().replace(QChar::Nbsp, u' ');
        addPlaces(places, block.position(), text, words);
        addPlaces(objects, block.position(), text, QString(QChar::ObjectReplacementCharacter));
    }
    for (const PassageRange& range : objects) {
        const std::string& object = note.styleAt(static_cast<int>(range.start)).object;
        QString text = QString::fromStdString(PlainText::fromHTML(object));
        text.replace(QChar::Nbsp, u' ');
        if (text.contains(words, Qt::CaseInsensitive)) places.push_back(range);
    }
    std::ranges::sort(places, {}, &PassageRange::start);
    return places;
}

}  // namespace

FindBar::FindBar(Commands& commands, BodyEdit& body, QWidget* parent)
    : QWidget(parent),
      body_(body),
      sought_(field("findField", "Find in this note", this)),
      replacement_(field("replaceField", "Replace with", this)),
      replacing_(new QWidget(this)),
      count_(new QLabel(this)),
      marks_(body, BodyEdit::Overlay::found) {
    setObjectName("findBar");
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::AlternateBase);
    layOut();
    connect(sought_, &QLineEdit::textChanged, this, &FindBar::search);
    connect(sought_, &QLineEdit::returnPressed, this, [this] { go(Direction::forward); });
    connect(replacement_, &QLineEdit::returnPressed, this, &FindBar::replaceOne);
    commands.on("find.open", this, [this] { open(Purpose::find); });
    commands.on("find.replace", this, [this] { open(Purpose::replace); });
    commands.on("find.next", this, [this] { go(Direction::forward); });
    commands.on("find.previous", this, [this] { go(Direction::backward); });
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, [this] {
        if (!body_.isLoading()) markAll();  // otherwise what comes in starts it again
    });
    connect(&body, &QTextEdit::textChanged, this, [this] {
        if (isVisible()) timer_.start(markDelay);
    });
    hide();
}

void FindBar::layOut() {
    auto* const previous = new IconButton("chevron-up", "Find previous", this);
    auto* const next = new IconButton("chevron-down", "Find next", this);
    auto* const closing = new IconButton("close", "Close search in note", this);
    auto* const one = new QPushButton("Replace", replacing_);
    auto* const all = new QPushButton("Replace All", replacing_);
    all->setObjectName("replaceAll");
    count_->setForegroundRole(QPalette::PlaceholderText);
    connect(next, &QToolButton::clicked, this, [this] { go(Direction::forward); });
    connect(previous, &QToolButton::clicked, this, [this] { go(Direction::backward); });
    connect(closing, &QToolButton::clicked, this, &QWidget::hide);
    connect(one, &QPushButton::clicked, this, &FindBar::replaceOne);
    connect(all, &QPushButton::clicked, this, &FindBar::replaceAll);

    // What has no room in one line goes on in the next.
    auto* const finding = new FlowLayout(space::small);
    using Parts = std::initializer_list<QWidget*>;
    for (QWidget* const part : Parts{sought_, previous, next, count_}) {
        part->setMinimumHeight(sought_->sizeHint().height());
        finding->addWidget(part);
    }
    auto* const replacing = new FlowLayout(space::small);
    replacing_->setLayout(replacing);
    for (QWidget* const part : Parts{replacement_, one, all}) {
        replacing->addWidget(part);
    }
    auto* const first = new QHBoxLayout;
    first->setSpacing(space::small);
    first->addLayout(finding, 1);
    first->addWidget(closing, 0, Qt::AlignTop);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(space::huge, space::small, space::small, space::small);
    column->setSpacing(space::small);
    column->addLayout(first);
    column->addWidget(replacing_);
}

void FindBar::open(Purpose purpose) {
    const QString selected = body_.textCursor().selectedText();
    const bool isWord = !selected.isEmpty() && !selected.contains(QChar::ParagraphSeparator)
                        && !selected.contains(QChar::ObjectReplacementCharacter);
    replacing_->setVisible(purpose == Purpose::replace);
    before_ = body_.textCursor();
    show();
    if (isWord) sought_->setText(selected);
    sought_->setFocus();
    sought_->selectAll();
    search();
}

void FindBar::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Escape) return QWidget::keyPressEvent(event);
    hide();
}

/// Other pages of the window hide it as well, and bring it back.
void FindBar::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    timer_.start(0);
}

void FindBar::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    timer_.stop();
    marks_.clear();
    body_.setFocus();
}

/// Marks every place and goes to the first behind the cursor.
void FindBar::search() {
    markAll();
    QTextCursor here = body_.textCursor();
    here.setPosition(here.selectionStart());
    body_.setTextCursor(here);
    go(Direction::forward);
}

/// Marks and counts every place.
void FindBar::markAll() {
    timer_.stop();
    found_ = occurrences(body_.note(), sought_->text());
    marks_.show(found_);
    showCount();
}

/// From the cursor on, and around at the end.
void FindBar::go(Direction direction) {
    const bool isBehind = !isVisible() || timer_.isActive();
    if (isBehind) found_ = occurrences(body_.note(), sought_->text());
    if (found_.empty()) return showCount();
    QTextCursor cursor = body_.textCursor();
    auto place = found_.cbegin();
    if (direction == Direction::forward) {
        const auto from = static_cast<std::size_t>(cursor.selectionEnd());
        place = std::ranges::lower_bound(found_, from, {}, &PassageRange::start);
        if (place == found_.cend()) place = found_.cbegin();
    } else {
        const auto to = static_cast<std::size_t>(cursor.selectionStart());
        place = std::ranges::upper_bound(found_, to, {}, &PassageRange::end);
        if (place == found_.cbegin()) place = found_.cend();
        --place;
    }
    cursor.setPosition(static_cast<int>(place->start));
    cursor.setPosition(static_cast<int>(place->end()), QTextCursor::KeepAnchor);
    body_.setTextCursor(cursor);
    body_.ensureCursorVisible();
    showCount();
}

/// Goes past a table, whose words are changed in the table only.
void FindBar::replaceOne() {
    const QString selected = body_.textCursor().selectedText().replace(QChar::Nbsp, u' ');
    if (selected == QChar::ObjectReplacementCharacter) {
        const int table = body_.textCursor().selectionStart();
        go(Direction::forward);
        if (body_.textCursor().selectionStart() != table) return;
        return count_->setText("A table is changed in its own window: double-click it");
    }
    const bool isFound = selected.compare(sought_->text(), Qt::CaseInsensitive) == 0;
    if (isFound && !sought_->text().isEmpty() && !body_.isReadOnly()) {
        body_.edit([this](NoteDocument& note, QTextCursor& cursor) {
            note.insertText(cursor, replacement_->text(), note.styleAt(cursor.selectionStart()));
        });
    }
    search();
}

/// One step to undo. Who wrote before can go on there: nothing is chosen, as the new words may hold
/// the old ones, and what is typed next would replace those.
void FindBar::replaceAll() {
    std::vector<PassageRange> places = occurrences(body_.note(), sought_->text());
    if (places.empty() || body_.isReadOnly()) return;
    const std::size_t tables = std::erase_if(
        places, [this](const PassageRange& range) { return isObject(body_.note(), range); });
    std::ranges::reverse(places);  // from the last one on, so that none moves before its turn
    marks_.clear();                // every change would move them
    body_.edit([&](NoteDocument& note, QTextCursor& cursor) {
        cursor.beginEditBlock();
        QTextCursor place(&note);
        for (const PassageRange& range : places) {
            place.setPosition(static_cast<int>(range.start));
            place.setPosition(static_cast<int>(range.end()), QTextCursor::KeepAnchor);
            note.insertText(place, replacement_->text(), note.styleAt(place.selectionStart()));
        }
        cursor.endEditBlock();
    });
    before_.setPosition(before_.selectionEnd());
    body_.setTextCursor(before_);
    markAll();
    const QString left =
        tables == 0 ? "" : ", left " + shownCount(tables, "table", "tables") + " alone";
    count_->setText(QString("Replaced %1").arg(places.size()) + left);
}

void FindBar::showCount() {
    if (sought_->text().isEmpty()) return count_->clear();
    if (found_.empty()) return count_->setText("Not found");
    const auto here = static_cast<std::size_t>(body_.textCursor().selectionStart());
    const auto place = std::ranges::find(found_, here, &PassageRange::start);
    count_->setText(
        place == found_.end()
            ? QString("%1 found").arg(found_.size())
            : QString("%1 of %2").arg(place - found_.begin() + 1).arg(found_.size()));
}

}  // namespace tesserine::app
