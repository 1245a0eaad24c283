#include "search/QueryExplanation.h"

#include "search/MarkedText.h"
#include "search/QueryParser.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

TEST(QueryExplanation, SaysInOneSentenceWhatWasUnderstood) {
    const Calendar calendar("UTC", 2);
    const SearchSynonyms synonyms{{{"invoice", "bill"}, {"car", "auto", "motor"}}};
    const QueryExplanation explanation{
        *Instant::parseISO("2026-03-14T09:15:00Z"), calendar, synonyms};
    const auto sentence = [&](std::string_view query) {
        std::string text;
        marked::forEachPiece(
            explanation.sentence(parseQuery(query)), [&](std::string_view piece, bool isStrong) {
                text += isStrong ? "*" + std::string(piece) + "*" : std::string(piece);
            });
        return text;
    };
    struct Case {
        const char* query;
        const char* sentence;
    };
    for (const auto& [query, expected] : {
             Case{"", "Notes and tasks."},
             Case{
                 "in:Work #tax since:2026-03-01 invoice",
                 "Notes and tasks in *Work* with *#tax*, edited since *1 March*, containing "
                 "*invoice* (and *bill*, your synonym)."},
             Case{
                 "car inv* \"annual report\" -draft",
                 "Notes and tasks containing *car* (and *auto* and *motor*, your synonyms), "
                 "*inv…* and *“annual report”*, but not *draft*."},
             Case{"-draft NOT old", "Notes and tasks not containing *draft* or *old*."},
             Case{
                 "is:note in:trash created:2025 sort:newest",
                 "Notes in the trash written in *2025*, newest first."},
             Case{
                 "created:2025-02 before:2025-01-02 after:day-0",
                 "Notes and tasks written in *February 2025*, written before *2 January 2025*, "
                 "written since *15 March*."},
             Case{
                 "created:2025-02..2025-03,today",
                 "Notes and tasks written from *1 February 2025* to *31 March 2025* or on *14 "
                 "March*."},
             Case{
                 "is:overdue p1 due:none",
                 "Tasks that are *overdue*, of priority *p1*, due never."},
             Case{
                 "(red OR white) -tag:a,b (is:note OR wine)",
                 "Notes and tasks not with *#a* or with *#b*, either that are *note* or containing "
                 "*wine*, containing either *red* or *white*."},
             Case{
                 "january 15, near:1,2 sort:oldest has:pdf,tag",
                 "Notes and tasks written within *10km* of *1, 2*, with an attachment of type "
                 "*pdf* or with a tag, containing *january* and *15*, oldest first."},
             Case{"created:soon tag:none x", "Notes and tasks without tags, containing *x*."},
         }) {
        EXPECT_EQ(sentence(query), expected) << query;
    }
}

}  // namespace
}  // namespace tesserine
