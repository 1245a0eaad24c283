#pragma once

#include "core/tasks/QuickAddSentence.h"

#include <chrono>
#include <optional>

namespace tesserine::quickadd {

/// A day that a sentence names.
struct DateHit {
    std::chrono::sys_days date;
    TextRange range{};
    std::optional<TimeOfDay> impliedTime{};  ///< "tonight" names one
};

/// The date in a sentence typed on the day `today`: of the forms in their order, the first that
/// stands in it, where it stands first.
std::optional<DateHit> findDate(const Sentence& sentence, std::chrono::sys_days today);

}  // namespace tesserine::quickadd
