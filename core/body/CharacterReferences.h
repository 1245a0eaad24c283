#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tesserine::html {

/// Where a reference stands: in an attribute an unfinished name (`&copy=1`, `&copyright`) is text.
enum class ReferenceContext : std::uint8_t { text, attribute };

/// Appends `text` to `output` with its character references decoded once: all 2,231 names of the
/// standard, the longest one first, decimal and hexadecimal numbers. What is no reference stays as
/// it is. Linear time. Source: WHATWG HTML, section 13.2.5.72 and those that follow.
void appendDecoded(std::string& output, std::string_view text, ReferenceContext context);

}  // namespace tesserine::html
