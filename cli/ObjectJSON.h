#pragma once

#include "core/model/StoreObject.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include <functional>
#include <optional>
#include <string>
#include <vector>

/// Objects of the library as JSON: keys are the model's names, dates ISO 8601 in UTC with
/// milliseconds, UUIDs in upper case, absent values null, binary values {bytes, sha256}.
namespace tesserine::cli {

/// What of an object is written.
enum class Detail {
    header,  ///< what lists read: no bodies, no to-many relationships
    whole,   ///< everything
};

boost::json::value asJSON(const Value& value);
boost::json::value asJSON(const std::optional<Uuid>& id);
boost::json::value asJSON(const std::optional<Instant>& instant);
boost::json::value asJSON(const std::optional<std::string>& text);
boost::json::array asJSON(const std::vector<std::string>& texts);

/// The object's attributes in the order of the model, then its relationships as ids. A value that
/// cannot be read is null, and its name goes to `unreadable` if that is given; otherwise the error
/// goes on.
boost::json::object asJSON(
    StoreObject& object,
    Detail detail,
    const std::function<void(const std::string& attribute)>& unreadable = {});

}  // namespace tesserine::cli
