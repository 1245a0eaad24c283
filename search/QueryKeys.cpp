#include "search/QueryKeys.h"

#include "search/KeyScanner.h"
#include "search/QueryCharacters.h"
#include "search/SearchAnalyzer.h"

#include <algorithm>
#include <array>
#include <optional>

namespace tesserine {

namespace {

/// A word of a line, by its place.
struct Extent {
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// Digits before and behind the point of an amount.
struct Amount {
    std::string whole;
    std::string fraction;
};

bool areDigits(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, isDigit);
}

void add(std::vector<std::string>& keys, std::string key) {
    if (std::ranges::find(keys, key) == keys.end()) keys.push_back(std::move(key));
}

/// Leaves only the most exact of the keys of dates: the month that a day lies in says less.
void keepMostExactDates(std::vector<std::string>& keys) {
    static constexpr std::array<std::string_view, 3> kinds{"tsx", "tsm", "tsy"};
    const auto isOf = [](std::string_view kind) {
        return [kind](const std::string& key) { return key.starts_with(kind); };
    };
    bool isExact = false;
    for (const std::string_view kind : kinds) {
        if (isExact) std::erase_if(keys, isOf(kind));
        isExact = isExact || std::ranges::any_of(keys, isOf(kind));
    }
}

/// The amount of a key of the analyzer, such as "tsn1234p50".
Amount amountOfKey(std::string_view key) {
    key.remove_prefix(3);
    const std::size_t point = key.find('p');
    if (point == std::string_view::npos) return {std::string(key), ""};
    return {std::string(key.substr(0, point)), std::string(key.substr(point + 1))};
}

/// "1234", "1,234.50", and "9,90" as people write it who set a comma before the cents.
std::optional<Amount> amountIn(std::string_view text) {
    if (areDigits(text)) return Amount{std::string(text), ""};
    for (const auto& [key, begin, end] : SearchAnalyzer::find(text)) {
        const bool isWhole = begin == 0 && end == text.size();
        if (isWhole && key.starts_with("tsn")) return amountOfKey(key);
    }
    const std::size_t comma = text.find(',');
    if (comma == std::string_view::npos) return std::nullopt;
    const std::string_view whole = text.substr(0, comma);
    const std::string_view fraction = text.substr(comma + 1);
    if (!areDigits(whole) || !areDigits(fraction) || fraction.size() > 2) return std::nullopt;
    return Amount{std::string(whole), std::string(fraction)};
}

/// 12.5 is also 12.50, and 12.00 also 12.
std::vector<std::string> keysOf(const Amount& amount) {
    std::string shortest = amount.fraction;
    while (shortest.ends_with('0')) {
        shortest.pop_back();
    }
    std::string cents = shortest;
    while (cents.size() < 2) {
        cents += '0';
    }
    std::vector<std::string> keys;
    for (const std::string& fraction : {amount.fraction, shortest, cents}) {
        std::string written = amount.whole;
        if (!fraction.empty()) written.append(".").append(fraction);
        add(keys, SearchAnalyzer::amountKey(written));
    }
    return keys;
}

}  // namespace

std::vector<std::string> keysOfWord(std::string_view word) {
    const std::string_view text = withoutPunctuation(word);
    std::vector<std::string> keys;
    for (const auto& [key, begin, end] : SearchAnalyzer::find(text)) {
        if (begin == 0 && end == text.size() && !key.starts_with("tsn")) add(keys, key);
    }
    keepMostExactDates(keys);
    for (std::string& key : keysOfAmount(text)) {
        add(keys, std::move(key));
    }
    return keys;
}

std::vector<NeighbourKeys> keysOfNeighbours(const std::vector<std::string>& words) {
    std::string line;
    std::vector<Extent> extents;
    for (const std::string& word : words) {
        if (!line.empty()) line += ' ';
        const std::size_t begin = line.size();
        line += withoutPunctuation(word);
        extents.push_back({begin, line.size()});
    }

    std::vector<NeighbourKeys> all;
    for (auto& [key, begin, end] : SearchAnalyzer::find(line)) {
        const auto first = std::ranges::find(extents, begin, &Extent::begin);
        const auto last = std::ranges::find(extents, end, &Extent::end);
        if (first == extents.end() || last == extents.end() || last <= first) continue;
        const auto place = static_cast<std::size_t>(first - extents.begin());
        const auto count = static_cast<std::size_t>(last - first) + 1;
        const auto known = std::ranges::find_if(all, [&](const NeighbourKeys& other) {
            return other.first == place && other.count == count;
        });
        if (known == all.end()) {
            all.push_back({place, count, {key}});
        } else {
            add(known->keys, key);
        }
    }

    // The longest reading of a word is the one that was meant.
    std::ranges::stable_sort(all, [](const NeighbourKeys& a, const NeighbourKeys& b) {
        return a.count != b.count ? a.count > b.count : a.first < b.first;
    });
    std::vector<NeighbourKeys> kept;
    for (NeighbourKeys& next : all) {
        const bool isFree = std::ranges::none_of(kept, [&](const NeighbourKeys& other) {
            return next.first < other.first + other.count && other.first < next.first + next.count;
        });
        if (!isFree) continue;
        keepMostExactDates(next.keys);
        kept.push_back(std::move(next));
    }
    std::ranges::sort(kept, {}, &NeighbourKeys::first);
    return kept;
}

std::vector<std::string> keysOfAmount(std::string_view typed) {
    const auto amount = amountIn(withoutPunctuation(typed));
    return amount ? keysOf(*amount) : std::vector<std::string>();
}

std::vector<std::string> keysOfAccount(std::string_view typed) {
    std::string digits;
    std::ranges::copy_if(typed, std::back_inserter(digits), isDigit);
    if (digits.empty()) return {};
    return {SearchAnalyzer::accountKey(digits)};
}

}  // namespace tesserine
