#include "bench/AskJobs.h"

#include "ai/NoteRetriever.h"
#include "base/Calendar.h"
#include "base/Text.h"
#include "bench/SampleLibrary.h"
#include "search/SearchCoordinator.h"
#include "search/SearchEngine.h"
#include "search/StoreQueryLibrary.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace tesserine::bench {
namespace {

constexpr std::size_t questionCount = 20;
constexpr std::size_t wordsOfQuestion = 5;

/// Questions of words that stand in one note, as somebody asks who wrote it.
std::vector<std::string> questionsOf(const NoteGenerator& generator) {
    std::vector<std::string> questions;
    const std::size_t step = generator.noteCount() / questionCount;
    for (std::size_t place = 0; questions.size() < questionCount; place += step) {
        const std::string text = generator.note(place).plainText;
        const auto words = text::words(text);
        std::string question = "What did I write about";
        for (std::size_t i = 0; i < std::min(wordsOfQuestion, words.size()); ++i) {
            question.append(" ").append(words[words.size() / wordsOfQuestion * i]);
        }
        questions.push_back(question + "?");
    }
    return questions;
}

void addNotes(OurLibrary& library, const NoteGenerator& generator) {
    library.addPlaces(generator);
    for (std::size_t begin = 0; begin < generator.noteCount(); begin += notesPerSave) {
        std::vector<GeneratedNote> notes;
        const std::size_t end = std::min(begin + notesPerSave, generator.noteCount());
        for (std::size_t place = begin; place < end; ++place) {
            notes.push_back(generator.note(place));
        }
        library.addNotes(notes);
    }
}

}  // namespace

std::vector<Row> askJobs(
    const std::filesystem::path& folder, std::size_t noteCount, std::size_t rounds) {
    const ScratchFolder scratch(folder);
    const NoteGenerator generator(noteCount);
    OurLibrary ours(scratch.path() / "library");
    addNotes(ours, generator);
    const SystemClock clock;
    const Calendar calendar("UTC");
    SearchCoordinator coordinator(ours.store(), {.clock = clock});
    coordinator.catchUp();

    const auto context = ours.store().newBackgroundContext();
    StoreQueryLibrary library(*context, clock, calendar);
    SearchEngine engine(
        {.index = coordinator.index(), .library = &library, .clock = clock, .calendar = calendar});
    NoteRetriever retriever(engine, *context);
    std::vector<Row> rows;
    const auto questions = questionsOf(generator);
    std::size_t found = 0;
    std::size_t chosen = 0;
    const Comparison times = alternate(
        rounds,
        [&] {
            return secondsOf([&] {
                for (const std::string& question : questions) {
                    const Query query = QuestionTerms::of(question).query;
                    found += engine.find(query, NoteRetriever::candidates).results.size();
                }
            });
        },
        [&] {
            context->reset();  // as for a question that is asked now and then
            return secondsOf([&] {
                for (const std::string& question : questions) {
                    chosen += retriever.retrieve(question).size();
                }
            });
        });
    if (found == 0 || chosen == 0) throw std::runtime_error("the questions found nothing");
    const auto each = [](double seconds) { return milliseconds(seconds / questionCount); };
    rows.push_back(rowOf("passages for a question, beside its search", times, each));
    return rows;
}

}  // namespace tesserine::bench
