#pragma once

#include "base/Instant.h"
#include "sync/WireRecords.h"

#include <optional>
#include <string>

namespace tesserine {

/// Whether and where a note is shared, as it is shown.
struct NoteShare {
    bool isShared = false;
    std::optional<std::string> url{};  ///< known only when the link has just been made
    std::optional<Instant> createdAt{};

    static NoteShare of(const ShareLink& link) {
        return {.isShared = true, .url = link.url, .createdAt = link.createdAt};
    }
    static NoteShare of(const ShareStatus& status) {
        return {.isShared = status.shared, .createdAt = status.createdAt};
    }
};

/// A personal token just made; the only time its secret is shown.
struct NewAPIToken {
    std::string id;
    std::string label;
    std::string token;

    static NewAPIToken of(const APITokenCreated& created) {
        return {.id = created.id, .label = created.label, .token = created.token};
    }
};

/// One of the account's personal tokens, as it is listed.
struct APIToken {
    std::string id;
    std::string label;
    Instant createdAt{};
    std::optional<Instant> lastUsed{};

    static APIToken of(const APITokenInfo& info) {
        return {
            .id = info.id,
            .label = info.label,
            .createdAt = info.createdAt,
            .lastUsed = info.lastUsedAt};
    }
};

}  // namespace tesserine
