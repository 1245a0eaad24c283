#include "search/IndexMeta.h"

#include "search/IndexSchema.h"

#include <charconv>
#include <string_view>

namespace tesserine {
namespace {

constexpr const char* schemaKey = "schema";
constexpr const char* lastRepairKey = "last_repair";
constexpr const char* lastFullRebuildKey = "last_full_rebuild";
constexpr const char* rebuildStartedKey = "rebuild_started";

std::optional<std::int64_t> integerIn(std::string_view text) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole ? std::optional(number) : std::nullopt;
}

}  // namespace

/// Stored as "<history ID> <number>".
std::optional<HistoryMark> IndexMeta::mark() const {
    const std::string text = index_.meta(indexschema::historyKey).value_or("");
    const std::size_t space = text.find(' ');
    if (space == std::string::npos) return std::nullopt;
    const auto number = integerIn(std::string_view(text).substr(space + 1));
    if (!number) return std::nullopt;
    return HistoryMark{text.substr(0, space), *number};
}

void IndexMeta::setMark(const HistoryMark& mark) const {
    index_.setMeta(indexschema::historyKey, mark.historyID + " " + std::to_string(mark.number));
}

std::optional<std::int64_t> IndexMeta::schemaVersion() const {
    return integerIn(index_.meta(schemaKey).value_or(""));
}

std::optional<Instant> IndexMeta::lastRepair() const { return instant(lastRepairKey); }

std::optional<Instant> IndexMeta::lastFullRebuild() const { return instant(lastFullRebuildKey); }

void IndexMeta::setLastRepair(Instant now) const { setInstant(lastRepairKey, now); }

bool IndexMeta::isRebuildUnfinished() const { return index_.meta(rebuildStartedKey).has_value(); }

void IndexMeta::beginRebuild(Instant now) const { setInstant(rebuildStartedKey, now); }

void IndexMeta::endRebuild(Instant now) const {
    setInstant(lastFullRebuildKey, now);
    index_.deleteMeta(rebuildStartedKey);
}

std::optional<Instant> IndexMeta::instant(const char* key) const {
    const auto seconds = integerIn(index_.meta(key).value_or(""));
    if (!seconds) return std::nullopt;
    return Instant::fromSeconds(static_cast<double>(*seconds));
}

void IndexMeta::setInstant(const char* key, Instant value) const {
    index_.setMeta(key, std::to_string(static_cast<std::int64_t>(value.seconds())));
}

}  // namespace tesserine
