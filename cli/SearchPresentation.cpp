#include "cli/SearchPresentation.h"

#include "cli/DisplayText.h"
#include "cli/Names.h"
#include "cli/ObjectJSON.h"
#include "cli/Presentation.h"
#include "cli/Session.h"
#include "search/MarkedText.h"

namespace tesserine::cli {

namespace {

boost::json::object matchJSON(const AttachmentMatch& match) {
    return {
        {"id", match.id.text()},
        {"filename", match.filename},
        {"mimeType", match.mimeType},
        {"snippet", match.snippet},
        {"highlightedFilename", match.highlightedFilename},
        {"score", match.score}};
}

boost::json::value numberOrNull(const std::optional<double>& number) {
    return number ? boost::json::value(*number) : boost::json::value(nullptr);
}

boost::json::object resultJSON(const SearchResult& result) {
    boost::json::array attachments;
    for (const AttachmentMatch& match : result.attachments) {
        attachments.push_back(matchJSON(match));
    }
    return {
        {"id", result.id.text()},
        {"kind", nameOf(result.kind)},
        {"title", result.title},
        {"notebook", result.notebook},
        {"tags", asJSON(result.tags)},
        {"createdAt", asJSON(result.createdAt)},
        {"updatedAt", asJSON(result.updatedAt)},
        {"hasAttachment", result.hasAttachment},
        {"snippet", result.snippet},
        {"score", result.score},
        {"highlightedTitle", result.highlightedTitle},
        {"latitude", numberOrNull(result.latitude)},
        {"longitude", numberOrNull(result.longitude)},
        {"highlightedTags", result.highlightedTags},
        {"highlightedNotebook", result.highlightedNotebook},
        {"highlightedAttachments", result.highlightedAttachments},
        {"isTrashed", result.isTrashed},
        {"isFavorite", result.isFavorite},
        {"attachments", std::move(attachments)}};
}

/// "“invoice” and “report”"
std::string quoted(const std::vector<std::string>& words) {
    std::string list;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i > 0) list += i + 1 == words.size() ? " and " : ", ";
        list += inQuotes(words[i]);
    }
    return list;
}

/// Says what was changed about the search, when it was.
void remarkOnStages(Session& session, const SearchResponse& response) {
    for (const std::string& hint : response.hints) {
        session.remark(hint);
    }
    if (response.showingCloseMatches) {
        std::vector<std::string> typed;
        std::vector<std::string> suggestions;
        for (const SearchCorrection& correction : response.corrections) {
            typed.push_back(correction.typed);
            suggestions.push_back(correction.suggestion);
        }
        session.remark(
            "Showing results for " + quoted(suggestions) + ". Search instead for " + quoted(typed)
            + " with --as-typed.");
    }
    if (response.matchedPartsOfWords) {
        session.remark("Nothing holds these words; these hold them within other words.");
    }
    if (response.matchedSomeTermsOnly) {
        session.remark(
            response.relaxation ? "Nothing holds all of these words; these are without "
                                      + inQuotes(response.relaxation->droppedTerm) + "."
                                : "Nothing holds all of these words; these hold some of them.");
    }
}

void remarkOnNothing(Session& session, const SearchResponse& response) {
    session.remark("Nothing was found.");
    if (!response.relaxation) return;
    const auto count = static_cast<std::size_t>(response.relaxation->resultCount);
    session.remark(
        "Without " + inQuotes(response.relaxation->droppedTerm) + " there "
        + (count == 1 ? "is " : "are ") + counted(count, "result") + ".");
}

/// What stands behind a title: the notebook, that it is a task, that it is in the trash.
std::string place(const SearchResult& result) {
    std::string text = result.kind == SearchKind::task ? "task" : result.notebook;
    if (result.isTrashed) text += text.empty() ? "in the trash" : ", in the trash";
    return text.empty() ? "" : "  " + oneLine(text);
}

void showResult(Session& session, const SearchResult& result) {
    Output& output = session.output();
    const bool hasTitle = !result.title.empty();
    output.line(
        output.styled(shortID(result.id), Style::faint) + "  "
        + (hasTitle ? markedLine(session, result.highlightedTitle) : "Untitled")
        + output.styled(place(result), Style::accent));
    if (!result.snippet.empty()) output.line("    " + markedLine(session, result.snippet));
    for (const AttachmentMatch& match : result.attachments) {
        const std::string snippet =
            match.snippet.empty() ? "" : ": " + markedLine(session, match.snippet);
        output.line("    • " + markedLine(session, match.highlightedFilename) + snippet);
    }
}

}  // namespace

boost::json::object responseJSON(const SearchResponse& response, std::string_view explanation) {
    boost::json::array results;
    for (const SearchResult& result : response.results) {
        results.push_back(resultJSON(result));
    }
    boost::json::array corrections;
    for (const SearchCorrection& correction : response.corrections) {
        corrections.push_back(boost::json::object{
            {"typed", correction.typed}, {"suggestion", correction.suggestion}});
    }
    boost::json::value relaxation = nullptr;
    if (response.relaxation) {
        relaxation = boost::json::object{
            {"droppedTerm", response.relaxation->droppedTerm},
            {"resultCount", response.relaxation->resultCount}};
    }
    std::string marked;
    marked::forEachPiece(explanation, [&](std::string_view piece, bool isMarked) {
        const std::string_view stars = isMarked ? "**" : "";
        marked.append(stars).append(piece).append(stars);
    });
    return {
        {"results", std::move(results)},
        {"showingCloseMatches", response.showingCloseMatches},
        {"corrections", std::move(corrections)},
        {"matchedSomeTermsOnly", response.matchedSomeTermsOnly},
        {"relaxation", std::move(relaxation)},
        {"elapsed", response.elapsed},
        {"matchedPartsOfWords", response.matchedPartsOfWords},
        {"hints", asJSON(response.hints)},
        {"explanation", marked}};
}

boost::json::array suggestionsJSON(const std::vector<SearchSuggestion>& suggestions) {
    boost::json::array array;
    for (const SearchSuggestion& suggestion : suggestions) {
        array.push_back(boost::json::object{
            {"kind", nameOf(suggestion.kind)},
            {"title", suggestion.title},
            {"replacement", suggestion.replacement},
            {"detail", suggestion.detail}});
    }
    return array;
}

void showResponse(Session& session, const SearchResponse& response) {
    remarkOnStages(session, response);
    if (response.results.empty()) remarkOnNothing(session, response);
    for (const SearchResult& result : response.results) {
        showResult(session, result);
    }
}

void showSuggestions(Session& session, const std::vector<SearchSuggestion>& suggestions) {
    Table table{
        .columns = {
            {.title = "KIND", .style = Style::faint},
            {.title = "SUGGESTION", .style = Style::strong, .mayShrink = true},
            {.title = "", .mayShrink = true}}};
    for (const SearchSuggestion& suggestion : suggestions) {
        table.rows.push_back(
            {std::string(nameOf(suggestion.kind)), suggestion.title, suggestion.detail});
    }
    session.output().table(table);
}

std::string markedLine(Session& session, std::string_view text) {
    std::string line;
    marked::forEachPiece(text, [&](std::string_view piece, bool isMarked) {
        const std::string shown = oneLine(piece);
        line += isMarked ? session.output().styled(shown, Style::strong) : shown;
    });
    return line;
}

}  // namespace tesserine::cli
