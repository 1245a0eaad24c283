#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// The bytes of UTF-8, below the rules of `base/Text.h`; for code that must know them.
namespace tesserine::utf8 {

/// How many bytes at the front of `bytes` are valid UTF-8 without U+0000 (Unicode, table 3-7).
/// Reads eight bytes at a time where they are ASCII.
std::size_t cleanPrefix(std::string_view bytes);

/// One scalar at the front of valid, not empty `text` and how many bytes it takes.
struct Scalar {
    char32_t value = 0;
    std::size_t length = 0;
};
Scalar first(std::string_view text);

/// How many bytes at the front of not empty `bytes` are one bad sequence (a maximal subpart of a
/// valid one, or a single byte); 0 when a valid sequence stands there.
std::size_t badPrefix(std::string_view bytes);

void append(std::string& text, char32_t scalar);

/// Whether every byte is below 0x80.
bool isASCII(std::string_view bytes);

}  // namespace tesserine::utf8
