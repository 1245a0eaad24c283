#include "app/editor/Comparison.h"

#include <algorithm>
#include <cstddef>
#include <optional>

namespace tesserine::app {
namespace {

using Tokens = std::vector<std::u16string_view>;

enum class Unit { words, lines };

bool isWordUnit(char16_t unit) {
    return (unit >= u'0' && unit <= u'9') || (unit >= u'A' && unit <= u'Z')
           || (unit >= u'a' && unit <= u'z') || (unit >= 0xC0 && unit < 0x2000)
           || (unit >= 0xD800 && unit < 0xE000);
}

/// Words with nothing between them, every other unit by itself; or lines with their endings.
Tokens tokens(std::u16string_view text, Unit unit) {
    Tokens pieces;
    while (!text.empty()) {
        std::size_t length = 1;
        if (unit == Unit::lines) {
            length = std::min(text.find(u'\n'), text.size() - 1) + 1;
        } else {
            const auto* const end = std::ranges::find_if_not(text, isWordUnit);
            length = std::max<std::size_t>(static_cast<std::size_t>(end - text.begin()), 1);
        }
        pieces.push_back(text.substr(0, length));
        text.remove_prefix(length);
    }
    return pieces;
}

/// Which tokens of each side stay, as found by the greedy algorithm of E. W. Myers, "An O(ND)
/// Difference Algorithm and Its Variations" (1986).
struct Kept {
    std::vector<bool> before;
    std::vector<bool> after;
};

std::optional<Kept> keptOf(const Tokens& before, const Tokens& after) {
    const auto lengthBefore = static_cast<std::ptrdiff_t>(before.size());
    const auto lengthAfter = static_cast<std::ptrdiff_t>(after.size());
    const auto most = static_cast<std::ptrdiff_t>(mostDifferences);
    const auto limit = std::min(lengthBefore + lengthAfter, most);
    // How far each diagonal was followed, after each number of differences.
    std::vector<std::vector<std::ptrdiff_t>> steps;
    std::vector<std::ptrdiff_t> furthest(static_cast<std::size_t>(2 * limit + 3), 0);
    const auto at = [&](std::vector<std::ptrdiff_t>& row, std::ptrdiff_t k) -> std::ptrdiff_t& {
        return row[static_cast<std::size_t>(k + static_cast<std::ptrdiff_t>(row.size()) / 2)];
    };
    for (std::ptrdiff_t d = 0; d <= limit; ++d) {
        for (std::ptrdiff_t k = -d; k <= d; k += 2) {
            const bool isDown = k == -d || (k != d && at(furthest, k - 1) < at(furthest, k + 1));
            std::ptrdiff_t x = isDown ? at(furthest, k + 1) : at(furthest, k - 1) + 1;
            std::ptrdiff_t y = x - k;
            while (x < lengthBefore && y < lengthAfter && x >= 0 && y >= 0
                   && before[static_cast<std::size_t>(x)] == after[static_cast<std::size_t>(y)]) {
                ++x;
                ++y;
            }
            at(furthest, k) = x;
            if (x < lengthBefore || y < lengthAfter) continue;

            Kept kept{std::vector<bool>(before.size()), std::vector<bool>(after.size())};
            for (std::ptrdiff_t back = d; back > 0; --back) {
                auto& row = steps[static_cast<std::size_t>(back - 1)];
                const std::ptrdiff_t diagonal = x - y;
                const bool cameDown =
                    diagonal == -back
                    || (diagonal != back && at(row, diagonal - 1) < at(row, diagonal + 1));
                const std::ptrdiff_t from = cameDown ? diagonal + 1 : diagonal - 1;
                const std::ptrdiff_t startX = at(row, from);
                const std::ptrdiff_t startY = startX - from;
                while (x > startX + (cameDown ? 0 : 1) && y > startY + (cameDown ? 1 : 0)) {
                    kept.before[static_cast<std::size_t>(--x)] = true;
                    kept.after[static_cast<std::size_t>(--y)] = true;
                }
                x = startX;
                y = startY;
            }
            while (x > 0 && y > 0) {
                kept.before[static_cast<std::size_t>(--x)] = true;
                kept.after[static_cast<std::size_t>(--y)] = true;
            }
            return kept;
        }
        // Only the diagonals that the way back asks for.
        std::vector<std::ptrdiff_t> row(static_cast<std::size_t>(2 * d + 3), 0);
        for (std::ptrdiff_t k = -d; k <= d; ++k) {
            at(row, k) = at(furthest, k);
        }
        steps.push_back(std::move(row));
    }
    return {};
}

/// The stretches of tokens that do not stay; neighbours are one.
std::vector<PassageRange> rangesOf(
    const Tokens& pieces, const std::vector<bool>& kept, std::size_t offset) {
    std::vector<PassageRange> ranges;
    for (std::size_t i = 0; i < pieces.size(); offset += pieces[i++].size()) {
        if (kept[i]) continue;
        if (!ranges.empty() && ranges.back().end() == offset) {
            ranges.back().length += pieces[i].size();
        } else {
            ranges.push_back({offset, pieces[i].size()});
        }
    }
    return ranges;
}

constexpr std::size_t npos = std::u16string_view::npos;

}  // namespace

std::size_t Comparison::placeAfter(std::size_t place, Side side) const {
    auto gone = removed.begin();
    auto come = added.begin();
    std::size_t before = 0;
    std::size_t after = 0;
    while (true) {
        // The stretch that both texts have from here on ends where one of them goes its own way.
        const std::size_t toGone = gone == removed.end() ? npos : gone->start - before;
        const std::size_t toCome = come == added.end() ? npos : come->start - after;
        const std::size_t same = std::min(toGone, toCome);
        const std::size_t distance = place - before;
        if (distance < same || (distance == same && side == Side::previous)) {
            return after + distance;
        }
        before += same;
        after += same;
        if (toGone == same && place == before) return after;
        if (toGone == same) before = (gone++)->end();
        if (toCome == same) after = (come++)->end();
        if (place < before) return after;
    }
}

Comparison compared(std::u16string_view before, std::u16string_view after) {
    // What both begin and end with needs no comparison; cut at lines, so that words stay whole.
    const auto [differs, other] = std::ranges::mismatch(before, after);
    auto head = static_cast<std::size_t>(differs - before.begin());
    head = head == 0 ? 0 : before.substr(0, head).rfind(u'\n') + 1;
    before.remove_prefix(head);
    after.remove_prefix(head);
    const auto [end, otherEnd] =
        std::mismatch(before.rbegin(), before.rend(), after.rbegin(), after.rend());
    const auto tail = static_cast<std::size_t>(end - before.rbegin());
    const std::size_t line = before.substr(before.size() - tail).find(u'\n');
    const std::size_t same = line == npos ? 0 : tail - line;
    before.remove_suffix(same);
    after.remove_suffix(same);

    for (const Unit unit : {Unit::words, Unit::lines}) {
        const Tokens first = tokens(before, unit);
        const Tokens second = tokens(after, unit);
        if (const auto kept = keptOf(first, second)) {
            return {rangesOf(first, kept->before, head), rangesOf(second, kept->after, head)};
        }
    }
    Comparison whole;
    if (!before.empty()) whole.removed.push_back({head, before.size()});
    if (!after.empty()) whole.added.push_back({head, after.size()});
    return whole;
}

}  // namespace tesserine::app
