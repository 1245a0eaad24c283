#include "core/store/LibraryFolder.h"

#include "base/Preferences.h"
#include "core/store/TesserineStore.h"

#include <sys/stat.h>
#include <unistd.h>

#include <system_error>

namespace tesserine {

namespace fs = std::filesystem;

fs::path checkedLibraryFolder(const fs::path& folder) {
    std::error_code error;
    const fs::path canonical = fs::weakly_canonical(fs::absolute(folder, error), error);
    if (error) throw LibraryFolderError(folder, "cannot be reached");
    // "folder/" names the same place as "folder".
    fs::path clean = canonical.has_filename() ? canonical : canonical.parent_path();
    if (clean == clean.root_path()) {
        throw LibraryFolderError(clean, "is the root of the file system, not a library");
    }
    struct stat status = {};
    if (::stat(clean.c_str(), &status) != 0) return clean;
    if (!S_ISDIR(status.st_mode)) throw LibraryFolderError(clean, "is not a folder");
    if (status.st_uid != ::geteuid()) throw LibraryFolderError(clean, "belongs to another user");
    return clean;
}

fs::path usualLibraryFolder(
    const Preferences& preferences,
    const std::optional<std::string>& dataHome,
    const fs::path& home) {
    fs::path chosen = preferences.string(libraryFolderKey).value_or("");
    if (chosen.is_absolute()) return chosen;
    return StoreConfiguration::defaultDirectory(dataHome, home);
}

}  // namespace tesserine
