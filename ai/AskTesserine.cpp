#include "ai/AskTesserine.h"

#include "ai/NoteRetriever.h"
#include "base/Calendar.h"
#include "base/Text.h"
#include "core/body/PlainText.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace tesserine {
namespace {

constexpr std::int64_t longestAnswer = 1'200;  // tokens
constexpr std::size_t longestExcerpt = 160;    // characters
constexpr std::string_view separator = " · ";
constexpr std::string_view attachmentRemark = " · from an attachment";

bool isFromAttachment(const RetrievedChunk& passage) {
    return passage.origin == RetrievedChunk::Origin::attachmentText;
}

/// "[2] Plan · Work · travel · updated 2026-03-01".
std::string headline(int index, const RetrievedChunk& passage, const Calendar& calendar) {
    std::string line = "[" + std::to_string(index) + "] " + passage.noteTitle;
    for (const std::string& fact : {passage.notebook, text::joined(passage.tags, ", ")}) {
        if (!fact.empty()) line.append(separator).append(text::collapsed(fact));
    }
    if (passage.updatedAt) {
        constexpr std::size_t dayLength = 10;
        const std::string day = calendar.local(*passage.updatedAt).iso().substr(0, dayLength);
        line.append(separator).append("updated ").append(day);
    }
    if (isFromAttachment(passage)) line += attachmentRemark;
    return line;
}

std::vector<NoteCitation> citationsOf(std::span<const RetrievedChunk> passages) {
    std::vector<NoteCitation> citations;
    for (const RetrievedChunk& passage : passages) {
        citations.push_back(
            {.index = static_cast<int>(citations.size()) + 1,
             .noteID = passage.noteID,
             .title = passage.noteTitle,
             .excerpt = PlainText::snippet(passage.text, longestExcerpt),
             .updatedAt = passage.updatedAt,
             .notebook = passage.notebook,
             .fromAttachment = isFromAttachment(passage)});
    }
    return citations;
}

/// The lines of a passage, set in from the margin: only we begin a line with "[1]" or "QUESTION:".
std::string indented(std::string_view passage) {
    constexpr std::string_view margin = "    ";
    std::string lines;
    while (!passage.empty()) {
        const std::size_t end = std::min(passage.find('\n'), passage.size());
        lines.append(margin).append(passage.substr(0, end)).append("\n");
        passage.remove_prefix(std::min(end + 1, passage.size()));
    }
    return lines;
}

}  // namespace

std::vector<std::string> titlesOf(const std::vector<NoteCitation>& citations) {
    std::vector<std::string> titles;
    for (const NoteCitation& citation : citations) {
        const bool isKnown = std::ranges::find(titles, citation.title) != titles.end();
        if (!isKnown) titles.push_back(citation.title);
    }
    return titles;
}

std::string sourcesText(std::span<const RetrievedChunk> passages, const Calendar& calendar) {
    std::string text;
    int index = 0;
    for (const RetrievedChunk& passage : passages) {
        text += headline(++index, passage, calendar) + "\n" + indented(passage.text) + "\n";
    }
    return text;
}

PreparedQuestion AskTesserine::prepare(
    std::string_view question, const Options& options, NoteRetriever& retriever) const {
    std::vector<RetrievedChunk> passages;
    if (options.useNotes) passages = retriever.retrieve(question);
    return prepare(question, options, passages);
}

PreparedQuestion AskTesserine::prepare(
    std::string_view question,
    const Options& options,
    std::span<const RetrievedChunk> passages) const {
    const bool searchesWeb = options.searchWeb && settings_.allowWebSearch;
    const bool isFromWebAlone = searchesWeb && passages.empty();
    const std::string sources = sourcesText(passages, calendar_);
    std::string message =
        isFromWebAlone ? std::string(question) : prompt::questionMessage(question, sources);
    return {
        .request =
            {.instructions = std::string(isFromWebAlone ? prompt::web : prompt::library),
             .messages = {{AIMessage::Role::user, std::move(message)}},
             .maxOutputTokens = longestAnswer,
             .enableWebSearch = searchesWeb,
             .model = settings_.model},
        .citations = citationsOf(passages),
        .foundNothingLocally = passages.empty(),
        .contextCharactersSent = text::characterCount(sources)};
}

AIRequest AskTesserine::prepareAction(
    NoteAction action, std::string_view noteText, std::string_view question) const {
    return {
        .instructions = std::string(prompt::note),
        .messages = {{AIMessage::Role::user, prompt::actionMessage(action, noteText, question)}},
        .maxOutputTokens = maxOutputTokens(action),
        .model = settings_.model};
}

AskResult AskTesserine::result(const PreparedQuestion& question, AIResponse response) {
    return {
        .answer = std::move(response.text),
        .noteCitations = question.citations,
        .webCitations = std::move(response.webCitations),
        .usedWebSearch = question.request.enableWebSearch,
        .foundNothingLocally = question.foundNothingLocally,
        .model = std::move(response.model),
        .contextCharactersSent = question.contextCharactersSent};
}

std::vector<CitationMark> citationMarks(std::string_view answer, std::size_t count) {
    std::vector<CitationMark> marks;
    for (std::size_t open = answer.find('['); open != std::string_view::npos;
         open = answer.find('[', open + 1)) {
        const char* const begin = answer.data() + open + 1;
        const char* const end = answer.data() + answer.size();
        int index = 0;
        const auto [stopped, error] = std::from_chars(begin, end, index);
        const bool isNumber = error == std::errc() && stopped != end && *stopped == ']';
        if (!isNumber || index < 1 || static_cast<std::size_t>(index) > count) continue;
        const auto length = static_cast<std::size_t>(stopped - answer.data()) + 1 - open;
        marks.push_back({.start = open, .length = length, .index = index});
    }
    return marks;
}

}  // namespace tesserine
