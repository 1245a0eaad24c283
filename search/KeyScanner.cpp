#include "search/KeyScanner.h"

#include "base/Text.h"
#include "base/UTF8.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>

namespace tesserine {
namespace {

constexpr int firstYear = 1900;
constexpr int lastYear = 2099;
constexpr int mostMonths = 12;
constexpr int mostDays = 31;
constexpr std::size_t fewestAccountDigits = 8;
constexpr std::size_t thousandsGroup = 3;
/// Characters between a month and the day or year beside it: ", " and one more.
constexpr int widestGap = 3;

constexpr std::array<std::string_view, mostMonths> monthNames = {
    "january",
    "february",
    "march",
    "april",
    "may",
    "june",
    "july",
    "august",
    "september",
    "october",
    "november",
    "december"};
constexpr std::size_t longestMonthName = 9;
constexpr std::array<std::string_view, 4> ordinalSuffixes = {"st", "nd", "rd", "th"};

bool isASCII(char c) { return static_cast<unsigned char>(c) < 0x80; }

bool isASCIIAlphanumeric(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isAlphanumeric(char32_t scalar) {
    constexpr std::uint32_t lettersMarksAndNumbers = U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK;
    return (U_GET_GC_MASK(static_cast<UChar32>(scalar)) & lettersMarksAndNumbers) != 0;
}

/// How many bytes the letter, mark or number at `place` takes; 0 when there is none.
std::size_t alphanumericAt(std::string_view text, std::size_t place) {
    if (place == text.size()) return 0;
    if (isASCII(text[place])) return isASCIIAlphanumeric(text[place]) ? 1 : 0;
    const utf8::Scalar scalar = utf8::first(text.substr(place));
    return isAlphanumeric(scalar.value) ? scalar.length : 0;
}

/// Where the character that ends before `end` begins; `end` is not 0.
std::size_t beginOfLast(std::string_view text, std::size_t end) {
    std::size_t begin = end - 1;
    while (begin > 0 && (static_cast<unsigned char>(text[begin]) & 0xC0) == 0x80) {
        --begin;
    }
    return begin;
}

/// The first digit at or after `place`, or the size of the text. Looks at eight bytes at a time.
std::size_t nextDigit(std::string_view text, std::size_t place) {
    static_assert(std::endian::native == std::endian::little);
    constexpr std::uint64_t eachByte = 0x0101010101010101U;
    while (text.size() - place >= sizeof(std::uint64_t)) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, text.data() + place, sizeof bytes);
        // Digits become 0 to 9; a borrow runs upwards only, so the lowest hit is a true one.
        const std::uint64_t values = bytes ^ (eachByte * '0');
        const std::uint64_t hits = (values - eachByte * 10) & ~values & (eachByte * 0x80);
        if (hits != 0) return place + static_cast<std::size_t>(std::countr_zero(hits)) / 8;
        place += sizeof bytes;
    }
    while (place < text.size() && !isDigit(text[place])) {
        ++place;
    }
    return place;
}

bool isYear(int number) { return number >= firstYear && number <= lastYear; }

}  // namespace

void KeyScanner::scan() {
    std::size_t place = 0;
    while ((place = nextDigit(text_, place)) < text_.size()) {
        const Token token = tokenAround(place);
        place = token.end;
        if (std::ranges::all_of(textOf(token), isDigit)) {
            take(token);
        } else {
            endChain();
        }
    }
    endChain();
}

KeyScanner::Token KeyScanner::tokenAround(std::size_t digit) const {
    Token token{digit, digit + 1};
    while (token.begin > 0) {
        const std::size_t before = beginOfLast(text_, token.begin);
        if (alphanumericAt(text_, before) == 0) break;
        token.begin = before;
    }
    while (const std::size_t length = alphanumericAt(text_, token.end)) {
        token.end += length;
    }
    return token;
}

