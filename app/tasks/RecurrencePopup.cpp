#include "app/tasks/RecurrencePopup.h"

#include "app/look/Theme.h"
#include "app/tasks/TaskWords.h"
#include "core/tasks/TaskService.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>

namespace tesserine::app {
namespace {

using Unit = RecurrenceRule::Unit;

constexpr int greatestInterval = 999;

}  // namespace

RecurrencePopup::RecurrencePopup(
    Calendar calendar, std::optional<Instant> due, Instant today, QWidget* parent)
    : Popup(parent),
      calendar_(std::move(calendar)),
      due_(due),
      today_(today),
      interval_(new QSpinBox(this)),
      unit_(new QComboBox(this)),
      weekdayRow_(new QWidget(this)),
      meaning_(new QLabel(this)) {
    setObjectName("recurrencePopup");
    interval_->setRange(1, greatestInterval);
    interval_->setAccessibleName("Every");
    unit_->setAccessibleName("Unit");
    for (const char* const unit : {"days", "weeks", "months", "years"}) {
        unit_->addItem(unit);
    }
    meaning_->setObjectName("recurrenceMeaning");
    meaning_->setFont(Theme::font(TextRole::caption));
    meaning_->setForegroundRole(QPalette::PlaceholderText);

    auto* const every = new QHBoxLayout;
    every->addWidget(new QLabel("Every", this));
    every->addWidget(interval_);
    every->addWidget(unit_, 1);
    auto* const days = new QHBoxLayout(weekdayRow_);
    days->setContentsMargins(0, 0, 0, 0);
    days->setSpacing(space::hair);
    for (int i = 0; i < daysInWeek; ++i) {
        const int weekday = (calendar_.firstWeekday() - 1 + i) % daysInWeek + 1;
        auto* const button = new QToolButton(weekdayRow_);
        button->setText(shortWeekdayName(weekday).left(2));
        button->setAccessibleName(weekdayName(weekday));
        button->setToolTip(weekdayName(weekday));
        button->setCheckable(true);
        button->setProperty("weekday", weekday);
        connect(button, &QToolButton::toggled, this, &RecurrencePopup::updateMeaning);
        days->addWidget(button);
        weekdays_.push_back(button);
    }
    auto* const done = new QPushButton("Repeat", this);
    done->setObjectName("takeRecurrence");
    done->setDefault(true);

    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::small, space::small, space::small, space::small);
    layout->setSpacing(space::tiny);
    addUsual("Does not repeat", {});
    addUsual("Every day", RecurrenceRule{});
    addUsual("Every weekday", RecurrenceRule{.unit = Unit::week, .weekdays = {2, 3, 4, 5, 6}});
    addUsual("Every week", RecurrenceRule{.unit = Unit::week});
    addUsual(
        "Every month", RecurrenceRule::fromEditor({.unit = Unit::month, .due = due}, calendar_));
    addUsual("Every year", RecurrenceRule::fromEditor({.unit = Unit::year, .due = due}, calendar_));
    layout->addSpacing(space::small);
    layout->addLayout(every);
    layout->addWidget(weekdayRow_);
    layout->addWidget(meaning_);
    layout->addWidget(done);

    connect(interval_, &QSpinBox::valueChanged, this, &RecurrencePopup::updateMeaning);
    connect(unit_, &QComboBox::currentIndexChanged, this, &RecurrencePopup::updateMeaning);
    connect(done, &QPushButton::clicked, this, [this] { pick(rule()); });
}

void RecurrencePopup::addUsual(const QString& title, const std::optional<RecurrenceRule>& rule) {
    auto* const button = new QPushButton(title, this);
    button->setFlat(true);
    button->setStyleSheet("text-align: left; padding: 4px 6px;");
    connect(button, &QPushButton::clicked, this, [this, rule] { pick(rule); });
    layout()->addWidget(button);
}

void RecurrencePopup::open(
    const QPoint& globalPlace, const std::optional<RecurrenceRule>& present) {
    const RecurrenceRule shown = present.value_or(RecurrenceRule{.unit = Unit::week});
    interval_->setValue(shown.interval);
    unit_->setCurrentIndex(static_cast<int>(shown.unit));
    for (QToolButton* button : weekdays_) {
        button->setChecked(shown.weekdays.contains(button->property("weekday").toInt()));
    }
    updateMeaning();
    openAt(globalPlace, *interval_);
}

RecurrenceRule RecurrencePopup::rule() const {
    RecurrenceRule::EditorState state{
        .unit = static_cast<Unit>(unit_->currentIndex()),
        .interval = interval_->value(),
        .due = due_};
    for (const QToolButton* button : weekdays_) {
        if (button->isChecked()) state.weekdays.insert(button->property("weekday").toInt());
    }
    return RecurrenceRule::fromEditor(state, calendar_);
}

void RecurrencePopup::updateMeaning() {
    weekdayRow_->setVisible(static_cast<Unit>(unit_->currentIndex()) == Unit::week);
    QString text = QString::fromStdString(rule().description());
    if (const auto next = rule().nextOccurrence(due_.value_or(today_), calendar_)) {
        text += ", then " + TaskWords(today_, calendar_).due(TaskDue{.date = *next});
    }
    meaning_->setText(text);
    if (isVisible()) fit();
}

void RecurrencePopup::pick(const std::optional<RecurrenceRule>& rule) {
    emit picked(rule);
    close();
}

}  // namespace tesserine::app
