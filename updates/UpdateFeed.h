#pragma once

#include "base/Instant.h"
#include "base/WebAddress.h"
#include "updates/AppVersion.h"
#include "updates/UpdateHosts.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tesserine {

/// A release as the update feed announces it, every value checked.
struct Release {
    struct Download {
        WebAddress address;
        std::string sha256;       ///< of the file; 64 hexadecimal digits, lower case
        std::int64_t length = 0;  ///< bytes, above zero
    };

    VersionStamp stamp;
    std::optional<AppVersion> minimumSystemVersion;
    /// An older app than this has to be updated.
    std::optional<AppVersion> minimumSupportedVersion;
    std::optional<Instant> publishedAt;
    std::string releaseNotes;
    std::optional<WebAddress> releaseNotesAddress;
    std::optional<Download> download;
    std::optional<WebAddress> storeAddress;
};

/// The update feed "appcast.json". Its format: docs/formats/update-feed.md.
namespace feed {

/// A longer feed is not read.
inline constexpr std::size_t largestSize = std::size_t{1} << 20;

/// The release for this platform, from the feed's text. Keys it does not know are ignored. Throws
/// `UpdateError` (malformed, insecureTransport, untrustedHost).
Release read(std::string_view text, const UpdateHosts& hosts);

}  // namespace feed

}  // namespace tesserine
