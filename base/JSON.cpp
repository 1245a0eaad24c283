#include "base/JSON.h"

#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/value_stack.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

namespace tesserine::json {
namespace {

using boost::json::error_code;
using Piece = boost::json::string_view;

/// Builds the value from the parser's events. The library's own builder reads one in ten doubles a
/// little wrong, which would move instants; this one reads them from their text.
// NOLINTBEGIN(readability-identifier-naming): the parser asks for these names.
struct Builder {
    static constexpr std::size_t max_object_size = boost::json::object::max_size();
    static constexpr std::size_t max_array_size = boost::json::array::max_size();
    static constexpr std::size_t max_key_size = boost::json::string::max_size();
    static constexpr std::size_t max_string_size = boost::json::string::max_size();

    boost::json::value_stack stack;

    bool on_document_begin(error_code& /*unused*/) {
        stack.reset();
        return true;
    }
    bool on_document_end(error_code& /*unused*/) { return true; }
    bool on_object_begin(error_code& /*unused*/) { return true; }
    bool on_object_end(std::size_t count, error_code& /*unused*/) {
        stack.push_object(count);
        return true;
    }
    bool on_array_begin(error_code& /*unused*/) { return true; }
    bool on_array_end(std::size_t count, error_code& /*unused*/) {
        stack.push_array(count);
        return true;
    }
    bool on_key_part(Piece part, std::size_t /*unused*/, error_code& /*unused*/) {
        stack.push_chars(part);
        return true;
    }
    bool on_key(Piece key, std::size_t /*unused*/, error_code& /*unused*/) {
        stack.push_key(key);
        return true;
    }
    bool on_string_part(Piece part, std::size_t /*unused*/, error_code& /*unused*/) {
        stack.push_chars(part);
        return true;
    }
    bool on_string(Piece text, std::size_t /*unused*/, error_code& /*unused*/) {
        stack.push_string(text);
        return true;
    }
    bool on_number_part(Piece /*unused*/, error_code& /*unused*/) { return true; }
    bool on_int64(std::int64_t number, Piece /*unused*/, error_code& /*unused*/) {
        stack.push_int64(number);
        return true;
    }
    bool on_uint64(std::uint64_t number, Piece /*unused*/, error_code& /*unused*/) {
        stack.push_uint64(number);
        return true;
    }
    bool on_double(double approximate, Piece text, error_code& error) {
        double exact = 0;  // stays so for what is too small to be told from zero
        const char* const end = text.data() + text.size();
        const auto [read, problem] = std::from_chars(text.data(), end, exact);
        const bool isTooLarge = problem != std::errc{} && std::abs(approximate) > 1;
        if (read != end || isTooLarge) {
            error = boost::json::error::exponent_overflow;
            return false;
        }
        stack.push_double(exact);
        return true;
    }
    bool on_bool(bool isTrue, error_code& /*unused*/) {
        stack.push_bool(isTrue);
        return true;
    }
    bool on_null(error_code& /*unused*/) {
        stack.push_null();
        return true;
    }
    bool on_comment_part(Piece /*unused*/, error_code& /*unused*/) { return true; }
    bool on_comment(Piece /*unused*/, error_code& /*unused*/) { return true; }
};
// NOLINTEND(readability-identifier-naming)

/// Whether a text holds the character as it is (RFC 8259, section 7).
bool isPlain(char c) { return static_cast<unsigned char>(c) >= 0x20 && c != '"' && c != '\\'; }

void appendEscaped(std::string& out, char c) {
    constexpr std::string_view digits = "0123456789abcdef";
    switch (c) {
    case '"': out += "\\\""; break;
    case '\\': out += "\\\\"; break;
    case '\b': out += "\\b"; break;
    case '\f': out += "\\f"; break;
    case '\n': out += "\\n"; break;
    case '\r': out += "\\r"; break;
    case '\t': out += "\\t"; break;
    default:
        out += "\\u00";
        out.push_back(digits[static_cast<unsigned char>(c) >> 4]);
        out.push_back(digits[static_cast<unsigned char>(c) & 0x0F]);
    }
}

/// Bodies are long and hold little to escape: what lies between is copied in one piece.
void appendQuoted(std::string& out, std::string_view text) {
    out.push_back('"');
    const auto* rest = text.begin();
    for (;;) {
        const auto* const special = std::find_if_not(rest, text.end(), isPlain);
        out.append(rest, special);
        if (special == text.end()) break;
        appendEscaped(out, *special);
        rest = special + 1;
    }
    out.push_back('"');
}

template <class Integer>
void appendInteger(std::string& out, Integer number) {
    std::array<char, 24> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    out.append(digits.data(), end);
}

void appendDouble(std::string& out, double number) {
    if (!std::isfinite(number)) {
        out += "null";
        return;
    }
    const double size = std::abs(number);
    const bool isPlain = size == 0 || (size >= 1e-7 && size < 1e21);
    const auto format = isPlain ? std::chars_format::fixed : std::chars_format::scientific;
    std::array<char, 64> digits{};
    auto* const end =
        std::to_chars(digits.data(), digits.data() + digits.size(), number, format).ptr;
    const std::string_view written(digits.data(), static_cast<std::size_t>(end - digits.data()));
    out += written;
    // So that a double is read back as one.
    if (isPlain && written.find('.') == std::string_view::npos) out += ".0";
}

class Writer {
public:
    Writer(std::string& out, Layout layout) : out_(out), isPretty_(layout == Layout::pretty) {}

