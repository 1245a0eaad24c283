#pragma once

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

/// The program's door to JSON (RFC 8259), over Boost.JSON's values.
namespace tesserine::json {

/// A text that is no acceptable JSON. `what()` says why and where, without quoting the text.
class JSONError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// How much a text from outside may ask for.
struct Limits {
    std::size_t byteCount = std::size_t{64} << 20;
    std::size_t depth = 128;  ///< arrays and objects inside each other
};

/// The value of one JSON text. Of equal keys the last one counts; numbers are read exactly (a whole
/// number within 64 bits stays an integer). Throws `JSONError`, also for invalid UTF-8, anything
/// after the value, or a text beyond `limits`.
boost::json::value parse(std::string_view text, const Limits& limits = {});

enum class Layout { compact, pretty };

/// `value` as JSON text, keys in their order. Doubles are written plainly and exactly ("52.5",
/// "1.0"); what is not finite becomes null. `pretty` indents by two spaces; neither ends with a
/// line break.
std::string write(const boost::json::value& value, Layout layout = Layout::compact);

/// A JSON string literal with its quotation marks.
std::string quoted(std::string_view text);

}  // namespace tesserine::json
