#include "core/services/LibraryChecker.h"

#include "base/sqlite/SQLiteDatabase.h"
#include "core/model/TaskEntities.h"
#include "core/services/AttachmentService.h"
#include "core/services/LibraryFixture.h"
#include "core/store/StoreCore.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace tesserine {
namespace {

using test::at;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

/// A library in a folder of its own, with a note, a notebook and a large attachment.
class LibraryCheckerTest : public ::testing::Test {
public:
    LibraryCheckerTest() { open(); }

    void open() {
        store = std::make_unique<TesserineStore>(
            StoreConfiguration{.directory = folder / "Library"},
            StoreEnvironment{.clock = clock, .random = random});
        context = &store->viewContext();
    }
    /// Changes the library behind the program's back.
    void tamper(const std::string& sql) {
        store.reset();
        SQLiteDatabase database(
            folder / "Library/Tesserine.sqlite", {.access = SQLiteDatabase::Access::readWrite});
        database.execute(sql);
    }
    CDNote& insertNote(const std::string& html) {
        return notes.createNote(*context, {.title = "Plan", .html = html});
    }
    CDAttachment& attachLarge(CDNote& note) {
        Bytes data(ExternalValues::inlineLimit + 1, 'x');
        return attachments.insert(*context, note, {.filename = "l.bin", .data = std::move(data)});
    }
    std::filesystem::path blobFolder() const { return *store->core().external().folder(); }

    LibraryReport check(LibraryChecker::Repairs repairs = LibraryChecker::Repairs::safe) {
        if (!store) open();
        return LibraryChecker(*store, clock).check({.repairs = repairs});
    }
    /// "kind" or "kind, repaired" of each problem.
    static std::vector<std::string> kinds(const LibraryReport& report) {
        std::vector<std::string> lines;
        for (const LibraryProblem& problem : report.problems) {
            EXPECT_THAT(problem.sentence, EndsWith("."));
            lines.push_back(
                std::string(rawValue(problem.kind)) + (problem.repaired ? ", repaired" : ""));
        }
        return lines;
    }

