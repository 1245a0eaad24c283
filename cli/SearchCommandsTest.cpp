#include "base/FailPoint.h"
#include "cli/CommandFixture.h"
#include "search/IndexMeta.h"
#include "search/SearchIndex.h"
#include "search/SearchStatement.h"

namespace tesserine::cli {
namespace {

class SearchCommands : public CommandFixture {
protected:
    /// The titles that a query finds, in their order, between commas.
    std::string found(const std::string& query) {
        std::string titles;
        const auto response = mustRun({"search", "--json", "--", query}).json();
        for (const auto& result : response.at("results").as_array()) {
            titles += (titles.empty() ? "" : ", ") + shown(result.at("title"));
        }
        return titles;
    }
};

TEST_F(SearchCommands, FindWhatOtherCommandsJustDid) {
    const std::string rent = addNote("Rent", {"--text", "an invoice", "--tag", "home"});
    EXPECT_EQ(found("invoice"), "Rent");
    addNote("Hotel", {"--text", "an invoice", "--notebook", "Travel"});
    mustRun({"notebook", "rename", "Travel", "Journeys"});
    mustRun({"tag", "add", "private"});
    mustRun({"tag", "move", "home", "private"});
    EXPECT_EQ(found("in:journeys"), "Hotel");
    EXPECT_EQ(found("in:travel"), "");
    EXPECT_EQ(found("tag:private"), "Rent");
    mustRun({"note", "trash", rent});
    EXPECT_EQ(found("invoice"), "Hotel");
    EXPECT_EQ(found("invoice in:trash"), "Rent");
    mustRun({"note", "delete", rent});
    EXPECT_EQ(found("invoice in:anywhere"), "Hotel");
}

TEST_F(SearchCommands, MendAnIndexThatProvesToBeDamaged) {
    addNote("Rent", {"--text", "an invoice"});
    EXPECT_EQ(found("invoice"), "Rent");
    SearchIndex(library() / SearchIndex::fileName).perform([](SQLiteDatabase& index) {
        index.execute("DELETE FROM fts_data WHERE id > 10");
    });
    EXPECT_EQ(found("invoice"), "Rent");
    EXPECT_EQ(mustRun({"search", "invoice"}).error, "");
}

#ifdef TESSERINE_FAIL_POINTS

TEST_F(SearchCommands, SayThatAnotherProgramHasJustBegunToRebuild) {
    addNote("Rent", {"--text", "an invoice"});
    EXPECT_EQ(found("invoice"), "Rent");
    failpoint::arm("search.caughtUp", 1, [this] {
        SearchIndex another(library() / SearchIndex::fileName);
        another.batch([&] {
            another.clear();
            IndexMeta(another).beginRebuild(clock_.now());
        });
    });
    EXPECT_EQ(
        mustRun({"search", "invoice"}).error,
        "The search index is being rebuilt; some results may be missing.\nNothing was found.\n");
    EXPECT_EQ(found("invoice"), "Rent");  // nobody is at it any more
}

#endif

TEST_F(SearchCommands, TakeAMegabyte) {
    addNote("Rent", {"--text", "an invoice"});
    std::string words = "invoice";
    while (words.size() < 1'000'000) {
        words += " invoice (\"";
    }
    for (const std::string& query :
         {words, std::string(1'000'000, '('), std::string(1'000'000, 'x')}) {
        EXPECT_EQ(run({"search", "--as-typed", query}).status, ExitStatus::done);
    }
}

TEST_F(SearchCommands, AskTheLibraryWhatTheIndexDoesNotKnow) {
    mustRun({"task", "add", "Pay the rent 2026-03-01 p1"});
    mustRun({"task", "add", "Call the bank tomorrow"});
    addNote("Rent");
    EXPECT_EQ(found("is:overdue"), "Pay the rent");
    EXPECT_EQ(found("due:tomorrow"), "Call the bank");
    EXPECT_EQ(found("is:open p1"), "Pay the rent");
    EXPECT_EQ(found("rent -is:task"), "Rent");
}

TEST_F(SearchCommands, ShowWhereTheWordsStand) {
    const std::string id =
        addNote("Invoice", {"--text", "The first invoice of the year", "--notebook", "Work"});
    test::putContent(folder_ / "invoice.txt", "x");
    mustRun({"note", "attach", id, (folder_ / "invoice.txt").string()});
    const std::string plain = mustRun({"search", "invoice"}).output;
    EXPECT_EQ(
        plain,
        id.substr(0, 8)
            + "  Invoice  Work\n    The first invoice of the year invoice.txt\n"
              "    • invoice.txt\n");

    isTerminal_ = true;
    variables_["TERM"] = "xterm";
    const std::string shown = mustRun({"search", "invoice"}).output;
    EXPECT_NE(shown.find("first \x1b[1minvoice\x1b[0m of"), std::string::npos) << shown;
    EXPECT_EQ(shown.find(marker::open), std::string::npos);
}

TEST_F(SearchCommands, SayWhatWasUnderstoodAndWhatWasDoneToFindSomething) {
    addNote("Rent", {"--text", "an invoice from ACME", "--notebook", "Work"});
    const CommandResult explained = mustRun({"search", "--explain", "invoce in:Work"});
    EXPECT_TRUE(explained.output.starts_with("Notes and tasks in Work, containing invoce.\n"));
    EXPECT_EQ(
        explained.error,
        "Showing results for “invoice”. Search instead for “invoce” with --as-typed.\n");
    EXPECT_EQ(mustRun({"search", "--as-typed", "invoce"}).error, "Nothing was found.\n");
    EXPECT_EQ(
        mustRun({"search", "invoice xylophone acme"}).error,
        "Nothing holds all of these words; these are without “xylophone”.\n");
    EXPECT_EQ(
        mustRun({"search", "invoice created:soon in:Home"}).error,
        "“soon” is no date, so it was left out.\nNothing was found.\n"
        "Without “in:Home” there is 1 result.\n");
    const auto response = mustRun({"search", "--json", "invoce"}).json();
    EXPECT_EQ(shown(response.at("corrections")), R"([{"typed":"invoce","suggestion":"invoice"}])");
    EXPECT_EQ(shown(response.at("explanation")), "Notes and tasks containing **invoce**.");
}

TEST_F(SearchCommands, SuggestHowAQueryMayGoOn) {
    addNote("Rent", {"--tag", "home"});
    mustRun({"search", "tag:home rent"});
    const auto suggestions = mustRun({"search", "--suggest", "tag:", "--json"}).json();
    EXPECT_EQ(
        shown(suggestions),
        R"([{"kind":"value","title":"home","replacement":"tag:home ","detail":"1"},)"
        R"({"kind":"recent","title":"tag:home rent","replacement":"tag:home rent","detail":""}])");
}

TEST_F(SearchCommands, FindWordsForEachOther) {
    addNote("Rent", {"--text", "the bill of March"});
    addNote("Hotel", {"--text", "a credit note"});
    EXPECT_EQ(found("invoice"), "");
    const std::string groups = "invoice, bill, credit note; car, auto";
    mustRun({"settings", "set", "search.synonyms", " invoice,bill , credit note;car,auto;x"});
    EXPECT_EQ(mustRun({"settings", "get", "search.synonyms"}).output, groups + "\n");
    EXPECT_EQ(found("invoice sort:oldest"), "Rent, Hotel");
    EXPECT_TRUE(mustRun({"search", "--explain", "invoice"})
                    .output.starts_with("Notes and tasks containing invoice (and bill and credit "
                                        "note, your synonyms).\n"));
    EXPECT_EQ(run({"settings", "set", "search.synonyms", "alone"}).status, ExitStatus::failed);
    mustRun({"settings", "reset", "search.synonyms"});
    EXPECT_EQ(found("invoice"), "");
}

TEST_F(SearchCommands, RunSavedSearches) {
    addNote("Rent", {"--tag", "home"});
    mustRun({"saved-search", "add", "Mine", "tag:home"});
    const auto response = mustRun({"saved-search", "run", "mine", "--json"}).json();
    ASSERT_EQ(response.at("results").as_array().size(), 1U);
}

TEST_F(SearchCommands, SearchesOfEarlierBuildsAreBroughtOver) {
    std::filesystem::create_directories(folder_ / "config" / "Tesserine");
    test::putContent(
        folder_ / "config" / "Tesserine" / "preferences.json",
        R"({"tesserine.search.legacySaved": [{"name": "Old", "query": "intitle:rent"}]})");
    addNote("Rent");
    const auto response = mustRun({"saved-search", "run", "Old", "--json"}).json();
    EXPECT_EQ(response.at("results").as_array().size(), 1U);
    EXPECT_EQ(shown(response.at("explanation")), "Notes and tasks with **rent** in the title.");
    addNote("Other");
    EXPECT_EQ(mustRun({"saved-search", "list", "--json"}).json().as_array().size(), 1U);
}

TEST_F(SearchCommands, AnswerInsideABatch) {
    const std::string answers = mustRun(
                                    {"batch"},
                                    R"({"op": "note.add", "title": "First"}
{"op": "search", "query": "first"}
{"op": "note.add", "title": "First again"}
{"op": "search", "query": "first", "limit": 1}
{"op": "search"}
{"op": "group", "ops": [{"op": "search", "query": "x"}]}
)")
                                    .output;
    std::vector<std::string> lines;
    std::istringstream stream(answers);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_EQ(tesserine::json::parse(lines[1]).at("results").as_array().size(), 1U);
    EXPECT_EQ(shown(tesserine::json::parse(lines[1]).at("ok")), "true");
    EXPECT_EQ(tesserine::json::parse(lines[3]).at("results").as_array().size(), 1U);
    EXPECT_EQ(shown(tesserine::json::parse(lines[4]).at("ok")), "false");
    EXPECT_EQ(shown(tesserine::json::parse(lines[5]).at("ok")), "false");
}

TEST_F(SearchCommands, KeepTheIndexHealthy) {
    addNote("Rent");
    const std::string healthy =
        "1 of 1 notes, 0 of 0 tasks, 0 of 0 attachments with text indexed — up to date\n";
    EXPECT_EQ(mustRun({"index", "check"}).output, healthy);
    EXPECT_EQ(mustRun({"index", "status"}).output, healthy);
    test::putContent(library() / "Search.sqlite", std::string(5'000, '\0'));
    EXPECT_EQ(found("rent"), "Rent");
    EXPECT_EQ(mustRun({"index", "rebuild"}).output, healthy);
}

}  // namespace
}  // namespace tesserine::cli
