#pragma once

#include <cstddef>
#include <cstdint>

/// What the library takes at most, besides what `core/body/Limits.h` says of bodies. Beyond each
/// the services refuse with a sentence.
namespace tesserine::limits {

inline constexpr std::size_t titleCharacters = 10'000;
inline constexpr std::uint64_t attachmentBytes = 100'000'000;
inline constexpr std::size_t attachmentsPerNote = 1'000;
inline constexpr std::int64_t retentionDays = 36'499;  ///< of the trash

}  // namespace tesserine::limits
