#pragma once

#include <string_view>

/// Pieces for reading and writing ISO 8601 texts; the forms themselves belong to `Instant` and
/// `LocalTime`.
namespace tesserine::iso8601 {

/// Writes `value` as `width` digits that end before `end`.
inline void putDigits(char* end, int value, int width) {
    for (; width > 0; --width) {
        *--end = static_cast<char>('0' + value % 10);
        value /= 10;
    }
}

/// Takes characters off the front of a text and remembers whether all were as expected.
class Scanner {
public:
    explicit Scanner(std::string_view text) : rest_(text) {}

    /// Whether everything was as expected and nothing is left.
    bool isDone() const { return isGood_ && rest_.empty(); }
    bool startsWith(char c) const { return !rest_.empty() && rest_.front() == c; }
    bool startsWithDigit() const {
        return !rest_.empty() && rest_.front() >= '0' && rest_.front() <= '9';
    }

    void expect(char c) {
        isGood_ = isGood_ && startsWith(c);
        if (isGood_) rest_.remove_prefix(1);
    }
    int digit() {
        isGood_ = isGood_ && startsWithDigit();
        if (!isGood_) return 0;
        const int value = rest_.front() - '0';
        rest_.remove_prefix(1);
        return value;
    }
    /// Exactly `width` digits whose value lies in the range.
    int number(int width, int least, int greatest) {
        int value = 0;
        for (; width > 0; --width) {
            value = value * 10 + digit();
        }
        isGood_ = isGood_ && value >= least && value <= greatest;
        return value;
    }

private:
    std::string_view rest_;
    bool isGood_ = true;
};

}  // namespace tesserine::iso8601
