#include "base/Text.h"
#include "base/UTF8.h"

#include <unicode/brkiter.h>
#include <unicode/utext.h>

#include <algorithm>
#include <array>
#include <new>

namespace tesserine::text {
namespace {

struct ScalarRange {
    char32_t first;
    char32_t last;
};

/// Ranges without any character that joins a neighbour (grapheme break property "Other"), besides
/// ASCII: between two of these there is always a boundary, and the iterator need not be asked.
constexpr std::array loneRanges = {
    ScalarRange{0x00C0, 0x02FF},  // Latin
    ScalarRange{0x0370, 0x0482},  // Greek, Cyrillic
    ScalarRange{0x048A, 0x052F},  // Cyrillic
    ScalarRange{0x05D0, 0x05EA},  // Hebrew letters
    ScalarRange{0x0620, 0x064A},  // Arabic letters
    ScalarRange{0x1E00, 0x1FFF},  // Latin and Greek, precomposed
    ScalarRange{0x2010, 0x2027},  // dashes and quotation marks
    ScalarRange{0x20A0, 0x20C0},  // currencies
    ScalarRange{0x3000, 0x3029},  // ideographic punctuation
    ScalarRange{0x3041, 0x3096},  // Hiragana
    ScalarRange{0x30A0, 0x30FF},  // Katakana
    ScalarRange{0x4E00, 0x9FFF},  // ideographs
    ScalarRange{0xAC00, 0xD7A3},  // Hangul syllables, which join only with single jamo
    ScalarRange{0xFF01, 0xFF60},  // full-width forms
};
static_assert(std::ranges::is_sorted(loneRanges, {}, &ScalarRange::first));

bool isLone(char32_t scalar) {
    if (scalar < 0x80) return true;
    return std::ranges::any_of(loneRanges, [scalar](const ScalarRange& range) {
        return scalar >= range.first && scalar <= range.last;
    });
}

/// Making an iterator takes far longer than using it: each thread keeps one.
icu::BreakIterator& threadIterator() {
    static thread_local const std::unique_ptr<icu::BreakIterator> iterator = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::BreakIterator> made(
            icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        if (U_FAILURE(status) || made == nullptr) throw std::bad_alloc();
        return made;
    }();
    return *iterator;
}

/// Length of the cluster at the front of `text`, as ICU's rules say. What stands before a boundary
/// has no say in the next one, so the walk may begin at any of them.
std::size_t ruledCluster(std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    UText view = UTEXT_INITIALIZER;
    utext_openUTF8(&view, text.data(), static_cast<std::int64_t>(text.size()), &status);
    icu::BreakIterator& iterator = threadIterator();
    iterator.setText(&view, status);
    const std::int32_t end = U_SUCCESS(status) ? iterator.next() : icu::BreakIterator::DONE;
    utext_close(&view);
    return end <= 0 ? text.size() : static_cast<std::size_t>(end);
}

/// Length in bytes of the cluster at the front of `text`, which is not empty.
std::size_t firstCluster(std::string_view text) {
    const utf8::Scalar head = utf8::first(text);
    if (head.length == text.size()) return head.length;
    if (head.value == '\r') return text[1] == '\n' ? 2 : 1;
    if (!isLone(head.value)) return ruledCluster(text);
    const utf8::Scalar next = utf8::first(text.substr(head.length));
    return isLone(next.value) ? head.length : ruledCluster(text);
}

}  // namespace

std::size_t characterCount(std::string_view text) {
    std::size_t count = 0;
    for (; !text.empty(); ++count) {
        text.remove_prefix(firstCluster(text));
    }
    return count;
}

std::string_view prefix(std::string_view text, std::size_t limit) {
    // No cluster is shorter than a byte.
    if (limit >= text.size()) return text;
    std::size_t end = 0;
    for (; limit > 0 && end < text.size(); --limit) {
        end += firstCluster(text.substr(end));
    }
    return text.substr(0, end);
}

void forEachCharacter(
    std::string_view text, const std::function<bool(std::string_view cluster)>& take) {
    while (!text.empty()) {
        const std::size_t length = firstCluster(text);
        if (!take(text.substr(0, length))) return;
        text.remove_prefix(length);
    }
}

}  // namespace tesserine::text
