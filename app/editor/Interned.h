#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tesserine::app {

/// Numbers for values, equal numbers for equal values, so that a text format can carry a value as
/// an integer. Numbers stay valid as long as the table: the undo history may come back to them.
template <class Value>
class Interned {
public:
    /// `key` tells `value` from every other one.
    int add(std::string key, const Value& value) {
        const auto [place, isNew] =
            numbers_.try_emplace(std::move(key), static_cast<int>(values_.size()));
        if (isNew) values_.push_back(value);
        return place->second;
    }
    const Value& at(int number) const { return values_[static_cast<std::size_t>(number)]; }
    bool has(int number) const {
        return number >= 0 && static_cast<std::size_t>(number) < values_.size();
    }

private:
    std::map<std::string, int> numbers_;
    std::vector<Value> values_;
};

}  // namespace tesserine::app
