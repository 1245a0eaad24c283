#include "search/RecentSearches.h"

#include "base/Preferences.h"
#include "base/Text.h"

namespace tesserine {

std::vector<std::string> RecentSearches::all() const {
    auto queries = preferences_.strings(preferenceKey).value_or(std::vector<std::string>());
    if (queries.size() > maximumCount) queries.resize(maximumCount);
    return queries;
}

void RecentSearches::remember(std::string_view query) {
    const std::string_view trimmed = text::trimmed(query);
    if (trimmed.empty()) return;
    auto queries = all();
    std::erase_if(queries, [folded = text::caseFolded(trimmed)](const std::string& known) {
        return text::caseFolded(known) == folded;
    });
    queries.insert(queries.begin(), std::string(trimmed));
    if (queries.size() > maximumCount) queries.pop_back();
    preferences_.set(preferenceKey, queries);
}

void RecentSearches::forgetAll() { preferences_.remove(preferenceKey); }

}  // namespace tesserine
