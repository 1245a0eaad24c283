#include "core/import/AppleNotesImporter.h"

#include "base/Files.h"
#include "core/import/AppleNotesFixture.h"
#include "core/import/AppleNoteStore.h"
#include "core/import/AppleNoteTable.h"
#include "core/import/Gunzip.h"
#include "tests/support/SeededRandom.h"

#include <gmock/gmock.h>

#include <array>

namespace tesserine {
namespace {

using test::noteData;
using test::NoteRun;
using testing::HasSubstr;

constexpr const char* one = "11111111-1111-4111-8111-111111111111";
constexpr const char* two = "22222222-2222-4222-8222-222222222222";
constexpr const char* three = "33333333-3333-4333-8333-333333333333";
const std::string objectMark = "\xEF\xBF\xBC";

class AppleNotesImporterTest : public test::AppleNotesFixture {
public:
    /// The body of a note with this text below its title.
    std::string imported(
        std::vector<NoteRun> runs, std::vector<test::StoredAttachment> parts = {}) {
        std::filesystem::remove_all(source());
        std::filesystem::create_directory(source());
        const std::string title = "Note " + std::to_string(++count_);
        runs.insert(runs.begin(), {.text = title + "\n", .style = 0});
        makeStore({.notes = {{.title = title, .data = noteData(runs)}}, .attachments = parts});
        last_ = importNotes();
        return body(title);
    }
    ImportReport last_;

private:
    int count_ = 0;
};

TEST_F(AppleNotesImporterTest, FoldersBecomeNotebooksAndNotesKeepWhatTheyAre) {
    const std::string text = noteData({{.text = "Plan\n", .style = 0}, {.text = "Buy näils 🔨\n"}});
    makeStore({
        .folders =
            {{.key = 1, .name = "Work"},
             {.key = 2, .name = "2026", .parent = 1},
             {.key = 3, .name = "Deleted", .type = 1},
             {.key = 4, .name = "Old", .parent = 3}},
        .notes =
            {{.identifier = one, .title = "Plan", .folder = 2, .data = text, .isPinned = true},
             {.title = "Gone", .folder = 3, .data = text},
             {.title = "Gone too", .folder = 4, .data = text},
             {.title = "Marked", .folder = 1, .data = text, .isDeleted = true},
             {.title = "Secret", .folder = 1, .data = "sealed", .isLocked = true},
             {.title = "Empty", .folder = 9}},
    });
    // What nobody has moved into the store yet stands in its log only.
    EXPECT_GT(std::filesystem::file_size(storeFile().string() + "-wal"), 10'000U);
    const auto before = files::read(storeFile(), 10'000'000);
    const ImportPreview preview = apple.preview(context(), {source()}, {});
    EXPECT_EQ(preview.found, 3U);
    EXPECT_EQ(context().count<CDNote>(), 0U);

    const ImportReport report = importNotes();
    EXPECT_EQ(counts(report), "3 imported");
    EXPECT_EQ(library(), "-: Empty\nWork / 2026: Plan\nWork: Secret\n");
    EXPECT_EQ(
        warnings(report.notes),
        "Secret: The note is locked in Apple Notes, so only its title came in.\n");
    EXPECT_EQ(body("Secret"), "<div class=\"ts-unsupported\">Locked in Apple Notes</div>");
    const CDNote& plan = note("Plan");
    EXPECT_EQ(plan.html, "<p>Buy näils 🔨</p>");
    EXPECT_EQ(plan.createdAt, Instant::fromReferenceSeconds(700'000'000));
    EXPECT_EQ(plan.updatedAt, Instant::fromReferenceSeconds(700'000'060));
    EXPECT_TRUE(plan.isPinned);
    EXPECT_EQ(plan.originalFormat, "apple-notes");
    EXPECT_EQ(textOf(*plan.originalSource), text);
    EXPECT_EQ(textOf(*plan.importMetadata), "{\"identifier\":\"" + std::string(one) + "\"}");
    // Twice changes nothing, and neither is the store ever written to.
    EXPECT_EQ(counts(importNotes()), "3 skipped");
    EXPECT_EQ(files::read(storeFile(), 10'000'000), before);
}

TEST_F(AppleNotesImporterTest, ADocumentedNoteIsReadFromItsBytes) {
    const Bytes bytes =
        *fromHex("12221a20120a506c616e0a4e61696c732a060805120208002a0a0805120608672a021000");
    makeStore({.notes = {{.title = "Plan", .data = test::gzip(textOf(bytes))}}});
    EXPECT_EQ(counts(importNotes()), "1 imported");
    EXPECT_EQ(
        body("Plan"), "<ul class=\"ts-checklist\"><li data-checked=\"false\">Nails</li></ul>");
}

TEST_F(AppleNotesImporterTest, TextBecomesWhatABodyHolds) {
    struct Case {
        const char* what;
        std::vector<NoteRun> runs;
        std::string html;
    };
    for (const auto& [what, runs, html] : {
             Case{"paragraphs", {{.text = "a\n\nb & c\n"}}, "<p>a</p><p><br></p><p>b &amp; c</p>"},
             Case{
                 "headings",
                 {{.text = "A\n", .style = 1}, {.text = "B\n", .style = 2}},
                 "<h2>A</h2><h3>B</h3>"},
             Case{
                 "looks",
                 {{.text = "b", .weight = 1},
                  {.text = "i", .weight = 2},
                  {.text = "bi", .weight = 3},
                  {.text = "u", .isUnderlined = true},
                  {.text = "s", .isStruck = true},
                  {.text = "x", .baseline = 1},
                  {.text = "y", .baseline = -1},
                  {.text = "web", .link = "https://example.org/?a&b"}},
                 "<p><strong>b</strong><em>i</em><strong><em>bi</em></strong><u>u</u><s>s</s>"
                 "<sup>x</sup><sub>y</sub><a href=\"https://example.org/?a&amp;b\">web</a></p>"},
             Case{
                 "lines",
                 {{.text = "a\xE2\x80\xA8"
                           "b"}},
                 "<p>a<br>b</p>"},
             Case{
                 "code",
                 {{.text = "if a:\n    b\n", .style = 4}, {.text = "text"}},
                 "<pre>if a:\n    b</pre><p>text</p>"},
             Case{
                 "lists",
                 {{.text = "a\n", .style = 100},
                  {.text = "b\n", .style = 101, .indent = 1},
                  {.text = "c\n", .style = 101, .indent = 1},
                  {.text = "d\n", .style = 100},
                  {.text = "e\n", .style = 102}},
                 "<ul><li>a<ul><li>b</li><li>c</li></ul></li><li>d</li></ul><ol><li>e</li></ol>"},
             Case{
                 "an item that begins deep",
                 {{.text = "a\n", .style = 100, .indent = 3}, {.text = "b\n", .style = 100}},
                 "<ul><li>a</li></ul><ul><li>b</li></ul>"},
             Case{
                 "checklists",
                 {{.text = "a\n", .style = 103, .isDone = true},
                  {.text = "b\n", .style = 103, .isDone = false}},
                 "<ul class=\"ts-checklist\"><li data-checked=\"true\">a</li>"
                 "<li data-checked=\"false\">b</li></ul>"},
             Case{
                 "quotations",
                 {{.text = "a\n", .isQuote = true}, {.text = "b"}},
                 "<blockquote><p>a</p></blockquote><p>b</p>"},
             Case{"styles that are not known", {{.text = "a\n", .style = 77}}, "<p>a</p>"},
         }) {
        SCOPED_TRACE(what);
        EXPECT_EQ(imported(runs), html);
        EXPECT_EQ(warnings(last_.notes), "");
    }
}

TEST_F(AppleNotesImporterTest, AttachmentsLinksTagsAndTablesComeAlong) {
    const auto part = [](const std::string& identifier) {
        return NoteRun{.text = objectMark, .attachment = identifier, .type = "type"};
    };
    makeStore({
        .notes =
            {{.identifier = one,
              .title = "All",
              .data = noteData(
                  {{.text = "All\n", .style = 0},
                   part("A"),
                   part(two),
                   part("T"),
                   part("U"),
                   part("H"),
                   part("L"),
                   part("X"),
                   {.text = "text", .link = std::string("applenotes:note/") + three},
                   {.text = "lost", .link = std::string("applenotes:note/") + two}})},
             {.identifier = three, .title = "Other", .data = noteData({{.text = "Other\nx"}})}},
        .attachments =
            {{.identifier = "A", .type = "public.data", .media = one, .filename = "plan.txt"},
             {.identifier = two, .type = "com.apple.paper"},
             {.identifier = "T",
              .type = "com.apple.notes.table",
              .table = test::tableData({{"a", "b"}, {"c", "d & e"}})},
             {.identifier = "U",
              .type = "public.url",
              .title = "Web",
              .address = "https://example.org"},
             {.identifier = "H",
              .type = "com.apple.notes.inlinetextattachment.hashtag",
              .text = "#home"},
             {.identifier = "L",
              .type = "com.apple.notes.inlinetextattachment.link",
              .text = "Other",
              .target = std::string("applenotes:note/") + three}},
    });
    put("Accounts/X/Media/" + std::string(one) + "/1_A/plan.txt", "plan");
    put("Accounts/X/Previews/" + std::string(two) + "-1-192x144-0.png", "small");
    put("Accounts/X/FallbackPDFs/" + std::string(two) + "/1_B/FallbackPDF.pdf", "drawing");
    std::filesystem::create_symlink("/etc/hostname", source() / "Media");

    const ImportReport report = importNotes();
    EXPECT_EQ(counts(report), "2 imported, 2 attached");
    EXPECT_EQ(
        report.check->sentence(),
        "2 of 2 notes and 2 of 2 files are in the library, every byte equal.");
    EXPECT_EQ(warnings(report.notes), "All: “type” could not be taken over.\n");
    const auto files = note("All").attachments.all();
    EXPECT_EQ(textOf(*files.at(0)->fileData), "plan");
    EXPECT_EQ(textOf(*files.at(1)->fileData), "drawing");
    const std::string other = "<a href=\"" + addressOf("Other") + "\">";
    EXPECT_THAT(
        body("All"),
        HasSubstr("<table><tr><td><p>a</p></td><td><p>b</p></td></tr><tr><td><p>c</p></td>"
                  "<td><p>d &amp; e</p></td></tr></table>"));
    EXPECT_THAT(
        body("All"),
        HasSubstr(
            "<a href=\"https://example.org\">Web</a>#home" + other
            + "Other</a>"
              "<span class=\"ts-unsupported\">type</span>"
            + other + "text</a>lost"));
    EXPECT_EQ(library(), "-: All #home\n-: Other\n");
}

TEST_F(AppleNotesImporterTest, OlderLayoutsAreReadAndUnknownOnesRefused) {
    makeStore(
        {.folders = {{.key = 1, .name = "Work"}},
         .notes = {{.title = "Old", .folder = 1, .data = noteData({{.text = "Old\ntext"}})}},
         .version = test::StoreVersion::older});
    EXPECT_EQ(counts(importFrom(storeFile())), "1 imported");
    EXPECT_EQ(library(), "Work: Old\n");

    const auto refused = [&](const std::string& what) {
        SCOPED_TRACE(what);
        try {
            importNotes();
            ADD_FAILURE() << "was imported";
        } catch (const AppleNotesError& error) {
            EXPECT_STREQ(
                error.what(),
                "“NoteStore.sqlite” is no store of Apple Notes, or one of a version that is not "
                "known; nothing was imported.");
        }
    };
    for (const char* change :
         {"ALTER TABLE ZICNOTEDATA RENAME COLUMN ZDATA TO ZOTHER;",
          "DROP TABLE Z_PRIMARYKEY;",
          "DROP TABLE ZICCLOUDSYNCINGOBJECT;"}) {
        SQLiteDatabase(storeFile(), {}).execute(change);
        refused(change);
    }
    std::filesystem::remove(storeFile().string() + "-wal");
    put("NoteStore.sqlite", "no database");
    refused("no database");
    EXPECT_EQ(reports.list(context()).size(), 1U);
}

TEST_F(AppleNotesImporterTest, WhatIsDamagedCostsItsNoteOnly) {
    const std::string whole = noteData({{.text = "Whole\nwords of the note"}});
    std::string bomb(100'000'000, 'a');
    makeStore({
        .notes =
            {{.title = "Whole", .data = whole},
             {.title = "Cut", .data = whole.substr(0, whole.size() - 9)},
             {.title = "Noise", .data = "\x1F\x8B noise"},
             {.title = "Not a note", .data = test::gzip("something else")},
             {.title = "Bomb", .data = test::gzip(bomb)},
             {.title = "Table",
              .data = noteData({{.text = "Table\n"}, {.text = objectMark, .attachment = "T"}})}},
        .attachments =
            {{.identifier = "T", .type = "com.apple.notes.table", .table = test::gzip("nothing")}},
    });
    const ImportReport report = importNotes();
    EXPECT_EQ(counts(report), "2 imported, 4 failed");
    EXPECT_EQ(body("Table"), "<p><span class=\"ts-unsupported\">Table</span></p>");
    EXPECT_THAT(
        warnings(report.notes), HasSubstr("Bomb: The text of the note is damaged in the store."));
    EXPECT_EQ(
        report.check->sentence(),
        "2 of 6 notes and 0 of 0 files are in the library, every byte equal.");
}

TEST_F(AppleNotesImporterTest, DamagedStoresEndInASentence) {
    std::vector<test::StoredNote> notes;
    for (int i = 0; i < 60; ++i) {
        const std::string title = "Note " + std::to_string(i);
        notes.push_back({.title = title, .data = noteData({{.text = title + "\ntext"}})});
    }
    makeStore({.notes = notes});
    SQLiteDatabase(storeFile(), {}).checkpoint(SQLiteDatabase::Checkpoint::truncate);
    const Bytes whole = files::read(storeFile(), 10'000'000);
    test::SeededRandom dice(5);
    for (int round = 0; round < 40; ++round) {
        Bytes damaged = whole;
        for (int i = 0; i < 200; ++i) {
            std::array<std::uint8_t, 5> drawn{};
            dice.fill(drawn);
            const std::size_t place = drawn[0] + drawn[1] * 256U + drawn[2] * 65'536U + drawn[3];
            damaged[100 + place % (damaged.size() - 100)] = drawn[4];
        }
        if (round % 4 == 0) damaged.resize(damaged.size() / 2);
        put("NoteStore.sqlite", std::string(textOf(damaged)));
        try {
            const ImportReport report = importNotes();
            EXPECT_LE(report.imported + report.skipped + report.failed, report.found);
        } catch (const UserError& error) {
            EXPECT_THAT(error.what(), HasSubstr("Notes"));
        }
    }
}

TEST_F(AppleNotesImporterTest, EveryByteOfATextMayBeAnother) {
    const std::string message = test::noteMessage(
        {{.text = "a\n", .style = 103, .isDone = true},
         {.text = objectMark, .attachment = "A", .type = "t"},
         {.text = "b", .link = "https://example.org"}});
    for (std::size_t i = 0; i < message.size(); ++i) {
        for (const int bit : {0, 3, 7}) {
            std::string changed = message;
            changed[i] = static_cast<char>(changed[i] ^ (1 << bit));
            EXPECT_LE(appleParagraphs(changed).size(), message.size());
        }
        appleParagraphs(message.substr(0, i));
    }
    class NoReferences final : public AppleNoteReferences {
        std::string attachment(const AppleSpan&) override { return {}; }
        std::optional<std::string> noteAddress(std::string_view) override { return {}; }
    } references;
    const std::string table = *gunzipped(bytesOf(test::tableData({{"a"}, {"b"}})), 100'000);
    for (std::size_t i = 0; i < table.size(); ++i) {
        std::string changed = table;
        changed[i] = static_cast<char>(changed[i] ^ 5);
        const auto html = appleNoteTable(bytesOf(test::gzip(changed)), references);
        EXPECT_LT(html.value_or("").size(), 100'000U);
    }
}

TEST_F(AppleNotesImporterTest, ExportedFilesAreReadAsWell) {
    put("Work/Plan.html",
        "<html><head><title>x</title></head><body><h1>Plan</h1><p>See <a href=\"Tea.md\">tea</a>"
        "<img src=\"stand.png\"></p></body></html>");
    put("Work/Tea.md", "# Tea\n\nBoil.");
    put("Work/Name.htm", "<p>no heading</p>");
    put("Work/List.txt", "a\nb");
    put("Work/stand.png", "\x89PNG\r\n\x1A\n");
    const ImportReport report = importNotes();
    EXPECT_EQ(report.format, "apple-notes");
    EXPECT_EQ(counts(report), "4 imported, 1 attached");
    EXPECT_EQ(
        library(),
        "Vault / Work: List\nVault / Work: Name\nVault / Work: Plan\nVault / Work: Tea\n");
    EXPECT_THAT(
        body("Plan"), HasSubstr("<p>See <a href=\"" + addressOf("Tea") + "\">tea</a><img src="));
    EXPECT_EQ(body("Name"), "<p>no heading</p>");
    EXPECT_EQ(note("Plan").originalFormat, "apple-notes");
    EXPECT_EQ(counts(importNotes()), "4 skipped");
}

}  // namespace
}  // namespace tesserine
