#include "app/tasks/RemindersPage.h"

#include "app/look/EmptyState.h"
#include "app/look/Icon.h"
#include "app/look/RowPainting.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/RemindersModel.h"
#include "app/tasks/TaskDelegate.h"
#include "app/tasks/TaskWords.h"
#include "app/tasks/WhenPopup.h"

#include <QKeyEvent>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStackedWidget>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>

namespace tesserine::app {
namespace {

using RowKind = ReminderRow::Kind;

constexpr int rowIconSide = 18;
constexpr int timeColumnWidth = 110;
/// How long a reminder whose time has come may stand among those to come.
constexpr std::chrono::seconds refreshInterval{30};

int heightOfLine(TextRole role) { return QFontMetrics(Theme::font(role)).height(); }

class ReminderDelegate final : public QStyledItemDelegate {
public:
    ReminderDelegate(const AppEnvironment& environment, QObject* parent)
        : QStyledItemDelegate(parent), environment_(environment) {}

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const int height = rowAt(index).kind == RowKind::heading
                               ? heightOfLine(TextRole::emphasis) + space::huge
                               : heightOfLine(TextRole::body) + 2 * space::small + 2;
        return {option.rect.width(), height};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index)
        const override {
        const ReminderRow& row = rowAt(index);
        const Colors& colors = Theme::colors();
        QRect area = option.rect.adjusted(space::medium, 0, -space::medium, 0);
        painter->save();
        if (row.kind == RowKind::heading) {
            painter->setFont(Theme::font(TextRole::emphasis));
            painter->setPen(row.isPast ? colors.danger : colors.text);
            area.adjust(0, 0, 0, -space::small);
            painter->drawText(area, Qt::AlignLeading | Qt::AlignBottom, row.title);
            painter->restore();
            return;
        }
        paintLineGround(*painter, option);
        const QRect picture(
            area.left(), area.center().y() - rowIconSide / 2, rowIconSide, rowIconSide);
        icon(row.kind == RowKind::task ? "task" : "note", Ink::secondary)
            .paint(painter, QStyle::visualRect(option.direction, area, picture));
        QRect when(0, area.top(), timeColumnWidth, area.height());
        when.moveRight(area.right());
        const QRect title(
            picture.right() + space::medium,
            area.top(),
            when.left() - picture.right() - 2 * space::medium,
            area.height());
        painter->setFont(Theme::font(TextRole::body));
        painter->setPen(colors.text);
        paintName(*painter, QStyle::visualRect(option.direction, area, title), row.title);
        const TaskWords words(environment_.now(), environment_.calendar());
        painter->setFont(Theme::font(TextRole::caption));
        painter->setPen(row.isPast ? colors.danger : colors.secondaryText);
        painter->drawText(
            QStyle::visualRect(option.direction, area, when),
            Qt::AlignTrailing | Qt::AlignVCenter,
            row.isPast ? words.due({.date = row.at, .hasTime = true}) : words.time(row.at));
        painter->restore();
    }

private:
    static const ReminderRow& rowAt(const QModelIndex& index) {
        return static_cast<const RemindersModel*>(index.model())->row(index.row());
    }

    const AppEnvironment& environment_;
};

}  // namespace

RemindersPage::RemindersPage(AppEnvironment& environment, QWidget* parent)
    : QWidget(parent),
      environment_(environment),
      model_(new RemindersModel(environment, this)),
      list_(new QListView(this)),
      stack_(new QStackedWidget(this)) {
    setObjectName("remindersPage");
    setFocusProxy(list_);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
    list_->setObjectName("reminderList");
    list_->setAccessibleName("Reminders");
    list_->setModel(model_);
    list_->setItemDelegate(new ReminderDelegate(environment, this));
    list_->setFrameShape(QFrame::NoFrame);
    list_->setMouseTracking(true);
    list_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setContextMenuPolicy(Qt::CustomContextMenu);
    list_->installEventFilter(this);
    auto* const title = new QLabel("Reminders", this);
    title->setFont(Theme::font(TextRole::title));
    stack_->addWidget(list_);
    stack_->addWidget(new EmptyState(
        {"bell",
         "No reminders",
         "Give a task or a note a reminder and it stands here until its time comes. In a task, "
         "press the bell; in a note, the bell above its text."},
        this));
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::large, space::large, space::large, space::medium);
    layout->setSpacing(space::medium);
    layout->addWidget(title);
    layout->addWidget(stack_, 1);

    connect(list_, &QListView::doubleClicked, this, [this] {
        if (const auto row = current()) openRow(*row);
    });
    connect(list_, &QWidget::customContextMenuRequested, this, &RemindersPage::showMenu);
    connect(list_->selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this] {
        const auto row = current();
        if (!row || isReloading_) return;
        emit chosen(row->kind == RowKind::task ? std::optional(row->owner) : std::nullopt);
    });
    connect(&environment, &AppEnvironment::libraryChanged, this, [this](const auto& changes) {
        const auto concerns = [](const ObjectChange& change) {
            return change.entity == EntityKind::task || change.entity == EntityKind::note;
        };
        if (isVisible() && std::ranges::any_of(changes, concerns)) reload();
    });
    connect(&environment, &AppEnvironment::calendarChanged, this, [this] {
        if (isVisible()) reload();
    });
    auto* const timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, [this] {
        if (isVisible()) reload();
    });
    timer->start(refreshInterval);
}

