#include "base/FirstWeekday.h"

#include <unicode/ucal.h>

namespace tesserine {
namespace {

int ofLocale(const std::string& locale) {
    UErrorCode code = U_ZERO_ERROR;
    UCalendar* calendar = ucal_open(nullptr, -1, locale.c_str(), UCAL_GREGORIAN, &code);
    if (U_FAILURE(code)) return UCAL_SUNDAY;
    const int first = ucal_getAttribute(calendar, UCAL_FIRST_DAY_OF_WEEK);
    ucal_close(calendar);
    return first;
}

}  // namespace

int firstWeekday(const Preferences& preferences, const std::string& locale) {
    const auto day = preferences.integer(firstWeekdayKey);
    return day && *day >= 1 && *day <= 7 ? static_cast<int>(*day) : ofLocale(locale);
}

}  // namespace tesserine
