#pragma once

#include "base/Instant.h"
#include "search/SearchIndex.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tesserine {

/// A place in a library's history.
struct HistoryMark {
    std::string historyID;  ///< of the history that the number counts in
    std::int64_t number = 0;

    friend bool operator==(const HistoryMark&, const HistoryMark&) = default;
};

/// What an index remembers about itself in its `meta` table. As safe as the index.
class IndexMeta {
public:
    explicit IndexMeta(SearchIndex& index) : index_(index) {}

    /// The last entry of the library's history that the index holds.
    std::optional<HistoryMark> mark() const;
    void setMark(const HistoryMark& mark) const;

    std::optional<std::int64_t> schemaVersion() const;
    std::optional<Instant> lastRepair() const;
    std::optional<Instant> lastFullRebuild() const;
    void setLastRepair(Instant now) const;

    /// Present from the beginning of a full rebuild to its end; found otherwise, it was
    /// interrupted.
    bool isRebuildUnfinished() const;
    void beginRebuild(Instant now) const;
    void endRebuild(Instant now) const;

private:
    std::optional<Instant> instant(const char* key) const;
    void setInstant(const char* key, Instant value) const;

    SearchIndex& index_;
};

}  // namespace tesserine
