#pragma once

#include "base/Random.h"
#include "core/import/ImportReports.h"
#include "core/import/MarkdownImporter.h"
#include "core/model/BookkeepingEntities.h"
#include "core/model/NoteEntities.h"
#include "core/services/AttachmentService.h"
#include "core/services/NotebookService.h"
#include "core/services/NoteService.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace tesserine::test {

/// A folder of Markdown to be filled, and an empty library on the morning of 14 March 2026.
class ImportFixture : public ::testing::Test {
public:
    ImportFixture() { std::filesystem::create_directory(source()); }

    std::filesystem::path source() const { return folder.path() / "Vault"; }
    void put(const std::string& relative, const std::string& content) const {
        std::filesystem::create_directories((source() / relative).parent_path());
        putContent(source() / relative, content);
    }

    /// Opened at the first use, so that a test may fork before.
    TesserineStore& store() {
        if (!store_) {
            store_ = std::make_unique<TesserineStore>(
                StoreConfiguration{.directory = folder.path() / "Library"},
                StoreEnvironment{.clock = clock, .random = random});
        }
        return *store_;
    }
    void close() { store_.reset(); }
    StoreContext& context() { return store().viewContext(); }

    ImportReport run(const ImportOptions& options = {}, const ImportControl& control = {}) {
        return runFrom({source()}, options, control);
    }
    ImportReport runFrom(
        const std::vector<std::filesystem::path>& sources,
        const ImportOptions& options = {},
        const ImportControl& control = {}) {
        const auto background = store().newBackgroundContext();
        return importer.run(*background, sources, options, control);
    }
    ImportPreview preview(const ImportOptions& options = {}) {
        return importer.preview(context(), {source()}, options);
    }

    /// "2 imported, 1 failed": what is not 0.
    static std::string counts(const ImportReport& report) {
        std::string text;
        const auto add = [&](std::size_t count, const char* what) {
            if (count == 0) return;
            text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + what;
        };
        add(report.imported, "imported");
        add(report.replaced, "replaced");
        add(report.skipped, "skipped");
        add(report.failed, "failed");
        add(report.attachments, "attached");
        return text;
    }
    /// Every warning as "title: warning", each on its line.
    static std::string warnings(const std::vector<ImportedNote>& notes) {
        std::string text;
        for (const ImportedNote& note : notes) {
            for (const std::string& warning : note.warnings) {
                text += note.title + ": " + warning + "\n";
            }
        }
        return text;
    }
    /// "Vault / Work: Plan #a #b" for every note outside the trash, sorted, each on its line.
    std::string library() {
        std::vector<std::string> lines;
        for (const CDNote* note : context().fetch<CDNote>({.predicate = {"trashedAt == nil"}})) {
            const CDNotebook* notebook = note->notebook;
            std::string line = notebook == nullptr ? "-" : NotebookService::pathText(*notebook);
            line += ": " + note->title.valueOr("");
            std::vector<std::string> tags;
            for (const CDTag* tag : note->tags.all()) {
                tags.push_back(" #" + tag->name.valueOr(""));
            }
            std::ranges::sort(tags);
            for (const std::string& tag : tags) {
                line += tag;
            }
            lines.push_back(line + "\n");
        }
        std::ranges::sort(lines);
        std::string text;
        for (const std::string& line : lines) {
            text += line;
        }
        return text;
    }
    /// The oldest note of this title outside the trash.
    CDNote& note(const std::string& title) {
        auto* found = context().fetchFirst<CDNote>(
            {.predicate = {"title == %@ AND trashedAt == nil", title}});
        if (found == nullptr) throw std::runtime_error("no note " + title);
        return *found;
    }
    std::string body(const std::string& title) { return note(title).html.valueOr("none"); }
    std::string addressOf(const std::string& title) {
        return NoteService::noteURL(*note(title).id);
    }

    TemporaryFolder folder;
    FixedClock clock{*Instant::parseISO("2026-03-14T09:15:00Z")};
    SecureRandom random;  // a forked process must not make the same identifiers
    Calendar calendar{"Europe/Berlin"};
    mime::TypeRegistry types;
    MarkdownImporter importer{
        {.clock = clock, .random = random, .calendar = calendar, .types = types}};
    ImportReports reports{clock};

private:
    std::unique_ptr<TesserineStore> store_;
};

}  // namespace tesserine::test
