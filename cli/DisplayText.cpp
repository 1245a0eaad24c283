#include "cli/DisplayText.h"

#include "base/Text.h"
#include "base/UTF8.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <cstdint>

namespace tesserine::cli {

namespace {

constexpr UChar32 emojiSelector = 0xFE0F;

/// Calls `take(codePoint, bytes)` for each code point.
template <class Take>
void forEachCodePoint(std::string_view text, Take take) {
    while (!text.empty()) {
        const utf8::Scalar scalar = utf8::first(text);
        take(static_cast<UChar32>(scalar.value), text.substr(0, scalar.length));
        text.remove_prefix(scalar.length);
    }
}

bool isMark(UChar32 point) {
    const auto category = static_cast<std::uint32_t>(U_MASK(u_charType(point)));
    return (category & (U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK | U_GC_CC_MASK)) != 0;
}

std::size_t widthOf(UChar32 point) {
    if (isMark(point)) return 0;
    const int width = u_getIntPropertyValue(point, UCHAR_EAST_ASIAN_WIDTH);
    const bool isWide = width == U_EA_FULLWIDTH || width == U_EA_WIDE;
    return isWide || u_hasBinaryProperty(point, UCHAR_EMOJI_PRESENTATION) != 0 ? 2 : 1;
}

/// A cluster is drawn in one place: it is as wide as its widest part.
std::size_t clusterWidth(std::string_view cluster) {
    if (cluster.size() == 1) return cluster[0] >= 0x20 && cluster[0] != 0x7F ? 1 : 0;
    std::size_t width = 0;
    forEachCodePoint(cluster, [&](UChar32 point, std::string_view) {
        width = std::max(width, point == emojiSelector ? 2 : widthOf(point));
    });
    return width;
}

bool isDirectionMark(UChar32 point) {
    return point == 0x061C || point == 0x200E || point == 0x200F
           || (point >= 0x202A && point <= 0x202E) || (point >= 0x2066 && point <= 0x2069);
}

bool isControl(UChar32 point) {
    return u_charType(point) == U_CONTROL_CHAR || point == 0x2028 || point == 0x2029;
}

}  // namespace

std::size_t displayWidth(std::string_view text) {
    std::size_t width = 0;
    text::forEachCharacter(text, [&](std::string_view cluster) {
        width += clusterWidth(cluster);
        return true;
    });
    return width;
}

std::string fitted(std::string_view text, std::size_t columns) {
    if (columns == 0) return {};
    std::size_t width = 0;
    std::size_t keptBytes = 0;  // of the longest beginning that leaves room for the ellipsis
    std::size_t bytes = 0;
    bool fits = true;
    text::forEachCharacter(text, [&](std::string_view cluster) {
        width += clusterWidth(cluster);
        bytes += cluster.size();
        fits = width <= columns;
        if (width < columns) keptBytes = bytes;
        return fits;
    });
    if (fits) return std::string(text);
    std::string kept(text.substr(0, keptBytes));
    while (kept.ends_with(' ')) {
        kept.pop_back();
    }
    return kept + "…";
}

std::string oneLine(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    forEachCodePoint(text, [&](UChar32 point, std::string_view bytes) {
        if (point == '\n' || point == '\t' || point == 0x2028 || point == 0x2029) {
            result += ' ';
        } else if (!isControl(point) && !isDirectionMark(point)) {
            result += bytes;
        }
    });
    return result;
}

std::string harmless(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    forEachCodePoint(text, [&](UChar32 point, std::string_view bytes) {
        if (point == '\n' || point == '\t' || !isControl(point)) result += bytes;
    });
    return result;
}

}  // namespace tesserine::cli
