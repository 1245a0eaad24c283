#pragma once

#include "ai/AIExclusions.h"
#include "ai/QuestionTerms.h"
#include "ai/RetrievedChunk.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

class CDNote;
class SearchEngine;
class StoreContext;

/// Chooses the passages of the user's notes that a question is answered from.
///
/// The same library and question give the same passages. Notes in the trash, templates, and what
/// the user excluded never come; a locked passage is its placeholder only. Belongs to the thread of
/// its context.
class NoteRetriever {
public:
    /// Characters of passages that are sent in one request.
    static constexpr std::size_t characterBudget = 24'000;
    /// Notes that passages are drawn from.
    static constexpr std::size_t maximumNotes = 12;
    /// Characters of one passage.
    static constexpr std::size_t chunkSize = 1'200;
    static constexpr std::size_t overlap = 150;
    static constexpr std::size_t chunksOfOneNote = 3;
    /// Notes that are looked at for passages.
    static constexpr std::int64_t candidates = 40;

    /// `engine` and `context` outlive it.
    NoteRetriever(SearchEngine& engine, StoreContext& context, AIExclusions exclusions = {});

    /// The passages in the order in which they are numbered: notes by their best passage, the
    /// passages of a note by their place. Throws `SQLiteDatabase::Error` and `StoreError`.
    std::vector<RetrievedChunk> retrieve(std::string_view question);

private:
    struct Candidate;
    std::vector<Candidate> candidatesFor(const QuestionTerms& terms);
    void addPieces(std::vector<Candidate>& all, CDNote& note, std::size_t rank) const;

    SearchEngine& engine_;
    StoreContext& context_;
    const AIExclusions exclusions_;
};

}  // namespace tesserine
