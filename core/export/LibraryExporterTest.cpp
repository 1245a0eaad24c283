#include "core/export/LibraryExporter.h"

#include "base/Digest.h"
#include "base/FailPoint.h"
#include "base/Files.h"
#include "base/JSON.h"
#include "core/export/ExportVerifier.h"
#include "core/model/TaskEntities.h"
#include "core/services/LibraryFixture.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace tesserine {
namespace {

namespace fs = std::filesystem;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;

class LibraryExport : public test::LibraryFixture {
protected:
    CDNote& insertNote(const std::string& title, const std::string& html = "<p>text</p>") {
        auto& note = context.insert<CDNote>();
        note.title = title;
        note.html = html;
        note.plainText = "text";
        note.createdAt = clock.now();
        note.updatedAt = clock.now();
        advance(std::chrono::seconds(60));
        return note;
    }
    CDAttachment& insertFile(CDNote& note, const std::string& name, const std::string& data) {
        auto& file = context.insert<CDAttachment>();
        file.filename = name;
        file.mimeType = "text/plain";
        file.byteCount = static_cast<std::int64_t>(data.size());
        if (!data.empty()) file.fileData = Bytes(data.begin(), data.end());
        file.note = &note;
        return file;
    }
    ExportSummary exported(const ExportControl& control = {}) {
        context.save();
        const LibraryExporter exporter(
            {.clock = clock, .calendar = calendar_, .collator = collator_});
        return exporter.run(context, folder_ / "out", options_, control);
    }
    /// The sentence with which an export into `parent` is refused.
    std::string refusal(const char* parent) {
        context.save();
        const LibraryExporter exporter(
            {.clock = clock,
             .calendar = calendar_,
             .collator = collator_,
             .library = folder_ / "library"});
        try {
            exporter.run(context, folder_ / parent, options_);
        } catch (const ExportError& error) {
            return error.what();
        }
        return "it was not refused";
    }
    /// The files of an export, as paths in it.
    static std::vector<std::string> filesIn(const fs::path& directory) {
        std::vector<std::string> paths;
        for (const auto& entry : fs::recursive_directory_iterator(directory)) {
            if (entry.is_regular_file()) {
                paths.push_back(entry.path().lexically_relative(directory).generic_string());
            }
        }
        std::ranges::sort(paths);
        return paths;
    }

    test::TemporaryFolder folder_;
    Calendar calendar_{"Europe/Berlin"};
    text::Collator collator_{""};
    ExportOptions options_{
        .includeMarkdown = true,
        .includeOriginalImportSource = true,
        .includeAttachments = true,
        .includeTasks = true,
        .appVersion = "1.2"};
};

TEST_F(LibraryExport, ShowsTheLibraryInFilesThatNeedNoProgram) {
    CDNotebook& office = insertNotebook("Office");
    CDNote& plan = insertNote("Plan");
    plan.notebook = &insertNotebook("Q1/Q2", &office);
    plan.isPinned = true;
    plan.tags.add(insertTag("urgent"));
    const CDAttachment& file = insertFile(plan, "a b.txt", "bytes");
    CDNote& other = insertNote("");
    other.originalFormat = "enex";
    other.originalSource = Bytes{'<', 'x', '>'};
    plan.html = "<h1>Head</h1><p><a href=\"tesserine://note/" + other.id->text()
                + "\">other</a> <a href=\"tesserine://note/" + Uuid().text()
                + "\">gone</a></p><div data-ts-attachment=\"" + file.id->text()
                + R"(" data-ts-kind="file">a b.txt</div>)";
    insertNote("Old").trashedAt = clock.now();
    const std::string planID = plan.id->text();
    clock.set(test::at("2026-03-14T09:15:00Z"));

