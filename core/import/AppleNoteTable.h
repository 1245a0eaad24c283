#pragma once

#include "core/import/AppleNoteHTML.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace tesserine {

/// A table of a note as HTML: `data` is the compressed value of its `ZMERGEABLEDATA1`. None when it
/// is damaged or no table. At most 10,000 cells; time is linear in them and the size of `data`.
std::optional<std::string> appleNoteTable(
    std::span<const std::uint8_t> data, AppleNoteReferences& references);

}  // namespace tesserine
