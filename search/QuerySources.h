#pragma once

#include "search/SearchFilters.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// What the words of a query are compared with: the terms and tags of the index.
class QueryVocabulary {
public:
    QueryVocabulary() = default;
    QueryVocabulary(const QueryVocabulary&) = delete;
    QueryVocabulary& operator=(const QueryVocabulary&) = delete;
    virtual ~QueryVocabulary() = default;

    /// Some terms of the index that hold `part`, the folded beginning, middle or end of a word.
    virtual std::vector<std::string> termsContaining(const std::string& part) = 0;
    /// The tags below the tag `name`, without it.
    virtual std::vector<std::string> tagsBelow(const std::string& name) = 0;
};

/// A condition that the index has no column for.
struct LibraryCondition {
    enum class Kind {
        hasReminder,
        isTemplate,
        isLocked,
        hasConflict,
        isOpen,
        isDone,
        isOverdue,
        isDue,  ///< within `due`; without ends: due at all
        isNeverDue,
        hasPriority,  ///< from `mostUrgent` to `leastUrgent`
    };
    Kind kind = Kind::hasReminder;
    filter::TimeSpan due{};
    int mostUrgent = 1;
    int leastUrgent = 4;
};

/// What the library itself answers about notes and tasks. Belongs to the thread of its context.
class QueryLibrary {
public:
    QueryLibrary() = default;
    QueryLibrary(const QueryLibrary&) = delete;
    QueryLibrary& operator=(const QueryLibrary&) = delete;
    virtual ~QueryLibrary() = default;

    /// The notes and tasks that meet the condition, as the index names them.
    virtual std::vector<std::string> documents(const LibraryCondition& condition) = 0;

    /// Notebooks that a person means by a name or a path.
    struct Notebooks {
        std::vector<std::string> names;  ///< empty: there is no such notebook
        /// Their notes, when another notebook has one of the names too.
        std::optional<std::vector<std::string>> notes;
    };
    enum class Depth { itself, descendants };
    virtual Notebooks notebooks(std::string_view name, Depth depth) = 0;
};

}  // namespace tesserine
