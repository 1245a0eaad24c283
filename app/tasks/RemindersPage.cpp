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
#include <QStackedWidget>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>

namespace tesserine::app {
namespace {

using Kind = ReminderRow::Kind;

constexpr int iconSide = 18;
constexpr int timeWidth = 110;
/// How long a reminder whose time has come may stand among those to come.
constexpr std::chrono::seconds refreshInterval{30};

int lineHeight(TextRole role) { return QFontMetrics(Theme::font(role)).height(); }

class ReminderDelegate final : public QStyledItemDelegate {
public:
    ReminderDelegate(const AppEnvironment& environment, QObject* parent)
        : QStyledItemDelegate(parent), environment_(environment) {}

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const int height = rowAt(index).kind == Kind::heading
                               ? lineHeight(TextRole::emphasis) + space::huge
                               : lineHeight(TextRole::body) + 2 * space::small + 2;
        return {option.rect.width(), height};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index)
        const override {
        const ReminderRow& row = rowAt(index);
        const Colors& colors = Theme::colors();
        QRect area = option.rect.adjusted(space::medium, 0, -space::medium, 0);
        painter->save();
        if (row.kind == Kind::heading) {
            painter->setFont(Theme::font(TextRole::emphasis));
            painter->setPen(row.isMissed ? colors.danger : colors.text);
            area.adjust(0, 0, 0, -space::small);
            painter->drawText(area, Qt::AlignLeading | Qt::AlignBottom, row.title);
            painter->restore();
            return;
        }
        paintLineGround(*painter, option);
        const QRect picture(area.left(), area.center().y() - iconSide / 2, iconSide, iconSide);
        icon(row.kind == Kind::task ? "task" : "note", Ink::secondary)
            .paint(painter, QStyle::visualRect(option.direction, area, picture));
        QRect when(0, area.top(), timeWidth, area.height());
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
        painter->setPen(row.isMissed ? colors.danger : colors.secondaryText);
        painter->drawText(
            QStyle::visualRect(option.direction, area, when),
            Qt::AlignTrailing | Qt::AlignVCenter,
            row.isMissed ? words.due({.date = row.at, .hasTime = true}) : words.time(row.at));
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

    connect(list_, &QListView::doubleClicked, this, &RemindersPage::openCurrent);
    connect(list_, &QWidget::customContextMenuRequested, this, &RemindersPage::showMenu);
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

void RemindersPage::reload() {
    const int current = list_->currentIndex().row();
    model_->reload();
    stack_->setCurrentIndex(model_->rowCount() == 0 ? 1 : 0);
    if (!list_->currentIndex().isValid() && current >= 0) {
        list_->setCurrentIndex(model_->index(std::min(current, model_->rowCount() - 1)));
    }
}

void RemindersPage::openCurrent() {
    const QModelIndex index = list_->currentIndex();
    if (!index.isValid()) return;
    const ReminderRow row = model_->row(index.row());
    if (row.kind == Kind::task) emit taskChosen(row.owner);
    if (row.kind == Kind::note) emit noteChosen(row.owner);
}

void RemindersPage::setReminder(int row, const std::optional<TaskDue>& when) {
    const ReminderRow changed = model_->row(row);
    const auto at =
        when ? std::optional(reminderTime(*when, environment_.calendar())) : std::nullopt;
    StoreContext& context = environment_.context();
    if (changed.kind == Kind::task) {
        if (auto* const task = context.find<CDTask>(changed.owner)) {
            environment_.tasks().setReminder(*task, at);
        }
    } else if (auto* const note = context.find<CDNote>(changed.owner)) {
        environment_.notes().setReminder(*note, at);
    }
    environment_.save(this);
}

void RemindersPage::putOff() {
    const QModelIndex index = list_->currentIndex();
    if (!index.isValid()) return;
    auto* const popup = WhenPopup::forReminder(environment_, {}, this);
    connect(popup, &WhenPopup::picked, this, [this, row = index.row()](const auto& when) {
        setReminder(row, when);
    });
    const QRect line = list_->visualRect(index);
    popup->open(list_->viewport()->mapToGlobal(line.bottomLeft()), model_->row(index.row()).at);
}

void RemindersPage::remove() {
    const QModelIndex index = list_->currentIndex();
    if (index.isValid()) setReminder(index.row(), {});
}

bool RemindersPage::eventFilter(QObject* watched, QEvent* event) {
    if (watched == list_ && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        const bool isEnter = key == Qt::Key_Return || key == Qt::Key_Enter;
        if (isEnter) openCurrent();
        if (key == Qt::Key_Delete) remove();
        if (isEnter || key == Qt::Key_Delete) return true;
    }
    return QWidget::eventFilter(watched, event);
}

void RemindersPage::showMenu(const QPoint& place) {
    if (!list_->indexAt(place).isValid()) return;
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(icon("open"), "Open", this, &RemindersPage::openCurrent);
    menu->addAction(icon("clock"), "Remind Me Later…", this, &RemindersPage::putOff);
    menu->addAction(icon("close"), "Remove Reminder", this, &RemindersPage::remove);
    menu->popup(list_->viewport()->mapToGlobal(place));
}

}  // namespace tesserine::app
