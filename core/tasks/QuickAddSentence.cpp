#include "core/tasks/QuickAddSentence.h"

#include "base/Text.h"
#include "base/UTF8.h"

#include <unicode/uchar.h>

#include <algorithm>

namespace tesserine::quickadd {
namespace {

constexpr std::uint32_t letters = U_GC_L_MASK;
constexpr std::uint32_t marks = U_GC_M_MASK;
constexpr std::uint32_t digits = U_GC_N_MASK;

/// Whether `text` begins with a character of one of the general categories.
bool beginsWith(std::uint32_t categories, std::string_view text) {
    if (text.empty()) return false;
    return (U_GET_GC_MASK(static_cast<UChar32>(utf8::first(text).value)) & categories) != 0;
}

bool endsInDigit(std::string_view text) {
    std::size_t last = text.size();
    while (last > 0 && (static_cast<unsigned char>(text[--last]) & 0xC0) == 0x80) {}
    return beginsWith(digits, text.substr(last));
}

/// `rest` without the one of `openings` it begins with; none when it begins otherwise.
std::optional<std::string_view> without(
    std::span<const std::string_view> openings, std::string_view rest) {
    for (const std::string_view opening : openings) {
        if (rest.starts_with(opening)) return rest.substr(opening.size());
    }
    return std::nullopt;
}

bool overlap(TextRange a, TextRange b) { return a.begin < b.end && b.begin < a.end; }

TextRange trimmed(std::string_view sentence, TextRange range) {
    const std::string_view piece = sentence.substr(range.begin, range.end - range.begin);
    const std::string_view kept = text::trimmed(piece);
    const auto begin = static_cast<std::size_t>(kept.data() - sentence.data());
    return {begin, begin + kept.size()};
}

/// Names may be typed with curly quotes, as many keyboards write them.
std::string withStraightQuotes(std::string sentence) {
    if (utf8::isASCII(sentence)) return sentence;
    static const Regex quotedName(R"((?:^|\s)[#@]([“”])[^"“”]{1,64}(["“”]))");
    std::string straight;
    std::size_t copied = 0;
    quotedName.forEach(sentence, [&](const Regex::Match& match) {
        for (const std::size_t quote : {1U, 2U}) {
            straight.append(sentence, copied, match.groups[quote].begin - copied).append("\"");
            copied = match.groups[quote].end;
        }
        return true;
    });
    return straight.append(sentence, copied);
}

}  // namespace

int Found::number(std::size_t group) const {
    int value = 0;
    for (std::string_view rest = text(group); !rest.empty();) {
        const utf8::Scalar digit = utf8::first(rest);
        value =
            std::min(value * 10 + u_charDigitValue(static_cast<UChar32>(digit.value)), tooLarge);
        rest.remove_prefix(digit.length);
    }
    return value;
}

TextRange Found::range(std::size_t group) const {
    return trimmed(sentence_, {match_.groups[group].begin, match_.groups[group].end});
}

TextRange Found::rangeUntil(std::size_t end) const {
    return trimmed(sentence_, {match_.groups[0].begin, end});
}

Sentence::Sentence(std::string_view typed, std::span<const TextRange> leftAlone)
    : text_(withStraightQuotes(text::composed(typed))),
      words_(text::words(text_)),
      leftAlone_(leftAlone.begin(), leftAlone.end()) {}

bool Sentence::isFree(TextRange range) const {
    const auto isTouched = [&](TextRange taken) { return overlap(taken, range); };
    return std::ranges::none_of(leftAlone_, isTouched) && std::ranges::none_of(tokens_, isTouched);
}

bool Sentence::isWhole(TextRange range) const {
    static constexpr std::string_view apostrophes[] = {"'", "’"};
    static constexpr std::string_view numberSigns[] = {":", "/", "."};
    const std::string_view rest = behind(range);
    if (rest.starts_with('_') || beginsWith(letters | marks | digits, rest)) return false;
    if (const auto suffix = without(apostrophes, rest)) return !beginsWith(letters, *suffix);
    if (!endsInDigit(std::string_view(text_).substr(0, range.end))) return true;
    const auto decimals = without(numberSigns, rest);
    return !decimals || !beginsWith(digits, *decimals);
}

bool Sentence::isCutInCharacter(TextRange range) const { return beginsWith(marks, behind(range)); }

void Sentence::forEach(
    const Pattern& pattern, const std::function<bool(const Found&)>& take) const {
    const auto mayTake = [&](std::string_view word) { return pattern.mayTake(word); };
    if (std::ranges::none_of(words_, mayTake)) return;
    pattern.regex().forEach(
        text_, [&](const Regex::Match& match) { return take(Found(text_, match)); });
}

std::string Sentence::title() const {
    std::vector<TextRange> inOrder = tokens_;
    std::ranges::sort(inOrder, {}, &TextRange::begin);

    std::string kept;
    std::size_t copied = 0;
    for (const TextRange token : inOrder) {
        const TextRange before = trimmed(text_, {0, token.begin});
        if (before.end > copied) kept.append(text_, copied, before.end - copied);
        copied = token.end;
        // A name that was cut at its greatest length, or a word right behind a quoted one.
        if (beginsWith(letters | marks | digits, behind(token))) kept += ' ';
    }
    return text::collapsed(kept.append(text_, copied));
}

}  // namespace tesserine::quickadd
