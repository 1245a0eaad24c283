#include "core/import/ImportRun.h"

#include "base/FailPoint.h"
#include "core/body/BodyError.h"
#include "core/import/ImportFixture.h"
#include "core/import/ImportReportJSON.h"
#include "tests/support/Child.h"

#include <gmock/gmock.h>

#include <csignal>

namespace tesserine {
namespace {

using testing::HasSubstr;

class ImportRunTest : public test::ImportFixture {
public:
    void putNumbered(int count) const {
        for (int i = 0; i < count; ++i) {
            std::string number = std::to_string(i);
            number.insert(0, 4 - number.size(), '0');
            put(number + ".md",
                "note [[" + std::to_string((i + 77) % count + 10'000).substr(1) + "]]");
        }
    }
    /// How many links of the library lead to a note that is not there.
    std::size_t danglingLinks() {
        std::size_t count = 0;
        for (const CDNote* note : context().fetch<CDNote>()) {
            const std::string html = note->html.valueOr("");
            const std::string scheme = "tesserine://note/";
            for (auto i = html.find(scheme); i != std::string::npos; i = html.find(scheme, i + 1)) {
                const auto id = Uuid::parse(html.substr(i + scheme.size(), 36));
                if (!id || context().find<CDNote>(*id) == nullptr) ++count;
            }
        }
        return count;
    }
};

TEST_F(ImportRunTest, DuplicatesFollowThePolicy) {
    put("a.md", "see [[b]]");
    put("b.md", "---\ntags: [t]\n---\nb");
    EXPECT_EQ(counts(run()), "2 imported");
    EXPECT_EQ(counts(run()), "2 skipped");

    CDNote& a = note("a");
    NoteService(clock).updateNote(context(), a, {.html = "<p>mine</p>"});
    context().save();
    clock.advance(std::chrono::hours(1));
    const Instant created = *a.createdAt;
    EXPECT_EQ(counts(run({.tag = "again", .duplicates = DuplicatePolicy::replace})), "2 replaced");
    context().reset();
    CDNote& replaced = note("a");
    EXPECT_EQ(replaced.html, "<p>see <a href=\"" + addressOf("b") + "\">b</a></p>");
    EXPECT_EQ(replaced.createdAt, created);
    EXPECT_EQ(replaced.updatedAt, clock.now());
    EXPECT_EQ(library(), "Vault: a #again\nVault: b #again #t\n");
    std::string kept;
    for (const CDNoteRevision* revision : replaced.revisions.all()) {
        kept += revision->reason.valueOr("") + " " + revision->html.valueOr("") + "; ";
    }
    EXPECT_THAT(kept, HasSubstr("preImportReplace <p>mine</p>; "));

    EXPECT_EQ(counts(run({.duplicates = DuplicatePolicy::keepBoth})), "2 imported");
    EXPECT_EQ(context().count<CDNote>(), 4U);
    // Each copy links to the copy that came with it.
    EXPECT_EQ(danglingLinks(), 0U);
    EXPECT_EQ(NoteService(clock).backlinks(context(), note("b")).size(), 1U);

    // Notes in the trash do not count.
    for (CDNote* one : context().fetch<CDNote>()) {
        NoteService(clock).moveToTrash(*one);
    }
    context().save();
    EXPECT_EQ(counts(run()), "2 imported");
}

TEST_F(ImportRunTest, ReplacingKeepsFilesThatARevisionShows) {
    put("a.md", "![](x.bin) ![](y.bin)");
    put("x.bin", "xx");
    put("y.bin", "yy");
    run();
    CDNote& a = note("a");
    const AttachmentService attachments(clock, types);
    attachments.insert(context(), a, {.filename = "own.bin", .data = {1}});
    // The text shows x no longer, so only y is in the revision that replacing takes.
    NoteService(clock).updateNote(
        context(), a, {.html = AttachmentService::bodyElement(*a.attachments.all().at(1))});
    for (CDNoteRevision* revision : a.revisions.all()) {
        context().remove(*revision);
    }
    context().save();
    put("x.bin", "other x");
    put("y.bin", "other y");
    EXPECT_EQ(counts(run({.duplicates = DuplicatePolicy::replace})), "1 replaced, 2 attached");
    context().reset();
    std::string files;
    for (const CDAttachment* attachment : note("a").attachments.all()) {
        files += std::string(textOf(*attachment->fileData)) + " ";
    }
    EXPECT_EQ(files, "yy \1 other x other y ");
}

TEST_F(ImportRunTest, EqualNotesOfOneRunAreDuplicatesToo) {
    put("One/a.md", "same");
    put("Two/a.md", "same");
    put("b.md", "[[Two/a]]");
    EXPECT_EQ(counts(run()), "2 imported, 1 skipped");
    EXPECT_EQ(body("b"), "<p><a href=\"" + addressOf("a") + "\">Two/a</a></p>");
}

TEST_F(ImportRunTest, LinksToNotesThatWereSkippedOrFailedAreMended) {
    put("z.md", "there already");
    run();
    put("a.md", "[[z]] [[y]] ![](p.txt.bin)");
    put("p.txt.bin", "x");
    put("y.md", std::string(10'000'001, 'x'));
    EXPECT_EQ(counts(run()), "1 imported, 1 skipped, 1 failed, 1 attached");
    EXPECT_THAT(body("a"), HasSubstr("<a href=\"" + addressOf("z") + "\">z</a> y "));
    EXPECT_THAT(body("a"), HasSubstr("<span data-ts-attachment="));
    EXPECT_EQ(danglingLinks(), 0U);
}

TEST_F(ImportRunTest, ReportIsKeptAndListsEveryNote) {
    putNumbered(120);
    put("big.md", std::string(10'000'001, 'x'));
    const ImportReport made = run();
    const auto rows = reports.list(context());
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows.front()->title, "Markdown import, 14 March 2026");
    EXPECT_EQ(context().count<CDImportReport>(), 1U);  // none for batches is left
    const ImportReport kept = reports.read(context(), *rows.front());
    EXPECT_EQ(encodedImportReport(kept), encodedImportReport(made));
    EXPECT_EQ(counts(kept), "120 imported, 1 failed");
    EXPECT_EQ(kept.finished, clock.now());
    EXPECT_EQ(kept.file, source().string());
    EXPECT_THAT(
        ImportReports::text(kept, calendar),
        HasSubstr("failed: big.md\n    " + std::string(BodyError::tooLarge().what()) + "\n"));
}

TEST_F(ImportRunTest, StoppedRunKeepsWhatIsSavedAndIsContinued) {
    putNumbered(130);
    std::stop_source stop;
    const ImportReport stopped =
        run({}, {.stop = stop.get_token(), .progress = [&](const auto& at) {
                     if (at.done == 70) stop.request_stop();
                 }});
    EXPECT_EQ(counts(stopped), "70 imported");
    EXPECT_EQ(stopped.found, 130U);
    EXPECT_FALSE(stopped.finished);
    EXPECT_GT(danglingLinks(), 0U);

    EXPECT_EQ(counts(run()), "60 imported, 70 skipped");
    context().reset();
    EXPECT_EQ(danglingLinks(), 0U);
    EXPECT_EQ(counts(run()), "130 skipped");
}

TEST_F(ImportRunTest, KilledRunIsListedAndCanBeRunAgain) {
    putNumbered(260);
    std::filesystem::create_directories(folder.path() / "Library");
    for (int batch = 1; batch <= 3; ++batch) {
        // Each run adds one batch more than the one before it, and is killed.
        const int status = test::runInChild([&] {
            failpoint::arm("import.batchSaved", batch, [] { std::raise(SIGKILL); });
            run();
        });
        ASSERT_EQ(status, 128 + SIGKILL);
        const std::size_t present = context().count<CDNote>();
        EXPECT_GE(present, 50U * static_cast<unsigned>(batch));
        // The reports name exactly the notes that are there.
        std::size_t listed = 0;
        for (const CDImportReport* row : reports.list(context())) {
            const ImportReport report = reports.read(context(), *row);
            EXPECT_FALSE(report.finished);
            for (const ImportedNote& one : report.notes) {
                EXPECT_NE(context().find<CDNote>(*one.noteID), nullptr);
            }
            listed += report.imported;
        }
        EXPECT_EQ(listed, present);
        close();
    }
    run();
    EXPECT_EQ(context().count<CDNote>(), 260U);
    EXPECT_EQ(danglingLinks(), 0U);
}

TEST_F(ImportRunTest, KilledBetweenTheFilesOfANoteItIsMadeAfresh) {
    std::string text;
    for (const char* name : {"a.bin", "b.bin", "c.bin"}) {
        put(name, name + std::string(20'000'000, 'x'));
        text += "[" + std::string(name) + "](" + name + ") ";
    }
    put("n.md", text);
    std::filesystem::create_directories(folder.path() / "Library");
    const int status = test::runInChild([&] {
        failpoint::arm("import.halfwaySaved", 1, [] { std::raise(SIGKILL); });
        run();
    });
    ASSERT_EQ(status, 128 + SIGKILL);
    EXPECT_EQ(note("n").attachments.count(), 2U);
    EXPECT_EQ(
        counts(reports.read(context(), *reports.list(context()).front())),
        "1 imported, 2 attached");
    EXPECT_EQ(counts(run()), "1 imported, 3 attached");
    EXPECT_EQ(counts(run()), "1 skipped");
    context().reset();
    EXPECT_EQ(context().count<CDNote>(), 1U);
    EXPECT_EQ(context().count<CDAttachment>(), 3U);
}

TEST_F(ImportRunTest, UndoTrashesWhatWasCreatedAndPrunesTags) {
    put("kept.md", "---\ntags: old\n---\nkept");
    run();
    put("a.md", "---\ntags: [old, new]\n---\na");
    put("b.md", "b");
    put("gone.md", "gone");
    const ImportReport report = run();
    EXPECT_EQ(counts(report), "3 imported, 1 skipped");
    context().remove(note("gone"));
    NoteService(clock).moveToTrash(note("b"));
    context().insert<CDTag>().name = "unused";
    context().save();

    const ImportUndo undo = reports.undo(context(), *report.id);
    EXPECT_EQ(undo.trashed, 1U);
    EXPECT_EQ(undo.gone, 2U);
    EXPECT_EQ(undo.prunedTags, 1U);  // notes in the trash keep theirs
    EXPECT_EQ(library(), "Vault: kept #old\n");
    EXPECT_TRUE(reports.read(context(), reports.get(context(), *report.id)).undone);
    EXPECT_EQ(reports.undo(context(), *report.id).trashed, 0U);
    // What was undone can be imported again.
    EXPECT_EQ(counts(run()), "3 imported, 1 skipped");
    EXPECT_THROW(reports.undo(context(), Uuid::random(random)), StoreError);
}

TEST_F(ImportRunTest, FullDiskEndsTheRunWithASentence) {
    putNumbered(60);
    store();
    failpoint::arm(
        "import.batchSaved", 1, [] { throw StoreError::saveFailed("The disk is full."); });
    EXPECT_THROW(run(), StoreError);
    EXPECT_EQ(counts(run()), "10 imported, 50 skipped");
}

TEST(ImportReportJSON, DamagedReportsAreRefusedOrReadAsFarAsTheyGo) {
    EXPECT_FALSE(decodedImportReport(""));
    EXPECT_FALSE(decodedImportReport("[]"));
    EXPECT_FALSE(decodedImportReport("{\"format\":"));
    const auto report = decodedImportReport(
        R"({"format":7,"found":-1,"notes":[1,{"outcome":"?"},{"outcome":"failed","noteID":"x",)"
        R"("warnings":[1,"w"]}],"imported":99})");
    ASSERT_TRUE(report);
    EXPECT_EQ(report->found, 0U);
    EXPECT_EQ(report->imported, 0U);
    EXPECT_EQ(report->failed, 1U);
    EXPECT_THAT(report->notes.front().warnings, testing::ElementsAre("w"));
}

}  // namespace
}  // namespace tesserine
