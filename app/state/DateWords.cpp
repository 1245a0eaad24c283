#include "app/state/DateWords.h"

#include "base/Calendar.h"
#include "base/EnglishNames.h"

#include <QLocale>

#include <string>
#include <string_view>

namespace tesserine::app {
namespace {

QString shortened(std::string_view name) {
    return QString::fromStdString(std::string(english::shortened(name)));
}

QString clockTime(const LocalTime& time) {
    return QString("%1:%2").arg(time.hour, 2, 10, QChar('0')).arg(time.minute, 2, 10, QChar('0'));
}

/// The day, without a time; empty for today.
QString day(Instant instant, Instant now, const Calendar& calendar) {
    const int days = calendar.daysBetween(now, instant);
    if (days == 0) return {};
    if (days == -1) return "Yesterday";
    if (days == 1) return "Tomorrow";
    if (days > -7 && days < 7) return shortened(english::weekdayName(calendar.weekday(instant)));
    const LocalTime local = calendar.local(instant);
    QString date = QString("%1 %2").arg(local.day).arg(shortened(english::monthName(local.month)));
    if (local.year == calendar.local(now).year) return date;
    return date + QString(" %1").arg(local.year);
}

}  // namespace

QString shownDate(Instant instant, Instant now, const Calendar& calendar) {
    const QString date = day(instant, now, calendar);
    return date.isEmpty() ? clockTime(calendar.local(instant)) : date;
}

QString shownTime(Instant instant, Instant now, const Calendar& calendar) {
    const QString date = day(instant, now, calendar);
    return (date.isEmpty() ? QString("Today") : date) + " " + clockTime(calendar.local(instant));
}

QString shownMoment(Instant instant, const Calendar& calendar) {
    return QString::fromStdString(calendar.longDate(instant)) + ", "
           + clockTime(calendar.local(instant));
}

QString shownSize(qint64 byteCount) {
    static const QLocale english(QLocale::English);
    return english.formattedDataSize(byteCount, 1, QLocale::DataSizeSIFormat);
}

QString shownCount(std::size_t count, const QString& one, const QString& many) {
    static const QLocale english(QLocale::English);
    return english.toString(static_cast<qulonglong>(count)) + " " + (count == 1 ? one : many);
}

}  // namespace tesserine::app
