#pragma once

#include "core/tasks/QuickAddSentence.h"

#include <optional>

namespace tesserine::quickadd {

/// A time of day that a sentence names.
struct TimeHit {
    TimeOfDay components{};
    TextRange range{};
};

/// The time in a sentence: of the forms in their order, the first that stands in it, where it
/// stands first.
std::optional<TimeHit> findTime(const Sentence& sentence);

}  // namespace tesserine::quickadd
