#pragma once

#include "core/model/StoreObject.h"

#include <cstdint>
#include <string>

namespace tesserine {

/// What an import did, kept so that it can be read and undone.
class CDImportReport final : public StoreObject {
public:
    static constexpr EntityKind kind = EntityKind::importReport;
    using StoreObject::StoreObject;

    Attribute<Uuid> id{*this, "id"};
    Attribute<Instant> createdAt{*this, "createdAt"};
    Attribute<std::string> title{*this, "title"};
    /// The report as JSON.
    Attribute<Bytes> payload{*this, "payload", {.isExternal = true, .tier = Tier::large}};
};

/// What sync knows of one record.
class CDSyncState final : public StoreObject {
public:
    static constexpr EntityKind kind = EntityKind::syncState;
    using StoreObject::StoreObject;

    Attribute<Uuid> recordID{*this, "recordID", {.isIndexed = true}};
    Attribute<std::string> kindName{*this, "kind"};
    Attribute<std::int64_t> rev{*this, "rev", {.defaultValue = 0}};
    Attribute<std::int64_t> seq{*this, "seq", {.defaultValue = 0}};
    Attribute<bool> needsPush{*this, "needsPush", {.defaultValue = false, .isIndexed = true}};
    Attribute<bool> isTombstone{*this, "isTombstone", {.defaultValue = false}};
    Attribute<Instant> updatedAt{*this, "updatedAt"};
    Attribute<Instant> lastPushedAt{*this, "lastPushedAt"};
    Attribute<Bytes> lastPayload{*this, "lastPayload", {.isExternal = true, .tier = Tier::large}};
};

/// One entry of sync's own bookkeeping.
class CDSyncMeta final : public StoreObject {
public:
    static constexpr EntityKind kind = EntityKind::syncMeta;
    using StoreObject::StoreObject;

    Attribute<std::string> keyName{*this, "key", {.isIndexed = true}};
    Attribute<std::string> value{*this, "value"};
};

}  // namespace tesserine
