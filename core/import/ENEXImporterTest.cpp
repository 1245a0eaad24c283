#include "core/import/ENEXImporter.h"

#include "base/Files.h"
#include "core/import/ENEXFixture.h"

#include <gmock/gmock.h>

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

}  // namespace
}  // namespace tesserine