/// The token that ends at most three characters before `place`, if it is a short one of ASCII;
/// otherwise an empty one.
KeyScanner::Token KeyScanner::tokenBefore(std::size_t place) const {
    std::size_t end = place;
    for (int gap = 0; end > 0; ++gap) {
        const std::size_t before = beginOfLast(text_, end);
        if (alphanumericAt(text_, before) != 0) break;
        if (gap == widestGap) return {};
        end = before;
    }
    std::size_t begin = end;
    while (begin > 0 && alphanumericAt(text_, beginOfLast(text_, begin)) != 0) {
        --begin;
        if (!isASCII(text_[begin]) || end - begin > longestMonthName) return {};
    }
    return {begin, end};
}

void KeyScanner::take(const Token& digits) {
    const bool isJoined = !chain_.empty() && digits.begin == chain_.back().end + 1;
    if (!isJoined) endChain();
    chain_.push_back(digits);
    addYear(digits);
}

void KeyScanner::endChain() {
    if (chain_.empty()) return;
    forEachRun("-./", [this](Run run, char separator) {
        addDates(run, separator);
        return false;
    });
    addAmounts();
    forEachRun(" -", [this](Run run, char separator) {
        const bool isDate = !datesIn(run, separator).empty();
        if (!isDate) addAccount(run);
        return isDate;
    });
    chain_.clear();
}

/// Calls `tryRun` with each longest run of tokens that one and the same of these characters joins.
/// At a change from one to another the next run begins with the token that ended this one, unless
/// `tryRun` returned true.
template <class TryRun>
void KeyScanner::forEachRun(std::string_view separators, TryRun tryRun) const {
    const auto separatorAt = [&](std::size_t i) {
        const bool isLast = i + 1 == chain_.size();
        const char c = isLast ? '\0' : separatorAfter(chain_[i]);
        return separators.find(c) == std::string_view::npos ? '\0' : c;
    };
    std::size_t first = 0;
    while (first < chain_.size()) {
        const char separator = separatorAt(first);
        std::size_t last = first;
        while (separator != '\0' && separatorAt(last) == separator) {
            ++last;
        }
        const bool isUsedUp = tryRun(Run(chain_).subspan(first, last - first + 1), separator);
        const bool beginsNext = last > first && separatorAt(last) != '\0' && !isUsedUp;
        first = beginsNext ? last : last + 1;
    }
}

void KeyScanner::addYear(const Token& token) {
    if (token.length() != 4 || !isYear(numberIn(token))) return;
    add(SearchAnalyzer::yearKey(numberIn(token)), token);
    addNamedMonth(token);
}

/// "15 January 2025", "January 15th, 2025", "Jan 2025".
void KeyScanner::addNamedMonth(const Token& year) {
    const Token before = tokenBefore(year.begin);
    const bool isDayBetween = dayIn(before).has_value();
    const Token month = isDayBetween ? tokenBefore(before.begin) : before;
    const auto monthNumber = monthIn(month);
    if (!monthNumber) return;

    const Token day = isDayBetween ? before : tokenBefore(month.begin);
    const auto dayNumber = dayIn(day);
    const std::size_t begin = dayNumber ? std::min(day.begin, month.begin) : month.begin;
    addDate({numberIn(year), *monthNumber, dayNumber.value_or(0)}, {begin, year.end});
}

void KeyScanner::addDates(Run run, char separator) {
    for (const Date& date : datesIn(run, separator)) {
        addDate(date, {run.front().begin, run.back().end});
    }
}

/// What a run of numbers can be read as; years and months that there are not are left out.
std::vector<KeyScanner::Date> KeyScanner::datesIn(Run run, char separator) const {
    const auto isShort = [](const Token& token) { return token.length() <= 2; };
    const auto isLong = [](const Token& token) { return token.length() == 4; };
    std::vector<Date> dates;
    const auto read = [&](const Token& year, const Token& month, int day) {
        const Date date{numberIn(year), numberIn(month), day};
        const bool isPossible = isYear(date.year) && date.month >= 1 && date.month <= mostMonths;
        if (isPossible) dates.push_back(date);
    };
    if (run.size() == 2) {
        if (isLong(run[0]) && run[1].length() == 2 && separator != '.') {
            read(run[0], run[1], 0);
        } else if (isShort(run[0]) && isLong(run[1]) && separator == '/') {
            read(run[1], run[0], 0);
        }
    } else if (run.size() == 3) {
        if (isLong(run[0]) && isShort(run[1]) && isShort(run[2])) {
            read(run[0], run[1], numberIn(run[2]));
        } else if (isShort(run[0]) && isShort(run[1]) && isLong(run[2])) {
            read(run[2], run[0], numberIn(run[1]));  // month first, as in the United States
            if (textOf(run[0]) != textOf(run[1])) read(run[2], run[1], numberIn(run[0]));
        }
    }
    return dates;
}

