#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace tesserine {

/// The content of a gzip file (RFC 1952); none when it is damaged, cut, or longer than `limit`
/// bytes. Memory stays within twice the limit whatever the input says.
std::optional<std::string> gunzipped(std::span<const std::uint8_t> gzip, std::size_t limit);

}  // namespace tesserine
