#pragma once

#include "core/model/Schema.h"
#include "core/store/Predicate.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

class Statement;

/// A predicate as read: a tree over one entity's attributes and relationships. Both evaluators, the
/// one that writes SQL and the one that looks at objects, work from it, so that they cannot
/// disagree about what a text means. Immutable.
struct PredicateTree {
    enum class Kind { always, all, any, negation, comparison };
    enum class Operator {
        equal,
        notEqual,
        less,
        lessOrEqual,
        greater,
        greaterOrEqual,
        equalFolded,
        containsFolded
    };
    /// What the last name of a path is.
    enum class Ending { attribute, relationship, self };

    Kind kind = Kind::always;
    std::vector<PredicateTree> children;  ///< of all, any, negation

    // Of a comparison:
    EntityKind entity = EntityKind::note;  ///< where the path starts
    std::vector<std::size_t> path;         ///< relationships walked before the ending
    Ending ending = Ending::attribute;
    std::size_t index = 0;  ///< of the ending attribute or relationship
    Operator operation = Operator::equal;
    std::optional<std::size_t> argument;  ///< place of its `%@`; none: `literal`
    PredicateArgument literal;

    /// Reads `format`. An unknown name or bad grammar is a mistake of ours: it asserts, and in a
    /// build without assertions throws `std::logic_error`.
    static PredicateTree parse(const std::string& format, EntityKind entity);

    /// Whether an object of `wanted` other than the examined one can change the outcome.
    bool looksAt(EntityKind wanted) const;
};

/// The tree as an SQL condition with its values.
struct PredicateSQL {
    std::string condition;
    std::vector<PredicateArgument> values;
    /// Whether a fetch index narrows the rows down to a range of its values.
    bool hasIndexedRange = false;

    /// `leadingColumn`: the column whose index shall lead the query because it gives the order, or
    /// empty; conditions that ask other indexed columns for nil are written so that SQLite does not
    /// start from their index.
    static PredicateSQL compile(
        const PredicateTree& tree,
        const std::vector<PredicateArgument>& arguments,
        const std::string& leadingColumn);
    void bind(Statement& statement, int first = 1) const;
};

/// Whether `object` with its pending changes meets the condition.
bool evaluate(
    const PredicateTree& tree,
    const std::vector<PredicateArgument>& arguments,
    StoreObject& object);

/// `CONTAINS[cd]`: whether `text` holds `part`, ignoring case and diacritics.
bool containsFolded(std::string_view text, std::string_view part);

}  // namespace tesserine
