#include "app/tasks/TaskWords.h"

#include "base/Calendar.h"
#include "base/EnglishNames.h"
#include "core/tasks/TaskService.h"

namespace tesserine::app {
namespace {

QString textOf(std::string_view name) {
    return QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size()));
}

QString monthName(int month) { return textOf(english::monthName(month)); }
QString shortMonthName(int month) { return textOf(english::shortened(english::monthName(month))); }

/// "Yesterday", "Today" or "Tomorrow"; empty for other distances.
QString nearDay(int daysAhead) {
    switch (daysAhead) {
    case -1: return QStringLiteral("Yesterday");
    case 0: return QStringLiteral("Today");
    case 1: return QStringLiteral("Tomorrow");
    default: return {};
    }
}

}  // namespace

QString weekdayName(int weekday) { return textOf(english::weekdayName(weekday)); }

QString shortWeekdayName(int weekday) {
    return textOf(english::shortened(english::weekdayName(weekday)));
}

QString TaskWords::time(Instant instant) const {
    const LocalTime local = calendar_.local(instant);
    return QStringLiteral("%1:%2")
        .arg(local.hour, 2, 10, QLatin1Char('0'))
        .arg(local.minute, 2, 10, QLatin1Char('0'));
}

QString TaskWords::month(Instant instant) const {
    const LocalTime local = calendar_.local(instant);
    return QStringLiteral("%1 %2").arg(monthName(local.month)).arg(local.year);
}

QString TaskWords::due(const TaskDue& due) const {
    const LocalTime local = calendar_.local(due.date);
    QString text = nearDay(calendar_.daysBetween(now_, due.date));
    if (text.isEmpty()) {
        const QString date =
            QStringLiteral("%1 %2").arg(local.day).arg(shortMonthName(local.month));
        const bool isThisYear = local.year == calendar_.local(now_).year;
        text = isThisYear ? shortWeekdayName(calendar_.weekday(due.date)) + QLatin1Char(' ') + date
                          : QStringLiteral("%1 %2").arg(date).arg(local.year);
    }
    return due.hasTime ? text + QLatin1Char(' ') + time(due.date) : text;
}

QString TaskWords::day(Instant day) const {
    const LocalTime local = calendar_.local(day);
    QString date = QStringLiteral("%1 %2 %3")
                       .arg(weekdayName(calendar_.weekday(day)))
                       .arg(local.day)
                       .arg(monthName(local.month));
    if (local.year != calendar_.local(now_).year) date += QStringLiteral(" %1").arg(local.year);
    const QString near = nearDay(calendar_.daysBetween(now_, day));
    return near.isEmpty() ? date : near + QStringLiteral(", ") + date;
}

QString TaskWords::longDue(const TaskDue& due) const {
    const QString text = day(due.date);
    return due.hasTime ? text + QStringLiteral(" at ") + time(due.date) : text;
}

bool TaskWords::isOverdue(const TaskDue& due) const {
    return due.date < (due.hasTime ? now_ : calendar_.startOfDay(now_));
}

bool TaskWords::isToday(Instant instant) const { return calendar_.isSameDay(instant, now_); }

}  // namespace tesserine::app
