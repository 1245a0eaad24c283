#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace tesserine {

/// The text of a file, and what was done to it that its owner should know.
struct DecodedText {
    std::string text;     ///< valid UTF-8 without U+0000; lines end in "\n"
    std::string warning;  ///< a sentence, or empty
};

/// Reads the bytes of a text file. UTF-8 with or without a mark and UTF-16 with a mark are known;
/// anything else is taken for Windows-1252, with a warning. Text that is UTF-8 but for a few bytes
/// stays so: those bytes become U+FFFD. Never fails; linear.
DecodedText decodedText(std::span<const std::uint8_t> bytes);

/// The character that a byte stands for in Windows-1252.
char16_t windows1252Character(std::uint8_t byte);

}  // namespace tesserine
