#pragma once

#include "app/commands/FuzzyMatch.h"
#include "base/Uuid.h"

#include <functional>
#include <vector>

namespace tesserine {
class StoreContext;
}

namespace tesserine::app {

/// A note whose title fits what was typed.
struct NoteTitle {
    Uuid id{};
    QString title{};
    QString notebook{};  ///< empty: in none
    FuzzyMatch match{};
};

/// The notes that fit `typed` best, at most `limit`; among equals those changed last first.
/// Templates and notes in the trash are left out, and while something is typed notes without a
/// title. Reads every title, so call it on a thread of its own; it gives up when `isStale` says so.
std::vector<NoteTitle> notesByTitle(
    StoreContext& context,
    const QString& typed,
    std::size_t limit,
    const std::function<bool()>& isStale);

}  // namespace tesserine::app
