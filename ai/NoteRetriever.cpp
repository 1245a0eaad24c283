#include "ai/NoteRetriever.h"

#include "ai/Passages.h"
#include "base/Text.h"
#include "core/body/PlainText.h"
#include "core/model/NoteEntities.h"
#include "core/services/Tree.h"
#include "core/store/StoreContext.h"
#include "search/SearchEngine.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace tesserine {

/// A passage that may be sent, with what its score is made of.
struct NoteRetriever::Candidate {
    RetrievedChunk chunk;
    std::size_t rank = 0;   // of its note in the search
    std::size_t place = 0;  // in its note
    bool isTitleHit = false;
    std::vector<std::size_t> counts{};  // of each word
};

namespace {

using Origin = RetrievedChunk::Origin;

/// What a file is read as.
std::string textOf(CDAttachment& attachment) {
    std::string text = attachment.extractedText.valueOr("");
    return text.empty() ? attachment.ocrText.valueOr("") : text;
}

std::vector<std::string> tagNames(CDNote& note) {
    std::vector<std::string> names;
    for (CDTag* tag : note.tags.all()) {
        names.push_back(tag->name.valueOr(""));
    }
    std::ranges::sort(names);
    return names;
}

bool holdsAny(const std::vector<std::size_t>& counts) {
    return std::ranges::any_of(counts, [](std::size_t count) { return count > 0; });
}

/// A little for what was written lately: plans change.
double recency(std::optional<Instant> updatedAt, Instant now) {
    if (!updatedAt) return 0;
    constexpr double day = 86'400;
    const double days = (now - *updatedAt).count() / day;
    if (days <= 30) return 0.1;
    if (days <= 365) return 0.05;
    return days <= 1'095 ? 0.02 : 0;
}

}  // namespace

NoteRetriever::NoteRetriever(SearchEngine& engine, StoreContext& context, AIExclusions exclusions)
    : engine_(engine), context_(context), exclusions_(std::move(exclusions)) {}

void NoteRetriever::addPieces(std::vector<Candidate>& all, CDNote& note, std::size_t rank) const {
    const std::string body = note.plainText.valueOr("");
    const CDNotebook* const notebook = note.notebook;
    const Uuid id = *note.id;
    const RetrievedChunk common{
        .noteID = id,
        .noteTitle = text::collapsed(displayTitle(note.title.valueOr(""), body)),
        .notebook = notebook != nullptr ? tree::pathText(*notebook) : "",
        .tags = tagNames(note),
        .updatedAt = note.updatedAt.get()};
    std::size_t place = 0;
    const auto add = [&](std::string_view text, Origin origin) {
        for (const std::string_view piece : cutPassages(text, chunkSize, overlap)) {
            Candidate candidate{.chunk = common, .rank = rank, .place = place};
            candidate.chunk.id = id.text() + "#" + std::to_string(place++);
            candidate.chunk.text = std::string(piece);
            candidate.chunk.origin = origin;
            all.push_back(std::move(candidate));
        }
    };
    add(body, Origin::body);
    for (CDAttachment* attachment : note.attachments.all()) {
        add(textOf(*attachment), Origin::attachmentText);
    }
}

std::vector<NoteRetriever::Candidate> NoteRetriever::candidatesFor(const QuestionTerms& terms) {
    std::vector<Candidate> kept;
    std::size_t rank = 0;
    for (const SearchResult& result : engine_.find(terms.query, candidates).results) {
        auto* const note = context_.find<CDNote>(result.id);
        if (note == nullptr || !exclusions_.permit(*note)) continue;
        std::vector<Candidate> pieces;
        addPieces(pieces, *note, rank++);
        const bool isTitleHit = holdsAny(occurrences(note->title.valueOr(""), terms.words));
        bool isTextHit = false;
        for (Candidate& piece : pieces) {
            piece.isTitleHit = isTitleHit;
            piece.counts = occurrences(piece.chunk.text, terms.words);
            isTextHit = isTextHit || holdsAny(piece.counts);
        }
        if (isTextHit) {
            std::erase_if(pieces, [](const Candidate& piece) { return !holdsAny(piece.counts); });
        } else if (!pieces.empty()) {
            // Found by its title, its tags or a number written in another way: its beginning.
            pieces.erase(pieces.begin() + 1, pieces.end());
            pieces.front().chunk.origin = Origin::title;
        }
        std::ranges::move(pieces, std::back_inserter(kept));
    }
    return kept;
}

namespace {

/// How much it says that a passage holds each word: the rarer among the passages, the more.
template <class Candidate>
std::vector<double> weights(const std::vector<Candidate>& all, std::size_t wordCount) {
    std::vector<double> result(wordCount);
    for (std::size_t word = 0; word < wordCount; ++word) {
        const auto holding = static_cast<double>(std::ranges::count_if(
            all, [word](const Candidate& candidate) { return candidate.counts[word] > 0; }));
        const double others = static_cast<double>(all.size()) - holding;
        result[word] = std::log(1.0 + (others + 0.5) / (holding + 0.5));
    }
    return result;
}

template <class Candidate>
double scoreOf(const Candidate& candidate, const std::vector<double>& weights, Instant now) {
    double score = 0;
    bool hasAll = !weights.empty();
    for (std::size_t word = 0; word < weights.size(); ++word) {
        const auto count = static_cast<double>(candidate.counts[word]);
        score += weights[word] * count / (count + 1.0);
        hasAll = hasAll && count > 0;
    }
    if (hasAll) score += 0.5;
    if (candidate.isTitleHit) score += 0.3;
    score += recency(candidate.chunk.updatedAt, now);
    return score - static_cast<double>(candidate.rank) * 0.01;
}

}  // namespace

std::vector<RetrievedChunk> NoteRetriever::retrieve(std::string_view question) {
    const QuestionTerms terms = QuestionTerms::of(question);
    if (terms.words.empty()) return {};
    std::vector<Candidate> all = candidatesFor(terms);
    const auto ofWords = weights(all, terms.words.size());
    for (Candidate& candidate : all) {
        candidate.chunk.score = scoreOf(candidate, ofWords, context_.now());
    }
    std::ranges::sort(all, [](const Candidate& a, const Candidate& b) {
        if (a.chunk.score != b.chunk.score) return a.chunk.score > b.chunk.score;
        if (a.chunk.updatedAt != b.chunk.updatedAt) return a.chunk.updatedAt > b.chunk.updatedAt;
        return std::pair(a.rank, a.place) < std::pair(b.rank, b.place);
    });

    // Chosen best first; numbered note by note.
    std::vector<std::vector<Candidate>> notes;
    std::map<Uuid, std::size_t> noteOf;
    std::size_t budget = characterBudget;
    for (Candidate& candidate : all) {
        const auto found = noteOf.find(candidate.chunk.noteID);
        if (found == noteOf.end() && notes.size() == maximumNotes) continue;
        if (found != noteOf.end() && notes[found->second].size() == chunksOfOneNote) continue;
        const std::size_t cost = text::characterCount(candidate.chunk.text);
        if (cost > budget) break;
        budget -= cost;
        const auto [entry, isNew] = noteOf.try_emplace(candidate.chunk.noteID, notes.size());
        if (isNew) notes.emplace_back();
        notes[entry->second].push_back(std::move(candidate));
    }
    std::vector<RetrievedChunk> chosen;
    for (std::vector<Candidate>& note : notes) {
        std::ranges::sort(note, {}, &Candidate::place);
        for (Candidate& candidate : note) {
            chosen.push_back(std::move(candidate.chunk));
        }
    }
    return chosen;
}

}  // namespace tesserine
