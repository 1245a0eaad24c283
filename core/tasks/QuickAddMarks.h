#pragma once

#include "core/tasks/QuickAddSentence.h"

#include <optional>
#include <string>
#include <vector>

/// What a sentence marks with a sign: `#project`, `@label`, `p1`.
namespace tesserine::quickadd {

/// A project or a label.
struct NameHit {
    std::string name;
    TextRange range{};
};

struct PriorityHit {
    TaskPriority priority = TaskPriority::p4;
    TextRange range{};
};

/// The first project.
std::optional<NameHit> findProject(const Sentence& sentence);
/// Every label, in order.
std::vector<NameHit> findLabels(const Sentence& sentence);
/// The first priority with a sign, such as "p1" or "!2"; without one the first digit from 1 to 4
/// that stands alone.
std::optional<PriorityHit> findPriority(const Sentence& sentence);

}  // namespace tesserine::quickadd
