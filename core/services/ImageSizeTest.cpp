#include "core/services/ImageSize.h"

#include "base/Encoding.h"

#include <gtest/gtest.h>

#include <string>

namespace tesserine {
namespace {

std::string sizeOf(const std::string& digits) {
    const auto size = imageSize(*fromHex(digits));
    return size ? std::to_string(size->width) + "x" + std::to_string(size->height) : "none";
}

TEST(ImageSize, IsReadFromTheHeadersOfEachFormat) {
    const std::string png = "89504e470d0a1a0a0000000d49484452";
    const std::string jpeg = "ffd8ffe000104a46494600010100000100010000";
    const std::string webp = "524946460000000057454250";
    const std::string bmp = "424d000000000000000000000000";
    struct Case {
        const char* what;
        std::string digits;
        const char* size;
    };
    for (const auto& [what, digits, size] : {
             Case{"PNG", png + "0000028000000190", "640x400"},
             Case{"PNG cut short", png + "000002800000", "none"},
             Case{"PNG of no width", png + "0000000000000190", "none"},
             Case{"PNG beyond its own limit", png + "ffffffff00000190", "none"},
             Case{"GIF", "47494638396180029001", "640x400"},
             Case{"JPEG", jpeg + "ffc0001108019002800301", "640x400"},
             Case{"progressive JPEG after filling", jpeg + "ffffffc2001108019002800301", "640x400"},
             Case{"JPEG with tables first", jpeg + "ffc400030affc0001108019002800301", "640x400"},
             Case{"JPEG without a frame", jpeg + "ffda000c0301", "none"},
             Case{
                 "JPEG with a segment of no length", jpeg + "ffe10000ffc00011080190028003", "none"},
             Case{"JPEG that ends in a marker", jpeg + "ffc0", "none"},
             Case{"lossy WebP", webp + "56503820000000000000009d012a80029001", "640x400"},
             Case{"lossless WebP", webp + "5650384c000000002f7fc26300", "640x400"},
             Case{"extended WebP", webp + "565038580a000000000000007f02008f0100", "640x400"},
             Case{"BMP", bmp + "280000008002000090010000", "640x400"},
             Case{"BMP from the top down", bmp + "280000008002000070feffff", "640x400"},
             Case{"old BMP", bmp + "0c00000080029001", "640x400"},
             Case{"text that begins BM", "424d57206973206120636172206d616b6572", "none"},
             Case{"nothing", "", "none"},
         }) {
        EXPECT_EQ(sizeOf(digits), size) << what;
    }
}

TEST(ImageSize, ACutHeaderHasNoSize) {
    const std::string digits = "ffd8ffe000104a46494600010100000100010000ffc00011080190028";
    for (std::size_t length = 0; length < digits.size(); length += 2) {
        EXPECT_EQ(sizeOf(digits.substr(0, length)), "none") << length;
    }
}

}  // namespace
}  // namespace tesserine
