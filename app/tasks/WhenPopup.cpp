#include "app/tasks/WhenPopup.h"

#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/MonthPicker.h"
#include "app/tasks/TaskWords.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace tesserine::app {
namespace {

constexpr int eveningHour = 18;
constexpr int morningHour = 9;

Instant atHour(Instant day, int hour, const Calendar& calendar) {
    LocalTime local = calendar.local(day);
    local.hour = hour;
    local.minute = 0;
    local.second = 0;
    local.millisecond = 0;
    return calendar.instant(local);
}

}  // namespace

Instant reminderTime(const TaskDue& when, const Calendar& calendar) {
    return when.hasTime ? when.date : atHour(when.date, morningHour, calendar);
}

WhenPopup::WhenPopup(
    AppEnvironment& environment, const std::vector<Answer>& answers, QWidget* parent)
    : Popup(parent),
      environment_(environment),
      words_(new QLineEdit(this)),
      meaning_(new QLabel(this)),
      month_(new MonthPicker(environment.calendar(), environment.now(), this)) {
    setObjectName("whenPopup");
    words_->setObjectName("whenWords");
    words_->setAccessibleName("Date in words");
    words_->setPlaceholderText("Type a date: fri 3pm, in 2 weeks");
    meaning_->setObjectName("whenMeaning");
    meaning_->setFont(Theme::font(TextRole::caption));
    meaning_->setTextFormat(Qt::PlainText);

    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::small, space::small, space::small, space::small);
    layout->setSpacing(space::tiny);
    layout->addWidget(words_);
    layout->addWidget(meaning_);
    const TaskWords words(environment.now(), environment.calendar());
    for (const Answer& answer : answers) {
        const QString when = answer.when ? words.due(*answer.when) : QString();
        const bool saysMore = !when.isEmpty() && when != answer.title;
        auto* const button =
            new QPushButton(saysMore ? answer.title + "  ·  " + when : answer.title, this);
        button->setFlat(true);
        button->setStyleSheet("text-align: left; padding: 4px 6px;");
        connect(button, &QPushButton::clicked, this, [this, when = answer.when] { pick(when); });
        layout->addWidget(button);
    }
    layout->addWidget(month_);
    connect(words_, &QLineEdit::textChanged, this, &WhenPopup::read);
    connect(words_, &QLineEdit::returnPressed, this, &WhenPopup::take);
    connect(
        month_, &MonthPicker::picked, this, [this](Instant day) { pick(TaskDue{.date = day}); });
    read();
}

WhenPopup* WhenPopup::forDue(AppEnvironment& environment, QWidget* parent) {
    const Calendar& calendar = environment.calendar();
    const Instant today = calendar.startOfDay(environment.now());
    const Instant nextWeek = calendar.addDays(calendar.startOfWeek(today), 7);
    return new WhenPopup(
        environment,
        {{"Today", TaskDue{.date = today}},
         {"Tomorrow", TaskDue{.date = calendar.addDays(today, 1)}},
         {"Next week", TaskDue{.date = nextWeek}},
         {"No date", {}}},
        parent);
}

WhenPopup* WhenPopup::forReminder(
    AppEnvironment& environment, const std::optional<TaskDue>& due, QWidget* parent) {
    const Calendar& calendar = environment.calendar();
    const Instant now = environment.now();
    std::vector<Answer> answers;
    const auto offer = [&](const char* title, Instant at) {
        if (at > now) answers.push_back({title, TaskDue{.date = at, .hasTime = true}});
    };
    if (due && due->hasTime) {
        offer("When it is due", due->date);
        offer("An hour before", due->date - std::chrono::hours(1));
    } else if (due) {
        offer("On the morning it is due", atHour(due->date, morningHour, calendar));
    }
    offer("This evening", atHour(now, eveningHour, calendar));
    offer("Tomorrow morning", atHour(calendar.addDays(now, 1), morningHour, calendar));
    answers.push_back({"No reminder", {}});
    return new WhenPopup(environment, answers, parent);
}

void WhenPopup::open(const QPoint& globalPlace, const std::optional<Instant>& present) {
    if (present) month_->setDay(*present);
    openAt(globalPlace, *words_);
}

void WhenPopup::read() {
    const auto result = environment_.quickAddParser().parse(words_->text().toStdString());
    read_.reset();
    if (result.dueDate && result.title.empty()) {
        read_ = TaskDue{.date = *result.dueDate, .hasTime = result.dueHasTime};
    }
    const bool isEmpty = words_->text().trimmed().isEmpty();
    const TaskWords words(environment_.now(), environment_.calendar());
    meaning_->setText(
        read_     ? words.longDue(*read_)
        : isEmpty ? QString()
                  : QString("These words name no date."));
    meaning_->setVisible(!isEmpty);
    if (read_) month_->setDay(read_->date);
    if (isVisible()) fit();
}

void WhenPopup::take() {
    if (read_) pick(read_);
}

void WhenPopup::pick(const std::optional<TaskDue>& when) {
    emit picked(when);
    close();
}

}  // namespace tesserine::app
