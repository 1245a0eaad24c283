#include "updates/PartialFile.h"

#include "base/Files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace tesserine {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view suffix = ".part";
/// One that was not written to for so long belongs to no program that runs.
constexpr std::chrono::hours longestPause{1};

}  // namespace

PartialFile::PartialFile(fs::path folder, std::string name)
    : folder_(std::move(folder)), name_(std::move(name)) {
    removeLeftOver();
    std::string place = (folder_ / ("." + name_ + "-XXXXXX")).string().append(suffix);
    descriptor_ = mkostemps(place.data(), static_cast<int>(suffix.size()), O_CLOEXEC);
    if (descriptor_ < 0) throw FileError::fromErrno(folder_ / name_, "written", errno);
    path_ = place;
}

PartialFile::~PartialFile() {
    close(descriptor_);
    std::error_code ignored;
    fs::remove(path_, ignored);
}

void PartialFile::write(std::string_view piece) {
    while (!piece.empty()) {
        const ssize_t count = ::write(descriptor_, piece.data(), piece.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw FileError::fromErrno(path_, "written", errno);
        piece.remove_prefix(static_cast<std::size_t>(count));
    }
}

fs::path PartialFile::keep() {
    if (fsync(descriptor_) != 0) throw FileError::fromErrno(path_, "written", errno);
    const fs::path wanted = folder_ / name_;
    fs::path free = wanted;
    for (int number = 2;; ++number) {
        const int failed =
            renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, free.c_str(), RENAME_NOREPLACE);
        if (failed == 0) return free;
        if (errno != EEXIST) throw FileError::fromErrno(free, "written", errno);
        const std::string numbered = wanted.stem().string() + " " + std::to_string(number);
        free.replace_filename(numbered + wanted.extension().string());
    }
}

void PartialFile::removeLeftOver() const {
    const std::string beginning = "." + name_ + "-";
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder_, ignored)) {
        const std::string name = entry.path().filename().string();
        const bool isOurs = name.starts_with(beginning) && name.ends_with(suffix);
        const auto age = fs::file_time_type::clock::now() - entry.last_write_time(ignored);
        if (isOurs && age > longestPause) fs::remove(entry.path(), ignored);
    }
}

}  // namespace tesserine
