#pragma once

#include "core/model/StoreObject.h"

#include <string>
#include <variant>
#include <vector>

namespace tesserine {

/// What fills a `%@` of a predicate.
using PredicateArgument = std::
    variant<std::monostate, bool, std::int64_t, double, std::string, Instant, Uuid, StoreObject*>;

/// A condition on objects of one entity, written over attribute names:
///
///     Predicate("name ==[c] %@ AND parent == nil", name)
///
/// Grammar: `==` `!=` `<` `<=` `>` `>=` `==[c]` (ignoring case) `CONTAINS[cd]` (ignoring case and
/// diacritics); `AND` `OR` `NOT` and parentheses; `ANY path`; dotted paths through relationships;
/// `SELF`; `nil` `YES` `NO`, whole numbers and `%@`. A null is equal to nil only, unequal to every
/// value, and neither before nor after any; `== NO` is true for null. A name that the entity does
/// not know is a mistake of ours and asserts when the predicate is first used. The empty text is
/// always true.
class Predicate {
public:
    Predicate() = default;
    template <class... Arguments>
    Predicate(std::string format, Arguments&&... arguments)  // NOLINT(google-explicit-constructor)
        : format_(std::move(format)), arguments_{argument(std::forward<Arguments>(arguments))...} {}
    /// What fulfils both conditions, of which neither is empty.
    static Predicate both(const Predicate& one, const Predicate& other) {
        Predicate result("(" + one.format_ + ") AND (" + other.format_ + ")");
        result.arguments_ = one.arguments_;
        result.arguments_.insert(
            result.arguments_.end(), other.arguments_.begin(), other.arguments_.end());
        return result;
    }

    const std::string& format() const noexcept { return format_; }
    const std::vector<PredicateArgument>& arguments() const noexcept { return arguments_; }

private:
    template <class T>
    static PredicateArgument argument(T&& value);

    std::string format_;
    std::vector<PredicateArgument> arguments_;
};

template <class T>
PredicateArgument Predicate::argument(T&& value) {
    using Plain = std::remove_cvref_t<T>;
    if constexpr (
        std::is_pointer_v<Plain> && std::is_base_of_v<StoreObject, std::remove_pointer_t<Plain>>) {
        return static_cast<StoreObject*>(value);
    } else if constexpr (std::is_base_of_v<StoreObject, Plain>) {
        return static_cast<StoreObject*>(&value);
    } else if constexpr (std::is_convertible_v<T, std::string>) {
        return std::string(std::forward<T>(value));
    } else if constexpr (std::is_same_v<Plain, std::string_view>) {
        return std::string(value);
    } else if constexpr (std::is_same_v<Plain, bool>) {
        return value;
    } else if constexpr (std::is_integral_v<Plain>) {
        return static_cast<std::int64_t>(value);
    } else {
        return PredicateArgument(std::forward<T>(value));
    }
}

/// The order of a fetch: attribute names, the first deciding.
struct SortDescriptor {
    enum class Order { ascending, descending };
    std::string attribute;
    Order order = Order::ascending;
};

/// What to fetch. Objects equal in all sort descriptors follow each other by `id`; without any,
/// objects come in the order in which they were first saved. Nulls sort first in ascending order.
/// Texts sort by their bytes: an order for people is made with a `text::Collator` afterwards.
struct FetchRequest {
    Predicate predicate{};
    std::vector<SortDescriptor> sort{};
    std::size_t limit = 0;  ///< 0: no limit
    std::size_t offset = 0;
};

}  // namespace tesserine