    const ExportSummary summary = exported();
    EXPECT_EQ(summary.directory, folder_ / "out" / "Tesserine Export 2026-03-14 10.15");
    EXPECT_EQ(summary.notesWritten, 2U);
    EXPECT_EQ(summary.attachmentBytes, 5U);
    EXPECT_THAT(
        filesIn(summary.directory),
        ElementsAre(
            "README.txt",
            "attachments/a b.txt",
            "checksums.sha256",
            "index.html",
            "manifest.json",
            "notes/Office/Q1-Q2/Plan.html",
            "notes/Office/Q1-Q2/Plan.md",
            "notes/Unfiled/Untitled.html",
            "notes/Unfiled/Untitled.md",
            "original-source/text.xml",
            "tasks.md"));
    EXPECT_EQ(test::contentOf(summary.directory / "attachments/a b.txt"), "bytes");

    const std::string page = test::contentOf(summary.directory / "notes/Office/Q1-Q2/Plan.html");
    EXPECT_THAT(page, testing::StartsWith("<!doctype html>\n<html lang=\"en\">"));
    EXPECT_THAT(
        page,
        HasSubstr("<p class=\"ts-meta\">Office / Q1/Q2 · urgent · Created 14 March 2026 at 10:00 · "
                  "Updated 14 March 2026 at 10:00 · Pinned</p>"));
    EXPECT_THAT(page, HasSubstr("<a href=\"../../Unfiled/Untitled.html\">other</a>"));
    EXPECT_THAT(
        page,
        ContainsRegex("<span class=\"ts-unsupported\" data-ts-element=\"&lt;a "
                      "href=&quot;tesserine://note/[-0-9A-F]{36}&quot;>\">gone</span>"));
    EXPECT_THAT(page, HasSubstr("<a href=\"../../../attachments/a%20b.txt\">a b.txt</a></div>"));
    EXPECT_THAT(page, HasSubstr("<span class=\"ts-size\">5 bytes</span>"));
    EXPECT_EQ(page.find("<script"), std::string::npos);

    EXPECT_EQ(
        test::contentOf(summary.directory / "notes/Office/Q1-Q2/Plan.md"),
        "---\ntitle: \"Plan\"\nid: \"" + planID
            + "\"\ncreated: 2026-03-14T09:00:00.000Z\nupdated: 2026-03-14T09:00:00.000Z\n"
              "tags: [\"urgent\"]\nnotebook: \"Office / Q1/Q2\"\npinned: true\n---\n\n# Plan\n\n"
              "## Head\n\n[other](../../Unfiled/Untitled.md) gone\n\n"
              "[a b.txt](../../../attachments/a%20b.txt)\n");
    EXPECT_THAT(
        test::contentOf(summary.directory / "index.html"),
        HasSubstr("<h2>Office / Q1/Q2</h2>\n<ul>\n<li><a href=\"notes/Office/Q1-Q2/Plan.html\">Plan"
                  "</a> <span class=\"ts-date\">14 March 2026 · urgent</span></li>\n</ul>"));
    EXPECT_THAT(
        test::contentOf(summary.directory / "README.txt"),
        testing::AllOf(
            testing::StartsWith("Tesserine export\n================\n\nExported 14 March 2026 at "
                                "10:15 by Tesserine 1.2.\nExport format version 1.\n\nWhat is"),
            HasSubstr("Notes:        2\nNotebooks:    2\nTags:         1\nAttachments:  1 (5 "
                      "bytes)\nTasks:        0\n\nThis export is yours.")));
}

