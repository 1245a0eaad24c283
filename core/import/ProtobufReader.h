#pragma once

#include <cstdint>
#include <string_view>

namespace tesserine {

/// Reads the fields of one message in Protocol Buffers' wire format, in the order in which they
/// stand; what is inside a field is a message of its own. Never reads beyond the message, whatever
/// it says. Source: https://protobuf.dev/programming-guides/encoding/
class ProtobufReader {
public:
    /// `message` outlives the reader.
    explicit ProtobufReader(std::string_view message) : rest_(message) {}

    /// Moves to the next field; false at the end, and where the message is damaged.
    bool next();
    /// The number of the field.
    std::uint64_t field() const { return field_; }
    /// The value of a number field, zero for others.
    std::uint64_t number() const { return number_; }
    std::int64_t signedNumber() const { return static_cast<std::int64_t>(number_); }
    /// The bytes of a field that holds text, bytes or a message; empty for others.
    std::string_view bytes() const { return bytes_; }
    bool isDamaged() const { return isDamaged_; }

private:
    bool fail();
    bool readVarint(std::uint64_t& value);
    bool readFixed(std::size_t byteCount);
    bool readBytes();

    std::string_view rest_;
    std::uint64_t field_ = 0;
    std::uint64_t number_ = 0;
    std::string_view bytes_;
    bool isDamaged_ = false;
};

/// The first field of this number that holds bytes; empty when there is none.
std::string_view protobufField(std::string_view message, std::uint64_t field);

}  // namespace tesserine
