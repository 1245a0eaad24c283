#pragma once

#include "base/Instant.h"

#include <QString>

#include <cstddef>

namespace tesserine {
class Calendar;
}

namespace tesserine::app {

/// As short as it can be said: "09:15" today, "Yesterday", "Tomorrow", "Wed" within six days, "14
/// Mar", "14 Mar 2024".
QString shownDate(Instant instant, Instant now, const Calendar& calendar);
/// The same with the time of day, for what will happen: "Today 09:15", "14 Mar 09:15".
QString shownTime(Instant instant, Instant now, const Calendar& calendar);

/// In full, for what has happened: "14 March 2026, 09:15".
QString shownMoment(Instant instant, const Calendar& calendar);

/// "437 bytes", "1.5 MB"; 1 kB is 1,000 bytes, as in the terminal and where the limits are set.
QString shownSize(qint64 byteCount);

/// "1 note", "12,345 notes"
QString shownCount(std::size_t count, const QString& one, const QString& many);

}  // namespace tesserine::app
