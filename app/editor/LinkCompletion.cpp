#include "app/editor/LinkCompletion.h"

#include "app/editor/BodyEdit.h"
#include "app/editor/OpenNote.h"
#include "app/look/Icon.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "core/model/NoteEntities.h"

#include <QKeyEvent>
#include <QListWidget>
#include <QTextBlock>

#include <algorithm>
#include <memory>
#include <utility>

namespace tesserine::app {
namespace {

constexpr int addressRole = Qt::UserRole;
constexpr int longestTitle = 100;

}  // namespace

LinkCompletion::LinkCompletion(AppEnvironment& environment, const OpenNote& open, BodyEdit& body)
    : QObject(&body),
      environment_(environment),
      open_(open),
      body_(body),
      list_(new QListWidget(&body)) {
    list_->setObjectName("linkCompletion");
    list_->setAccessibleName("Notes to link to");
    list_->setFocusPolicy(Qt::NoFocus);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->hide();
    body.installEventFilter(this);
    connect(&body, &QTextEdit::cursorPositionChanged, this, &LinkCompletion::update);
    connect(&body, &QTextEdit::textChanged, this, [this] { isDismissed_ = false; });
    connect(&body, &BodyEdit::left, this, &LinkCompletion::update);
    connect(list_, &QListWidget::itemClicked, this, &LinkCompletion::accept);
}

void LinkCompletion::begin() {
    body_.edit([](NoteDocument& note, QTextCursor& cursor) {
        const QString selected = cursor.selectedText();
        note.insertText(cursor, "[[" + selected, {});
    });
    body_.setFocus();
    update();
}

/// Also while the first answer is awaited.
bool LinkCompletion::isOpen() const { return wanted_ && (isAsking_ || list_->isVisible()); }

bool LinkCompletion::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress || !isOpen()) return QObject::eventFilter(watched, event);
    switch (static_cast<QKeyEvent*>(event)->key()) {
    case Qt::Key_Up: move(-1); return true;
    case Qt::Key_Down: move(1); return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Tab: accept(); return true;
    case Qt::Key_Escape:
        isDismissed_ = true;
        update();
        return true;
    default: return QObject::eventFilter(watched, event);
    }
}

std::optional<QString> LinkCompletion::typed() const {
    const QTextCursor cursor = body_.textCursor();
    if (cursor.hasSelection() || body_.isReadOnly()) return {};
    const int begin = std::max(cursor.positionInBlock() - longestTitle, 0);
    const QString before = cursor.block().text().mid(begin, cursor.positionInBlock() - begin);
    const qsizetype opening = before.lastIndexOf("[[");
    if (opening < 0 || before.indexOf("]]", opening) >= 0) return {};
    return before.mid(opening + 2);
}

void LinkCompletion::update() {
    const auto title = typed();
    if (title != wanted_) acceptsAnswer_ = false;
    wanted_ = isDismissed_ || !body_.hasFocus() ? std::nullopt : title;
    if (!wanted_) {
        shown_.reset();
        return list_->hide();
    }
    if (!isAsking_ && wanted_ != shown_) ask(*wanted_);
}

std::vector<LinkCompletion::Offer> LinkCompletion::find(
    StoreContext& context, const QString& title) {
    const Predicate live = {"trashedAt == nil AND isTemplate == NO"};
    const FetchRequest request{
        .predicate = title.isEmpty()
                         ? live
                         : Predicate::both(live, {"title CONTAINS[cd] %@", title.toStdString()}),
        .sort = {{"updatedAt", SortDescriptor::Order::descending}},
        .limit = mostOffered};
    std::vector<Offer> offers;
    for (const CDNote* note : context.fetch<CDNote>(request)) {
        offers.push_back({*note->id, QString::fromStdString(note->title.valueOr(""))});
    }
    return offers;
}

/// One question at a time; what was typed meanwhile is asked after it.
void LinkCompletion::ask(const QString& title) {
    isAsking_ = true;
    auto offers = std::make_shared<std::vector<Offer>>();  // of the worker, then of this thread
    environment_.inBackground(
        [title, offers](StoreContext& context, const std::stop_token& /*stop*/) {
            *offers = find(context, title);
        },
        this,
        [this, title, offers] {
            isAsking_ = false;
            if (!wanted_) return;
            if (*wanted_ != title) return ask(*wanted_);
            answer(title, std::move(*offers));
        },
        [this](const std::string& /*sentence*/) { isAsking_ = false; });
}

void LinkCompletion::answer(const QString& title, std::vector<Offer> offers) {
    std::ranges::stable_partition(
        offers, [&](const Offer& offer) { return offer.note != open_.id(); });
    list_->clear();
    shown_ = title;
    bool isThere = false;
    for (const Offer& offer : offers) {
        auto* const item = new QListWidgetItem(icon("note"), offer.title, list_);
        item->setData(addressRole, QString::fromStdString(NoteService::noteURL(offer.note)));
        isThere |= offer.title.compare(title, Qt::CaseInsensitive) == 0;
    }
    if (!title.trimmed().isEmpty() && !isThere) {
        new QListWidgetItem(icon("note-add"), "New note “" + title.trimmed() + "”", list_);
    }
    if (list_->count() == 0) return list_->hide();
    list_->setCurrentRow(0);
    place();
    if (std::exchange(acceptsAnswer_, false)) accept();
}

/// Shows the list at the cursor.
void LinkCompletion::place() {
    const QRect cursor = body_.cursorRect();
    const int height = list_->sizeHintForRow(0) * list_->count() + 2 * list_->frameWidth();
    list_->resize(std::min(360, body_.width() - 2 * space::medium), height);
    const QPoint corner = body_.viewport()->pos();
    const bool fitsBelow = corner.y() + cursor.bottom() + height < body_.height();
    const int top = fitsBelow ? cursor.bottom() + space::tiny : cursor.top() - height;
    const int left = std::min(corner.x() + cursor.left(), body_.width() - list_->width());
    list_->move(std::max(left, 0), std::max(corner.y() + top, 0));
    list_->raise();
    list_->show();
}

void LinkCompletion::move(int rows) {
    const int count = list_->count();
    if (count == 0) return;
    list_->setCurrentRow((list_->currentRow() + rows + count) % count);
}

void LinkCompletion::accept() {
    const QListWidgetItem* const chosen = list_->currentItem();
    const auto title = typed();
    if (title && title != shown_) {
        acceptsAnswer_ = true;
        return;
    }
    list_->hide();
    if (chosen == nullptr || !title) return;
    QString shown = chosen->text();
    QString address = chosen->data(addressRole).toString();
    if (address.isEmpty()) {
        shown = title->trimmed();
        const CDNote& made =
            environment_.notes().createNote(environment_.context(), {.title = shown.toStdString()});
        address = QString::fromStdString(NoteService::noteURL(*made.id));
        if (!environment_.save(&body_)) return;
    }
    if (shown.isEmpty()) shown = "Untitled";
    body_.edit([&](NoteDocument& note, QTextCursor& cursor) {
        cursor.movePosition(
            QTextCursor::PreviousCharacter,
            QTextCursor::KeepAnchor,
            static_cast<int>(title->size()) + 2);
        const OwnedAttributes attributes{{"href", address.toStdString()}};
        note.insertText(
            cursor, shown, {.marks = {{.element = HTMLElement::a, .attributes = attributes}}});
    });
}

}  // namespace tesserine::app
