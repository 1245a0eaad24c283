#include "app/tasks/CalendarPage.h"

#include "app/look/IconButton.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/CalendarGrid.h"
#include "app/tasks/QuickAddBar.h"
#include "app/tasks/TaskActions.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace tesserine::app {

CalendarPage::CalendarPage(AppEnvironment& environment, TaskActions& actions, QWidget* parent)
    : QWidget(parent),
      environment_(environment),
      actions_(actions),
      model_(environment),
      title_(new QLabel(this)),
      bar_(new QuickAddBar(environment, this)),
      grid_(new CalendarGrid(environment, model_, this)) {
    setObjectName("calendarPage");
    setFocusProxy(grid_);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
    title_->setObjectName("calendarTitle");
    title_->setFont(Theme::font(TextRole::title));
    title_->setWordWrap(true);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::large, space::large, space::large, space::large);
    layout->setSpacing(space::medium);
    layout->addLayout(makeHead());
    layout->addWidget(bar_);
    layout->addWidget(grid_, 1);

    connect(grid_, &CalendarGrid::dayChanged, this, &CalendarPage::showDay);
    connect(grid_, &CalendarGrid::chosen, this, &CalendarPage::chosen);
    connect(grid_, &CalendarGrid::opened, this, &CalendarPage::opened);
    connect(grid_, &CalendarGrid::addingAsked, bar_, [this] { bar_->setFocus(); });
    connect(grid_, &CalendarGrid::movedToDay, this, [this](const auto& tasks, Instant day) {
        actions_.commands().setDue(tasks, TaskDue{.date = day});
    });
    grid_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(grid_, &QWidget::customContextMenuRequested, this, [this](const QPoint& place) {
        actions_.showMenu(selectedTasks(), grid_->mapToGlobal(place));
    });
    connect(bar_, &QuickAddBar::created, this, [this](const Uuid& task) {
        if (grid_->areaOf(task).isEmpty()) actions_.tellWhereAdded(task);
        grid_->choose(task);
    });
    connect(bar_, &QuickAddBar::left, grid_, [this] { grid_->setFocus(); });
    connect(&environment, &AppEnvironment::libraryChanged, this, [this](const auto& changes) {
        const auto isTask = [](const ObjectChange& change) {
            return change.entity == EntityKind::task;
        };
        if (isVisible() && std::ranges::any_of(changes, isTask)) refresh();
    });
    connect(&environment, &AppEnvironment::calendarChanged, this, [this] {
        if (isVisible()) refresh();
    });
}

QLayout* CalendarPage::makeHead() {
    auto* const back = new IconButton("chevron-left", "Before", this);
    auto* const forward = new IconButton("chevron-right", "After", this);
    auto* const today = new QToolButton(this);
    today->setObjectName("goToToday");
    today->setText("Today");
    auto* const month = new QToolButton(this);
    auto* const week = new QToolButton(this);
    month->setText("Month");
    week->setText("Week");
    month->setChecked(true);
    auto* const spans = new QButtonGroup(this);
    for (QToolButton* button : {month, week}) {
        button->setCheckable(true);
        spans->addButton(button);
    }
    month->setChecked(true);
    connect(back, &IconButton::clicked, this, [this] { model_.moveBySpans(-1), showDay(); });
    connect(forward, &IconButton::clicked, this, [this] { model_.moveBySpans(1), showDay(); });
    connect(today, &QToolButton::clicked, this, [this] { model_.showToday(), showDay(); });
    connect(month, &QToolButton::clicked, this, [this] { setSpan(CalendarModel::Span::month); });
    connect(week, &QToolButton::clicked, this, [this] { setSpan(CalendarModel::Span::week); });

    auto* const head = new QHBoxLayout;
    head->setSpacing(space::tiny);
    head->addWidget(title_, 1);
    head->addWidget(month);
    head->addWidget(week);
    head->addSpacing(space::large);
    head->addWidget(back);
    head->addWidget(today);
    head->addWidget(forward);
    return head;
}

void CalendarPage::open() {
    refresh();
    grid_->setFocus();
}

void CalendarPage::setSpan(CalendarModel::Span span) {
    model_.show(span, model_.day());
    showDay();
}

void CalendarPage::refresh() {
    model_.reload();
    showDay();
}

void CalendarPage::showDay() {
    showTitle();
    bar_->setDefaults({.dueDay = model_.day()});
    grid_->refresh();
}

/// With the short names of months where the long ones do not fit beside the buttons.
void CalendarPage::showTitle() {
    constexpr int shortName = 3;
    QStringList words = model_.title().split(' ');
    for (QString& word : words) {
        const bool fits = title_->fontMetrics().horizontalAdvance(word) <= title_->width();
        if (!fits && word.front().isLetter()) word.truncate(shortName);
    }
    title_->setText(words.join(' '));
}

void CalendarPage::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    showTitle();
}

std::vector<Uuid> CalendarPage::selectedTasks() const {
    const auto task = grid_->chosenTask();
    return task ? std::vector{*task} : std::vector<Uuid>{};
}

QPoint CalendarPage::placeOfCurrent() const {
    const auto task = grid_->chosenTask();
    QRect area = task ? grid_->areaOf(*task) : QRect();
    if (area.isEmpty()) area = grid_->areaOfDay(model_.dayIndex());
    return grid_->mapToGlobal(area.bottomLeft());
}

}  // namespace tesserine::app