    void write(const boost::json::value& value) {
        switch (value.kind()) {
        case boost::json::kind::null: out_ += "null"; break;
        case boost::json::kind::bool_: out_ += value.get_bool() ? "true" : "false"; break;
        case boost::json::kind::int64: appendInteger(out_, value.get_int64()); break;
        case boost::json::kind::uint64: appendInteger(out_, value.get_uint64()); break;
        case boost::json::kind::double_: appendDouble(out_, value.get_double()); break;
        case boost::json::kind::string: appendQuoted(out_, view(value.get_string())); break;
        case boost::json::kind::array: write(value.get_array()); break;
        case boost::json::kind::object: write(value.get_object()); break;
        }
    }

private:
    static std::string_view view(Piece text) { return {text.data(), text.size()}; }

    void write(const boost::json::array& array) {
        out_.push_back('[');
        ++depth_;
        for (std::size_t i = 0; i < array.size(); ++i) {
            beginMember(i);
            write(array[i]);
        }
        end(']', array.empty());
    }

    void write(const boost::json::object& object) {
        out_.push_back('{');
        ++depth_;
        std::size_t i = 0;
        for (const auto& member : object) {
            beginMember(i++);
            appendQuoted(out_, view(member.key()));
            out_ += isPretty_ ? ": " : ":";
            write(member.value());
        }
        end('}', object.empty());
    }

    void beginMember(std::size_t index) {
        if (index > 0) out_.push_back(',');
        breakLine();
    }

    void end(char bracket, bool isEmpty) {
        --depth_;
        if (!isEmpty) breakLine();
        out_.push_back(bracket);
    }

    void breakLine() {
        if (!isPretty_) return;
        out_.push_back('\n');
        out_.append(depth_ * 2, ' ');
    }

    std::string& out_;
    bool isPretty_;
    std::size_t depth_ = 0;
};

}  // namespace

boost::json::value parse(std::string_view text, const Limits& limits) {
    if (text.size() > limits.byteCount) throw JSONError("the JSON text is too long");

    boost::json::parse_options options;
    options.max_depth = limits.depth;
    boost::json::basic_parser<Builder> parser(options);
    error_code error;
    const std::size_t read = parser.write_some(false, text.data(), text.size(), error);
    if (!error && read < text.size()) error = boost::json::error::extra_data;
    if (error) throw JSONError(error.message() + " at byte " + std::to_string(read));
    return parser.handler().stack.release();
}

std::string write(const boost::json::value& value, Layout layout) {
    std::string out;
    Writer(out, layout).write(value);
    return out;
}

std::string quoted(std::string_view text) {
    std::string out;
    out.reserve(text.size() + 2);
    appendQuoted(out, text);
    return out;
}

}  // namespace tesserine::json
