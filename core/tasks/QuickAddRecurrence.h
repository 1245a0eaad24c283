#pragma once

#include "core/tasks/QuickAddSentence.h"

#include <optional>

namespace tesserine::quickadd {

/// A repetition that a sentence names.
struct RecurrenceHit {
    RecurrenceRule rule;
    TextRange range{};
    TextRange cutOff{};  ///< weekdays behind it that do not fit the rule: no date either
};

/// The repetition in a sentence: "every …" where it stands first, else a word such as "daily".
std::optional<RecurrenceHit> findRecurrence(const Sentence& sentence);

}  // namespace tesserine::quickadd
