#pragma once

#include "base/Instant.h"
#include "sync/SyncEngine.h"
#include "sync/WireRecords.h"

#include <optional>
#include <string>

namespace tesserine::app {

/// What sync is doing, as far as the window shows it.
struct SyncState {
    enum class Phase {
        off,        ///< no service is set up
        starting,   ///< not looked yet
        signedOut,  ///< `sentence` says why, unless the user wanted it so
        syncing,
        idle,     ///< in step, as of `lastSync`
        offline,  ///< the server is not reached; tried again at `until`
        waiting,  ///< something failed, see `sentence`; tried again at `until`
        asking,   ///< `question` has to be answered first; `sentence` puts it
    };
    Phase phase = Phase::off;
    std::string sentence{};
    std::optional<Instant> until{};  ///< none: when the user asks for it
    std::optional<SyncQuestion::Kind> question{};
    std::optional<Instant> lastSync{};
    std::optional<AccountInfo> account{};
};

}  // namespace tesserine::app
