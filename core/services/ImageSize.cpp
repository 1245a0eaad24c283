#include "core/services/ImageSize.h"

#include "base/Encoding.h"

#include <cstddef>
#include <string_view>

namespace tesserine {
namespace {

using Data = std::span<const std::uint8_t>;

/// Numbers of a header. A place beyond the end reads as 0 and is remembered.
class Header {
public:
    explicit Header(Data data) : data_(data) {}

    std::uint32_t byte(std::size_t at) const {
        if (at < data_.size()) return data_[at];
        isCut_ = true;
        return 0;
    }
    bool isCut() const { return isCut_; }
    std::uint32_t big16(std::size_t at) const { return byte(at) << 8 | byte(at + 1); }
    std::uint32_t big32(std::size_t at) const { return big16(at) << 16 | big16(at + 2); }
    std::uint32_t little16(std::size_t at) const { return byte(at + 1) << 8 | byte(at); }
    std::uint32_t little24(std::size_t at) const { return byte(at + 2) << 16 | little16(at); }
    std::uint32_t little32(std::size_t at) const { return little16(at + 2) << 16 | little16(at); }
    bool has(std::size_t at, std::string_view mark) const {
        return at <= data_.size() && textOf(data_.subspan(at)).starts_with(mark);
    }
    std::size_t size() const { return data_.size(); }

private:
    Data data_;
    mutable bool isCut_ = false;
};

/// ISO/IEC 10918-1, B.1.1.3: SOF0 to SOF15, without DHT, JPG and DAC that stand between them.
bool isStartOfFrame(std::uint32_t marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

ImageSize sizeOfJPEG(const Header& header) {
    std::size_t at = 2;
    while (at + 4 <= header.size()) {
        if (header.byte(at) != 0xFF) return {};
        const std::uint32_t marker = header.byte(at + 1);
        if (marker == 0xFF) {  // a filling byte
            ++at;
            continue;
        }
        if (marker == 0xDA) return {};  // the picture itself begins
        if (isStartOfFrame(marker)) return {header.big16(at + 7), header.big16(at + 5)};
        const bool standsAlone = marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8);
        const std::uint32_t length = standsAlone ? 0 : header.big16(at + 2);
        if (!standsAlone && length < 2) return {};
        at += 2 + length;
    }
    return {};
}

// https://developers.google.com/speed/webp/docs/riff_container
ImageSize sizeOfWebP(const Header& header) {
    if (header.has(12, "VP8X")) return {header.little24(24) + 1, header.little24(27) + 1};
    if (header.has(12, "VP8L") && header.byte(20) == 0x2F) {
        const std::uint32_t bits = header.little32(21);
        return {(bits & 0x3FFF) + 1, (bits >> 14 & 0x3FFF) + 1};
    }
    if (header.has(12, "VP8 ") && header.has(23, "\x9D\x01\x2A")) {
        return {header.little16(26) & 0x3FFF, header.little16(28) & 0x3FFF};
    }
    return {};
}

ImageSize sizeOfBMP(const Header& header) {
    const std::uint32_t headerSize = header.little32(14);
    if (headerSize == 12) return {header.little16(18), header.little16(20)};
    if (headerSize < 40 || headerSize > 124) return {};
    const std::uint32_t height = header.little32(22);
    const bool isTopDown = height >> 31 != 0;  // a negative height
    return {header.little32(18), isTopDown ? 0U - height : height};
}

ImageSize read(const Header& header) {
    if (header.has(0, "\x89PNG\r\n\x1A\n") && header.has(12, "IHDR")) {
        return {header.big32(16), header.big32(20)};
    }
    if (header.has(0, "\xFF\xD8\xFF")) return sizeOfJPEG(header);
    if (header.has(0, "GIF8")) return {header.little16(6), header.little16(8)};
    if (header.has(0, "RIFF") && header.has(8, "WEBP")) return sizeOfWebP(header);
    if (header.has(0, "BM")) return sizeOfBMP(header);
    return {};
}

}  // namespace

std::optional<ImageSize> imageSize(std::span<const std::uint8_t> bytes) {
    constexpr std::uint32_t limit = 0x7FFFFFFF;  // of the formats themselves
    const Header header(bytes);
    const ImageSize size = read(header);
    if (header.isCut()) return std::nullopt;
    const auto isSize = [](std::uint32_t length) { return length > 0 && length <= limit; };
    if (!isSize(size.width) || !isSize(size.height)) return std::nullopt;
    return size;
}

}  // namespace tesserine
