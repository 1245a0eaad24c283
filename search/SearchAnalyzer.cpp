#include "search/SearchAnalyzer.h"

#include "search/KeyScanner.h"

#include <algorithm>

namespace tesserine {
namespace {

bool isNumber(std::string_view text, std::size_t least, std::size_t most) {
    return text.size() >= least && text.size() <= most
           && text.find_first_not_of("0123456789") == std::string_view::npos;
}

/// The value in decimal, filled up with zeros to `width` digits.
std::string padded(int value, std::size_t width) {
    std::string digits = std::to_string(value);
    if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
    return digits;
}

}  // namespace

std::string SearchAnalyzer::keyText(std::span<const std::string_view> texts) {
    std::vector<Found> found;
    for (const std::string_view text : texts) {
        KeyScanner(text, found).scan();
    }
    std::ranges::sort(found, {}, &Found::key);
    const auto isRepeated = [](const Found& a, const Found& b) { return a.key == b.key; };
    found.erase(std::unique(found.begin(), found.end(), isRepeated), found.end());

    std::string joined;
    for (std::size_t i = 0; i < found.size() && i < maximumKeys; ++i) {
        if (i > 0) joined += ' ';
        joined += found[i].key;
    }
    return joined;
}

std::vector<SearchAnalyzer::Found> SearchAnalyzer::find(std::string_view text) {
    std::vector<Found> found;
    KeyScanner(text, found).scan();
    return found;
}

bool SearchAnalyzer::isKey(std::string_view term) {
    constexpr std::size_t any = std::string_view::npos;
    if (term.size() < 4 || !term.starts_with("ts")) return false;
    const char form = term[2];
    const std::string_view rest = term.substr(3);
    switch (form) {
    case 'y': return isNumber(rest, 4, 4);
    case 'm': return isNumber(rest, 6, 6);
    case 'x': return isNumber(rest, 8, 8);
    case 'd': return isNumber(rest, 8, any);
    case 'n': {
        const std::size_t point = rest.find('p');
        const bool isWhole = point == std::string_view::npos;
        return isNumber(rest.substr(0, point), 1, any)
               && (isWhole || isNumber(rest.substr(point + 1), 1, any));
    }
    default: return false;
    }
}

std::string SearchAnalyzer::yearKey(int year) { return "tsy" + padded(year, 4); }

std::string SearchAnalyzer::monthKey(int year, int month) {
    return "tsm" + padded(year, 4) + padded(month, 2);
}

std::string SearchAnalyzer::dateKey(int year, int month, int day) {
    return "tsx" + padded(year, 4) + padded(month, 2) + padded(day, 2);
}

std::string SearchAnalyzer::amountKey(std::string_view amount) {
    std::string key = "tsn";
    key += amount;
    std::ranges::replace(key, '.', 'p');
    return key;
}

std::string SearchAnalyzer::accountKey(std::string_view digits) {
    return "tsd" + std::string(digits);
}

}  // namespace tesserine
