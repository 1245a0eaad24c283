#include "core/tasks/QuickAddNames.h"

#include "base/Text.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

namespace tesserine::quickadd {
namespace {

struct Name {
    std::string_view text;
    int number;
};

constexpr auto monthNames = std::to_array<Name>({
    {"january", 1},   {"jan", 1},   {"february", 2},  {"feb", 2},      {"march", 3},
    {"mar", 3},       {"april", 4}, {"apr", 4},       {"may", 5},      {"june", 6},
    {"jun", 6},       {"july", 7},  {"jul", 7},       {"august", 8},   {"aug", 8},
    {"september", 9}, {"sept", 9},  {"sep", 9},       {"october", 10}, {"oct", 10},
    {"november", 11}, {"nov", 11},  {"december", 12}, {"dec", 12},
});

constexpr auto weekdayNames = std::to_array<Name>({
    {"sunday", 1},
    {"sun", 1},
    {"monday", 2},
    {"mon", 2},
    {"tuesday", 3},
    {"tues", 3},
    {"tue", 3},
    {"wednesday", 4},
    {"weds", 4},
    {"wed", 4},
    {"thursday", 5},
    {"thurs", 5},
    {"thur", 5},
    {"thu", 5},
    {"friday", 6},
    {"fri", 6},
    {"saturday", 7},
    {"sat", 7},
});

std::optional<int> numberOf(std::string_view name, std::span<const Name> names) {
    const std::string wanted = text::caseFolded(name);
    const auto found = std::ranges::find(names, wanted, &Name::text);
    if (found == names.end()) return std::nullopt;
    return found->number;
}

std::string alternation(std::span<const Name> names) {
    std::vector<Name> longestFirst(names.begin(), names.end());
    std::ranges::stable_sort(
        longestFirst, std::ranges::greater(), [](const Name& name) { return name.text.size(); });
    std::string joined;
    for (const Name& name : longestFirst) {
        joined.append(joined.empty() ? "" : "|").append(name.text);
    }
    return joined;
}

}  // namespace

std::optional<int> monthNumber(std::string_view name) { return numberOf(name, monthNames); }

std::optional<int> weekdayNumber(std::string_view name) { return numberOf(name, weekdayNames); }

const std::string& monthAlternation() {
    static const std::string names = alternation(monthNames);
    return names;
}

const std::string& weekdayAlternation() {
    static const std::string names = alternation(weekdayNames);
    return names;
}

}  // namespace tesserine::quickadd
