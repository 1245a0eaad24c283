#pragma once

#include "ai/AIMessage.h"
#include "ai/AISettings.h"
#include "ai/NoteAction.h"
#include "ai/RetrievedChunk.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

class Calendar;
class NoteRetriever;

/// A request that is ready to be sent, and what is needed to make sense of its answer. Everything
/// that would leave the device stands in `request`.
struct PreparedQuestion {
    AIRequest request;
    std::vector<NoteCitation> citations;
    bool foundNothingLocally = false;
    /// Of the passages as they are laid out.
    std::size_t contextCharactersSent = 0;
};

/// What the interface shows.
struct AskResult {
    std::string answer;
    std::vector<NoteCitation> noteCitations;
    std::vector<WebCitation> webCitations;
    bool usedWebSearch = false;
    bool foundNothingLocally = false;
    std::string model;  ///< that answered
    std::size_t contextCharactersSent = 0;
};

/// Frames questions about the library and actions on one note. What is asked about comes as data,
/// and nothing is ever written by it.
class AskTesserine {
public:
    /// `calendar` tells the days of the sources; it outlives this.
    AskTesserine(AISettings settings, const Calendar& calendar)
        : settings_(std::move(settings)), calendar_(calendar) {}

    /// What the user chose for this question.
    struct Options {
        bool useNotes = true;
        bool searchWeb = false;  ///< counts only while the settings allow it
    };
    /// Looks for passages, unless the user does not want them, and frames the question with them.
    /// Throws what the retriever throws.
    PreparedQuestion prepare(
        std::string_view question, const Options& options, NoteRetriever& retriever) const;
    /// The same with passages that were already chosen.
    PreparedQuestion prepare(
        std::string_view question,
        const Options& options,
        std::span<const RetrievedChunk> passages) const;

    /// An action on the note whose plain text is `noteText`; `question` counts for `ask` only.
    AIRequest prepareAction(
        NoteAction action, std::string_view noteText, std::string_view question = {}) const;

    static AskResult result(const PreparedQuestion& question, AIResponse response);

private:
    AISettings settings_;
    const Calendar& calendar_;
};

/// The titles of the notes that something is sent of, each once.
std::vector<std::string> titlesOf(const std::vector<NoteCitation>& citations);

/// The passages as they are sent: each numbered, with where it is from, and its lines set in, so
/// that no text of a note can stand where the frame stands.
std::string sourcesText(std::span<const RetrievedChunk> passages, const Calendar& calendar);

/// A number in square brackets in an answer that means one of its citations.
struct CitationMark {
    std::size_t start = 0;   ///< of the opening bracket, in bytes
    std::size_t length = 0;  ///< with both brackets
    int index = 0;
};
/// The marks in an answer that has `count` citations. Numbers beyond them are plain text.
std::vector<CitationMark> citationMarks(std::string_view answer, std::size_t count);

}  // namespace tesserine