TEST_F(LibraryExport, RecordsEverythingInItsManifest) {
    CDNote& note = insertNote("Plan");
    note.trashedAt = clock.now();
    note.importMetadata = Bytes{'{', '"', 'a', '"', ':', '"', 'b', '"', '}'};
    insertFile(note, "a.txt", "x").sha256 = "00";
    auto& inbox = context.insert<CDProject>();
    inbox.name = "Inbox";
    inbox.isInbox = true;
    auto& task = context.insert<CDTask>();
    task.title = "Pay *rent*";
    task.dueDate = test::at("2026-03-31T15:00:00Z");
    task.dueHasTime = true;
    task.priority = 1;
    task.recurrenceRule = "unit=week;interval=1";
    task.project = &inbox;
    auto& subtask = context.insert<CDTask>();
    subtask.title = "Call";
    subtask.sortIndex = 1;
    subtask.parent = &task;
    subtask.project = &inbox;
    subtask.completedAt = clock.now();
    options_.includeTrash = true;
    const std::string taskID = task.id->text();

    const ExportSummary summary = exported();
    EXPECT_EQ(
        test::contentOf(summary.directory / "tasks.md"),
        "# Tasks\n\n## Inbox\n\n- [ ] Pay \\*rent\\* — due 2026-03-31 17:00 · P1 · Every week\n"
        "  - [x] Call\n");

    const auto manifest =
        json::parse(test::contentOf(summary.directory / "manifest.json")).get_object();
    std::string keys;
    for (const auto& [key, value] : manifest) {
        keys += std::string(key) + " ";
    }
    EXPECT_EQ(
        keys,
        "formatVersion generator generatorVersion exportedAt counts notebooks tags notes projects "
        "tasks taskTemplates ");
    EXPECT_EQ(
        json::write(manifest.at("counts")),
        R"({"notes":1,"trashedNotes":1,"notebooks":0,"tags":0,"attachments":1,"attachmentBytes":1,)"
        R"("tasks":2,"projects":1,"taskTemplates":0})");
    const auto& record = manifest.at("notes").at(0);
    EXPECT_EQ(json::write(record.at("importMetadata")), R"({"a":"b"})");
    EXPECT_EQ(record.at("htmlPath"), "notes/Unfiled/Plan.html");
    EXPECT_EQ(record.at("attachments").at(0).at("path"), "attachments/a.txt");
    EXPECT_FALSE(record.get_object().contains("notebookID"));  // what is absent is left out
    EXPECT_EQ(manifest.at("tasks").at(0).at("recurrenceDescription"), "Every week");
    EXPECT_EQ(std::string(manifest.at("tasks").at(1).at("parentTaskID").as_string()), taskID);
}

TEST_F(LibraryExport, NamesStayInsideAndDiffer) {
    insertNotebook("..");
    insertNotebook("Unfiled");
    for (const char* title :
         {"../../etc/passwd",
          "CON",
          "Same",
          "same",
          "Same.html",
          "s\u00e1me",
          "sa\u0301me",  // the same letters in another form
          "a\n/b",
          "."}) {
        insertNote(title);
    }
    insertNote(std::string(400, 'x'));
    CDNote& note = insertNote("files");
    insertFile(note, "../a.txt", "1");
    insertFile(note, "A.TXT", "2");
    const ExportSummary summary = exported();
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / "out"), {}), 1);
    const auto paths = filesIn(summary.directory);
    for (const char* path :
         {"notes/Unfiled/same.html",
          "notes/Unfiled/Same 2.html",
          "notes/Unfiled/Same.html.html",
          "notes/Unfiled/s\u00e1me.html",
          "notes/Unfiled/s\u00e1me 2.html",
          "notes/Unfiled/CON_.html"}) {
        EXPECT_THAT(paths, testing::Contains(path));
    }
    EXPECT_EQ(
        std::ranges::count_if(paths, [](const auto& path) { return path.ends_with(".md"); }), 12);
    EXPECT_EQ(summary.attachmentsWritten, 2U);
    // A second export stands beside the first one.
    EXPECT_THAT(exported().directory.string(), testing::EndsWith(" 2"));
}

