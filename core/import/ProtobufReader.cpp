#include "core/import/ProtobufReader.h"

namespace tesserine {

bool ProtobufReader::next() {
    number_ = 0;
    bytes_ = {};
    if (rest_.empty() || isDamaged_) return false;
    std::uint64_t key = 0;
    if (!readVarint(key)) return fail();
    field_ = key >> 3U;
    switch (key & 7U) {
    case 0: return readVarint(number_) || fail();
    case 1: return readFixed(8) || fail();
    case 2: return readBytes() || fail();
    case 5: return readFixed(4) || fail();
    default: return fail();  // groups, which nobody writes any more, and what is no field
    }
}

bool ProtobufReader::fail() {
    isDamaged_ = true;
    return false;
}

bool ProtobufReader::readVarint(std::uint64_t& value) {
    value = 0;
    for (unsigned shift = 0; shift < 64 && !rest_.empty(); shift += 7) {
        const auto byte = static_cast<std::uint8_t>(rest_.front());
        rest_.remove_prefix(1);
        value |= static_cast<std::uint64_t>(byte & 0x7FU) << shift;
        if (byte < 0x80) return true;
    }
    return false;
}

bool ProtobufReader::readFixed(std::size_t byteCount) {
    if (rest_.size() < byteCount) return false;
    for (std::size_t i = 0; i < byteCount; ++i) {
        number_ |= static_cast<std::uint64_t>(static_cast<std::uint8_t>(rest_[i])) << (8 * i);
    }
    rest_.remove_prefix(byteCount);
    return true;
}

bool ProtobufReader::readBytes() {
    std::uint64_t length = 0;
    if (!readVarint(length) || length > rest_.size()) return false;
    bytes_ = rest_.substr(0, length);
    rest_.remove_prefix(length);
    return true;
}

std::string_view protobufField(std::string_view message, std::uint64_t field) {
    ProtobufReader reader(message);
    while (reader.next()) {
        if (reader.field() == field && !reader.bytes().empty()) return reader.bytes();
    }
    return {};
}

}  // namespace tesserine