    test::TemporaryFolder folder;
    FixedClock clock{at("2026-03-14T09:00:00Z")};
    SecureRandom random;
    mime::TypeRegistry registry;
    NoteService notes{clock};
    AttachmentService attachments{clock, registry};
    std::unique_ptr<TesserineStore> store;
    StoreContext* context = nullptr;
};

TEST_F(LibraryCheckerTest, AHealthyLibraryHasNoProblemsAndIsCounted) {
    CDNote& note = insertNote("<p>x</p>");
    attachLarge(note);
    context->save();
    const auto report = check();
    EXPECT_THAT(kinds(report), IsEmpty());
    EXPECT_EQ(report.objects, 2U);
    EXPECT_EQ(report.bodies, 1U);
    EXPECT_EQ(report.attachments, 1U);
    EXPECT_EQ(report.files, 1U);
}

TEST_F(LibraryCheckerTest, ReferencesToWhatIsGoneAreTakenAway) {
    CDNote& note = insertNote("<p>x</p>");
    note.notebook = &context->insert<CDNotebook>();
    note.tags.add(context->insert<CDTag>());
    const Uuid id = *note.id;
    context->save();
    tamper("DELETE FROM ZCDNOTEBOOK; DELETE FROM ZCDTAG;");

    EXPECT_THAT(
        kinds(check(LibraryChecker::Repairs::none)),
        ElementsAre("brokenReference", "brokenReference"));
    const auto before = store->lastTransactionNumber();
    const auto report = check();
    EXPECT_THAT(
        kinds(report), ElementsAre("brokenReference, repaired", "brokenReference, repaired"));
    EXPECT_EQ(
        report.problems.front().sentence,
        "The note " + id.text()
            + " pointed to a notebook that is gone; the reference was removed.");
    EXPECT_EQ(store->history(before).size(), 2U) << "followers learn of the repair";
    EXPECT_THAT(kinds(check()), IsEmpty());
    EXPECT_EQ(store->viewContext().find<CDNote>(id)->html, "<p>x</p>");
}

TEST_F(LibraryCheckerTest, MissingFilesAreReportedAndOldOrphansRemoved) {
    CDNote& note = insertNote("");
    CDAttachment& attachment = attachLarge(note);
    const Uuid id = *attachment.id;
    context->save();
    const auto blobs = blobFolder();
    const auto only = std::filesystem::directory_iterator(blobs)->path();
    std::filesystem::rename(only, folder / "kept");
    const auto orphan = blobs / Uuid::random(random).text();
    const auto young = blobs / Uuid::random(random).text();
    const auto foreign = blobs / "notes.txt";
    for (const auto& file : {orphan, young, foreign}) {
        test::putContent(file, "x");
    }
    for (const auto& file : {orphan, foreign}) {
        std::filesystem::last_write_time(
            file, std::filesystem::file_time_type::clock::now() - std::chrono::hours(25));
    }

    const auto report = check();
    EXPECT_THAT(kinds(report), ElementsAre("missingFile", "orphanedFile, repaired"));
    EXPECT_EQ(
        report.problems.front().sentence,
        "The content of the attachment " + id.text() + " is missing.");
    EXPECT_FALSE(std::filesystem::exists(orphan));
    EXPECT_TRUE(std::filesystem::exists(young)) << "it may belong to a save under way";
    EXPECT_TRUE(std::filesystem::exists(foreign));

    std::filesystem::rename(folder / "kept", only);
    EXPECT_THAT(kinds(check()), IsEmpty());
}

TEST_F(LibraryCheckerTest, AChangedByteIsSeenAndLeftAlone) {
    CDNote& note = insertNote("<p>hello</p>");
    attachments.insert(*context, note, {.filename = "a.txt", .data = {'a', 'b'}});
    CDAttachment& large = attachLarge(note);
    (void)large;
    notes.takeRevision(*context, note, NoteRevisionReason::autosave);
    context->save();
    const auto blob = std::filesystem::directory_iterator(blobFolder())->path();
    test::putContent(blob, test::contentOf(blob).replace(5, 1, "y"));
    tamper("UPDATE ZCDNOTE SET ZHTML = '<p>hellO</P>';"
           "UPDATE ZCDNOTEREVISION SET ZHTML = '<p>hellp</p>';"
           "UPDATE ZCDATTACHMENT SET ZFILEDATA = x'016163' WHERE ZBYTECOUNT = 2;");
    EXPECT_THAT(
        kinds(check()),
        ElementsAre("digestMismatch", "digestMismatch", "digestMismatch", "digestMismatch"));
    EXPECT_EQ(store->viewContext().fetch<CDNote>().front()->html, "<p>hellO</P>");
}

TEST_F(LibraryCheckerTest, ABodyInAnotherFormIsRewrittenAndKept) {
    insertNote("<p>x</p>");
    context->save();
    tamper("UPDATE ZCDNOTE SET ZHTML = '<p onclick=\"x()\">x</p>'; DELETE FROM Z_DIGEST;");
    EXPECT_THAT(kinds(check(LibraryChecker::Repairs::none)), ElementsAre("bodyNotCanonical"));
    EXPECT_THAT(kinds(check()), ElementsAre("bodyNotCanonical, repaired"));
    const CDNote& note = *store->viewContext().fetch<CDNote>().front();
    EXPECT_EQ(note.html, "<p>x</p>");
    ASSERT_EQ(note.revisions.count(), 1U);
    EXPECT_EQ(note.revisions.all().front()->html, "<p onclick=\"x()\">x</p>");
    EXPECT_THAT(kinds(check()), IsEmpty());
}

TEST_F(LibraryCheckerTest, CyclesAreBrokenAtTheSmallestIdentifier) {
    std::vector<CDTag*> tags;
    for (const char* id :
         {"00000000-0000-4000-8000-000000000003",
          "00000000-0000-4000-8000-000000000001",
          "00000000-0000-4000-8000-000000000002",
          "00000000-0000-4000-8000-000000000009"}) {
        tags.push_back(&context->insert<CDTag>());
        tags.back()->id = Uuid::parse(id);
    }
    auto& alone = context->insert<CDTask>();
    context->save();
    alone.parent = &alone;
    tags[0]->parent = tags[1];
    tags[1]->parent = tags[2];
    tags[2]->parent = tags[0];
    tags[3]->parent = tags[0];  // hangs below the cycle and stays there
    context->save();

    const auto report = check();
    EXPECT_THAT(kinds(report), ElementsAre("cycle, repaired", "cycle, repaired"));
    EXPECT_THAT(report.problems.front().sentence, HasSubstr("000000000001 stood below itself"));
    store->viewContext().reset();
    const auto tops = store->viewContext().fetch<CDTag>({.predicate = {"parent == nil"}});
    ASSERT_EQ(tops.size(), 1U);
    EXPECT_EQ(tops.front()->id, Uuid::parse("00000000-0000-4000-8000-000000000001"));
    EXPECT_THAT(kinds(check()), IsEmpty());
}

TEST_F(LibraryCheckerTest, IdentifiersArePresentAndPinsAgreeAfterwards) {
    CDNote& first = insertNote("");
    CDNote& second = insertNote("");
    CDNote& third = insertNote("");
    second.id = first.id;
    third.id = std::nullopt;
    first.isPinned = true;
    third.favoritedAt = clock.now();
    context->save();
    EXPECT_THAT(
        kinds(check()),
        UnorderedElementsAre(
            "missingID, repaired",
            "duplicateID",
            "pinDisagreement, repaired",
            "pinDisagreement, repaired"));
    EXPECT_THAT(kinds(check()), ElementsAre("duplicateID"));
}

TEST_F(LibraryCheckerTest, ADamagedFileIsReportedAndNotTouched) {
    for (int i = 0; i < 300; ++i) {
        insertNote("<p>" + std::string(1000, 'x') + "</p>");
    }
    context->save();
    const auto file = store->file();
    store.reset();
    std::string content = test::contentOf(file);
    content.replace(content.size() / 2, 3000, std::string(3000, '\xFF'));
    test::putContent(file, content);

    const auto report = check();
    ASSERT_FALSE(report.isClean());
    for (const LibraryProblem& problem : report.problems) {
        EXPECT_EQ(rawValue(problem.kind), "damagedFile");
        EXPECT_FALSE(problem.repaired);
        EXPECT_THAT(problem.sentence, testing::Not(HasSubstr("xxxx")));
    }
    store.reset();
    EXPECT_EQ(test::contentOf(file), content);
}

TEST_F(LibraryCheckerTest, AStoppedCheckSaysSo) {
    insertNote("x");
    context->save();
    std::stop_source source;
    std::vector<std::string> steps;
    const auto report = LibraryChecker(*store, clock)
                            .check(
                                {.stop = source.get_token(),
                                 .progress = [&](std::string_view step, std::size_t, std::size_t) {
                                     steps.emplace_back(step);
                                     if (step == "references") source.request_stop();
                                 }});
    EXPECT_TRUE(report.wasStopped);
    EXPECT_THAT(steps, testing::Contains("references"));
    EXPECT_THAT(steps, testing::Not(testing::Contains("bodies")));
}

}  // namespace
}  // namespace tesserine
