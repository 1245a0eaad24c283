#include "search/IndexDocument.h"

#include "base/Text.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace tesserine {
namespace {

std::int64_t wholeSeconds(const std::optional<Instant>& instant) {
    constexpr double bound = 9.0e18;  // far beyond any date, and still a 64-bit integer
    if (!instant || std::isnan(instant->seconds())) return 0;
    return static_cast<std::int64_t>(std::clamp(instant->seconds(), -bound, bound));
}

/// Calls `visit` with each text of the document.
template <class Document, class Visit>
void forEachText(Document& document, Visit visit) {
    visit(document.title);
    visit(document.body);
    visit(document.notebook);
    visit(document.attachmentText);
    for (auto& tag : document.tags) {
        visit(tag);
    }
    for (auto& type : document.attachmentTypes) {
        visit(type);
    }
    for (auto& attachment : document.attachments) {
        visit(attachment.filename);
        visit(attachment.mimeType);
        visit(attachment.text);
    }
}

bool isFitText(const std::string& text) {
    return text.size() <= maximumIndexedBytes && text::isClean(text);
}

/// At most so many bytes, and no half of a character at the end.
void cut(std::string& text) {
    if (text.size() <= maximumIndexedBytes) return;
    std::size_t end = maximumIndexedBytes;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
        --end;
    }
    text.resize(end);
}

}  // namespace

std::string_view nameOf(SearchKind kind) {
    switch (kind) {
    case SearchKind::note: return "note";
    case SearchKind::task: return "task";
    }
    return "note";
}

bool isFit(const IndexDocument& document) {
    bool isFit = true;
    forEachText(document, [&](const std::string& text) { isFit = isFit && isFitText(text); });
    return isFit;
}

IndexDocument fitted(IndexDocument document) {
    forEachText(document, [](std::string& text) {
        text = text::sanitized(std::move(text));
        cut(text);
    });
    return document;
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
