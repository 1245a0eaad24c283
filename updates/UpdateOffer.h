#pragma once

#include "updates/AppVersion.h"
#include "updates/UpdateFeed.h"

#include <optional>
#include <string>

namespace tesserine {

/// What a release is compared with.
struct UpdateSituation {
    VersionStamp current;  ///< of this program
    /// Of the operating system; none where the feed's system versions mean another system.
    std::optional<AppVersion> systemVersion{};
    /// The text of the version that the user chose to skip.
    std::optional<std::string> skipped{};
};

/// A release that may take the place of this program.
struct UpdateOffer {
    Release release;
    /// This program is older than the oldest that is still supported: the offer cannot be skipped.
    bool isRequired = false;
};

/// The offer that a release makes; none when it is not newer, needs a newer system, or was skipped.
std::optional<UpdateOffer> offerOf(Release release, const UpdateSituation& situation);

}  // namespace tesserine