void KeyScanner::addAmounts() {
    std::size_t first = 0;
    while (first < chain_.size()) {
        std::size_t end = first + 1;
        while (
            end < chain_.size()
            && (separatorAfter(chain_[end - 1]) == ',' || separatorAfter(chain_[end - 1]) == '.')) {
            ++end;
        }
        if (end - first >= 2) addAmount(Run(chain_).subspan(first, end - first));
        first = end;
    }
}

/// "12.50" and "1,234,567.89"; nothing for groupings that no amount has.
void KeyScanner::addAmount(Run run) {
    const bool isGrouped = separatorAfter(run.front()) == ',';
    if (!isGrouped && run.size() > 2) return;
    if (isGrouped && run.front().length() > thousandsGroup) return;

    std::string amount(textOf(run.front()));
    for (std::size_t i = 1; i < run.size(); ++i) {
        if (separatorAfter(run[i - 1]) == '.') {
            if (i + 1 != run.size()) return;
            amount += '.';
        } else if (run[i].length() != thousandsGroup) {
            return;
        }
        amount += textOf(run[i]);
    }
    add(SearchAnalyzer::amountKey(amount), {run.front().begin, run.back().end});
}

void KeyScanner::addAccount(Run run) {
    std::string digits;
    for (const Token& group : run) {
        digits += textOf(group);
    }
    if (digits.size() < fewestAccountDigits) return;
    add(SearchAnalyzer::accountKey(digits), {run.front().begin, run.back().end});
}

void KeyScanner::addDate(const Date& date, const Token& where) {
    add(SearchAnalyzer::yearKey(date.year), where);
    add(SearchAnalyzer::monthKey(date.year, date.month), where);
    const bool hasDay = date.day >= 1 && date.day <= mostDays;
    if (hasDay) add(SearchAnalyzer::dateKey(date.year, date.month, date.day), where);
}

void KeyScanner::add(std::string key, const Token& where) {
    found_.push_back({std::move(key), where.begin, where.end});
}

/// The number in "5", "05" and "5th".
std::optional<int> KeyScanner::dayIn(const Token& token) const {
    const std::string_view text = textOf(token);
    const auto digits =
        static_cast<std::size_t>(std::ranges::find_if_not(text, isDigit) - text.begin());
    if (digits < 1 || digits > 2) return std::nullopt;
    const std::string suffix = text::asciiLowercased(text.substr(digits));
    if (!suffix.empty() && std::ranges::count(ordinalSuffixes, suffix) == 0) {
        return std::nullopt;
    }
    return numberIn({token.begin, token.begin + digits});
}

std::optional<int> KeyScanner::monthIn(const Token& token) const {
    return monthNamed(text::asciiLowercased(textOf(token)));
}

std::optional<int> KeyScanner::monthNamed(std::string_view word) {
    if (word == "sept") return 9;
    const auto* const name = std::ranges::find_if(monthNames, [&](std::string_view month) {
        return word == month || word == month.substr(0, 3);
    });
    if (name == monthNames.end()) return std::nullopt;
    return static_cast<int>(name - monthNames.begin()) + 1;
}

/// The value of at most four digits.
int KeyScanner::numberIn(const Token& token) const {
    int number = 0;
    for (const char digit : textOf(token).substr(0, 4)) {
        number = number * 10 + (digit - '0');
    }
    return number;
}

}  // namespace tesserine
