#include "core/import/TesserineImporter.h"

#include "base/Digest.h"
#include "base/FailPoint.h"
#include "base/JSON.h"
#include "core/import/TesserineManifest.h"
#include "core/services/LibraryFixture.h"
#include "core/services/Tree.h"
#include "tests/support/TemporaryFolder.h"

#include <boost/json/array.hpp>
#include <gmock/gmock.h>

#include <functional>

namespace tesserine {
namespace {

namespace fs = std::filesystem;
using boost::json::array;
using boost::json::object;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// The identifier number `number`.
std::string id(int number) {
    const std::string digits = std::to_string(number);
    return "5D0C77E1-7C1B-4A56-9C6B-" + std::string(12 - digits.size(), '0') + digits;
}
Uuid uuid(int number) { return *Uuid::parse(id(number)); }

/// An export made by hand, beside an empty library in memory.
class TesserineImporterTest : public test::LibraryFixture {
protected:
    TesserineImporterTest() { fs::create_directory(folder()); }

    fs::path folder() const { return temporary_ / "Export"; }
    void put(const std::string& path, const std::string& content) const {
        fs::create_directories((folder() / path).parent_path());
        test::putContent(folder() / path, content);
    }
    void putPage(const std::string& path, const std::string& body) const {
        put(path,
            "<!doctype html>\n<html lang=\"en\">\n<head>\n<title>T</title>\n<style>p { x: y }</style>"
            "</head><body><article class=\"ts-note\"><h1 class=\"ts-title\">T</h1>"
            "<p class=\"ts-meta\">x</p>\n<div class=\"ts-body\">"
                + body
                + "</div>\n<ul class=\"ts-attachments\"><li>x</li></ul></article></body></html>");
    }
    /// A note with a page.
    object& addNote(int number, const std::string& body) {
        const std::string path = "notes/Unfiled/" + std::to_string(number) + ".html";
        putPage(path, body);
        return addRecord(
            "notes",
            {{"id", id(number)},
             {"title", "Note " + std::to_string(number)},
             {"createdAt", "2020-01-02T03:04:05.678Z"},
             {"updatedAt", "2021-01-02T03:04:05.678Z"},
             {"htmlPath", path}});
    }
    object& addRecord(const char* list, object record) {
        array& records = manifest_[list].is_array() ? manifest_[list].get_array()
                                                    : manifest_[list].emplace_array();
        return records.emplace_back(std::move(record)).get_object();
    }
    static object file(int number, const std::string& path, const std::string& content) {
        return {
            {"id", id(number)},
            {"filename", "a.txt"},
            {"mimeType", "text/plain"},
            {"byteCount", content.size()},
            {"sha256", sha256Hex(bytesOf(content))},
            {"path", path},
            {"integrityVerified", true}};
    }
    TesserineImport import(const ImportControl& control = {}) {
        put("manifest.json", json::write(manifest_));
        return importer_.run(context, folder(), control);
    }
    CDNote& note(int number) { return context.get<CDNote>(uuid(number), "The note"); }
    /// Every warning as "title: warning".
    static std::vector<std::string> warnings(const TesserineImport& done) {
        std::vector<std::string> lines;
        for (const ImportedNote& note : done.report.notes) {
            for (const std::string& warning : note.warnings) {
                lines.push_back(note.title + ": " + warning);
            }
        }
        return lines;
    }

