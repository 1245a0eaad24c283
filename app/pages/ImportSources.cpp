#include "app/pages/ImportSources.h"

#include "app/state/AppEnvironment.h"
#include "base/Text.h"
#include "core/import/AppleNotesImporter.h"
#include "core/import/ENEXImporter.h"
#include "core/import/MarkdownImporter.h"
#include "core/import/TesserineImporter.h"

#include <QCoreApplication>

#include <algorithm>
#include <initializer_list>
#include <memory>

namespace tesserine::app {
namespace {

namespace fs = std::filesystem;
using Paths = ImportSource::Paths;

QString tr(const char* text) { return QCoreApplication::translate("ImportSources", text); }

bool endsIn(const fs::path& path, std::initializer_list<const char*> ends) {
    const std::string end = text::asciiLowercased(path.extension().string());
    return std::ranges::find(ends, end) != ends.end();
}

/// An importer with what it is given, which must live as long.
template <class Importer>
struct Held {
    explicit Held(AppEnvironment& environment)
        : calendar(environment.calendar()),
          importer(
              {.clock = environment.clock(),
               .random = environment.random(),
               .calendar = calendar,
               .types = environment.types(),
               .log = environment.log()}) {}

    const Calendar calendar;
    const Importer importer;
};

template <class Importer>
void use(ImportSource& source, const std::shared_ptr<Held<Importer>>& held) {
    source.preview = [held](auto& context, const auto& paths, const auto& options, auto& control) {
        return held->importer.preview(context, paths, options, control);
    };
    source.run = [held](auto& context, const auto& paths, const auto& options, auto& control) {
        return held->importer.run(context, paths, options, control);
    };
}

ImportSource markdown(AppEnvironment& environment, ImportSource::Picks picks) {
    ImportSource source{.picks = picks};
    if (picks == ImportSource::Picks::folder) {
        source.icon = "folder";
        source.title = tr("A folder of Markdown");
        source.text = tr("Folders become notebooks, links stay links, pictures come along.");
        source.takes = [](const fs::path& path) { return fs::is_directory(path); };
    } else {
        source.icon = "file";
        source.title = tr("Markdown or text files");
        source.text = tr("Each file becomes a note.");
        source.filter = tr("Markdown and text (*.md *.markdown *.txt)");
        source.takes = [](const fs::path& path) {
            return endsIn(path, {".md", ".markdown", ".txt"});
        };
    }
    use(source, std::make_shared<Held<MarkdownImporter>>(environment));
    return source;
}

ImportSource enex(AppEnvironment& environment) {
    ImportSource source{
        .icon = "notebook",
        .title = tr("Evernote export files"),
        .text = tr("Text, files, tags, dates, reminders and tasks; compared byte by byte."),
        .picks = ImportSource::Picks::files,
        .filter = tr("Export files (*.enex)"),
        .holdsTasks = true,
        .takes = [](const fs::path& path) { return endsIn(path, {".enex"}); }};
    use(source, std::make_shared<Held<ENEXImporter>>(environment));
    return source;
}

ImportSource appleNotes(AppEnvironment& environment) {
    ImportSource source{
        .icon = "notes",
        .title = tr("Apple Notes"),
        .text = tr("A copy of the folder that holds “NoteStore.sqlite”, or of exported notes."),
        .takes = [](const fs::path& path) {
            return path.filename() == "NoteStore.sqlite" || fs::exists(path / "NoteStore.sqlite");
        }};
    use(source, std::make_shared<Held<AppleNotesImporter>>(environment));
    return source;
}

ImportSource ownExport(AppEnvironment& environment) {
    const auto held = std::make_shared<Held<TesserineImporter>>(environment);
    return {
        .icon = "library",
        .title = tr("An exported library"),
        .text = tr("A folder that Tesserine exported: notebooks, notes, files and tasks."),
        .choices = ImportSource::Choices::none,
        .preview =
            [held](auto& context, const Paths& paths, const auto&, auto& control) {
                return held->importer.preview(context, paths.front(), control);
            },
        .run =
            [held](auto& context, const Paths& paths, const auto&, auto& control) {
                return held->importer.run(context, paths.front(), control).report;
            },
        .takes = [](const fs::path& path) { return fs::exists(path / "manifest.json"); }};
}

}  // namespace

std::vector<ImportSource> importSources(AppEnvironment& environment) {
    return {
        ownExport(environment),
        appleNotes(environment),
        markdown(environment, ImportSource::Picks::folder),
        markdown(environment, ImportSource::Picks::files),
        enex(environment)};
}

const ImportSource* sourceFor(const std::vector<ImportSource>& sources, const fs::path& path) {
    const auto found = std::ranges::find_if(
        sources, [&](const ImportSource& source) { return source.takes(path); });
    return found == sources.end() ? nullptr : &*found;
}

}  // namespace tesserine::app