TEST_F(LibraryExport, WarnsOfAFileWithoutBytes) {
    CDNote& note = insertNote("Plan");
    const CDAttachment& file = insertFile(note, "a.png", "");
    note.html = "<p><img src=\"tesserine-attachment://" + file.id->text() + R"(" alt="A"></p>)";
    const ExportSummary summary = exported();
    EXPECT_THAT(
        summary.warnings, ElementsAre("Attachment on “Plan” had no stored bytes and was skipped."));
    EXPECT_THAT(
        test::contentOf(summary.directory / "notes/Unfiled/Plan.html"),
        ContainsRegex(
            "<p><span class=\"ts-unsupported\" data-ts-element=\"&lt;img [^\"]*\">A</span>"
            "</p>"));
}

TEST_F(LibraryExport, IsVerifiedFileByFile) {
    CDNote& note = insertNote("Plan");
    const std::string link = "<a href=\"tesserine://note/" + note.id->text() + "\">x</a>";
    insertNote("Link", "<p>" + link + " <a href=\"https://e.org\">y</a></p>");
    insertFile(note, "a.txt", "bytes").sha256 =
        sha256Hex(std::array<std::uint8_t, 5>{'b', 'y', 't', 'e', 's'});
    const fs::path directory = exported().directory;
    const ExportVerification whole = verifyExport(directory);
    EXPECT_THAT(whole.problems, testing::IsEmpty());
    EXPECT_EQ(whole.notes, 2U);
    EXPECT_EQ(whole.files, 7U);

    for (const char* file : {"notes/Unfiled/Link.html", "notes/Unfiled/Link.md", "README.txt"}) {
        const std::string content = test::contentOf(directory / file);
        std::string flipped = content;
        flipped[flipped.size() / 2] ^= 1;
        test::putContent(directory / file, flipped);
        EXPECT_THAT(
            verifyExport(directory).problems,
            testing::Contains(
                "“" + std::string(file) + "” does not hold the bytes that were exported."));
        test::putContent(directory / file, content);
    }
    EXPECT_THAT(verifyExport(directory).problems, testing::IsEmpty());

    fs::remove(directory / "notes/Unfiled/Plan.html");
    std::string manifest = test::contentOf(directory / "manifest.json");
    const auto change = [&manifest](std::string_view from, std::string_view to) {
        manifest.replace(manifest.find(from), from.size(), to);
    };
    change("\"attachmentBytes\":5", "\"attachmentBytes\":6");
    change("notes/Unfiled/Link.md", "../../../etc/passwd");
    test::putContent(directory / "manifest.json", manifest);
    EXPECT_THAT(
        verifyExport(directory).problems,
        ElementsAre(
            "“notes/Unfiled/Link.html” leads to “notes/Unfiled/Plan.html”, which is missing.",
            "“../../../etc/passwd” is no file of this folder.",
            HasSubstr("Plan.html” could not be read"),
            "“index.html” leads to “notes/Unfiled/Plan.html”, which is missing.",
            "“manifest.json” counts 6 as attachmentBytes where there are 5."));

    test::putContent(directory / "manifest.json", "{");
    EXPECT_EQ(verifyExport(directory).problems.size(), 1U);
    EXPECT_THROW(verifyExport(directory / "notes"), FileError);
}

TEST_F(LibraryExport, ThatIsNotWholeHasNoManifest) {
    for (int i = 0; i < 3; ++i) {
        insertNote("Plan");
    }
    std::stop_source stop;
    const ExportControl control{
        .stop = stop.get_token(), .progress = [&](const ExportProgress& progress) {
            EXPECT_EQ(progress.totalNotes, 3U);
            EXPECT_EQ(progress.currentNotebook, "Unfiled");
            if (progress.notesWritten == 2) stop.request_stop();
        }};
    try {
        exported(control);
        FAIL() << "it was cancelled";
    } catch (const ExportError& error) {
        EXPECT_STREQ(
            error.what(), "The export was cancelled. Files already written were left in place.");
    }
    const fs::path directory = fs::directory_iterator(folder_ / "out")->path();
    EXPECT_EQ(filesIn(directory).size(), 4U);
}

