#include "core/import/SourceDate.h"

#include "base/Text.h"

#include <charconv>
#include <chrono>
#include <cstdint>

namespace tesserine {
namespace {

/// Reads a text from its front, piece by piece.
class Scanner {
public:
    explicit Scanner(std::string_view text) : rest_(text) {}

    bool isAtEnd() const { return rest_.empty(); }
    bool skip(std::string_view expected) {
        if (!rest_.starts_with(expected)) return false;
        rest_.remove_prefix(expected.size());
        return true;
    }
    void skipSpaces() {
        while (skip(" ")) {}
    }
    /// A whole number of `least` to `most` digits.
    std::optional<int> number(std::size_t least, std::size_t most) {
        std::size_t digits = 0;
        while (digits < rest_.size() && digits < most && rest_[digits] >= '0'
               && rest_[digits] <= '9') {
            ++digits;
        }
        if (digits < least) return std::nullopt;
        int value = 0;
        std::from_chars(rest_.data(), rest_.data() + digits, value);
        rest_.remove_prefix(digits);
        return value;
    }
    void skipDigits() {
        rest_.remove_prefix(std::min(rest_.find_first_not_of("0123456789"), rest_.size()));
    }

private:
    std::string_view rest_;
};

bool readDay(Scanner& scanner, LocalTime& time) {
    const auto year = scanner.number(4, 4);
    if (!year || *year < 1000 || *year > 2999) return false;
    const char* separator = scanner.skip("-") ? "-" : scanner.skip("/") ? "/" : nullptr;
    if (separator == nullptr) return false;
    const auto month = scanner.number(1, 2);
    if (!month || *month < 1 || *month > 12 || !scanner.skip(separator)) return false;
    const auto day = scanner.number(1, 2);
    if (!day || *day < 1 || *day > daysInMonth(*year, *month)) return false;
    time.year = *year;
    time.month = *month;
    time.day = *day;
    return true;
}

bool readTimeOfDay(Scanner& scanner, LocalTime& time) {
    const auto hour = scanner.number(1, 2);
    if (!hour || *hour > 23 || !scanner.skip(":")) return false;
    const auto minute = scanner.number(2, 2);
    if (!minute || *minute > 59) return false;
    time.hour = *hour;
    time.minute = *minute;
    if (!scanner.skip(":")) return true;
    const auto second = scanner.number(2, 2);
    if (!second || *second > 59) return false;
    time.second = *second;
    if (!scanner.skip(".")) return true;
    const auto millisecond = scanner.number(3, 3);
    time.millisecond = millisecond.value_or(0);
    scanner.skipDigits();
    return true;
}

/// Minutes east of Greenwich, in `offset` when there are any; false for what is no zone.
bool readOffset(Scanner& scanner, std::optional<int>& offset) {
    if (scanner.isAtEnd()) return true;
    if (scanner.skip("Z") || scanner.skip("z") || scanner.skip("UTC") || scanner.skip("GMT")) {
        offset = 0;
        return true;
    }
    const int sign = scanner.skip("+") ? 1 : scanner.skip("-") ? -1 : 0;
    const auto hours = scanner.number(2, 2);
    if (sign == 0 || !hours || *hours > 18) return false;
    scanner.skip(":");
    const auto minutes = scanner.isAtEnd() ? 0 : scanner.number(2, 2);
    if (!minutes || *minutes > 59) return false;
    offset = sign * (*hours * 60 + *minutes);
    return true;
}

std::optional<Instant> utcInstant(const LocalTime& time) {
    return Instant::parseISO(time.iso() + "Z");
}

}  // namespace

std::optional<Instant> sourceDate(std::string_view text, const Calendar& calendar) {
    Scanner scanner(text::trimmed(text));
    LocalTime time;
    if (!readDay(scanner, time)) return std::nullopt;
    std::optional<int> offset;
    if (!scanner.isAtEnd()) {
        if (!scanner.skip("T") && !scanner.skip("t") && !scanner.skip(" ")) return std::nullopt;
        scanner.skipSpaces();
        if (!readTimeOfDay(scanner, time)) return std::nullopt;
        scanner.skipSpaces();
        if (!readOffset(scanner, offset) || !scanner.isAtEnd()) return std::nullopt;
    }
    if (!offset) return calendar.instant(time);
    const auto utc = utcInstant(time);
    if (!utc) return std::nullopt;
    const std::chrono::milliseconds fraction(time.millisecond);
    return *utc + fraction - std::chrono::minutes(*offset);
}

std::optional<Instant> compactDate(std::string_view text) {
    Scanner scanner(text::trimmed(text));
    const auto year = scanner.number(4, 4);
    const auto month = scanner.number(2, 2);
    const auto day = scanner.number(2, 2);
    if (!scanner.skip("T")) return std::nullopt;
    const auto hour = scanner.number(2, 2);
    const auto minute = scanner.number(2, 2);
    const auto second = scanner.number(2, 2);
    if (!second || !scanner.skip("Z") || !scanner.isAtEnd()) return std::nullopt;
    if (*year < 1000 || *year > 2999) return std::nullopt;
    return utcInstant(
        {.year = *year,
         .month = *month,
         .day = *day,
         .hour = *hour,
         .minute = *minute,
         .second = *second});
}

}  // namespace tesserine
