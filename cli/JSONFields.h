#pragma once

#include <boost/json/object.hpp>

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine::cli {

/// Reads the fields of a JSON object that came from outside. A field of another type, and one that
/// nobody asked for, is refused with a sentence (`CommandError`). Null counts as absent.
class JSONFields {
public:
    explicit JSONFields(const boost::json::object& object) : object_(object) {}

    std::optional<std::string> text(std::string_view name);
    /// The same, but it must be there.
    std::string requiredText(std::string_view name);
    std::optional<std::int64_t> integer(std::string_view name);
    std::vector<std::string> texts(std::string_view name);
    const boost::json::array& requiredArray(std::string_view name);
    /// Throws when the object holds a field that was not read.
    void refuseOthers() const;

private:
    const boost::json::value* find(std::string_view name);

    const boost::json::object& object_;
    std::set<std::string, std::less<>> read_;
};

}  // namespace tesserine::cli
