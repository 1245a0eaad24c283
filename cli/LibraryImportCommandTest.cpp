#include "cli/CommandFixture.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <algorithm>
#include <regex>
#include <set>

namespace tesserine::cli {
namespace {

namespace fs = std::filesystem;
using boost::json::object;

/// What an export does not carry: attributes of every entity, and whole entities.
const std::set<std::string> notCarried{
    "contentVersion", "favoritedAt", "revisions", "sortIndex", "templateNoteId"};
const std::set<std::string> ownDates{"CDAttachment", "CDNotebook", "CDProject", "CDTag"};
const std::set<std::string> entitiesLeftOut{"CDImportReport", "CDNoteRevision", "CDSavedSearch"};

class LibraryImportCommand : public CommandFixture {
protected:
    /// A library with something of every kind.
    void fill() {
        const fs::path picture = folder_ / "dot.gif";
        const fs::path text = folder_ / "same.txt";
        test::putContent(picture, "GIF89a;");
        test::putContent(text, "bytes");
        mustRun({"notebook", "add", "Work"});
        mustRun({"notebook", "add", "Plans", "--parent", "Work"});
        mustRun({"notebook", "favorite", "Work / Plans"});
        mustRun({"notebook", "color", "Work", "#112233"});
        mustRun({"tag", "add", "urgent", "--color", "#CC3333"});
        mustRun({"tag", "add", "now"});
        mustRun({"tag", "move", "now", "urgent"});
        const std::string body =
            "<h1>H</h1><ul class=\"ts-checklist\"><li data-checked=\"true\">x</li></ul>"
            "<pre>a\n\n  b</pre><table><tbody><tr><td>1</td></tr></tbody></table><p>ä 🔒</p>";
        const std::string plan = mustRun(
                                     {"note",
                                      "add",
                                      "--title",
                                      "Plan",
                                      "--notebook",
                                      "Work / Plans",
                                      "--tag",
                                      "now",
                                      "--source-url",
                                      "https://e.org/?a=1&b=2",
                                      "--html",
                                      "-"},
                                     body)
                                     .line();
        wait();
        const std::string linked = addNote("plan", {"--notebook", "Work / Plans"});
        const std::string gone = addNote("Gone", {"--text", "x"});
        const std::string links = "<p><a href=\"tesserine://note/" + plan
                                  + "\">p</a> "
                                    "<a href=\"tesserine://note/"
                                  + gone + "\">g</a></p>";
        mustRun({"note", "edit", linked, "--html", "-"}, links);
        mustRun({"note", "delete", gone});
        wait();
        mustRun({"note", "attach", plan, picture.string(), text.string()});
        mustRun({"note", "attach", linked, text.string()});
        mustRun({"note", "pin", linked});
        mustRun({"note", "remind", plan, "2026-04-01 10:00"});
        wait();
        mustRun({"note", "trash", addNote("Old", {"--text", "old"})});
        mustRun({"template", "save", plan});
        fs::create_directory(folder_ / "vault");
        test::putContent(folder_ / "vault/m.md", "---\nmood: good\n---\n# M\n\ntext\n");
        mustRun({"import", "markdown", (folder_ / "vault").string()});

        wait();
        const std::string trip = mustRun({"task", "add", "Trip friday 9am p1 #Home @now"}).line();
        mustRun({"task", "add-subtask", trip, "Pack"});
        wait();
        mustRun({"task", "add", "Water plants every 2 weeks", "--details", "all; of, them"});
        mustRun({"task", "done", mustRun({"task", "add", "Call Ada"}).line()});
        mustRun({"task", "from-note", plan});
        mustRun(
            {"task-template",
             "add",
             "Trip",
             "--title",
             "Pack",
             "--due-offset",
             "2",
             "--due-time",
             "9:05",
             "--subtask",
             "Keys",
             "--label",
             "now"});
    }
    void wait() { clock_.advance(std::chrono::seconds(60)); }

