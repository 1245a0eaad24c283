#include "search/QueryDates.h"

#include <gtest/gtest.h>

#include <string>

namespace tesserine {
namespace {

/// `2025-01-01T00:00 2026-01-01T00:00` in the calendar's own time.
std::string shown(const std::optional<DateSpan>& span, const Calendar& calendar) {
    if (!span) return "none";
    const auto minute = [&](Instant instant) {
        return calendar.local(instant).iso().substr(0, 16);
    };
    return minute(span->begin) + " " + minute(span->end) + (span->isAge ? " ago" : "");
}

TEST(QueryDates, NameWholeDaysOfTheLocalCalendar) {
    // Saturday, half past midnight in Berlin, still Friday in UTC.
    const Instant now = *Instant::parseISO("2026-03-13T23:30:00Z");
    const Calendar berlin("Europe/Berlin", 2);
    struct Case {
        const char* text;
        const char* span;
    };
    for (const auto& [text, span] : {
             Case{"2025", "2025-01-01T00:00 2026-01-01T00:00"},
             Case{"2025-02", "2025-02-01T00:00 2025-03-01T00:00"},
             Case{"2024-12", "2024-12-01T00:00 2025-01-01T00:00"},
             Case{"2024-02-29", "2024-02-29T00:00 2024-03-01T00:00"},
             Case{"1/15/2025", "2025-01-15T00:00 2025-01-16T00:00"},
             Case{"15/1/2025", "2025-01-15T00:00 2025-01-16T00:00"},
             Case{"Jan 2025", "2025-01-01T00:00 2025-02-01T00:00"},
             Case{"sept 2025", "2025-09-01T00:00 2025-10-01T00:00"},
             Case{"today", "2026-03-14T00:00 2026-03-15T00:00"},
             Case{"Yesterday", "2026-03-13T00:00 2026-03-14T00:00"},
             Case{"week", "2026-03-09T00:00 2026-03-16T00:00"},
             Case{"last week", "2026-03-02T00:00 2026-03-09T00:00"},
             Case{"month", "2026-03-01T00:00 2026-04-01T00:00"},
             Case{"next year", "2027-01-01T00:00 2028-01-01T00:00"},
             Case{"7d", "2026-03-07T00:00 2026-03-08T00:00 ago"},
             Case{"3w", "2026-02-21T00:00 2026-02-22T00:00 ago"},
             Case{"2m", "2026-01-14T00:00 2026-01-15T00:00 ago"},
             Case{"1y", "2025-03-14T00:00 2025-03-15T00:00 ago"},
             Case{"day-7", "2026-03-07T00:00 2026-03-08T00:00"},
             Case{"day-0", "2026-03-14T00:00 2026-03-15T00:00"},
             Case{"2026-03-29", "2026-03-29T00:00 2026-03-30T00:00"},  // 23 hours long
         }) {
        EXPECT_EQ(shown(parseQueryDate(text, now, berlin), berlin), span) << text;
    }
    EXPECT_EQ(
        shown(
            parseQueryDate("week", now, Calendar("America/New_York", 1)),
            Calendar("America/New_York")),
        "2026-03-08T00:00 2026-03-15T00:00");
    EXPECT_EQ(parseQueryDate("2025", now, berlin)->begin.iso(), "2024-12-31T23:00:00.000Z");
}

TEST(QueryDates, WhatIsNoDateIsNone) {
    const Instant now = *Instant::parseISO("2026-03-13T23:30:00Z");
    const Calendar utc("UTC");
    for (const char* text : {"",           "soon",
                             "2025-13",    "2025-02-29",
                             "2025-02-",   "25",
                             "20250115",   "0000",
                             "2025-1-2-3", "13/13/2025",
                             "1/2/25",     "jan",
                             "jan 25",     "d",
                             "99999d",     "999999999999d",
                             "day-",       "day-x",
                             "last",       "last fortnight",
                             "-7d",        "2025-01-15T10:00"}) {
        EXPECT_FALSE(parseQueryDate(text, now, utc)) << text;
    }
}

}  // namespace
}  // namespace tesserine
