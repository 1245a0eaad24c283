#pragma once

#include "core/import/ImportTypes.h"

#include <QString>

#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

namespace tesserine {
class StoreContext;
}

namespace tesserine::app {

class AppEnvironment;

/// One kind of thing that notes can be brought in from.
struct ImportSource {
    enum class Picks { folder, files };
    enum class Choices { all, none };
    using Paths = std::vector<std::filesystem::path>;

    QString icon;
    QString title;
    QString text;
    Picks picks = Picks::folder;
    QString filter{};  ///< of files, as a file dialog wants it
    /// Whether notebook, tag and the like can be chosen.
    Choices choices = Choices::all;
    bool holdsTasks = false;  ///< which may become tasks or checklists
    std::function<ImportPreview(
        StoreContext&, const Paths&, const ImportOptions&, const ImportControl&)>
        preview;
    std::function<ImportReport(
        StoreContext&, const Paths&, const ImportOptions&, const ImportControl&)>
        run;
    /// Whether it is meant for a file or folder that came from elsewhere, by its name.
    std::function<bool(const std::filesystem::path&)> takes;
};

/// All of them. What they hold lives as long as they do; the environment outlives them.
std::vector<ImportSource> importSources(AppEnvironment& environment);

/// The first source that takes the path; none when no one does.
const ImportSource* sourceFor(
    const std::vector<ImportSource>& sources, const std::filesystem::path& path);

}  // namespace tesserine::app
