#pragma once

#include "base/Instant.h"
#include "base/Uuid.h"
#include "search/IndexDocument.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What a search answers. Texts called "highlighted" and snippets hold `marker::open` and
/// `marker::close` around what matched.
namespace tesserine {

/// A file of a result that matched itself.
struct AttachmentMatch {
    Uuid id;
    std::string filename;
    std::string mimeType;
    std::string snippet;
    std::string highlightedFilename;
    double score = 0;  ///< lower is better
};

/// One note or task that was found.
struct SearchResult {
    Uuid id;
    SearchKind kind = SearchKind::note;
    std::string title;
    std::string notebook;
    std::vector<std::string> tags;
    std::optional<Instant> createdAt;
    std::optional<Instant> updatedAt;
    bool hasAttachment = false;
    /// From the body, or from where else something matched.
    std::string snippet;
    double score = 0;  ///< lower is better
    std::string highlightedTitle;
    std::optional<double> latitude;
    std::optional<double> longitude;
    std::string highlightedTags;  ///< joined by spaces: no way to tell the names apart
    std::string highlightedNotebook;
    std::string highlightedAttachments;  ///< the words around the first match
    bool isTrashed = false;
    bool isFavorite = false;
    std::vector<AttachmentMatch> attachments{};  ///< best first
};

/// A word that was searched for as another one.
struct SearchCorrection {
    std::string typed;
    std::string suggestion;
};

/// A word or filter that had to go for anything to be found.
struct SearchRelaxation {
    std::string droppedTerm;       ///< as it was typed
    std::int64_t resultCount = 0;  ///< counted no further than the limit
};

struct SearchResponse {
    std::vector<SearchResult> results{};
    /// The results are those of the corrected words.
    bool showingCloseMatches = false;
    std::vector<SearchCorrection> corrections{};
    /// The results lack the dropped term; without one, they have at least one of the words.
    bool matchedSomeTermsOnly = false;
    /// With results: what was dropped for them. Without: the filter that hides some.
    std::optional<SearchRelaxation> relaxation{};
    double elapsed = 0;  ///< seconds

    /// The words were found within other words only.
    bool matchedPartsOfWords = false;
    /// Sentences on what was not understood or was left out.
    std::vector<std::string> hints{};
};

}  // namespace tesserine
