#include "updates/UpdateOffer.h"

#include <utility>

namespace tesserine {

std::optional<UpdateOffer> offerOf(Release release, const UpdateSituation& situation) {
    if (!release.stamp.isNewerThan(situation.current)) return std::nullopt;
    const bool needsNewerSystem = situation.systemVersion && release.minimumSystemVersion
                                  && *release.minimumSystemVersion > *situation.systemVersion;
    if (needsNewerSystem) return std::nullopt;

    const bool isRequired = release.minimumSupportedVersion
                            && situation.current.version < *release.minimumSupportedVersion;
    const bool isSkipped = situation.skipped == release.stamp.version.text;
    if (isSkipped && !isRequired) return std::nullopt;
    return UpdateOffer{.release = std::move(release), .isRequired = isRequired};
}

}  // namespace tesserine
