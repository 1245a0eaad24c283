#pragma once

#include "search/IndexDocument.h"
#include "search/SearchStatement.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The conditions a search may set on documents, each with its own bindings.
namespace tesserine::filter {

/// `text` with the wildcards of LIKE made harmless.
std::string likeLiteral(std::string_view text);

BoundSQL matching(const std::string& expression);
BoundSQL notMatching(const std::string& expression);
/// Documents one of whose attachments matches `expression`, which names columns of `afts`.
BoundSQL attachmentMatching(const std::string& expression);
/// Documents whose stored text holds `part`, wherever in a word; reads every text there is.
BoundSQL textContaining(std::string_view part);

BoundSQL isKind(SearchKind kind);
BoundSQL isTrashed(bool isTrue);
BoundSQL isFavorite(bool isTrue);
BoundSQL hasAttachment();
BoundSQL hasAttachmentText();
BoundSQL hasLocation();

/// From `begin` on and before `end`; either may be absent, not both.
struct TimeSpan {
    std::optional<Instant> begin;
    std::optional<Instant> end;
};
BoundSQL created(const TimeSpan& span);
BoundSQL updatedSince(Instant begin);
BoundSQL updated(const TimeSpan& span);

/// Patterns of LIKE over folded text. A notebook's pattern is its whole name, a tag's stands
/// between two separators.
BoundSQL inNotebook(const std::string& pattern);
BoundSQL carriesTag(const std::string& pattern);
BoundSQL carriesNoTag();
BoundSQL hasType(std::string_view type);

/// Degrees; `west` > `east` is a box across the 180th meridian.
struct MapBox {
    double south = 0;
    double north = 0;
    double west = 0;
    double east = 0;
};
BoundSQL insideBox(const MapBox& box);

/// Documents whose uid is one of `uids`, however many.
BoundSQL isOneOf(const std::vector<std::string>& uids);

BoundSQL negation(BoundSQL condition);
/// Of one or more conditions.
BoundSQL allOf(const std::vector<BoundSQL>& conditions);
BoundSQL anyOf(const std::vector<BoundSQL>& conditions);

}  // namespace tesserine::filter
