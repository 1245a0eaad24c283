#include "ai/NoteRetriever.h"
#include "base/Calendar.h"
#include "bench/NoteGenerator.h"
#include "core/model/NoteEntities.h"
#include "core/services/NoteService.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"
#include "search/SearchCoordinator.h"
#include "search/SearchEngine.h"
#include "search/StoreQueryLibrary.h"
#include "tests/support/SeededRandom.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace tesserine {
namespace {

/// A note, a sentence in it, and how a person asks for that sentence later.
struct Fact {
    const char* title;
    const char* sentence;
    const char* question;
};

constexpr Fact facts[] = {
    {"Boiler", "The boiler was serviced on 3 May by Harker & Sons.", "Who serviced the boiler?"},
    {"Car",
     "Tyre pressure is 2.3 bar in front and 2.5 at the back.",
     "What tyre pressure does the car need?"},
    {"Passport", "The passport runs out in November 2031.", "When does my passport run out?"},
    {"Lisbon",
     "We stayed at the Pensão Praça and loved the breakfast.",
     "Where did we stay in Lisbon?"},
    {"Sourdough",
     "Feed the starter with 50 g of rye flour each evening.",
     "How much rye flour for the starter?"},
    {"Dentist", "Dr Okafor wants to see me every six months.", "How often should I see Dr Okafor?"},
    {"Router",
     "The guest network is called tulip-guest.",
     "What is the name of the guest network?"},
    {"Gifts", "Miriam would like the blue ceramic teapot.", "What present would Miriam like?"},
    {"Allotment",
     "Plant the broad beans before the middle of February.",
     "When to plant broad beans?"},
    {"Thesis",
     "Chapter four argues that the tariffs failed in 1893.",
     "What does chapter four argue about tariffs?"},
    {"Lease", "The deposit of 2,150.00 is held by the agency.", "Who holds the deposit of 2150?"},
    {"Running",
     "My best time over ten kilometres is 47:12.",
     "What is my best time over ten kilometres?"},
    {"Medication", "Take the iron tablets with orange juice.", "How should I take iron tablets?"},
    {"Window", "The kitchen window measures 118 by 94 cm.", "How large is the kitchen window?"},
    {"Standup",
     "Priya owns the migration of the billing database.",
     "Who owns the billing migration?"},
    {"Insurance",
     "The policy number is 8841 2207 5519.",
     "What is the policy number of the insurance?"},
    {"Camera", "Use the 35 mm lens for street photographs.", "Which lens for street photography?"},
    {"School",
     "Parents' evening is on Thursday at half past six.",
     "When is the parents' evening?"},
    {"Piano", "The piano was last tuned by Mr Lindqvist.", "Who tuned the piano?"},
    {"Recipe: dal",
     "Fry the cumin seeds first, then add the lentils.",
     "What do I fry before the lentils?"},
    {"Book club", "In June we read The Leopard.", "Which book did the club read in June?"},
    {"Bike",
     "The chain needs replacing after 3,000 km.",
     "After how many km does the chain need replacing?"},
    {"Garden fence", "The neighbour pays half of the new fence.", "Who pays half of the fence?"},
    {"Taxes 2024",
     "The home office counts for 610 euros.",
     "How much does the home office count for?"},
    {"Hiking",
     "The hut above Samnaun opens in late June.",
     "When does the hut above Samnaun open?"},
    {"Server", "Backups run every night at 02:40.", "When do the backups run?"},
    {"Wine",
     "The Blaufränkisch from Gols was the best of the evening.",
     "Which wine was the best?"},
    {"Interview",
     "She asked why the project slipped by two quarters.",
     "Why did she ask about the slipped project?"},
    {"Flat",
     "The caretaker's number is on the cellar door.",
     "Where is the number of the caretaker?"},
    {"Ideas",
     "An app that folds laundry schedules into the weather.",
     "What was the laundry app idea?"},
    {"Vaccination", "The tetanus booster is due in 2029.", "When is tetanus due?"},
    {"Meeting with Tom",
     "Tom prefers the second logo, the one with the heron.",
     "Which logo does Tom prefer?"},
    {"Painting",
     "The hallway is painted in Lamp Room Grey.",
     "What colour is the hallway painted?"},
    {"Train",
     "The night train to Vienna leaves from platform nine.",
     "From which platform does the Vienna train leave?"},
    {"Cat", "Minou may not eat anything with onions.", "What may Minou not eat?"},
    {"Course", "The exam counts for sixty percent of the grade.", "How much does the exam count?"},
    {"Moving", "Box 14 holds the winter coats.", "Which box holds the winter coats?"},
    {"Aunt Vera", "Vera was born in Czernowitz in 1931.", "Where was Vera born?"},
    {"Contract",
     "Either side may end it with three months' notice.",
     "How much notice ends the contract?"},
    {"Knitting", "The scarf takes four skeins of merino.", "How many skeins for the scarf?"},
    {"Phone", "Hold volume down while plugging in to reset it.", "How do I reset the phone?"},
    {"Choir", "Rehearsals moved to the parish hall.", "Where are rehearsals now?"},
    {"Soup", "A spoon of miso at the end gives it depth.", "What gives the soup depth?"},
    {"Retro", "We agreed to stop deploying on Fridays.", "What did we agree about deploying?"},
    {"Museum", "Entry is free on the first Sunday of the month.", "When is the museum free?"},
    {"Washing machine", "Error E18 means that the filter is blocked.", "What does error E18 mean?"},
    {"Wedding", "The band plays until midnight, then a DJ.", "Until when does the band play?"},
    {"Birds", "A pair of goldfinches nested in the pear tree.", "Where did the goldfinches nest?"},
    {"Savings",
     "The account at the credit union pays 2.1 percent.",
     "How much interest does the credit union pay?"},
    {"Ferry",
     "Be at the pier forty minutes before departure.",
     "How early should I be at the pier?"},
};
static_assert(std::size(facts) == 50);

/// A long text with the sentence somewhere in it.
std::string hidden(const std::string& sentence, const std::string& padding, std::size_t place) {
    const std::size_t cut =
        std::min(padding.find(' ', padding.size() / 7 * (place % 7)), padding.size());
    return "<p>" + padding.substr(0, cut) + "</p><p>" + sentence + "</p><p>" + padding.substr(cut)
           + "</p>";
}

TEST(RetrievalQuality, SendsThePassageThatAnswersForNineQuestionsOutOfTen) {
    const test::TemporaryFolder folder;
    test::SeededRandom random(3);
    const FixedClock clock(*Instant::parseISO("2026-03-14T09:15:00Z"));
    const Calendar calendar("UTC", 2);
    TesserineStore store({.directory = folder / "library"}, {.clock = clock, .random = random});
    StoreContext& context = store.viewContext();
    const NoteService notes(clock);

    const auto others = bench::NoteGenerator(400, 11).allNotes();
    for (const auto& other : others) {
        notes.createNote(context, {.title = other.title, .html = other.html});
    }
    std::string padding;
    for (std::size_t i = 0; i < 400; ++i) {
        padding += "of many things that fill a page ";
    }
    for (std::size_t i = 0; i < std::size(facts); ++i) {
        notes.createNote(
            context, {.title = facts[i].title, .html = hidden(facts[i].sentence, padding, i)});
    }
    context.save();
    SearchCoordinator coordinator(store, {.clock = clock});
    coordinator.catchUp();
    StoreQueryLibrary library(context, clock, calendar);
    SearchEngine engine(
        {.index = coordinator.index(), .library = &library, .clock = clock, .calendar = calendar});
    NoteRetriever retriever(engine, context);

    std::size_t found = 0;
    std::string missed;
    for (const Fact& fact : facts) {
        const auto chunks = retriever.retrieve(fact.question);
        const bool isSent = std::ranges::any_of(chunks, [&fact](const RetrievedChunk& chunk) {
            return chunk.text.find(fact.sentence) != std::string::npos;
        });
        found += isSent ? 1 : 0;
        if (!isSent) missed += std::string(fact.question) + "\n";
    }
    EXPECT_GE(found, 45U) << missed;
}

}  // namespace
}  // namespace tesserine
