#pragma once

#include "base/Instant.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tesserine {

/// How well the index covers the library, counted at one moment.
struct IndexCoverage {
    // In the library; what is searched only.
    std::int64_t notes = 0;
    std::int64_t tasks = 0;
    std::int64_t attachments = 0;
    std::int64_t attachmentsWithText = 0;
    // In the index.
    std::int64_t indexedNotes = 0;
    std::int64_t indexedTasks = 0;
    std::int64_t indexedAttachments = 0;
    std::int64_t indexedAttachmentsWithText = 0;

    std::int64_t missing = 0;   ///< documents of the library that the index does not hold
    std::int64_t stale = 0;     ///< those it holds in an older state
    std::int64_t orphaned = 0;  ///< documents of the index that the library no longer has
    std::optional<std::int64_t> schemaVersion;
    std::optional<Instant> lastRepair;
    std::optional<Instant> lastFullRebuild;
    bool interruptedRebuild = false;

    bool isHealthy() const;
    /// One line: what is indexed of what there is, then what is wrong. Numbers as `locale` (an ICU
    /// or POSIX name) writes them.
    std::string summary(const std::string& locale) const;
};

}  // namespace tesserine
