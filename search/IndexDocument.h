#pragma once

#include "base/Instant.h"
#include "base/Uuid.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// What a search looks for and what a document of the index is.
enum class SearchKind { note, task };

/// "note" or "task", as the index stores it.
std::string_view nameOf(SearchKind kind);

/// One file of a document.
struct IndexAttachment {
    Uuid id;
    std::string filename;
    std::string mimeType;
    std::string text;  ///< extracted or recognised; empty when there is none
};

/// One note or task as the index takes it.
struct IndexDocument {
    Uuid id;
    SearchKind kind = SearchKind::note;
    std::string title;
    std::string body;  ///< plain text
    std::vector<std::string> tags;
    std::string notebook;                      ///< its own name; empty when there is none
    std::string attachmentText;                ///< the texts of all attachments as one
    std::vector<std::string> attachmentTypes;  ///< words such as "pdf", without spaces
    std::optional<Instant> createdAt;
    std::optional<Instant> updatedAt;
    bool hasAttachment = false;
    bool isTrashed = false;
    std::optional<double> latitude;
    std::optional<double> longitude;
    bool favorite = false;
    std::optional<Instant> favoritedAt;
    std::vector<IndexAttachment> attachments;
};

/// Longer texts are cut: a row that SQLite refuses would be a document nobody finds.
inline constexpr std::size_t maximumIndexedBytes = 20'000'000;
/// Whether every text is valid UTF-8 without U+0000 and not too long.
bool isFit(const IndexDocument& document);
/// The document with such texts.
IndexDocument fitted(IndexDocument document);

/// What a document's signature is made of.
struct DocumentState {
    std::optional<Instant> updatedAt;
    std::size_t attachmentCount = 0;
    std::size_t attachmentsWithText = 0;
    bool isTrashed = false;
};

DocumentState stateOf(const IndexDocument& document);

/// Four integers joined by "|": the update in whole seconds since 1970, the attachments, those with
/// text, and 1 in the trash. A row of the index with another signature is out of date.
std::string signature(const DocumentState& state);

}  // namespace tesserine
