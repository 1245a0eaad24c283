#include "search/SearchFilters.h"
#include "search/SearchIndex.h"
#include "search/SearchRows.h"
#include "tools/inspect/Operations.h"
#include "tools/inspect/ScratchFolder.h"

#include <optional>
#include <string>
#include <vector>

namespace tesserine::inspect {
namespace {

using boost::json::object;
using boost::json::value;

double number(const value& found, std::string_view key) {
    if (found.is_double()) return found.get_double();
    if (found.is_int64()) return static_cast<double>(found.get_int64());
    throw InputError("“" + std::string(key) + "” is not a number");
}

std::optional<Instant> secondsIn(const object& input, std::string_view key) {
    const value* const found = input.if_contains({key.data(), key.size()});
    if (found == nullptr || found->is_null()) return std::nullopt;
    return Instant::fromSeconds(number(*found, key));
}

bool isTrue(const object& input, std::string_view key) {
    const value* const found = input.if_contains({key.data(), key.size()});
    return found != nullptr && found->is_bool() && found->get_bool();
}

IndexDocument documentOf(const object& input) {
    const auto id = Uuid::parse(text(input, "id"));
    if (!id) throw InputError("“id” is not a UUID");
    return {
        .id = *id,
        .title = optionalText(input, "title").value_or(""),
        .body = optionalText(input, "body").value_or(""),
        .tags = texts(input, "tags"),
        .notebook = optionalText(input, "notebook").value_or(""),
        .attachmentText = optionalText(input, "attachmentText").value_or(""),
        .createdAt = secondsIn(input, "createdAt"),
        .updatedAt = secondsIn(input, "updatedAt"),
        .isTrashed = isTrue(input, "isTrashed"),
        .favorite = isTrue(input, "favorite"),
        .favoritedAt = secondsIn(input, "favoritedAt")};
}

SearchSort sortOf(const std::string& name) {
    if (name == "relevance") return SearchSort::relevance;
    if (name == "newest") return SearchSort::newest;
    if (name == "oldest") return SearchSort::oldest;
    throw InputError("“sort” is none of relevance, newest and oldest");
}

Search searchOf(const object& input) {
    Search search{
        .match = optionalText(input, "match"),
        .strict = optionalText(input, "strict"),
        .negated = texts(input, "negated"),
        .sort = sortOf(optionalText(input, "sort").value_or("relevance")),
        .limit = integer(input, "limit", 50)};
    if (!isTrue(input, "include_trash")) search.filters.push_back(filter::isTrashed(false));
    if (isTrue(input, "favorites")) search.filters.push_back(filter::isFavorite(true));
    return search;
}

/// `search.run`: the rows of one search over the documents given.
value run(const object& input) {
    const ScratchFolder folder;
    SearchIndex index(folder.path() / SearchIndex::fileName);
    index.batch([&] {
        for (const value& document : elements(input, "docs")) {
            if (!document.is_object()) throw InputError("“docs” holds no objects");
            index.upsert(documentOf(document.get_object()));
        }
    });
    const Instant now = Instant::fromSeconds(number(member(input, "now"), "now"));
    const Search search = searchOf(input);
    const auto results =
        index.perform([&](SQLiteDatabase& /*open*/) { return readResults(index, search, now); });

    object output{{"uids", boost::json::array()}, {"scores", boost::json::array()}};
    for (const SearchResult& result : results) {
        output["uids"].as_array().emplace_back(result.id.text());
        output["scores"].as_array().emplace_back(result.score);
    }
    output["firstTitle"] = nullptr;
    output["firstSnippet"] = nullptr;
    if (!results.empty()) {
        output["firstTitle"] = results.front().highlightedTitle;
        output["firstSnippet"] = results.front().snippet;
    }
    return output;
}

}  // namespace

void addSearchOperations(Operations& operations) { operations.add("search.run", run); }

}  // namespace tesserine::inspect
