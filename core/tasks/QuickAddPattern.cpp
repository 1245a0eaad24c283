#include "core/tasks/QuickAddPattern.h"

#include <algorithm>

namespace tesserine::quickadd {
namespace {

/// `c` as beginnings are written.
char simplified(char c) {
    if (c >= '1' && c <= '9') return '0';
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Characters beyond ASCII may be variants of any letter or digit.
bool mayBegin(std::string_view word, std::string_view beginning) {
    for (std::size_t i = 0; i < beginning.size(); ++i) {
        if (i == word.size()) return false;
        if (static_cast<unsigned char>(word[i]) >= 0x80) return true;
        if (simplified(word[i]) != beginning[i]) return false;
    }
    return true;
}

}  // namespace

Pattern::Pattern(const std::string& expression, std::string_view beginnings)
    : regex_(expression, Regex::Case::insensitive) {
    while (!beginnings.empty()) {
        const std::size_t length = std::min(beginnings.find('|'), beginnings.size());
        beginnings_.emplace_back(beginnings.substr(0, length));
        beginnings.remove_prefix(std::min(length + 1, beginnings.size()));
    }
}

Pattern Pattern::word(const std::string& word) { return {R"((?:^|\s))" + word + R"(\b)", word}; }

bool Pattern::mayTake(std::string_view word) const {
    return std::ranges::any_of(
        beginnings_, [&](const std::string& beginning) { return mayBegin(word, beginning); });
}

}  // namespace tesserine::quickadd