    object manifest_{{"formatVersion", 1}};
    Calendar calendar_{"UTC"};
    const mime::TypeRegistry types_;
    const TesserineImporter importer_{
        {.clock = clock, .random = random, .calendar = calendar_, .types = types_}};
    test::TemporaryFolder temporary_;
};

TEST_F(TesserineImporterTest, BodiesComeBackAsTheyWere) {
    addNote(
        1,
        "<p>See <a href=\"../A%20b/2.html\">two</a> and <a href=\"https://e.org\">e</a>, "
        "<span class=\"ts-unsupported\" data-ts-element=\"&lt;a href=&quot;tesserine://note/"
            + id(9)
            + "&quot;>\">nine</span></p>"
              "<div data-ts-attachment=\""
            + id(11)
            + "\" data-ts-kind=\"file\"><a href=\"../../attachments/a.txt\">a.txt</a></div>"
              "<p><img src=\"../../attachments/a.txt\" width=\"4\">"
              "<span class=\"ts-unsupported\" data-ts-element=\"&lt;img src=&quot;"
              "tesserine-attachment://"
            + id(12) + "&quot; alt=&quot;A&quot;>\">A</span></p><script>x</script>");
    put("attachments/a.txt", "bytes");
    object& two = addNote(2, "<p>2</p>");
    fs::create_directory(folder() / "notes/A b");
    fs::rename(folder() / "notes/Unfiled/2.html", folder() / "notes/A b/2.html");
    two["htmlPath"] = "notes/A b/2.html";
    manifest_["notes"].get_array()[0].get_object()["attachments"] =
        array{file(11, "attachments/a.txt", "bytes")};

    const TesserineImport done = import();
    EXPECT_THAT(warnings(done), IsEmpty());
    EXPECT_EQ(
        *note(1).html,
        "<p>See <a href=\"tesserine://note/" + id(2)
            + "\">two</a> and <a href=\"https://e.org\">e</a>, <a href=\"tesserine://note/" + id(9)
            + "\">nine</a></p><div data-ts-attachment=\"" + id(11)
            + "\" data-ts-kind=\"file\">a.txt</div><p><img src=\"tesserine-attachment://" + id(11)
            + "\" width=\"4\"><img src=\"tesserine-attachment://" + id(12) + "\" alt=\"A\"></p>");
    EXPECT_EQ(note(1).createdAt, test::at("2020-01-02T03:04:05.678Z"));
    EXPECT_EQ(note(1).updatedAt, test::at("2021-01-02T03:04:05.678Z"));
    EXPECT_EQ(note(1).importFingerprint, std::nullopt);
    EXPECT_EQ(done.report.attachmentBytes, 5U);
}

TEST_F(TesserineImporterTest, NothingOutsideTheFolderIsRead) {
    test::putContent(temporary_ / "secret.html", "<div class=\"ts-body\">secret</div>");
    fs::create_symlink(temporary_ / "secret.html", folder() / "link.html");
    fs::create_directory_symlink(temporary_.path(), folder() / "up");
    int number = 0;
    for (const std::string_view path :
         {"../secret.html",
          "x/../../secret.html",
          "link.html",
          "up/secret.html",
          "",
          ".",
          "notes/Unfiled"}) {
        addNote(++number, "")["htmlPath"] = path;
    }
    addNote(++number, "")["htmlPath"] = (temporary_ / "secret.html").string();
    object& last = addNote(99, "<p>mine</p>");
    last["attachments"] = array{file(100, "../secret.html", "x"), file(101, "up/secret.html", "x")};
    last["originalSourcePath"] = "link.html";

    const TesserineImport done = import();
    EXPECT_EQ(done.report.failed, 8U);
    EXPECT_EQ(done.report.imported, 1U);
    EXPECT_EQ(done.report.attachments, 0U);
    EXPECT_EQ(note(99).attachments.count(), 2U);  // the records are kept, without bytes
    EXPECT_EQ(note(99).originalSource, std::nullopt);
    EXPECT_EQ(warnings(done).size(), 8U + 3U);
}

TEST_F(TesserineImporterTest, WhatIsChangedOrMissingIsSaidAndKept) {
    object& record = addNote(1, "<p>x</p>");
    put("attachments/a.txt", "bytez");
    object bare = file(4, "", "bytes");
    bare.erase("path");
    record["attachments"] =
        array{file(2, "attachments/a.txt", "bytes"), file(3, "attachments/b.txt", "x"), bare};
    fs::remove(folder() / "notes/Unfiled" / "2.html");
    addNote(5, "")["title"] = std::string(10'001, 'x');
    addRecord("notes", {{"title", "no identifier"}});
    addNote(6, "")["revisionCount"] = 3;

    const TesserineImport done = import();
    EXPECT_THAT(
        warnings(done),
        ElementsAre(
            "Note 1: “a.txt” does not hold the bytes that were exported.",
            "Note 1: “a.txt” is not in the export, or cannot be read.",
            "Note 1: The bytes of 1 file are not in the export.",
            HasSubstr("The title is longer than 10,000 characters.")));
    EXPECT_THAT(
        done.remarks,
        ElementsAre(
            "Earlier versions of 1 note are not part of an export and did not come along.",
            "1 record of the manifest could not be read."));
    EXPECT_EQ(done.report.check->notes, 2U);
    EXPECT_EQ(done.report.check->expectedNotes, 3U);
    EXPECT_EQ(done.report.check->files, 0U);
    EXPECT_EQ(done.report.check->expectedFiles, 2U);
    const auto attachments = note(1).attachments.all();
    ASSERT_EQ(attachments.size(), 3U);
    EXPECT_EQ(attachments[0]->fileData, Bytes({'b', 'y', 't', 'e', 'z'}));
    EXPECT_EQ(attachments[0]->sha256, sha256Hex(bytesOf("bytez")));
    EXPECT_FALSE(attachments[0]->integrityVerified);
    EXPECT_FALSE(attachments[2]->fileData);
}

TEST_F(TesserineImporterTest, AnotherLibraryKeepsWhatItHas) {
    CDNotebook& work = insertNotebook("Work");
    CDTag& tag = insertTag("Urgent");
    auto& mine = context.insert<CDNote>();
    mine.id = uuid(1);
    mine.title = "Mine";
    auto& foreign = context.insert<CDAttachment>();
    foreign.id = uuid(21);
    foreign.note = &mine;
    auto& inbox = context.insert<CDProject>();
    inbox.isInbox = true;
    inbox.name = "Inbox";
    context.save();
    const Uuid workID = *work.id;
    const Uuid tagID = *tag.id;
    const Uuid inboxID = *inbox.id;

    addRecord("notebooks", {{"id", id(30)}, {"name", "work"}, {"colorHex", "#112233"}});
    addRecord("notebooks", {{"id", id(31)}, {"name", "Plans"}, {"parentID", id(30)}});
    addRecord("tags", {{"id", id(32)}, {"name", "urgent"}});
    addRecord("projects", {{"id", id(33)}, {"name", "Inbox"}, {"isInbox", true}});
    addNote(1, "<p>theirs</p>");
    object& two = addNote(2, "<p><img src=\"../../attachments/a.txt\"></p>");
    two["notebookID"] = id(31);
    two["tags"] = array{"urgent"};
    two["attachments"] = array{file(21, "attachments/a.txt", "bytes")};
    put("attachments/a.txt", "bytes");
    addRecord("tasks", {{"id", id(40)}, {"title", "Call"}, {"projectID", id(33)}});

    const TesserineImport done = import();
    EXPECT_EQ(done.report.skipped, 1U);
    EXPECT_EQ(note(1).title, "Mine");
    EXPECT_EQ(done.notebooks, 1U);
    EXPECT_EQ(done.tags, 0U);
    EXPECT_EQ(done.projects, 0U);
    const CDNotebook* const plans = note(2).notebook;
    ASSERT_NE(plans, nullptr);
    EXPECT_EQ(plans->parent->id, workID);
    EXPECT_EQ(plans->parent->colorHex, std::nullopt);
    EXPECT_EQ(note(2).tags.all().at(0)->id, tagID);
    const CDAttachment* const attachment = note(2).attachments.all().at(0);
    EXPECT_NE(attachment->id, uuid(21));  // that one belongs to another note here
    EXPECT_THAT(*note(2).html, HasSubstr(attachment->id->text()));
    EXPECT_EQ(context.get<CDTask>(uuid(40), "The task").project->id, inboxID);

    const TesserineImport again = import();
    EXPECT_EQ(again.report.skipped, 2U);
    EXPECT_EQ(again.notebooks + again.tags + again.projects + again.tasks, 0U);
    EXPECT_EQ(context.count<CDNote>(), 2U);
}

TEST_F(TesserineImporterTest, RingsAndChildrenBeforeParentsBecomeTrees) {
    const auto addBelow = [this](const char* list, int number, int parent) {
        addRecord(
            list, {{"id", id(number)}, {"name", std::to_string(number)}, {"parentID", id(parent)}});
    };
    for (const char* list : {"notebooks", "tags"}) {
        const int base = list[0] == 'n' ? 100 : 200;
        addBelow(list, base + 1, base + 2);
        addBelow(list, base + 2, base + 3);
        addRecord(list, {{"id", id(base + 3)}, {"name", "top"}});
        addBelow(list, base + 4, base + 4);
        addBelow(list, base + 5, base + 6);
        addBelow(list, base + 6, base + 5);
        addBelow(list, base + 7, 999);
    }
    addRecord("tasks", {{"id", id(1)}, {"title", "sub"}, {"parentTaskID", id(2)}});
    addRecord("tasks", {{"id", id(2)}, {"title", "top"}, {"priority", 77}, {"dueDate", "soon"}});
    import();
    const auto lines = [this](auto* kind) {
        using Entity = std::remove_pointer_t<decltype(kind)>;
        std::vector<std::string> paths;
        for (const Entity* const object : context.fetch<Entity>()) {
            paths.push_back(tree::pathText(*object));
        }
        std::ranges::sort(paths);
        return paths;
    };
    EXPECT_THAT(
        lines(static_cast<CDNotebook*>(nullptr)),
        ElementsAre("104", "106", "106 / 105", "107", "top", "top / 102", "top / 102 / 101"));
    EXPECT_THAT(
        lines(static_cast<CDTag*>(nullptr)),
        ElementsAre("204", "206", "206 / 205", "207", "top", "top / 202", "top / 202 / 201"));
    const auto& sub = context.get<CDTask>(uuid(1), "The task");
    EXPECT_EQ(sub.parent->title, "top");
    EXPECT_EQ(sub.parent->priority, 4);
    EXPECT_LT(*sub.sortIndex, *sub.parent->sortIndex);  // the order of the export
}

#ifdef TESSERINE_FAIL_POINTS  // what users run has none
TEST_F(TesserineImporterTest, StoppedAnywhereItGoesOnTheNextTime) {
    constexpr int count = 120;
    for (int number = 1; number <= count; ++number) {
        addNote(number, "<p>x</p>");
    }
    addRecord("tasks", {{"id", id(500)}, {"title", "Call"}, {"linkedNoteID", id(count)}});
    for (int pass = 1; pass <= 4; ++pass) {
        failpoint::arm("import.batchSaved", pass, [] { throw StoreError::saveFailed("killed"); });
        EXPECT_THROW(import(), StoreError) << pass;
        failpoint::disarmAll();
        context.reset();
    }
    // Killed between two files of one note.
    note(1).importFingerprint = "tesserine-import-unfinished";
    note(1).title = "half";
    context.save();

    std::stop_source stop;
    const ImportControl control{
        .stop = stop.get_token(), .progress = [&stop](const ImportProgress& progress) {
            if (progress.done == 2) stop.request_stop();
        }};
    const TesserineImport stopped = import(control);
    EXPECT_FALSE(stopped.report.finished);
    EXPECT_EQ(stopped.tasks, 0U);

    const TesserineImport done = import();
    EXPECT_TRUE(done.report.finished);
    EXPECT_EQ(context.count<CDNote>(), static_cast<std::size_t>(count));
    EXPECT_EQ(note(1).title, "Note 1");
    EXPECT_EQ(context.get<CDTask>(uuid(500), "The task").linkedNote->id, uuid(count));
}
#endif

TEST_F(TesserineImporterTest, AFolderThatIsNoExportIsRefused) {
    const auto sentence = [this](const std::function<void()>& prepare) -> std::string {
        prepare();
        try {
            importer_.run(context, folder());
        } catch (const UserError& error) {
            return error.what();
        }
        return "nothing was wrong";
    };
    EXPECT_THAT(
        sentence([] {}),
        testing::EndsWith("is no whole export of a library: it has no manifest.json."));
    EXPECT_THAT(
        sentence([this] { put("manifest.json", "{\"formatVersion\":1,"); }),
        testing::StartsWith("manifest.json cannot be read: "));
    EXPECT_EQ(
        sentence([this] { put("manifest.json", "[]"); }),
        "manifest.json cannot be read: it is no object.");
    EXPECT_EQ(
        sentence([this] { put("manifest.json", "{\"formatVersion\":2}"); }),
        "The export has format version 2, which this version of Tesserine cannot read.");
    EXPECT_THAT(
        sentence([this] { put("manifest.json", std::string(1'000, '[')); }),
        testing::StartsWith("manifest.json cannot be read: "));
    EXPECT_EQ(context.count<CDNote>(), 0U);
}

}  // namespace
}  // namespace tesserine