#ifdef TESSERINE_FAIL_POINTS  // what users run has none
TEST_F(LibraryExport, AFailureAtAnyFileLeavesWhatWasWrittenAndNoManifest) {
    insertFile(insertNote("Plan"), "a.txt", "bytes");
    constexpr int fileCount = 7;
    for (int file = 1; file <= fileCount; ++file) {
        failpoint::arm("export.file", file, [] {
            throw FileError::fromErrno("Plan.html", "written", ENOSPC);
        });
        EXPECT_EQ(
            refusal("out"),
            "Tesserine could not finish writing the export. “Plan.html” could not be written: there "
            "is no space left on the disk.");
        failpoint::disarmAll();
        const fs::path directory = fs::directory_iterator(folder_ / "out")->path();
        // The other thread may have been writing a file meanwhile.
        const auto before = static_cast<std::size_t>(file - 1);
        EXPECT_THAT(filesIn(directory).size(), testing::AnyOf(before, before + 1));
        EXPECT_FALSE(fs::exists(directory / "manifest.json"));
        fs::remove_all(folder_ / "out");
    }
    EXPECT_EQ(filesIn(exported().directory).size(), static_cast<std::size_t>(fileCount + 1));
}
#endif

TEST_F(LibraryExport, GoesNowhereItMustNot) {
    insertNote("Plan");
    context.save();
    test::putContent(folder_ / "file", "mine");
    fs::create_directories(folder_ / "library/inside");
    fs::create_directory_symlink(folder_ / "library", folder_ / "link");
    const std::string begin = "Tesserine could not finish writing the export. ";
    EXPECT_THAT(refusal("file"), testing::StartsWith(begin + "“file”"));
    EXPECT_THAT(refusal("file/out"), testing::StartsWith(begin + "“out” could not be made"));
    for (const char* parent : {"library", "library/inside", "library/new", "link", "link/inside"}) {
        EXPECT_EQ(
            refusal(parent), begin + "An export cannot go into the folder of the library itself.");
    }
    EXPECT_EQ(test::contentOf(folder_ / "file"), "mine");
    EXPECT_THAT(filesIn(folder_ / "library"), testing::IsEmpty());

    // A link where the new folder would be is not followed.
    fs::create_directory(folder_ / "elsewhere");
    fs::create_directory(folder_ / "out");
    const std::string name = "Tesserine Export 2026-03-14 10.01";
    fs::create_directory_symlink(folder_ / "elsewhere", folder_ / "out" / name);
    EXPECT_EQ(exported().directory, folder_ / "out" / (name + " 2"));
    EXPECT_TRUE(fs::is_empty(folder_ / "elsewhere"));
}

TEST_F(LibraryExport, ShowsTheMomentAtWhichItBegan) {
    TesserineStore library{{.directory = folder_ / "library"}, {.clock = clock, .random = random}};
    const auto writing = library.newBackgroundContext();
    for (const char* title : {"first", "second", "third"}) {
        writing->insert<CDNote>().title = title;
    }
    writing->save();
    const ExportControl control{.progress = [&writing](const ExportProgress& progress) {
        if (progress.notesWritten != 1) return;
        for (CDNote* const note : writing->fetch<CDNote>()) {
            if (note->title == std::string("third")) {
                writing->remove(*note);
            } else {
                note->title = "changed";
            }
        }
        writing->insert<CDNote>().title = "fourth";
        writing->save();
    }};
    const auto reading = library.newBackgroundContext();
    const LibraryExporter exporter({.clock = clock, .calendar = calendar_, .collator = collator_});
    const ExportSummary summary = exporter.run(*reading, folder_ / "out", {}, control);
    EXPECT_THAT(
        filesIn(summary.directory / "notes"),
        ElementsAre("Unfiled/first.html", "Unfiled/second.html", "Unfiled/third.html"));
    EXPECT_THAT(verifyExport(summary.directory).problems, testing::IsEmpty());
}

}  // namespace
}  // namespace tesserine
