#include "app/commands/FuzzyMatch.h"

#include <QStringList>

#include <algorithm>
#include <ranges>
#include <set>
#include <vector>

namespace tesserine::app {
namespace {

constexpr int forNeighbour = 12;
constexpr int forWordStart = 10;
constexpr int forFirst = 6;
constexpr qsizetype longestText = 200;  // what stands behind is not looked at

/// One unit for each unit of `text`, without case and diacritics.
QString folded(const QString& text) {
    QString result = text;
    for (QChar& unit : result) {
        const QString parts = unit.decomposition();
        const bool isAccented = unit.decompositionTag() == QChar::Canonical && !parts.isEmpty();
        unit = (isAccented ? parts.front() : unit).toCaseFolded();
    }
    return result;
}

bool isWordStart(const QString& text, qsizetype at) {
    return at == 0 || (text[at].isLetterOrNumber() && !text[at - 1].isLetterOrNumber());
}

int worthOf(const QString& text, qsizetype at) {
    return (isWordStart(text, at) ? forWordStart : 0) + (at == 0 ? forFirst : 0);
}

/// Where `word` stands best: at the beginning of a word, else early. None: -1.
qsizetype placeOf(const QString& word, const QString& text) {
    const qsizetype first = text.indexOf(word);
    for (qsizetype at = first; at >= 0; at = text.indexOf(word, at + 1)) {
        if (isWordStart(text, at)) return at;
    }
    return first;
}

/// Among equals the shorter text is named more fully.
int fullness(const QString& text) { return -static_cast<int>(text.size() / 8); }

bool holdsInOrder(const QString& text, const QString& wanted) {
    qsizetype from = 0;
    for (const QChar unit : wanted) {
        from = text.indexOf(unit, from) + 1;
        if (from == 0) return false;
    }
    return true;
}

/// The best way to end a match of the first typed units at one place of the text.
struct Step {
    int score = -1;  // -1: it cannot end here
    int previous = -1;
};

/// The best ways to end a match of one typed unit more, at every place of the text.
std::vector<Step> nextSteps(const QString& text, QChar unit, const std::vector<Step>& steps) {
    std::vector<Step> next(steps.size());
    int best = -1;  // of the places before the neighbour
    for (int at = 1; at < static_cast<int>(steps.size()); ++at) {
        const auto before = static_cast<std::size_t>(at - 1);
        if (text[at] == unit) {
            Step& step = next[before + 1];
            if (best >= 0) step = {steps[static_cast<std::size_t>(best)].score, best};
            const int asNeighbour = steps[before].score + forNeighbour;
            if (steps[before].score >= 0 && asNeighbour >= step.score) step = {asNeighbour, at - 1};
            if (step.score >= 0) step.score += worthOf(text, at);
        }
        const bool isBetter =
            best < 0 || steps[before].score > steps[static_cast<std::size_t>(best)].score;
        if (steps[before].score >= 0 && isBetter) best = at - 1;
    }
    return next;
}

/// The best match of the units of `wanted`, which `line` holds in their order.
FuzzyMatch bestInOrder(const QString& wanted, const QString& line) {
    std::vector<std::vector<Step>> table(
        1, std::vector<Step>(static_cast<std::size_t>(line.size())));
    for (qsizetype at = 0; at < line.size(); ++at) {
        if (line[at] == wanted.front())
            table[0][static_cast<std::size_t>(at)].score = worthOf(line, at);
    }
    for (const QChar unit : wanted.sliced(1))
        table.push_back(nextSteps(line, unit, table.back()));

    const auto end = std::ranges::max_element(table.back(), {}, &Step::score);
    FuzzyMatch match{.score = end->score + fullness(line)};
    int at = static_cast<int>(end - table.back().begin());
    for (const auto& steps : std::views::reverse(table)) {
        match.positions.push_back(at);
        at = steps[static_cast<std::size_t>(at)].previous;
    }
    std::ranges::reverse(match.positions);
    return match;
}

}  // namespace

std::optional<FuzzyMatch> fuzzyMatch(const QString& typed, const QString& text) {
    QString wanted = folded(typed);
    wanted.removeIf([](QChar unit) { return unit.isSpace(); });
    if (wanted.isEmpty()) return FuzzyMatch{};
    const QString line = folded(text.left(longestText));
    if (holdsInOrder(line, wanted)) return bestInOrder(wanted, line);
    return wordsMatch(typed, text);
}

std::optional<FuzzyMatch> wordsMatch(const QString& typed, const QString& text) {
    const QString line = folded(text.left(longestText));
    FuzzyMatch match{.score = fullness(line)};
    std::set<int> positions;
    for (const QString& word : folded(typed).simplified().split(' ', Qt::SkipEmptyParts)) {
        const qsizetype at = placeOf(word, line);
        if (at < 0) return std::nullopt;
        const int length = static_cast<int>(word.size());
        match.score += worthOf(line, at) + (length - 1) * forNeighbour;
        for (int unit = 0; unit < length; ++unit)
            positions.insert(static_cast<int>(at) + unit);
    }
    match.positions.assign(positions.begin(), positions.end());
    return match;
}

}  // namespace tesserine::app
