#include "core/import/Gunzip.h"

#include <zlib.h>

#include <algorithm>
#include <memory>
#include <new>

namespace tesserine {
namespace {

constexpr std::size_t inflatedPieceSize = 65'536;
constexpr int gzipOnly = 16 + MAX_WBITS;

struct End {
    void operator()(z_stream* stream) const noexcept { inflateEnd(stream); }
};

}  // namespace

std::optional<std::string> gunzipped(std::span<const std::uint8_t> gzip, std::size_t limit) {
    z_stream stream{};
    if (inflateInit2(&stream, gzipOnly) != Z_OK) throw std::bad_alloc();
    const std::unique_ptr<z_stream, End> owner(&stream);
    // zlib never writes to its input; its interface is older than const.
    stream.next_in =
        const_cast<Bytef*>(gzip.data());  // NOLINT(cppcoreguidelines-pro-type-const-cast)
    stream.avail_in = static_cast<uInt>(std::min<std::size_t>(gzip.size(), 0xFFFF'FFFF));

    std::string content;
    int status = Z_OK;
    while (status == Z_OK) {
        const std::size_t before = content.size();
        content.resize(before + inflatedPieceSize);
        stream.next_out = reinterpret_cast<Bytef*>(content.data() + before);
        stream.avail_out = inflatedPieceSize;
        status = inflate(&stream, Z_NO_FLUSH);
        content.resize(before + inflatedPieceSize - stream.avail_out);
        if (content.size() > limit) return std::nullopt;
    }
    if (status != Z_STREAM_END) return std::nullopt;
    return content;
}

}  // namespace tesserine
