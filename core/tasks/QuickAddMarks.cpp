#include "core/tasks/QuickAddMarks.h"

#include "base/Text.h"

#include <utility>

namespace tesserine::quickadd {
namespace {

/// The names that `pattern` finds, quoted in group 1 or bare in group 2; at most `limit`.
std::vector<NameHit> findNames(
    const Sentence& sentence, const Pattern& pattern, std::size_t limit) {
    std::vector<NameHit> names;
    sentence.forEach(pattern, [&](const Found& found) {
        const TextRange range = found.range();
        const std::string_view name = text::trimmed(found.text(found.has(1) ? 1 : 2));
        const bool isName = !name.empty() && !sentence.isCutInCharacter(range);
        if (isName && sentence.isFree(range)) names.push_back({std::string(name), range});
        return names.size() < limit;
    });
    return names;
}

/// Whether the digit before `rest` is a word of its own: not the one of "2-day" or "1,234".
bool isEndOfWord(std::string_view rest) {
    const auto beginsWithSpace = [](std::string_view text) {
        return text.empty() || text::trimmed(text).data() != text.data();
    };
    if (beginsWithSpace(rest)) return true;
    const std::string_view behindSign = rest.substr(1);
    if (rest.front() == '.') return beginsWithSpace(behindSign);
    const bool goesOn =
        !behindSign.empty() && behindSign.front() >= '0' && behindSign.front() <= '9';
    return std::string_view(",;!?)").find(rest.front()) != std::string_view::npos && !goesOn;
}

}  // namespace

std::optional<NameHit> findProject(const Sentence& sentence) {
    static const Pattern pattern(R"x((?:^|\s)#(?:"([^"]{1,64})"|([\p{L}\p{N}_&/-]{1,64})))x", "#");
    auto names = findNames(sentence, pattern, 1);
    if (names.empty()) return std::nullopt;
    return std::move(names.front());
}

std::vector<NameHit> findLabels(const Sentence& sentence) {
    static const Pattern pattern(R"x((?:^|\s)@(?:"([^"]{1,64})"|([\p{L}\p{N}_&/-]{1,64})))x", "@");
    return findNames(sentence, pattern, std::string::npos);
}

std::optional<PriorityHit> findPriority(const Sentence& sentence) {
    static const Pattern pattern(R"((?:^|\s)(?:!{1,3}|p|P)?\s?[pP]?([1-4])\b)", "0|!|p");
    std::optional<PriorityHit> lone;
    const auto marked = sentence.first(pattern, [&](const Found& found) {
        const TextRange range = found.range();
        const PriorityHit hit{static_cast<TaskPriority>(found.number(1)), range};
        if (range.begin < found.range(1).begin) return std::optional(hit);
        const bool isWord = isEndOfWord(sentence.behind(range));
        if (!lone && isWord && sentence.isFree(range)) lone = hit;
        return std::optional<PriorityHit>();
    });
    return marked ? marked : lone;
}

}  // namespace tesserine::quickadd
