#include "core/import/ENEXImporter.h"

#include "base/Files.h"
#include "core/import/ENEXFixture.h"
#include "core/model/TaskEntities.h"
#include "core/tasks/TaskService.h"
#include "tests/support/Child.h"

#include <gmock/gmock.h>

#include <csignal>
#include <stop_token>

namespace tesserine {
namespace {

using test::enexFile;
using test::enexNote;
using test::media;
using test::resource;
using testing::HasSubstr;

using ENEXImporterTest = test::ENEXFixture;

TEST_F(ENEXImporterTest, FileBecomesANotebookOfNotes) {
    const std::string html = "<div>Mix <b>flour</b>&nbsp;and <i>eggs</i>.</div>";
    const std::string rest =
        "<updated>20210203T040506Z</updated><tag>food</tag><tag>A &amp; B</tag>"
        "<note-attributes><latitude>52.5</latitude><longitude>13.4</longitude>"
        "<author>Ann</author><source-url>https://example.org/</source-url>"
        "<reminder-time>20260401T080000Z</reminder-time></note-attributes>";
    const ImportReport report =
        importNotes(enexNote("Pancakes", html, rest) + enexNote("Tea", "x"));
    EXPECT_EQ(counts(report), "2 imported");
    EXPECT_EQ(warnings(report.notes), "");
    EXPECT_EQ(library(), "Recipes: Pancakes #A & B #food\nRecipes: Tea\n");

    const CDNote& made = note("Pancakes");
    EXPECT_EQ(made.html, "<div>Mix <strong>flour</strong>&nbsp;and <em>eggs</em>.</div>");
    EXPECT_EQ(made.createdAt->iso(), "2020-02-03T04:05:06.000Z");
    EXPECT_EQ(made.updatedAt->iso(), "2021-02-03T04:05:06.000Z");
    EXPECT_EQ(made.sourceURL, "https://example.org/");
    EXPECT_TRUE(made.hasLocation);
    EXPECT_EQ(made.latitude, 52.5);
    EXPECT_EQ(made.reminderAt->iso(), "2026-04-01T08:00:00.000Z");
    EXPECT_EQ(made.originalFormat, "enex");
    EXPECT_EQ(made.importedFrom, "Recipes.enex");
    EXPECT_EQ(textOf(*made.importMetadata), R"({"author":"Ann"})");
    EXPECT_EQ(std::string(textOf(*made.originalSource)) + "\n", enexNote("Pancakes", html, rest));
}

TEST_F(ENEXImporterTest, FilesComeInByteForByteAndAreCompared) {
    const std::string large(300'000, 'x');
    const std::string words =
        "<recognition><![CDATA[<recoIndex><item x=\"1\"><t w=\"87\">INVOICE</t><t w=\"30\">IN</t>"
        "</item><item><t w=\"50\">total</t></item></recoIndex>]]></recognition>";
    std::string first = resource("plan", "plan.txt");
    first.insert(first.find("<mime>"), words);
    const ImportReport report = importNotes(
        enexNote("One", "<div>" + media("plan") + "</div>", first + resource(large, "large.bin"))
        + enexNote("Two", "text"));
    EXPECT_EQ(counts(report), "2 imported, 2 attached");
    EXPECT_EQ(
        report.check->sentence(),
        "2 of 2 notes and 2 of 2 files are in the library, every byte equal.");

    const CDNote& one = note("One");
    const auto files = one.attachments.all();
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(textOf(*files.at(0)->fileData), "plan");
    EXPECT_EQ(files.at(0)->filename, "plan.txt");
    EXPECT_EQ(files.at(0)->ocrText, "INVOICE\ntotal");
    EXPECT_EQ(files.at(0)->ocrStatus, "done");
    EXPECT_EQ(textOf(*files.at(1)->fileData), large);  // though the text does not show it
    EXPECT_EQ(
        one.html,
        "<div><div data-ts-attachment=\"" + files.at(0)->id->text()
            + "\" data-ts-kind=\"file\">plan.txt</div></div>");
    // The source is kept without the data.
    EXPECT_THAT(std::string(textOf(*one.originalSource)), HasSubstr("<resource><recognition>"));
    EXPECT_LT(one.originalSource->size(), 2'000U);
}

TEST_F(ENEXImporterTest, TheSameFileTwiceDoublesNothing) {
    const std::string tasks =
        "<task><title>Call</title><taskGroupNoteLevelID>g</taskGroupNoteLevelID></task>";
    const std::string notes = enexNote(
                                  "One",
                                  media("plan") + "<a href=\"evernote:///view/1\">Two</a>",
                                  resource("plan", "plan.txt") + tasks)
                              + enexNote("Two", "2") + enexNote("Two", "2");
    EXPECT_EQ(counts(importNotes(notes)), "2 imported, 1 skipped, 1 attached");
    const ImportReport again = importNotes(notes);
    EXPECT_EQ(counts(again), "3 skipped");
    EXPECT_EQ(
        again.check->sentence(),
        "3 of 3 notes and 0 of 0 files are in the library, every byte equal.");
    EXPECT_EQ(context().count<CDNote>(), 2U);
    EXPECT_EQ(context().count<CDAttachment>(), 1U);
    EXPECT_EQ(context().count<CDTask>(), 1U);
    EXPECT_EQ(counts(importNotes(notes, {.duplicates = DuplicatePolicy::replace})), "3 replaced");
    EXPECT_EQ(context().count<CDTask>(), 1U);
    EXPECT_EQ(
        counts(importNotes(notes, {.duplicates = DuplicatePolicy::keepBoth})),
        "3 imported, 1 attached");
    EXPECT_EQ(context().count<CDNote>(), 5U);
}

TEST_F(ENEXImporterTest, LinksLeadToTheOneNoteOfTheirText) {
    const auto link = [](const std::string& text) {
        return "<a href=\"evernote:///view/1/s1/x/x/\">" + text + "</a>";
    };
    const ImportReport report = importNotes(
        enexNote("From", link(" the  PLAN ") + link("Twice") + link("Nowhere") + link("Later"))
        + enexNote("The plan", "x") + enexNote("Twice", "1") + enexNote("Twice", "2")
        + enexNote("Later", link("From")));
    EXPECT_EQ(
        body("From"),
        "<a href=\"" + addressOf("The plan") + "\"> the PLAN </a>TwiceNowhere<a href=\""
            + addressOf("Later") + "\">Later</a>");
    EXPECT_EQ(body("Later"), "<a href=\"" + addressOf("From") + "\">From</a>");
    EXPECT_EQ(
        warnings(report.notes),
        "From: 2 links to notes that are not clearly some of this import became text.\n");
    // A note that was there already is where links to it lead.
    const std::string before = addressOf("The plan");
    const ImportReport again =
        importNotes(enexNote("New", link("The plan")) + enexNote("The plan", "x"));
    EXPECT_EQ(counts(again), "1 imported, 1 skipped");
    EXPECT_EQ(body("New"), "<a href=\"" + before + "\">The plan</a>");
}

TEST_F(ENEXImporterTest, TasksAreLinkedToTheirNote) {
    const auto task = [](const std::string& title,
                         const std::string& weight,
                         const std::string& rest) {
        return "<task><title>" + title + "</title><created>20260101T080000Z</created><sortWeight>"
               + weight + "</sortWeight><taskGroupNoteLevelID>G1</taskGroupNoteLevelID>" + rest
               + "</task>";
    };
    const std::string tasks =
        task(
            "Second",
            "D",
            "<taskStatus>completed</taskStatus><statusUpdated>20260102T080000Z"
            "</statusUpdated><dueDate>20260320T093000Z</dueDate>")
        + task(
            "First",
            "B",
            "<taskStatus>open</taskStatus><taskFlag>true</taskFlag><dueDate>20260320T070000Z"
            "</dueDate><dueDateUIOption>date_only</dueDateUIOption><timeZone>America/Los_Angeles"
            "</timeZone><reminder><reminderDate>20260319T080000Z</reminderDate></reminder>")
        + task(" ", "C", "");
    const std::string enml =
        "<div>a</div><div style=\"--en-task-group:true; --en-id:G1;\"/><div>b</div>";
    const ImportReport report = importNotes(enexNote("Plan", enml, tasks));
    EXPECT_EQ(body("Plan"), "<div>a</div><div>b</div>");
    std::string lines;
    for (const CDTask* made : note("Plan").tasks.all()) {
        lines += made->title.valueOr("") + " " + std::to_string(*made->priority) + " "
                 + (made->dueHasTime ? made->dueDate->iso() : calendar.local(*made->dueDate).iso())
                 + (made->completedAt ? " done " + made->completedAt->iso() : "")
                 + (made->reminderAt ? " at " + made->reminderAt->iso() : "") + "\n";
    }
    EXPECT_EQ(
        lines,
        "First 2 2026-03-20T00:00:00 at 2026-03-19T08:00:00.000Z\n"
        "Second 4 2026-03-20T09:30:00.000Z done 2026-01-02T08:00:00.000Z\n");

    // Undoing takes the tasks that nobody touched since.
    const auto made = note("Plan").tasks.all();
    clock.advance(std::chrono::minutes(1));
    TaskService(clock).setTitle(*made.front(), "Mine");
    context().save();
    EXPECT_EQ(reports.undo(context(), *report.id).tasks, 1U);
    EXPECT_EQ(context().count<CDTask>(), 1U);

    importNotes(enexNote("List", enml, tasks), {.createsTasks = false});
    EXPECT_EQ(
        body("List"),
        "<div>a</div><ul class=\"ts-checklist\"><li data-checked=\"false\">First</li>"
        "<li data-checked=\"true\">Second</li></ul><div>b</div>");
    EXPECT_EQ(context().count<CDTask>(), 1U);
}

TEST_F(ENEXImporterTest, FilesThatCannotComeInAreNamed) {
    const std::string damaged =
        "<resource><data encoding=\"base64\">cGxhb</data><resource-attributes><file-name>cut.png"
        "</file-name></resource-attributes></resource>";
    const std::string hostileName = std::string("../../x\xE2\x80\xAE/CON") + std::string(400, 'y');
    const ImportReport report = importNotes(
        enexNote("Damaged", media("plan"), damaged)
        + enexNote("Empty", "x", resource("", "none.txt"))
        + enexNote("Wrong digest", media("other"), resource("plan", "plan.txt"))
        + enexNote("Name", media("text"), resource("text", hostileName, "image/png")));
    EXPECT_EQ(
        warnings(report.notes),
        "Damaged: “cut.png” is damaged in the export, so it was left out.\n"
        "Damaged: A file that the text shows is not in the export.\n"
        "Empty: “none.txt” is empty, so there was nothing to attach.\n"
        "Wrong digest: “plan.txt” has another digest than the note says; it was taken in as it is.\n");
    EXPECT_EQ(
        report.check->sentence(),
        "4 of 4 notes and 2 of 3 files are in the library, every byte equal.");
    EXPECT_EQ(body("Damaged"), "<div class=\"ts-unsupported\">Missing attachment</div>");
    EXPECT_THAT(body("Wrong digest"), HasSubstr(">plan.txt</div>"));
    const std::string name = *note("Name").attachments.all().front()->filename;
    EXPECT_EQ(name.find('/'), std::string::npos);
    EXPECT_LE(name.size(), 200U);
}

TEST_F(ENEXImporterTest, OddValuesAreClampedOrLeftOut) {
    std::string tags;
    for (int i = 0; i < 700; ++i) {
        tags += "<tag>t" + std::to_string(i) + "</tag>";
    }
    const std::string attributes =
        "<note-attributes><latitude>nan</latitude><longitude>1e999</longitude><reminder-time>soon"
        "</reminder-time><reminder-done-time>x</reminder-done-time></note-attributes>";
    std::string note1 = enexNote(std::string(12'000, 't'), "x", tags + attributes);
    note1.replace(note1.find("20200203T040506Z"), 16, "99991231T235959Z");
    std::string note2 = enexNote("Later", "x");
    note2.replace(note2.find("20200203T040506Z"), 16, "-1");
    const ImportReport report = importNotes(note1 + note2);
    EXPECT_EQ(counts(report), "2 imported");
    const CDNote& made = note(std::string(10'000, 't'));
    EXPECT_EQ(made.createdAt, clock.now());
    EXPECT_EQ(made.tags.count(), 500U);
    EXPECT_FALSE(made.hasLocation);
    EXPECT_FALSE(made.reminderAt);
    EXPECT_THAT(std::string(textOf(*made.importMetadata)), HasSubstr(R"("latitude":"nan")"));
    EXPECT_EQ(note("Later").createdAt, clock.now());
}

TEST_F(ENEXImporterTest, BrokenNotesFailAloneAndTheRestComesIn) {
    const std::string text = enexFile(
        enexNote("One", "1") + enexNote("Broken", "2", "<b>") + enexNote("Three", "3")
        + enexNote("Large", std::string(10'000'001, 'x')) + enexNote("Cut", "5"));
    const ImportReport report = importText(text.substr(0, text.find("<title>Cut") + 30));
    EXPECT_EQ(counts(report), "2 imported, 3 failed");
    EXPECT_EQ(library(), "Recipes: One\nRecipes: Three\n");
    EXPECT_EQ(
        report.check->sentence(),
        "2 of 5 notes and 0 of 0 files are in the library, every byte equal.");
    EXPECT_THAT(
        warnings(report.notes), HasSubstr("Broken: “Recipes.enex” cannot be read at byte "));
    EXPECT_THAT(warnings(report.notes), HasSubstr("Large: This note is larger than 10 MB"));
    EXPECT_THAT(warnings(report.notes), HasSubstr("Cut: “Recipes.enex” breaks off at byte "));
}

TEST_F(ENEXImporterTest, ChosenNotebookAndTagHoldEverything) {
    put("a.ENEX", enexFile(enexNote("One", "1")));
    put("b.enex", enexFile(enexNote("Two", "2", "<tag>own</tag>")));
    const auto files = {file("a.ENEX"), file("b.enex")};
    const ImportOptions options{.notebook = {"Old", "Notes"}, .tag = "new"};
    const ImportPreview preview = enex.preview(context(), files, options);
    EXPECT_EQ(preview.found, 2U);
    EXPECT_THAT(preview.notebooks, testing::ElementsAre("Old / Notes"));
    EXPECT_THAT(preview.tags, testing::ElementsAre("new", "own"));
    EXPECT_EQ(context().count<CDNote>(), 0U);
    EXPECT_EQ(counts(importFiles(files, options)), "2 imported");
    EXPECT_EQ(library(), "Old / Notes: One #new\nOld / Notes: Two #new #own\n");
    EXPECT_EQ(counts(importFiles(files)), "2 skipped");
    EXPECT_THROW(importFiles({file("c.enex")}), FileError);
}

TEST_F(ENEXImporterTest, PreviewTellsWhatTheRunThenDoes) {
    const std::string text = enexFile(
        enexNote("One", media("plan"), resource("plan", "plan.txt") + resource("", "none.txt"))
        + enexNote("Two", "2") + enexNote("Two", "2") + enexNote("Broken", "3", "<b>")
        + enexNote("Large", std::string(10'000'001, 'x')));
    for (const auto policy :
         {DuplicatePolicy::skip, DuplicatePolicy::replace, DuplicatePolicy::keepBoth}) {
        put("Recipes.enex", text);
        const ImportOptions options{.duplicates = policy};
        const ImportPreview preview = enex.preview(context(), {file()}, options);
        const ImportReport report = importText(text, options);
        ASSERT_EQ(preview.notes.size(), report.notes.size());
        for (std::size_t i = 0; i < report.notes.size(); ++i) {
            SCOPED_TRACE(report.notes[i].title);
            EXPECT_EQ(preview.notes[i].title, report.notes[i].title);
            EXPECT_EQ(preview.notes[i].outcome, report.notes[i].outcome);
            EXPECT_EQ(preview.notes[i].warnings, report.notes[i].warnings);
        }
        EXPECT_EQ(preview.unreadable, 2U);
        EXPECT_EQ(preview.attachments, 1U);
    }
}

TEST_F(ENEXImporterTest, StoppedRunSaysSoAndGoesOn) {
    std::string notes;
    for (int i = 0; i < 60; ++i) {
        notes += enexNote("Note " + std::to_string(i), "x", resource("file", "file.txt"));
    }
    put("Recipes.enex", enexFile(notes));
    std::stop_source stop;
    const ImportReport stopped = importFiles(
        {file()}, {}, {.stop = stop.get_token(), .progress = [&](const ImportProgress& at) {
                           if (at.done == 20) stop.request_stop();
                       }});
    EXPECT_EQ(counts(stopped), "20 imported, 20 attached");
    EXPECT_FALSE(stopped.finished);
    EXPECT_FALSE(stopped.check);
    const ImportReport rest = importFiles({file()});
    EXPECT_EQ(counts(rest), "40 imported, 20 skipped, 40 attached");
    EXPECT_TRUE(rest.check->isWhole());
}

TEST_F(ENEXImporterTest, KilledAtAnyNoteItIsListedAndGoesOn) {
    std::string notes;
    for (int i = 0; i < 130; ++i) {
        const std::string title = "Note " + std::to_string(i);
        notes += enexNote(
            title,
            "<a href=\"evernote:///view/1\">Note " + std::to_string((i + 77) % 130) + "</a>"
                + media(title),
            resource(title, "file.txt"));
    }
    put("Recipes.enex", enexFile(notes));
    std::filesystem::create_directories(folder.path() / "Library");
    for (const std::size_t last : {1U, 49U, 50U, 51U, 100U, 129U}) {
        const int status = test::runInChild([&] {
            importFiles({file()}, {}, {.progress = [&](const ImportProgress& at) {
                            if (at.done == last) std::raise(SIGKILL);
                        }});
        });
        ASSERT_EQ(status, 128 + SIGKILL);
        std::size_t listed = 0;
        for (const CDImportReport* row : reports.list(context())) {
            const ImportReport report = reports.read(context(), *row);
            EXPECT_FALSE(report.finished);
            for (const ImportedNote& one : report.notes) {
                EXPECT_NE(context().find<CDNote>(*one.noteID), nullptr);
            }
            listed += report.imported;
        }
        EXPECT_EQ(listed, context().count<CDNote>());
        close();
    }
    const ImportReport last = importFiles({file()});
    EXPECT_TRUE(last.check->isWhole());
    EXPECT_EQ(context().count<CDNote>(), 130U);
    EXPECT_EQ(context().count<CDAttachment>(), 130U);
    for (const CDNote* one : context().fetch<CDNote>()) {
        const std::string address =
            one->html->substr(one->html->find("tesserine://note/") + 17, 36);
        EXPECT_NE(context().find<CDNote>(*Uuid::parse(address)), nullptr);
    }
}

}  // namespace
}  // namespace tesserine
