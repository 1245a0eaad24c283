#include "bench/QueryJobs.h"

#include "base/Calendar.h"
#include "base/Clock.h"
#include "bench/NoteGenerator.h"
#include "bench/RawDatabase.h"
#include "bench/SampleLibrary.h"
#include "search/MatchExpression.h"
#include "search/SearchEngine.h"
#include "search/SearchFilters.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>

namespace tesserine::bench {
namespace {

constexpr std::int64_t rowsWanted = 50;
/// To the exact statement: where few match, or a phrase or the beginning of a word does, the same
/// one is run; elsewhere the marking of what is not shown is spared.
constexpr double sameRatio = 1.05;
constexpr double commonRatio = 0.40;
constexpr double sparedRatio = 0.20;
/// Words that the made-up notes lack: one in every 200th of them, one in four of them all.
constexpr std::string_view middlingWord = "quagga";
constexpr std::string_view rareWord = "okapi";

/// One search in both languages.
struct QueryJob {
    std::string name;
    std::string query;
    Search raw;
    double largestRatio = sparedRatio;
};

IndexDocument documentOf(std::size_t place, const NoteGenerator& generator) {
    const GeneratedNote note = generator.note(place);
    IndexDocument document{
        .id = note.id,
        .title = note.title,
        .body = note.plainText,
        .createdAt = note.createdAt,
        .updatedAt = note.updatedAt,
        .hasAttachment = !note.attachments.empty(),
        .isTrashed = note.trashedAt.has_value(),
        .favorite = note.isPinned};
    if (place % 200 == 0) document.body.append("\n").append(middlingWord);
    if (place % (generator.noteCount() / 4) == 1) document.body.append("\n").append(rareWord);
    if (note.notebook) document.notebook = generator.notebooks()[*note.notebook].name;
    for (const std::size_t tag : note.tags) {
        document.tags.push_back(generator.tags()[tag]);
    }
    return document;
}

void fill(SearchIndex& index, const NoteGenerator& generator) {
    for (std::size_t begin = 0; begin < generator.noteCount(); begin += notesPerSave) {
        const std::size_t end = std::min(begin + notesPerSave, generator.noteCount());
        index.batch([&] {
            for (std::size_t place = begin; place < end; ++place) {
                index.upsert(documentOf(place, generator));
            }
        });
    }
}

/// Words of the index by how many notes hold them.
class Words {
public:
    explicit Words(SearchIndex& index) : terms_(index.terms()) {
        std::erase_if(terms_, [](const SearchIndex::Term& term) {
            return term.term.size() < 4
                   || !std::ranges::all_of(term.term, [](char c) { return c >= 'a' && c <= 'z'; });
        });
        if (terms_.empty()) throw std::runtime_error("the index holds no words");
    }
    /// The word in nearest to `documents` notes.
    std::string heldBy(double documents) const {
        return std::ranges::min_element(
                   terms_,
                   {},
                   [&](const SearchIndex::Term& term) {
                       return std::abs(static_cast<double>(term.documents) - documents);
                   })
            ->term;
    }

private:
    std::vector<SearchIndex::Term> terms_;
};

/// Two words that follow each other in some note, and are neither common nor rare.
std::string phraseIn(const NoteGenerator& generator, const std::string& word) {
    for (std::size_t place = 0; place < generator.noteCount(); ++place) {
        const std::string text = generator.note(place).plainText;
        const std::size_t at = text.find(" " + word + " ");
        if (at == std::string::npos) continue;
        const std::size_t end =
            text.find_first_not_of("abcdefghijklmnopqrstuvwxyz", at + word.size() + 2);
        std::string phrase = text.substr(at + 1, std::min(end, text.size()) - at - 1);
        if (phrase.size() > word.size() + 3) return phrase;
    }
    throw std::runtime_error("no note holds “" + word + "” before another word");
}

std::vector<QueryJob> jobsFor(SearchIndex& index, const NoteGenerator& generator) {
    const Words words(index);
    const auto notes = static_cast<double>(generator.noteCount());
    const std::string common = words.heldBy(notes * 0.17);
    const std::string middling(middlingWord);
    const std::string rare(rareWord);
    const std::string phrase = phraseIn(generator, words.heldBy(notes * 0.01));
    const std::string beginning = common.substr(0, 4);
    // What our statement asks for, in the columns that it asks.
    const auto written = [](const std::string& text) {
        return match::in(match::writtenColumns, "\"" + text + "\"");
    };
    const auto job = [&](const char* name,
                         const std::string& query,
                         Search raw,
                         double largestRatio = sparedRatio) {
        raw.filters = {filter::isTrashed(false)};
        raw.limit = rowsWanted;
        return QueryJob{"search, " + std::string(name), query, std::move(raw), largestRatio};
    };
    return {
        job("common word",
            common,
            {.match = written(common), .strict = written(common)},
            commonRatio),
        job("middling word", middling, {.match = written(middling), .strict = written(middling)}),
        job("rare word", rare, {.match = written(rare), .strict = written(rare)}),
        job("two words",
            common + " " + middling,
            {.match = written(common) + " AND " + written(middling),
             .strict = written(common + " " + middling)}),
        job("phrase", "\"" + phrase + "\"", {.match = written(phrase)}, sameRatio),
        job("prefix",
            beginning + "*",
            {.match = written(beginning) + "*", .strict = written(beginning)}),
        job("negated",
            middling + " -" + common,
            {.match = written(middling),
             .strict = written(middling),
             .negated = {written(common)}}),
    };
}

/// Runs a statement as SQLite does alone, every value of every row being looked at.
std::size_t runRaw(RawDatabase& database, const BoundSQL& bound, std::size_t& rows) {
    RawStatement statement = database.prepare(bound.sql);
    int place = 0;
    for (const SQLValue& value : bound.bindings) {
        ++place;
        std::visit(
            [&](const auto& bindable) {
                if constexpr (std::is_same_v<std::decay_t<decltype(bindable)>, std::string>) {
                    statement.bind(place, std::string_view(bindable));
                } else {
                    statement.bind(place, bindable);
                }
            },
            value);
    }
    std::size_t bytes = 0;
    rows = 0;
    while (statement.step()) {
        ++rows;
        for (const int column : {0, 1, 2, 3, 4, 8, 10, 13, 14, 15}) {
            bytes += statement.text(column).size();
        }
    }
    return bytes;
}

Row measure(
    const QueryJob& job, SearchEngine& engine, RawDatabase& raw, Instant now, std::size_t rounds) {
    const BoundSQL statement = searchStatement(job.raw, now);
    std::size_t rawRows = 0;
    std::size_t ourRows = 0;
    const Comparison times = alternate(
        rounds * 4 + 1,
        [&] { return secondsOf([&] { runRaw(raw, statement, rawRows); }); },
        [&] {
            return secondsOf([&] {
                ourRows = engine.search({.text = job.query, .limit = rowsWanted}).results.size();
            });
        });
    if (ourRows == 0 || ourRows != rawRows) {
        throw std::runtime_error(job.name + ": the two found different numbers of rows");
    }
    const bool isFew = rawRows < rowsWanted;
    return rowOf(job.name, times, milliseconds, isFew ? sameRatio : job.largestRatio);
}

}  // namespace

std::vector<Row> queryJobs(
    const std::filesystem::path& folder, std::size_t noteCount, std::size_t rounds) {
    const ScratchFolder scratch(folder);
    const NoteGenerator generator(noteCount);
    SearchIndex index(scratch.path() / SearchIndex::fileName);
    fill(index, generator);

    const SystemClock clock;
    const Calendar calendar("UTC");
    SearchEngine engine({.index = index, .clock = clock, .calendar = calendar});
    RawDatabase raw(index.file(), RawDatabase::Settings::ordinary);
    std::vector<Row> rows;
    const auto jobs = jobsFor(index, generator);
    // Both on the index's queue: how soon a busy machine wakes a thread is not what is measured.
    index.perform([&](SQLiteDatabase&) {
        for (const QueryJob& job : jobs) {
            rows.push_back(measure(job, engine, raw, clock.now(), rounds));
        }
    });
    return rows;
}

}  // namespace tesserine::bench
