#pragma once

#include <array>
#include <cstddef>
#include <string_view>

/// How dates are named in English. Months from 1; weekdays from 1 = Sunday, as in `LocalTime`.
namespace tesserine::english {

constexpr std::string_view monthName(int month) {
    constexpr std::array<std::string_view, 12> names{
        "January",
        "February",
        "March",
        "April",
        "May",
        "June",
        "July",
        "August",
        "September",
        "October",
        "November",
        "December"};
    return names.at(static_cast<std::size_t>(month - 1));
}

constexpr std::string_view weekdayName(int weekday) {
    constexpr std::array<std::string_view, 7> names{
        "Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
    return names.at(static_cast<std::size_t>(weekday - 1));
}

/// "Sep", "Wed"
constexpr std::string_view shortened(std::string_view name) { return name.substr(0, 3); }

}  // namespace tesserine::english
