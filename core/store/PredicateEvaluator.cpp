#include "base/Text.h"
#include "core/store/PredicateTree.h"

#include <algorithm>
#include <compare>

namespace tesserine {
namespace {

using Operator = PredicateTree::Operator;
using Ending = PredicateTree::Ending;

/// A value in the form in which SQLite compares it: numbers with numbers, texts and blobs by bytes.
/// `long double` holds every 64-bit integer and every double exactly.
std::optional<long double> asNumber(const Value& value) {
    if (const auto* flag = std::get_if<bool>(&value)) return *flag ? 1 : 0;
    if (const auto* small = std::get_if<std::int16_t>(&value)) return *small;
    if (const auto* number = std::get_if<std::int64_t>(&value)) return *number;
    if (const auto* real = std::get_if<double>(&value)) return *real;
    if (const auto* when = std::get_if<Instant>(&value)) return when->referenceSeconds();
    return std::nullopt;
}

Value asValue(const PredicateArgument& argument) {
    return std::visit(
        []<class T>(const T& value) -> Value {
            if constexpr (std::is_same_v<T, StoreObject*>) {
                return {};
            } else {
                return value;
            }
        },
        argument);
}

/// None when the two cannot be compared or one is null.
std::partial_ordering order(const Value& a, const Value& b) {
    if (const auto* text = std::get_if<std::string>(&a)) {
        const auto* other = std::get_if<std::string>(&b);
        if (other == nullptr) return std::partial_ordering::unordered;
        return text->compare(*other) <=> 0;
    }
    if (const auto* id = std::get_if<Uuid>(&a)) {
        const auto* other = std::get_if<Uuid>(&b);
        return other == nullptr ? std::partial_ordering::unordered : *id <=> *other;
    }
    const auto left = asNumber(a);
    const auto right = asNumber(b);
    if (!left || !right) return std::partial_ordering::unordered;
    return *left <=> *right;
}

bool compareValues(const Value& held, Operator operation, const PredicateArgument& argument) {
    if (const bool* wanted = std::get_if<bool>(&argument)) {
        const bool isTrue = asNumber(held).value_or(0) == 1;
        return (isTrue == *wanted) == (operation == Operator::equal);
    }
    const Value value = asValue(argument);
    if (isNull(value)) {
        const bool isEquality = operation == Operator::equal || operation == Operator::equalFolded;
        return isNull(held) == isEquality;
    }
    if (isNull(held)) return operation == Operator::notEqual;
    const auto* heldText = std::get_if<std::string>(&held);
    const auto* text = std::get_if<std::string>(&value);
    switch (operation) {
    case Operator::equal: return std::is_eq(order(held, value));
    case Operator::notEqual: return std::is_neq(order(held, value));
    case Operator::less: return std::is_lt(order(held, value));
    case Operator::lessOrEqual: return std::is_lteq(order(held, value));
    case Operator::greater: return std::is_gt(order(held, value));
    case Operator::greaterOrEqual: return std::is_gteq(order(held, value));
    case Operator::equalFolded:
        return heldText != nullptr && text != nullptr
               && text::caseFolded(*heldText) == text::caseFolded(*text);
    case Operator::containsFolded:
        return heldText != nullptr && text != nullptr && containsFolded(*heldText, *text);
    }
    return false;
}

bool compareObjects(
    const StoreObject* held, Operator operation, const PredicateArgument& argument) {
    StoreObject* const* wanted = std::get_if<StoreObject*>(&argument);
    const StoreObject* other = wanted == nullptr ? nullptr : *wanted;
    return (held == other) == (operation == Operator::equal);
}

/// Looks at one object after `step` relationships of the path.
class Walker {
public:
    Walker(const PredicateTree& tree, const PredicateArgument& argument)
        : tree_(tree), argument_(argument) {}

    bool holds(StoreObject& object, std::size_t step) const {
        if (step == tree_.path.size()) return compare(object);
        const std::size_t relationship = tree_.path[step];
        const RelationshipDescription& walked = object.entity().relationships[relationship];
        if (!walked.isToMany) {
            StoreObject* next = object.target(relationship);
            return next != nullptr && holds(*next, step + 1);
        }
        const auto others = object.related(relationship);
        return std::ranges::any_of(
            others, [&](StoreObject* next) { return holds(*next, step + 1); });
    }

private:
    bool compare(StoreObject& object) const {
        switch (tree_.ending) {
        case Ending::self: return compareObjects(&object, tree_.operation, argument_);
        case Ending::relationship:
            return compareObjects(object.target(tree_.index), tree_.operation, argument_);
        case Ending::attribute: break;
        }
        return compareValues(object.value(tree_.index), tree_.operation, argument_);
    }

    const PredicateTree& tree_;
    const PredicateArgument& argument_;
};

}  // namespace

bool evaluate(
    const PredicateTree& tree,
    const std::vector<PredicateArgument>& arguments,
    StoreObject& object) {
    const auto holds = [&](const PredicateTree& child) {
        return evaluate(child, arguments, object);
    };
    switch (tree.kind) {
    case PredicateTree::Kind::always: return true;
    case PredicateTree::Kind::all: return std::ranges::all_of(tree.children, holds);
    case PredicateTree::Kind::any: return std::ranges::any_of(tree.children, holds);
    case PredicateTree::Kind::negation: return !holds(tree.children.front());
    case PredicateTree::Kind::comparison: break;
    }
    const PredicateArgument& argument = tree.argument ? arguments.at(*tree.argument) : tree.literal;
    return Walker(tree, argument).holds(object, 0);
}

}  // namespace tesserine
