#pragma once

#include "core/services/SavedSearchService.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace tesserine {

class Preferences;
class StoreContext;

/// Brings saved searches of earlier builds into the library and into today's syntax, once.
///
/// Builds before saved searches were part of the library kept them in a preference; builds before
/// today's syntax wrote some filters differently. Belongs to the context's thread.
class LegacySavedSearches {
public:
    static constexpr std::string_view preferenceKey = "tesserine.search.legacySaved";
    static constexpr std::string_view syntaxKey = "tesserine.search.syntax";
    static constexpr std::int64_t syntax = 2;

    LegacySavedSearches(const SavedSearchService& searches, Preferences& preferences)
        : searches_(searches), preferences_(preferences) {}

    /// Whether there may be something to bring over.
    bool isDue() const;
    /// Imports and rewrites, then saves the context; a search that is there already, or need not
    /// change, is left as it is. Can be repeated. Throws `StoreError` and `FileError`.
    void migrate(StoreContext& context);

    /// A query of the earlier syntax in today's.
    static std::string rewritten(std::string_view query);

private:
    void importKept(StoreContext& context);
    void rewriteAll(StoreContext& context);

    const SavedSearchService& searches_;
    Preferences& preferences_;
};

}  // namespace tesserine
