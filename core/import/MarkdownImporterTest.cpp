#include "core/import/MarkdownImporter.h"

#include "base/Encoding.h"
#include "base/Files.h"
#include "core/body/BodyError.h"
#include "core/import/ImportFixture.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

namespace tesserine {
namespace {

using MarkdownImporterTest = test::ImportFixture;
using testing::HasSubstr;

/// The smallest picture of one pixel.
std::string pixel() {
    const auto bytes = fromBase64(
        "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5E"
        "rkJggg==");
    return std::string(textOf(*bytes));
}

std::string attachmentID(CDNote& note, std::size_t number = 0) {
    return note.attachments.all().at(number)->id->text();
}

TEST_F(MarkdownImporterTest, FoldersBecomeNestedNotebooks) {
    put("Top.md", "text");
    put("Work/Plan.markdown", "text");
    put("Work/2026/Trip.txt", "text");
    put("Work/notes.doc", "not Markdown");
    put("Work/Own.md", "---\nnotebook: Else / Where\ntags: [a, B]\n---\n");
    put(".hidden/Secret.md", "text");
    put(".hidden.md", "text");

    EXPECT_EQ(counts(run({.tag = "new"})), "4 imported");
    EXPECT_EQ(
        library(),
        "Else / Where: Own #B #a #new\n"
        "Vault / Work / 2026: Trip #new\n"
        "Vault / Work: Plan #new\n"
        "Vault: Top #new\n");
}

TEST_F(MarkdownImporterTest, ChosenNotebookHoldsEverything) {
    put("Top.md", "text");
    put("Work/Plan.md", "text");
    put("Work/Own.md", "---\nnotebook: Else\n---\n");
    run({.notebook = {"Archive", "Old"}});
    EXPECT_EQ(
        library(),
        "Archive / Old / Else: Own\n"
        "Archive / Old / Work: Plan\n"
        "Archive / Old: Top\n");
}

TEST_F(MarkdownImporterTest, FilesGoIntoNoNotebook) {
    put("One.md", "see [Two](Two.md) and [three](Three.md)");
    put("Two.md", "text");
    put("Three.md", "text");
    EXPECT_EQ(counts(runFrom({source() / "One.md", source() / "Two.md"})), "2 imported");
    EXPECT_EQ(library(), "-: One\n-: Two\n");
    // A file that stands beside it, but was not chosen, is none of the notes.
    EXPECT_THAT(body("One"), HasSubstr("\"" + addressOf("Two") + "\""));
    EXPECT_THAT(body("One"), HasSubstr(" and three"));
    EXPECT_THROW(runFrom({source() / "Four.md"}), FileError);
}

TEST_F(MarkdownImporterTest, NoteKeepsWhatItsFrontMatterAndFileSay) {
    const std::string text =
        "---\ntitle: Plan\ncreated: 2020-02-03T04:05:06Z\nupdated: 2021-01-01\npinned: true\n"
        "source: https://example.org/\nid: 5F0D5B1E-1111-4222-8333-444455556666\n---\n# Heading\r\n";
    put("Work/plan.md", text);
    run();

    CDNote& made = note("Plan");
    EXPECT_EQ(made.html, "<h1>Heading</h1>");
    EXPECT_EQ(made.plainText, "Heading");
    EXPECT_EQ(made.createdAt->iso(), "2020-02-03T04:05:06.000Z");
    EXPECT_EQ(made.updatedAt->iso(), "2020-12-31T23:00:00.000Z");
    EXPECT_TRUE(made.isPinned);
    EXPECT_EQ(made.favoritedAt, made.updatedAt);
    EXPECT_EQ(made.sourceURL, "https://example.org/");
    EXPECT_NE(made.id->text(), "5F0D5B1E-1111-4222-8333-444455556666");
    EXPECT_EQ(made.originalFormat, "markdown");
    EXPECT_EQ(made.importedFrom, "Work/plan.md");
    EXPECT_EQ(textOf(*made.originalSource), text);
    EXPECT_EQ(textOf(*made.importMetadata), R"({"id":"5F0D5B1E-1111-4222-8333-444455556666"})");
    EXPECT_EQ(made.contentVersion, 1);
}

TEST_F(MarkdownImporterTest, TitleIsTheHeadingOrTheNameOfTheFile) {
    put("a.md", "intro\n\n# First &amp; *only*\n\n# Second");
    put("Some name.md", "## Not this");
    put("empty.md", "");
    put("twice.md", "---\ntitle: Twice\n---\n\n# Twice\n\ntext");
    run();
    EXPECT_EQ(body("First & only"), "<p>intro</p><h1>Second</h1>");
    EXPECT_EQ(body("Some name"), "<h2>Not this</h2>");
    EXPECT_EQ(body("empty"), "");
    EXPECT_EQ(body("Twice"), "<p>text</p>");
}

TEST_F(MarkdownImporterTest, DatesComeFromTheFileWhenItSaysNone) {
    put("old.md", "text");
    put("dated.md", "---\ndate: 2024-06-01\n---\n");
    for (const char* name : {"old.md", "dated.md"}) {
        const timespec changed{.tv_sec = 1'500'000'000, .tv_nsec = 0};
        const timespec times[2] = {changed, changed};
        ASSERT_EQ(::utimensat(AT_FDCWD, (source() / name).c_str(), times, 0), 0);
    }
    run();
    EXPECT_EQ(note("old").createdAt->seconds(), 1'500'000'000);
    EXPECT_EQ(note("old").updatedAt->seconds(), 1'500'000'000);
    // Never changed before it was created.
    EXPECT_EQ(note("dated").updatedAt, note("dated").createdAt);
}

TEST_F(MarkdownImporterTest, LinksBetweenFilesBecomeNoteLinks) {
    put("A.md",
        "[1](Sub/My%20Note.md#part) [2](sub/my%20note) [[My Note]] [[Sub/My Note|x]] [[my note#p]] "
        "[self](A.md) [gone](Nowhere.md) [[Nobody]] [web](https://x.org) <b>raw</b> "
        "<a href=\"Sub/My Note.md\">html</a>");
    put("Sub/My Note.md", "[up](../A.md) [[A]]");
    const ImportReport report = run();

    const std::string a = "<a href=\"" + addressOf("A") + "\">";
    const std::string b = "<a href=\"" + addressOf("My Note") + "\">";
    EXPECT_EQ(
        body("A"),
        "<p>" + b + "1</a> " + b + "2</a> " + b + "My Note</a> " + b + "x</a> " + b
            + "my note#p</a> " + a
            + "self</a> gone Nobody <a href=\"https://x.org\">web</a> <strong>raw</strong> " + b
            + "html</a></p>");
    EXPECT_EQ(body("My Note"), "<p>" + a + "up</a> " + a + "A</a></p>");
    EXPECT_EQ(warnings(report.notes), "A: “Nowhere.md” is not there.\nA: “Nobody” is not there.\n");
    EXPECT_EQ(NoteService(clock).backlinks(context(), note("My Note")).size(), 1U);
}

TEST_F(MarkdownImporterTest, PicturesAndFilesBecomeAttachments) {
    put("img/My Pic.png", pixel());
    put("docs/Report.pdf", "%PDF-1.4 report");
    put("Deep/Note.md",
        "![alt](../img/My%20Pic.png \"T\") ![again](../IMG/my%20pic.PNG) ![[My Pic.png]] "
        "[the report](../docs/Report.pdf) <img src=\"../img/My Pic.png\" width=\"7\">");
    EXPECT_EQ(counts(run()), "1 imported, 2 attached");

    CDNote& made = note("Note");
    const std::string picture = "<img src=\"tesserine-attachment://" + attachmentID(made) + "\"";
    const std::string size = R"( width="1" height="1">)";
    EXPECT_EQ(
        made.html,
        "<p>" + picture + " alt=\"alt\" title=\"T\"" + size + " " + picture + " alt=\"again\""
            + size + " " + picture + size + " <span data-ts-attachment=\"" + attachmentID(made, 1)
            + "\" data-ts-kind=\"pdf\">the report</span> " + picture + " width=\"7\"></p>");
    EXPECT_EQ(made.contentVersion, 1);
    EXPECT_TRUE(made.revisions.empty());
    const CDAttachment& attached = *made.attachments.all().front();
    EXPECT_EQ(attached.sourceKind, "import");
    EXPECT_EQ(attached.filename, "My Pic.png");
    EXPECT_EQ(textOf(*attached.fileData), pixel());
}

TEST_F(MarkdownImporterTest, PicturesInAddressesBecomeAttachments) {
    put("n.md", "![a](data:image/png;base64," + base64(bytesOf(pixel())) + ") ![b](data:x,y)");
    EXPECT_EQ(counts(run()), "1 imported, 1 attached");
    EXPECT_THAT(body("n"), HasSubstr("<img src=\"tesserine-attachment://"));
    EXPECT_THAT(body("n"), HasSubstr("<span class=\"ts-unsupported\">b</span>"));
}

TEST_F(MarkdownImporterTest, RemotePicturesStayOnlyWhenAllowed) {
    const std::string text = "![a](http://x.org/a.png) [![b](http://x.org/b.png)](http://y.org)";
    put("n.md", text);
    run();
    EXPECT_EQ(
        body("n"), "<p><a href=\"http://x.org/a.png\">a</a> <a href=\"http://y.org\">b</a></p>");
    // The same note with the other choice is still the same note.
    EXPECT_EQ(
        counts(run({.duplicates = DuplicatePolicy::replace, .keepsRemoteImages = true})),
        "1 replaced");
    context().reset();
    EXPECT_THAT(body("n"), HasSubstr("<img src=\"http://x.org/b.png\" alt=\"b\">"));
}

TEST_F(MarkdownImporterTest, NothingOutsideTheFolderIsTouched) {
    test::putContent(folder.path() / "outside.png", pixel());
    test::putContent(folder.path() / "outside.md", "secret");
    put("in.png", pixel());
    put(".ssh/id_rsa", "secret");
    std::filesystem::create_symlink(folder.path() / "outside.png", source() / "link.png");
    std::filesystem::create_symlink(folder.path() / "outside.md", source() / "linked.md");
    std::filesystem::create_directory_symlink(folder.path(), source() / "loop");
    ASSERT_EQ(::mkfifo((source() / "pipe.md").c_str(), 0600), 0);
    ASSERT_EQ(::mkfifo((source() / "pipe.png").c_str(), 0600), 0);
    put("n.md",
        "![1](../outside.png) ![2](/etc/passwd) ![3](file:///etc/passwd) ![4](link.png) "
        "![5](pipe.png) ![6](.ssh/id_rsa) ![7](loop/outside.png) ![8](in.png/../../outside.png) "
        "![9](%2e%2e/outside.png) ![10](..\\outside.png) ![11](C:\\x.png) ![12](~/x.png) "
        "[13](../outside.md) [14](/etc/passwd) [[../outside]] ![15](smb://h/x.png) "
        "![16](tesserine-attachment://5F0D5B1E-1111-4222-8333-444455556666) "
        "<div data-ts-attachment=\"5F0D5B1E-1111-4222-8333-444455556666\">17</div>");
    const ImportReport report = run();
    EXPECT_EQ(counts(report), "1 imported");
    EXPECT_EQ(report.notes.front().warnings.size(), 17U);
    const std::string html = body("n");
    EXPECT_THAT(html, testing::Not(HasSubstr("attachment")));
    EXPECT_THAT(html, testing::Not(HasSubstr("href")));
    EXPECT_THAT(html, HasSubstr("<span class=\"ts-unsupported\">1</span>"));
}

TEST_F(MarkdownImporterTest, ChosenFilesTakeOnlyPlainFilesBesideThem) {
    put("in.png", pixel());
    put(".hidden/x.png", pixel());
    test::putContent(folder.path() / "outside.png", pixel());
    std::filesystem::create_symlink(folder.path() / "outside.png", source() / "link.png");
    put("n.md", "![1](in.png) ![2](link.png) ![3](.hidden/x.png) ![4](../outside.png) ![5](.)");
    EXPECT_EQ(counts(runFrom({source() / "n.md"})), "1 imported, 1 attached");
}

TEST_F(MarkdownImporterTest, BadFilesFailAloneOrWarn) {
    put("big.md", std::string(10'000'001, 'x'));
    put("latin.md", "caf\xE9");
    put("nul.md", std::string("a\0b", 3));
    put("good.md", "![e](empty.png) ![m](missing.png)");
    put("empty.png", "");
    put(
        "grows.md", "[a]: <x" + std::string(100'000, 'y') + ">\n\n" + [] {
            std::string uses;
            for (int i = 0; i < 10'000; ++i) {
                uses += "[a]";
            }
            return uses;
        }());
    const ImportReport report = run();
    const std::string tooLarge = BodyError::tooLarge().what();
    EXPECT_EQ(counts(report), "3 imported, 2 failed");
    EXPECT_EQ(report.found, 5U);
    EXPECT_EQ(
        warnings(report.notes),
        "big.md: " + tooLarge
            + "\n"
              "good: empty.png is empty, so there was nothing to attach.\n"
              "good: “missing.png” is not there.\n"
              "grows.md: "
            + tooLarge
            + "\n"
              "latin: The file is not UTF-8 and was read as Windows-1252; look at its accented "
              "letters.\n"
              "nul: Characters that no text holds were left out.\n");
    EXPECT_EQ(body("latin"), "<p>café</p>");
}

TEST_F(MarkdownImporterTest, RawHTMLIsSanitisedAndItsItemsBeginWithText) {
    put("n.md",
        "<script>alert(1)</script>\n\n"
        "<ul><li>\n<p>x</p><p>y</p></li></ul>\n<table><tr><td><div>c</div></td></tr></table>\n\n"
        "<a href=\"java\nscript:x\" onclick=\"x\">z</a>");
    run();
    EXPECT_EQ(*note("n").plainText, "• x\ny\nc\nz");
    EXPECT_THAT(body("n"), testing::Not(HasSubstr("script")));
}

TEST_F(MarkdownImporterTest, PreviewTellsWhatWouldHappenAndWritesNothing) {
    put("a.md", "![](p.png) [[b]]");
    put("p.png", pixel());
    put("b.md", "same");
    put("Sub/b.md", "same");
    put("c.md", "---\ntags: t\n---\nc");
    put("big.md", std::string(10'000'001, 'x'));
    const std::int64_t before = store().lastTransactionNumber();
    const ImportPreview seen = preview();
    EXPECT_EQ(store().lastTransactionNumber(), before);
    EXPECT_FALSE(context().hasChanges());
    EXPECT_EQ(seen.found, 5U);
    EXPECT_EQ(seen.duplicates, 1U);
    EXPECT_EQ(seen.unreadable, 1U);
    EXPECT_EQ(seen.attachments, 1U);
    EXPECT_EQ(seen.attachmentBytes, pixel().size());
    EXPECT_THAT(seen.notebooks, testing::ElementsAre("Vault"));
    EXPECT_THAT(seen.tags, testing::ElementsAre("t"));
    // And that is what happens.
    EXPECT_EQ(counts(run()), "3 imported, 1 skipped, 1 failed, 1 attached");
    EXPECT_EQ(preview().duplicates, 4U);
}

}  // namespace
}  // namespace tesserine
