#include "search/SearchIndex.h"

#include "base/FailPoint.h"
#include "search/CoordinatorFixture.h"
#include "search/IndexRows.h"
#include "tests/support/Child.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace tesserine {
namespace {

using test::rowsOf;
using Error = SQLiteDatabase::Error;

Uuid uuid(int number) {
    const std::string digits = std::to_string(number);
    return *Uuid::parse("00000000-0000-4000-8000-" + std::string(12 - digits.size(), '0') + digits);
}

IndexDocument note(int number, const std::string& title, const std::string& body = "") {
    return {.id = uuid(number), .title = title, .body = body};
}

class SearchIndexFile : public testing::Test {
protected:
    const test::TemporaryFolder folder_;
    const std::filesystem::path file_ = folder_ / SearchIndex::fileName;
};

TEST_F(SearchIndexFile, StoresADocumentInItsRows) {
    SearchIndex index(file_);
    IndexDocument document = note(1, "Übersicht Café", "paid 12.50");
    document.tags = {"Work", "Élan"};
    document.notebook = "Réunions";
    document.attachmentText = "scan of 2025";
    document.attachmentTypes = {"PDF", "document"};
    document.createdAt = Instant::fromSeconds(1736935100.25);
    document.updatedAt = Instant::fromSeconds(1736935200.75);
    document.hasAttachment = true;
    document.latitude = 48.5;
    document.longitude = -9.25;
    document.favorite = true;
    document.favoritedAt = Instant::fromSeconds(1736935300);
    document.attachments = {
        {uuid(11), "a.pdf", "application/pdf", "scan of 2025"},
        {uuid(12), "b.bin", "application/octet-stream", ""}};
    index.upsert(document);

    EXPECT_EQ(
        rowsOf(index, "SELECT * FROM docs"),
        "1|00000000-0000-4000-8000-000000000001|note|Übersicht Café|Réunions|Work\x1F"
        "Élan|PDF document|1736935100.25|1736935200.75|1|0|48.5|-9.25|1|1736935300.0|ubersicht "
        "cafe|reunions|work\x1F"
        "elan|pdf document|1736935200|2|1|0|2|1\n");
    EXPECT_EQ(
        rowsOf(index, "SELECT rowid, * FROM fts"),
        "1|Übersicht Café|paid 12.50|Work Élan|Réunions|scan of 2025|tsn12p50 tsy2025\n");
    EXPECT_EQ(
        rowsOf(index, "SELECT rowid, uid, note_uid, filename, mime, has_text FROM atts"),
        "1|00000000-0000-4000-8000-000000000011|00000000-0000-4000-8000-000000000001|a.pdf|"
        "application/pdf|1\n"
        "2|00000000-0000-4000-8000-000000000012|00000000-0000-4000-8000-000000000001|b.bin|"
        "application/octet-stream|0\n");
    EXPECT_EQ(
        rowsOf(index, "SELECT rowid, * FROM afts"), "1|a.pdf|scan of 2025|tsy2025\n2|b.bin||\n");
}

TEST_F(SearchIndexFile, StoresNothingForWhatIsAbsent) {
    SearchIndex index(file_);
    index.upsert({.id = uuid(1), .kind = SearchKind::task});
    EXPECT_EQ(
        rowsOf(
            index,
            "SELECT kind, tags, tags_fold, created, updated, favorited, latitude, sig FROM docs"),
        "task|||0.0|0.0|0.0|NULL|0|0|0|0\n");
}

TEST_F(SearchIndexFile, ReplacesRemovesAndClearsWholeDocuments) {
    SearchIndex index(file_);
    IndexDocument document = note(1, "first");
    document.attachments = {{uuid(11), "a.txt", "text/plain", "x"}};
    const auto sizes = [&] {
        return rowsOf(
            index,
            "SELECT (SELECT count(*) FROM docs), (SELECT count(*) FROM fts), (SELECT count(*) FROM "
            "atts), (SELECT count(*) FROM afts)");
    };
    const std::uint64_t before = index.generation();
    index.upsert(document);
    document.title = "second";
    index.upsert(document);
    EXPECT_EQ(index.generation(), before + 2);
    EXPECT_EQ(sizes(), "1|1|1|1\n");
    EXPECT_EQ(rowsOf(index, "SELECT title FROM fts WHERE fts MATCH 'second'"), "second\n");

    index.remove(uuid(2).text());  // not there
    EXPECT_EQ(index.generation(), before + 2);
    index.remove(uuid(1).text());
    EXPECT_EQ(index.generation(), before + 3);
    EXPECT_EQ(sizes(), "0|0|0|0\n");

    index.upsert(document);
    index.setMeta("kept", "yes");
    index.replaceTagTree({{"tag", std::nullopt}});
    index.clear();
    EXPECT_EQ(index.generation(), before + 5);
    EXPECT_EQ(sizes(), "0|0|0|0\n");
    EXPECT_EQ(index.meta("kept"), "yes");
    EXPECT_EQ(rowsOf(index, "SELECT * FROM tag_tree"), "tag|NULL\n");
    index.deleteMeta("kept");
    EXPECT_EQ(index.meta("kept"), std::nullopt);
}

TEST_F(SearchIndexFile, LeavesLooseAttachmentsOfAbsentDocumentsAlone) {
    SearchIndex index(file_);
    index.perform([](SQLiteDatabase& database) {
        database.execute("INSERT INTO atts(uid, note_uid) VALUES('a', 'gone');");
    });
    index.remove("gone");
    EXPECT_EQ(rowsOf(index, "SELECT note_uid FROM atts"), "gone\n");
}

TEST_F(SearchIndexFile, KeepsOrDropsTablesByTheVersionTheyWereMadeFor) {
    struct Case {
        std::optional<std::string> stored;
        bool isKept;
    };
    for (const auto& [stored, isKept] : {
             Case{"6", true},
             Case{"+6", true},
             Case{"5", false},
             Case{"7", false},
             Case{"-6", false},
             Case{"", true},
             Case{"6 ", true},  // no number, hence no version
             Case{"six", true},
             Case{"99999999999999999999", true},
             Case{std::nullopt, true},
         }) {
        SCOPED_TRACE(stored.value_or("none"));
        {
            SearchIndex index(file_);
            index.upsert(note(1, "here"));
            index.replaceTagTree({{"tag", std::nullopt}});
            index.setMeta("other", "stays");
            if (stored) {
                index.setMeta("schema", *stored);
            } else {
                index.deleteMeta("schema");
            }
        }
        SearchIndex index(file_);
        EXPECT_EQ(index.countDocuments(), isKept ? 1 : 0);
        EXPECT_EQ(rowsOf(index, "SELECT count(*) FROM tag_tree"), isKept ? "1\n" : "0\n");
        EXPECT_EQ(index.meta("schema"), "6");
        EXPECT_EQ(index.meta("other"), "stays");
    }
}

TEST_F(SearchIndexFile, ABatchIsAllOrNothingAndMayHoldEveryKindOfWrite) {
    SearchIndex index(file_);
    index.batch([&] {
        index.upsert(note(1, "one"));
        index.batch([&] { index.upsert(note(2, "two")); });
        index.replaceTagTree({{"a", "b"}, {"b", std::nullopt}});
        index.setMeta("mark", "1");
        index.remove(uuid(1).text());
    });
    EXPECT_EQ(rowsOf(index, "SELECT title FROM docs"), "two\n");

    EXPECT_THROW(
        index.batch([&] {
            index.upsert(note(3, "three"));
            index.replaceTagTree({});
            index.setMeta("mark", "2");
            throw std::runtime_error("stop");
        }),
        std::runtime_error);
    EXPECT_EQ(rowsOf(index, "SELECT title FROM docs"), "two\n");
    EXPECT_EQ(index.meta("mark"), "1");
    EXPECT_EQ(index.descendantTags("B"), std::vector<std::string>{"a"});
    index.upsert(note(3, "three"));  // the broken batch left nothing behind
    EXPECT_EQ(index.countDocuments(), 2);
}

TEST_F(SearchIndexFile, WritesTheNextDocumentAfterOneThatWasRefused) {
    SearchIndex index(file_);
    index.perform([](SQLiteDatabase& database) {
        database.execute("CREATE TRIGGER refusal BEFORE INSERT ON docs WHEN NEW.title = 'refused' "
                         "BEGIN SELECT RAISE(ABORT, 'refused'); END");
    });
    for (const char* title : {"one", "refused", "two"}) {
        const bool isRefused = std::string(title) == "refused";
        const auto write = [&] { index.batch([&] { index.upsert(note(1, title)); }); };
        if (isRefused) {
            EXPECT_THROW(write(), Error);
        } else {
            write();
        }
    }
    EXPECT_EQ(rowsOf(index, "SELECT title FROM docs"), "two\n");
    EXPECT_EQ(rowsOf(index, "SELECT title FROM fts"), "two\n");
}

TEST_F(SearchIndexFile, TakesTheOlderSelfOutOfWhatARebuildAdds) {
    SearchIndex index(file_);
    IndexDocument document = note(1, "by a process that was quicker");
    document.attachments = {{uuid(11), "scan.pdf", "application/pdf", "text"}};
    index.batch([&] {
        index.upsert(document);
        index.insert(IndexRows(note(1, "by the rebuild")));
        index.insert(IndexRows(note(2, "another")));
    });
    EXPECT_EQ(
        rowsOf(index, "SELECT d.title, f.title FROM docs d JOIN fts f ON f.rowid = d.rowid"),
        "by the rebuild|by the rebuild\nanother|another\n");
    EXPECT_EQ(rowsOf(index, "SELECT count(*) FROM fts"), "2\n");
    EXPECT_EQ(rowsOf(index, "SELECT count(*) FROM atts UNION SELECT count(*) FROM afts"), "0\n");
}

TEST_F(SearchIndexFile, MergesItsPartsAndItsJournalWhenThereIsTime) {
    SearchIndex index(file_);
    index.makeAfresh();
    const auto parts = [&] { return rowsOf(index, "SELECT count(DISTINCT segid) FROM fts_idx"); };
    const auto fileSize = [&] { return std::filesystem::file_size(file_); };
    const auto emptySize = fileSize();
    for (int i = 1; i < 15; ++i) {
        index.upsert(note(i, "Plan " + std::to_string(i)));
    }
    index.tidyUp();  // too early
    EXPECT_EQ(parts(), "14\n");
    EXPECT_EQ(fileSize(), emptySize);

    index.upsert(note(15, "Plan"));
    index.tidyUp();
    EXPECT_EQ(parts(), "1\n");
    EXPECT_GT(fileSize(), emptySize);
    EXPECT_EQ(rowsOf(index, "SELECT count(*) FROM fts WHERE fts MATCH 'plan'"), "15\n");
}

TEST_F(SearchIndexFile, FindsTheTagsBelowATagEvenInACircle) {
    SearchIndex index(file_);
    index.replaceTagTree(
        {{"Work", std::nullopt},
         {"PLANS", "work"},
         {"Old", "Plans"},
         {"", "work"},
         {"ÄRGER", "Work"}});
    EXPECT_EQ(index.descendantTags("WORK"), (std::vector<std::string>{"plans", "ärger", "old"}));
    EXPECT_EQ(index.descendantTags("unknown"), std::vector<std::string>{});

    index.replaceTagTree({{"a", "b"}, {"b", "a"}, {"c", "c"}});
    EXPECT_EQ(index.descendantTags("a"), std::vector<std::string>{"b"});
    EXPECT_EQ(index.descendantTags("c"), std::vector<std::string>{});
}

TEST_F(SearchIndexFile, CutsAndCleansTextsThatSQLiteWouldNotTake) {
    SearchIndex index(file_);
    using namespace std::string_literals;
    IndexDocument document = note(1, "before\0after"s, "broken \xC3( bytes");
    document.attachmentText = std::string(maximumIndexedBytes - 1, ' ') + "ééé";
    index.upsert(document);
    EXPECT_EQ(
        rowsOf(index, "SELECT title, body, length(CAST(attachments AS BLOB)) FROM fts"),
        "beforeafter|broken \uFFFD( bytes|" + std::to_string(maximumIndexedBytes - 1) + "\n");
}

TEST_F(SearchIndexFile, AnswersWhatSuggestionsAsk) {
    SearchIndex index(file_);
    IndexDocument one = note(1, "100% Émile", "tsunami 2025-01-15 12.50 alpha");
    one.tags = {"A b", "c"};
    one.notebook = "Work";
    one.attachmentTypes = {"pdf", "document"};
    one.createdAt = Instant::fromSeconds(1735689599);  // the last second of 2024 in UTC
    one.attachments = {{uuid(11), "a", "", ""}};
    IndexDocument two = note(2, "alphabet");
    two.notebook = "Work";
    two.createdAt = Instant::fromSeconds(1735689600);
    IndexDocument trashed = note(3, "alpha");
    trashed.isTrashed = true;
    trashed.tags = {"gone"};
    trashed.notebook = "Home";
    for (const IndexDocument& document : {one, two, trashed}) {
        index.upsert(document);
    }

    std::string terms;
    for (const auto& [term, documents] : index.terms()) {
        terms += term + ":" + std::to_string(documents) + " ";
    }
    EXPECT_EQ(
        terms,
        "01:1 100:1 12:1 15:1 2025:1 50:1 a:1 alpha:2 alphabet:1 b:1 c:1 emile:1 gone:1 home:1 "
        "tsunami:1 work:2 ");
    EXPECT_EQ(
        index.termsBetween("alpha", "alphb"), (std::vector<std::string>{"alpha", "alphabet"}));
    EXPECT_EQ(index.termsBetween("ts", "tt"), std::vector<std::string>{"tsunami"});
    EXPECT_EQ(index.termsLike("%ha%", 1), std::vector<std::string>{"alpha"});
    EXPECT_TRUE(index.hasTerm("emi", "emj"));
    EXPECT_FALSE(index.hasTerm("emo", "emp"));
    EXPECT_EQ(index.years(), (std::vector<std::string>{"2025", "2024"}));
    ASSERT_EQ(index.notebookCounts().size(), 1U);
    EXPECT_EQ(index.notebookCounts()[0].documents, 2);
    EXPECT_EQ(index.tagLists(), (std::vector<std::vector<std::string>>{{"A b", "c"}}));
    EXPECT_EQ(index.typeLists(), (std::vector<std::vector<std::string>>{{"pdf", "document"}}));
    EXPECT_EQ(index.titlesLike(R"(100\% e%)", 9), std::vector<std::string>{"100% Émile"});
    EXPECT_EQ(index.ownerOfAttachment(uuid(11)), uuid(1).text());
}

TEST_F(SearchIndexFile, NoticesOtherWritersAndAnotherFileInItsPlace) {
    SearchIndex index(file_);
    SearchIndex other(file_);
    const std::uint64_t generation = index.generation();
    const std::int64_t before = index.fileGeneration();
    other.upsert(note(1, "by the other"));
    EXPECT_EQ(index.generation(), generation);
    EXPECT_NE(index.fileGeneration(), before);
    EXPECT_EQ(index.countDocuments(), 1);

    other.replaceFile();
    EXPECT_TRUE(index.isReplaced());
    EXPECT_FALSE(other.isReplaced());
    index.reopen();
    EXPECT_EQ(index.countDocuments(), 0);
}

TEST_F(SearchIndexFile, SaysWhyItCannotBeOpened) {
    const auto failureOf = [&](const std::filesystem::path& file) -> std::optional<Error> {
        try {
            SearchIndex index(file);
        } catch (const Error& error) {
            return error;
        }
        return std::nullopt;
    };
    test::putContent(file_, std::string(5000, 'x'));
    const auto garbage = failureOf(file_);
    ASSERT_TRUE(garbage);
    EXPECT_STREQ(
        garbage->what(), "Tesserine could not open its search index. file is not a database");
    EXPECT_EQ(garbage->kind(), Error::Kind::open);
    EXPECT_TRUE(garbage->isDamage());

    std::filesystem::create_directory(folder_ / "taken");
    const auto folder = failureOf(folder_ / "taken");
    ASSERT_TRUE(folder);
    EXPECT_STREQ(
        folder->what(), "Tesserine could not open its search index. unable to open database file");
    EXPECT_FALSE(folder->isDamage());
}

TEST_F(SearchIndexFile, ForgetsTheTextOfWhatWasTakenOut) {
    SearchIndex index(file_);
    const auto filesHold = [&](const std::string& text) {
        const std::string journal = file_.string() + "-wal";
        return (test::contentOf(file_) + test::contentOf(journal)).find(text) != std::string::npos;
    };
    for (int i = 0; i < 40; ++i) {
        index.upsert(note(
            i,
            "Plan",
            "meet at the quagmire " + std::string(static_cast<std::size_t>(100 * i), 'x')));
    }
    ASSERT_TRUE(filesHold("quagmire"));
    for (int i = 0; i < 40; ++i) {
        index.upsert(note(i, "Plan", "meet at noon"));
    }
    ASSERT_TRUE(index.forgetDeleted());
    EXPECT_FALSE(filesHold("quagmire"));
    EXPECT_EQ(rowsOf(index, "SELECT count(*) FROM fts WHERE fts MATCH 'noon'"), "40\n");
    EXPECT_EQ(rowsOf(index, "SELECT count(*) FROM fts WHERE fts MATCH 'quagmire'"), "0\n");
}

TEST_F(SearchIndexFile, SeveralProcessesMayMakeAndFillItAtOnce) {
    constexpr int processes = 4;
    constexpr int documents = 25;
    const auto statuses = test::runInChildren(processes, [&](int process) {
        for (int i = 0; i < documents; ++i) {
            SearchIndex index(file_);  // opening is where they get into each other's way most
            index.batch([&] { index.upsert(note(process * 100 + i, "shared")); });
        }
    });
    EXPECT_EQ(statuses, std::vector<int>(processes, 0));
    SearchIndex index(file_);
    EXPECT_EQ(index.countDocuments(), processes * documents);
    index.perform([](SQLiteDatabase& database) {
        database.execute("INSERT INTO fts(fts) VALUES('integrity-check');");
    });
}

}  // namespace
}  // namespace tesserine