void RemindersPage::open() {
    reload();
    list_->setFocus();
}

/// The chosen row stays chosen. Where it is gone, that which comes into its place is.
void RemindersPage::reload() {
    const QScopedValueRollback reloading(isReloading_, true);
    const auto chosen = current();
    const int before = list_->currentIndex().row();
    model_->reload();
    stack_->setCurrentIndex(model_->rowCount() == 0 ? 1 : 0);
    if (!chosen || list_->currentIndex().isValid()) return;
    const int now = rowOf(*chosen);
    list_->setCurrentIndex(
        model_->index(now >= 0 ? now : std::min(before, model_->rowCount() - 1)));
}

/// -1 when it is not there any more.
int RemindersPage::rowOf(const ReminderRow& chosen) const {
    int row = model_->rowCount() - 1;
    while (row >= 0 && model_->row(row).owner != chosen.owner) {
        --row;
    }
    return row;
}

std::optional<ReminderRow> RemindersPage::current() const {
    const QModelIndex index = list_->currentIndex();
    return index.isValid() ? std::optional(model_->row(index.row())) : std::nullopt;
}

void RemindersPage::openRow(const ReminderRow& row) {
    if (row.kind == RowKind::task) emit taskChosen(row.owner);
    if (row.kind == RowKind::note) emit noteChosen(row.owner);
}

void RemindersPage::setReminder(const ReminderRow& row, const std::optional<TaskDue>& when) {
    const auto at =
        when ? std::optional(reminderTime(*when, environment_.calendar())) : std::nullopt;
    StoreContext& context = environment_.context();
    if (row.kind == RowKind::task) {
        if (auto* const task = context.find<CDTask>(row.owner)) {
            environment_.tasks().setReminder(*task, at);
        }
    } else if (auto* const note = context.find<CDNote>(row.owner)) {
        environment_.notes().setReminder(*note, at);
    }
    environment_.save(this);
}

void RemindersPage::putOff(const ReminderRow& row) {
    auto* const popup = WhenPopup::forReminder(environment_, {}, this);
    connect(
        popup, &WhenPopup::picked, this, [this, row](const auto& when) { setReminder(row, when); });
    const QRect line = list_->visualRect(list_->currentIndex());
    popup->open(list_->viewport()->mapToGlobal(line.bottomLeft()), row.at);
}

bool RemindersPage::eventFilter(QObject* watched, QEvent* event) {
    if (watched == list_ && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        const bool isEnter = key == Qt::Key_Return || key == Qt::Key_Enter;
        const auto row = current();
        if (isEnter && row) openRow(*row);
        if (key == Qt::Key_Delete && row) setReminder(*row, {});
        if (isEnter || key == Qt::Key_Delete) return true;
    }
    return QWidget::eventFilter(watched, event);
}

/// Of the row it was opened for: while it is open, the list may become another one.
void RemindersPage::showMenu(const QPoint& place) {
    const QModelIndex index = list_->indexAt(place);
    if (!index.isValid() || model_->row(index.row()).kind == RowKind::heading) return;
    const ReminderRow row = model_->row(index.row());
    auto* const menu = new QMenu(this);
    menu->setObjectName("reminderMenu");
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(icon("open"), "Open", this, [this, row] { openRow(row); });
    menu->addAction(icon("clock"), "Remind Me Later…", this, [this, row] { putOff(row); });
    menu->addAction(icon("close"), "Remove Reminder", this, [this, row] { setReminder(row, {}); });
    menu->popup(list_->viewport()->mapToGlobal(place));
}

}  // namespace tesserine::app
