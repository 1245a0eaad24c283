#include "core/import/TesserineFolder.h"

#include "base/Files.h"
#include "base/Text.h"

namespace tesserine {

namespace fs = std::filesystem;

TesserineFolder::TesserineFolder(const fs::path& folder) {
    std::error_code error;
    folder_ = fs::canonical(folder, error);
    if (error) throw FileError::fromErrno(folder, "read", error.value());
}

std::string TesserineFolder::title() const { return text::sanitized(folder_.string()); }

std::optional<fs::path> TesserineFolder::file(const std::string& relative) const {
    const bool isPath = !relative.empty() && relative.find('\0') == std::string::npos;
    const fs::path inside(relative);
    if (!isPath || inside.is_absolute()) return std::nullopt;

    // A path with ".." or a link on its way is not the one it turns out to be.
    const fs::path path = folder_ / inside;
    std::error_code error;
    if (fs::canonical(path, error) != path || error) return std::nullopt;
    return fs::is_regular_file(path, error) ? std::optional(path) : std::nullopt;
}

std::optional<Bytes> TesserineFolder::read(const std::string& relative, std::uint64_t limit) const {
    const auto path = file(relative);
    if (!path) return std::nullopt;
    try {
        return files::read(*path, limit, files::Links::refuse);
    } catch (const FileError&) {
        return std::nullopt;
    }
}

}  // namespace tesserine