    fs::path exported() {
        return shown(
            mustRun({"export", "library", "--to", (folder_ / "out").string(), "--all", "--json"})
                .json()
                .at("directory"));
    }
    /// The library as lines, without what an export does not carry.
    std::vector<std::string> dumped() {
        std::vector<std::string> lines;
        std::istringstream output(mustRun({"dump"}).output);
        for (std::string line; std::getline(output, line);) {
            object found = json::parse(line).get_object();
            const std::string entity = shown(found.at("entity"));
            if (entitiesLeftOut.contains(entity)) continue;
            for (auto* it = found.begin(); it != found.end();) {
                const std::string key(it->key());
                const bool isOwnDate = key == "createdAt" || key == "updatedAt";
                const bool isLeftOut =
                    notCarried.contains(key) || (isOwnDate && ownDates.contains(entity))
                    || key.starts_with("importF") || key.starts_with("importedF");
                it = isLeftOut ? found.erase(it) : std::next(it);
            }
            // The untouched source comes along for notes from Evernote only.
            if (entity == "CDNote") found.erase("originalSource");
            for (auto& [key, value] : found) {
                if (value.is_array()) sort(value.get_array());
            }
            lines.push_back(json::write(found));
        }
        std::ranges::sort(lines);
        return lines;
    }
    static void sort(boost::json::array& ids) {
        std::ranges::sort(ids, {}, [](const auto& id) { return shown(id); });
    }
    /// Every file of an export by its path, without the date of the export (in the read-me, whose
    /// digest is another one then) and the numbers of earlier versions, which it does not hold.
    static std::map<std::string, std::string> filesIn(const fs::path& directory) {
        static const std::regex differing(
            R"("exportedAt": "[^"]*"|Exported [^.]* by|"revisionCount":\d+|[0-9a-f]{64}  README.txt)");
        std::map<std::string, std::string> files;
        for (const auto& entry : fs::recursive_directory_iterator(directory)) {
            if (!entry.is_regular_file()) continue;
            files[entry.path().lexically_relative(directory).string()] =
                std::regex_replace(test::contentOf(entry.path()), differing, "");
        }
        return files;
    }
    void useAnotherLibrary() { variables_["TESSERINE_LIBRARY"] = (folder_ / "second").string(); }
};

TEST_F(LibraryImportCommand, AnExportBecomesTheLibraryThatItWas) {
    fill();
    const std::vector<std::string> before = dumped();
    const fs::path first = exported();
    useAnotherLibrary();
    wait();
    const auto report = mustRun({"import", "tesserine", first.string(), "--json"}).json();
    EXPECT_EQ(shown(report.at("imported")), shown(report.at("found")));
    EXPECT_EQ(shown(report.at("tasks")), "5");
    for (const auto& note : report.at("notes").as_array()) {
        EXPECT_EQ(shown(note.at("warnings")), "[]");
    }
    EXPECT_EQ(dumped(), before);
    EXPECT_EQ(filesIn(exported()), filesIn(first));
    mustRun({"check"});
}

TEST_F(LibraryImportCommand, IsLookedAtFirstAndCanBeRepeated) {
    addNote("Plan", {"--text", "x"});
    const std::string folder = exported().string();
    EXPECT_EQ(
        shown(mustRun({"import", "tesserine", folder, "--dry-run", "--json"})
                  .json()
                  .at("duplicates")),
        "1");
    useAnotherLibrary();
    EXPECT_NE(
        mustRun({"import", "tesserine", folder, "--dry-run"}).output.find("Would import 1 note"),
        std::string::npos);
    EXPECT_FALSE(fs::exists(folder_ / "second"));
    mustRun({"import", "tesserine", folder});
    EXPECT_NE(
        mustRun({"import", "tesserine", folder})
            .output.find("Found 1 note: 0 imported, 0 replaced, 1 skipped, 0 failed; "
                         "0 attachments (0 bytes).\n"),
        std::string::npos);
    const CommandResult refused = run({"import", "tesserine", (folder_ / "second").string()});
    EXPECT_EQ(refused.status, ExitStatus::failed);
    EXPECT_NE(refused.error.find("is no whole export of a library"), std::string::npos);
}

}  // namespace
}  // namespace tesserine::cli
