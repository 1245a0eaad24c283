#include "core/import/SourceFolder.h"

#include "base/Files.h"
#include "base/Text.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

namespace tesserine {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const fs::path& path, const std::error_code& error) {
    throw FileError::fromErrno(path, "read", error.value());
}

/// Absolute, without links and dots. Throws `FileError`.
fs::path realPath(const fs::path& path) {
    std::error_code error;
    fs::path result = fs::canonical(path, error);
    if (error) fail(path, error);
    return result;
}

bool hasHiddenComponent(const fs::path& relative) {
    return std::any_of(relative.begin(), relative.end(), [](const fs::path& part) {
        return part.native().starts_with('.');
    });
}

Instant instantOf(const struct statx_timestamp& time) {
    return Instant::fromSeconds(
               static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9)
        .floorToMillisecond();
}

}  // namespace

SourceFolder::SourceFolder(
    const std::vector<fs::path>& sources,
    bool (*isNote)(std::string_view filename),
    const std::stop_token& stop)
    : isNote_(isNote) {
    for (const fs::path& source : sources) {
        const fs::path path = realPath(source);
        if (!title_.empty()) title_ += ", ";
        title_ += text::sanitized(path.string());
        if (fs::is_directory(path)) {
            addFolder(rootAt(path, true), stop);
        } else if (fs::is_regular_file(path)) {
            notes_.push_back({rootAt(path.parent_path(), false), path.filename().string()});
        } else {
            throw FileError(
                FileError::Kind::notRegular,
                "“" + text::sanitized(path.filename().string()) + "” is no file that holds text.");
        }
    }
}

std::uint32_t SourceFolder::rootAt(const fs::path& folder, bool isWhole) {
    const auto known = std::ranges::find_if(
        roots_, [&](const Root& root) { return root.path == folder && root.isWhole == isWhole; });
    if (known == roots_.end()) {
        roots_.push_back({folder, isWhole});
        return static_cast<std::uint32_t>(roots_.size() - 1);
    }
    return static_cast<std::uint32_t>(known - roots_.begin());
}

void SourceFolder::addFolder(std::uint32_t root, const std::stop_token& stop) {
    std::vector<std::string> open{""};
    while (!open.empty() && !stop.stop_requested()) {
        const std::string folder = std::move(open.back());
        open.pop_back();
        addEntries(root, folder, open);
    }
}

void SourceFolder::addEntries(
    std::uint32_t root, const std::string& folder, std::vector<std::string>& open) {
    std::error_code error;
    const fs::path path = roots_[root].path / folder;
    fs::directory_iterator entries(path, error);
    std::vector<std::string> files;
    std::vector<std::string> folders;
    for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
        std::string name = entries->path().filename().string();
        if (name.starts_with('.')) continue;
        std::error_code ignored;  // a file that vanished meanwhile is of no kind
        const fs::file_type type = entries->symlink_status(ignored).type();
        if (type == fs::file_type::directory) {
            folders.push_back(std::move(name));
        } else if (type == fs::file_type::regular) {
            files.push_back(std::move(name));
        }
    }
    if (error) {
        const std::string sentence = FileError::fromErrno(path, "read", error.value()).what();
        problems_.push_back({name({root, folder}), sentence});
    }

    const std::string prefix = folder.empty() ? "" : folder + "/";
    std::ranges::sort(files);
    for (const std::string& file : files) {
        (isNote_(file) ? notes_ : others_).push_back({root, prefix + file});
    }
    std::ranges::sort(folders, std::greater<>());  // `open` is taken from the back
    for (const std::string& inside : folders) {
        open.push_back(prefix + inside);
    }
}

std::string SourceFolder::rootName(std::uint32_t root) const {
    return text::sanitized(roots_[root].path.filename().string());
}

fs::path SourceFolder::path(const SourceFile& file) const {
    return roots_[file.root].path / file.relative;
}

std::string SourceFolder::name(const SourceFile& file) { return text::sanitized(file.relative); }

std::optional<SourceFile> SourceFolder::fileBeside(
    std::uint32_t root, const std::string& relative) const {
    if (relative.empty() || hasHiddenComponent(relative)) return std::nullopt;
    const fs::path path = roots_[root].path / relative;
    std::error_code error;
    if (fs::canonical(path, error) != path || error) return std::nullopt;
    if (!fs::is_regular_file(path, error)) return std::nullopt;
    return SourceFile{root, relative};
}

FileTimes SourceFolder::times(const fs::path& file) {
    struct statx status {};
    constexpr unsigned wanted = STATX_BTIME | STATX_MTIME | STATX_SIZE;
    if (::statx(AT_FDCWD, file.c_str(), AT_SYMLINK_NOFOLLOW, wanted, &status) != 0) {
        throw FileError::fromErrno(file, "read", errno);
    }
    FileTimes times;
    times.modified = instantOf(status.stx_mtime);
    // A copied file is born after its last change: then that change is all that is known.
    const bool hasBirth = (status.stx_mask & STATX_BTIME) != 0;
    times.created =
        hasBirth ? std::min(instantOf(status.stx_btime), times.modified) : times.modified;
    times.byteCount = status.stx_size;
    return times;
}

}  // namespace tesserine
