#pragma once

#include "app/look/Icon.h"
#include "app/state/SyncState.h"

#include <QString>

namespace tesserine {
class Calendar;
}

namespace tesserine::app {

/// How a state of sync is said.
struct SyncWords {
    QString title;     ///< two or three words
    QString detail{};  ///< a sentence or two; may be empty
    Ink ink = Ink::secondary;

    static SyncWords of(const SyncState& state, Instant now, const Calendar& calendar);
};

}  // namespace tesserine::app
