#include "search/SearchFilters.h"

#include "base/JSON.h"
#include "search/SearchIndex.h"

#include <array>
#include <cassert>
#include <span>

namespace tesserine::filter {

namespace {

BoundSQL within(const std::string& column, const TimeSpan& span) {
    assert((span.begin || span.end) && "a span has an end somewhere");
    BoundSQL condition;
    if (span.begin) {
        condition.sql = column + " >= ?";
        condition.bindings.emplace_back(span.begin->seconds());
    }
    if (span.end) {
        condition.sql += (span.begin ? " AND " : "") + column + " < ?";
        condition.bindings.emplace_back(span.end->seconds());
    }
    if (condition.bindings.size() == 2) condition.sql = "(" + condition.sql + ")";
    return condition;
}

/// SQLite takes no deeper expression than 1,000, and a chain is as deep as it is long.
constexpr std::size_t longestChain = 200;

BoundSQL joined(std::span<const BoundSQL> conditions, const std::string& word) {
    assert(!conditions.empty() && "there is something to join");
    if (conditions.size() == 1) return conditions.front();
    if (conditions.size() > longestChain) {
        const std::size_t half = conditions.size() / 2;
        const std::array halves{
            joined(conditions.first(half), word), joined(conditions.subspan(half), word)};
        return joined(halves, word);
    }
    BoundSQL all{"("};
    for (const BoundSQL& condition : conditions) {
        if (all.sql.size() > 1) all.sql += word;
        all.sql += condition.sql;
        all.bindings.insert(
            all.bindings.end(), condition.bindings.begin(), condition.bindings.end());
    }
    all.sql += ")";
    return all;
}

/// The longitudes of a box that lies across the 180th meridian.
BoundSQL acrossMeridian(const MapBox& box) {
    if (box.west < -180) {
        return {
            "(docs.longitude BETWEEN -180 AND ? OR docs.longitude BETWEEN ? AND 180)",
            {box.east, box.west + 360}};
    }
    return {
        "(docs.longitude BETWEEN ? AND 180 OR docs.longitude BETWEEN -180 AND ?)",
        {box.west, box.east > 180 ? box.east - 360 : box.east}};
}

BoundSQL longitudes(const MapBox& box) {
    if (box.west < -180 || box.east > 180 || box.west > box.east) return acrossMeridian(box);
    return {"docs.longitude BETWEEN ? AND ?", {box.west, box.east}};
}

}  // namespace

std::string likeLiteral(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\' || c == '%' || c == '_') escaped += '\\';
        escaped += c;
    }
    return escaped;
}

BoundSQL matching(const std::string& expression) {
    return {"docs.rowid IN (SELECT rowid FROM fts WHERE fts MATCH ?)", {expression}};
}

BoundSQL notMatching(const std::string& expression) {
    return {"docs.rowid NOT IN (SELECT rowid FROM fts WHERE fts MATCH ?)", {expression}};
}

BoundSQL attachmentMatching(const std::string& expression) {
    return {
        "docs.uid IN (SELECT atts.note_uid FROM afts JOIN atts ON atts.rowid = afts.rowid"
        " WHERE afts MATCH ?)",
        {expression}};
}

BoundSQL textContaining(std::string_view part) {
    const std::string pattern = "%" + likeLiteral(part) + "%";
    return {
        "docs.rowid IN (SELECT rowid FROM fts WHERE title LIKE ? ESCAPE '\\'"
        " OR body LIKE ? ESCAPE '\\' OR attachments LIKE ? ESCAPE '\\')",
        {pattern, pattern, pattern}};
}

BoundSQL isKind(SearchKind kind) { return {"docs.kind = ?", {std::string(nameOf(kind))}}; }

BoundSQL isTrashed(bool isTrue) { return {isTrue ? "docs.trashed = 1" : "docs.trashed = 0"}; }

BoundSQL isFavorite(bool isTrue) { return {isTrue ? "docs.favorite = 1" : "docs.favorite = 0"}; }

BoundSQL hasAttachment() { return {"docs.has_attach = 1"}; }

BoundSQL hasAttachmentText() { return {"docs.att_text > 0"}; }

BoundSQL hasLocation() { return {"docs.latitude IS NOT NULL AND docs.longitude IS NOT NULL"}; }

BoundSQL created(const TimeSpan& span) { return within("docs.created", span); }

BoundSQL updatedSince(Instant begin) { return updated({.begin = begin}); }

BoundSQL updated(const TimeSpan& span) { return within("docs.updated", span); }

BoundSQL inNotebook(const std::string& pattern) {
    return {"docs.notebook_fold LIKE ? ESCAPE '\\'", {pattern}};
}

BoundSQL carriesTag(const std::string& pattern) {
    const std::string separator(1, tagSeparator);
    return {
        "('" + separator + "' || docs.tags_fold || '" + separator + "') LIKE ? ESCAPE '\\'",
        {"%" + separator + pattern + separator + "%"}};
}

BoundSQL carriesNoTag() {
    // Between the two separators of a document without tags there is nothing.
    return carriesTag("");
}

BoundSQL hasType(std::string_view type) {
    return {"docs.types_fold LIKE ? ESCAPE '\\'", {"%" + likeLiteral(type) + "%"}};
}

BoundSQL insideBox(const MapBox& box) {
    return allOf(
        {hasLocation(),
         {"docs.latitude BETWEEN ? AND ?", {box.south, box.north}},
         longitudes(box)});
}

BoundSQL isOneOf(const std::vector<std::string>& uids) {
    boost::json::array array;
    for (const std::string& uid : uids) {
        array.emplace_back(uid);
    }
    return {"docs.uid IN (SELECT value FROM json_each(?))", {json::write(array)}};
}

BoundSQL negation(BoundSQL condition) {
    return {"NOT (" + condition.sql + ")", std::move(condition.bindings)};
}

BoundSQL allOf(const std::vector<BoundSQL>& conditions) { return joined(conditions, " AND "); }

BoundSQL anyOf(const std::vector<BoundSQL>& conditions) { return joined(conditions, " OR "); }

}  // namespace tesserine::filter
