#include "search/IndexDocument.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace tesserine {
namespace {

std::int64_t wholeSeconds(const std::optional<Instant>& instant) {
    constexpr double bound = 9.0e18;  // far beyond any date, and still a 64-bit integer
    if (!instant || std::isnan(instant->seconds())) return 0;
    return static_cast<std::int64_t>(std::clamp(instant->seconds(), -bound, bound));
}

}  // namespace

std::string_view nameOf(SearchKind kind) {
    switch (kind) {
    case SearchKind::note: return "note";
    case SearchKind::task: return "task";
    }
    return "note";
}

DocumentState stateOf(const IndexDocument& document) {
    const auto withText = std::ranges::count_if(
        document.attachments, [](const auto& attachment) { return !attachment.text.empty(); });
    return {
        .updatedAt = document.updatedAt,
        .attachmentCount = document.attachments.size(),
        .attachmentsWithText = static_cast<std::size_t>(withText),
        .isTrashed = document.isTrashed,
    };
}

std::string signature(const DocumentState& state) {
    return std::to_string(wholeSeconds(state.updatedAt)) + "|"
           + std::to_string(state.attachmentCount) + "|" + std::to_string(state.attachmentsWithText)
           + "|" + (state.isTrashed ? "1" : "0");
}

}  // namespace tesserine
