#pragma once

#include "sync/WireRecords.h"

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// Writes and reads the records of the wire. Keys are lower snake case; identifiers are written in
/// lower case and read in any. Reading ignores keys it does not know; null counts as absent.
namespace tesserine {

/// A text that is not the expected record. `what()` is a short description for the log and for a
/// sentence: it names keys, never contents.
class WireError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

namespace wire {

// Each is there for every record of `WireRecords.h`.

/// The record as JSON, optional members only when present.
template <class Record>
boost::json::object encode(const Record& record);
/// Throws `WireError` for a missing required key or a value of another type.
template <class Record>
Record decode(const boost::json::value& json);
/// The same for a whole text.
template <class Record>
Record decodeText(std::string_view text);

/// Every member under its wire name, absent ones as null.
template <class Record>
boost::json::object listed(const Record& record);

/// {"changes": […]}, the body of a push.
std::string pushBody(const std::vector<SyncPush>& changes);

}  // namespace wire
}  // namespace tesserine
