#include "base/sqlite/Statement.h"
#include "core/store/PredicateTree.h"

namespace tesserine {
namespace {

using Operator = PredicateTree::Operator;
using Ending = PredicateTree::Ending;

const char* sqlOperator(Operator operation) {
    switch (operation) {
    case Operator::less: return " < ";
    case Operator::lessOrEqual: return " <= ";
    case Operator::greater: return " > ";
    case Operator::greaterOrEqual: return " >= ";
    case Operator::notEqual: return " IS NOT ";
    case Operator::equal:
    case Operator::equalFolded:
    case Operator::containsFolded: break;
    }
    return " = ";
}

/// Writes conditions and collects their values in the order in which they stand.
class Writer {
public:
    Writer(const std::vector<PredicateArgument>& arguments, const std::string& leadingColumn)
        : arguments_(arguments), leadingColumn_(leadingColumn) {}

    std::string write(const PredicateTree& tree) {
        switch (tree.kind) {
        case PredicateTree::Kind::always: return "1";
        case PredicateTree::Kind::all: return joined(tree, " AND ");
        case PredicateTree::Kind::any: return joined(tree, " OR ");
        // An unknown outcome counts as false before it is negated, as it does in memory.
        case PredicateTree::Kind::negation:
            return "NOT IFNULL(" + write(tree.children.front()) + ", 0)";
        case PredicateTree::Kind::comparison: break;
        }
        return through(tree, 0, Schema::library()[tree.entity]);
    }

    std::vector<PredicateArgument> takeValues() { return std::move(values_); }
    bool hasIndexedRange() const { return hasIndexedRange_; }

private:
    std::string joined(const PredicateTree& tree, const char* word) {
        std::string text = "(";
        for (const PredicateTree& child : tree.children) {
            if (text.size() > 1) text += word;
            text += write(child);
        }
        return text + ")";
    }

    /// The comparison seen from `entity`, after `step` relationships of its path.
    std::string through(
        const PredicateTree& tree, std::size_t step, const EntityDescription& entity) {
        if (step == tree.path.size()) return compare(tree, entity);
        const RelationshipDescription& walked = entity.relationships[tree.path[step]];
        const EntityDescription& next = Schema::library()[walked.destination];
        const std::string inner = through(tree, step + 1, next);
        const std::string keys = "SELECT Z_PK FROM " + next.table + " WHERE " + inner;
        if (!walked.isToMany) return walked.column + " IN (" + keys + ")";
        if (walked.isManyToMany) {
            return "Z_PK IN (SELECT " + walked.linkSource + " FROM " + walked.linkTable + " WHERE "
                   + walked.linkDestination + " IN (" + keys + "))";
        }
        const RelationshipDescription& back = next.relationships[walked.inverse];
        return "Z_PK IN (SELECT " + back.column + " FROM " + next.table + " WHERE " + inner + ")";
    }

    std::string compare(const PredicateTree& tree, const EntityDescription& entity) {
        const PredicateArgument& value =
            tree.argument ? arguments_.at(*tree.argument) : tree.literal;
        const bool isNil = std::holds_alternative<std::monostate>(value)
                           || (std::holds_alternative<StoreObject*>(value)
                               && std::get<StoreObject*>(value) == nullptr);
        switch (tree.ending) {
        case Ending::self: return compareKey("Z_PK", tree.operation, value, isNil);
        case Ending::relationship:
            return compareKey(
                entity.relationships[tree.index].column, tree.operation, value, isNil);
        case Ending::attribute: break;
        }
        const bool isIndexed = tree.path.empty() && entity.attributes[tree.index].isIndexed;
        hasIndexedRange_ = hasIndexedRange_ || (isIndexed && isRange(tree.operation, isNil));
        return compareAttribute(tree, entity.attributes[tree.index], value, isNil);
    }

    std::string compareKey(
        const std::string& column, Operator operation, const PredicateArgument& value, bool isNil) {
        if (isNil) return isNull(operation == Operator::equal ? "+" + column : column, operation);
        values_.push_back(value);
        return column + sqlOperator(operation) + "?";
    }

    std::string compareAttribute(
        const PredicateTree& tree,
        const AttributeDescription& attribute,
        const PredicateArgument& value,
        bool isNil) {
        if (isNil) return isNull(lead(attribute, tree.operation), tree.operation);
        if (const bool* boolean = std::get_if<bool>(&value)) {
            const bool wanted = *boolean == (tree.operation == Operator::equal);
            return "IFNULL(" + attribute.column + ", 0) = " + (wanted ? "1" : "0");
        }
        values_.push_back(value);
        if (tree.operation == Operator::equalFolded) {
            return "ts_fold(" + attribute.column + ") = ts_fold(?)";
        }
        if (tree.operation == Operator::containsFolded) {
            return "ts_contains(" + attribute.column + ", ?)";
        }
        return attribute.column + sqlOperator(tree.operation) + "?";
    }

    static std::string isNull(const std::string& column, Operator operation) {
        const bool isEquality = operation == Operator::equal || operation == Operator::equalFolded;
        return column + (isEquality ? " IS NULL" : " IS NOT NULL");
    }

    static bool isRange(Operator operation, bool isNil) {
        switch (operation) {
        case Operator::notEqual: return isNil;
        case Operator::less:
        case Operator::lessOrEqual:
        case Operator::greater:
        case Operator::greaterOrEqual: return true;
        case Operator::equal:
        case Operator::equalFolded:
        case Operator::containsFolded: break;
        }
        return false;
    }

    /// "+ZTRASHEDAT" keeps SQLite from starting at the index of the trash. Most rows hold nil, so
    /// asking for it is never where to begin; asking for a value is, unless the order decides.
    std::string lead(const AttributeDescription& attribute, Operator operation) const {
        if (!attribute.isIndexed || attribute.column == leadingColumn_) return attribute.column;
        const bool asksForNil = operation == Operator::equal;
        return asksForNil || !leadingColumn_.empty() ? "+" + attribute.column : attribute.column;
    }

    const std::vector<PredicateArgument>& arguments_;
    const std::string& leadingColumn_;
    std::vector<PredicateArgument> values_;
    bool hasIndexedRange_ = false;
};

}  // namespace

PredicateSQL PredicateSQL::compile(
    const PredicateTree& tree,
    const std::vector<PredicateArgument>& arguments,
    const std::string& leadingColumn) {
    Writer writer(arguments, leadingColumn);
    PredicateSQL result;
    result.condition = writer.write(tree);
    result.values = writer.takeValues();
    result.hasIndexedRange = writer.hasIndexedRange();
    return result;
}

void PredicateSQL::bind(Statement& statement, int first) const {
    for (const PredicateArgument& value : values) {
        const int place = first++;
        if (const auto* flag = std::get_if<bool>(&value)) {
            statement.bindInteger(place, *flag ? 1 : 0);
        } else if (const auto* number = std::get_if<std::int64_t>(&value)) {
            statement.bindInteger(place, *number);
        } else if (const auto* real = std::get_if<double>(&value)) {
            statement.bindDouble(place, *real);
        } else if (const auto* text = std::get_if<std::string>(&value)) {
            statement.bindText(place, *text);
        } else if (const auto* when = std::get_if<Instant>(&value)) {
            statement.bindDouble(place, when->referenceSeconds());
        } else if (const auto* id = std::get_if<Uuid>(&value)) {
            statement.bindBlob(place, id->bytes());
        } else if (auto* const* object = std::get_if<StoreObject*>(&value)) {
            statement.bindInteger(place, (*object)->key());
        } else {
            statement.bindNull(place);
        }
    }
}

}  // namespace tesserine
