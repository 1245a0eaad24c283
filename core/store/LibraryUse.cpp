#include "core/store/LibraryUse.h"

#include "base/Files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <system_error>
#include <utility>

namespace tesserine {
namespace {

constexpr std::string_view openMark = "open  \n";  // of one length, so that one write replaces it
constexpr std::string_view closedMark = "closed\n";

std::filesystem::path placeIn(const std::filesystem::path& library) {
    return library / ".Tesserine.users";
}

void write(int descriptor, std::string_view mark) {
    // Only a hint: without it the journal still tells of an unclean end.
    const auto written = ::pwrite(descriptor, mark.data(), mark.size(), 0);
    static_cast<void>(written);
}

}  // namespace

LibraryUse::LibraryUse(const std::filesystem::path& library)
    : descriptor_(
        ::open(placeIn(library).c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600)) {
    if (descriptor_ < 0) throw FileError::fromErrno(placeIn(library), "opened", errno);
    isFirst_ = ::flock(descriptor_, LOCK_EX | LOCK_NB) == 0;
    char first = 0;
    wasLeftOpen_ = isFirst_ && ::pread(descriptor_, &first, 1, 0) == 1 && first == openMark.front();
}

LibraryUse LibraryUse::share(const std::filesystem::path& library) {
    LibraryUse use(library);
    while (::flock(use.descriptor_, LOCK_SH) != 0) {
        if (errno != EINTR) throw FileError::fromErrno(placeIn(library), "locked", errno);
    }
    return use;
}

std::optional<LibraryUse> LibraryUse::alone(const std::filesystem::path& library) {
    LibraryUse use(library);
    if (!use.isFirst_) return std::nullopt;
    return use;
}

bool LibraryUse::isKnown(const std::filesystem::path& library) {
    std::error_code error;
    const auto size = std::filesystem::file_size(placeIn(library), error);
    return !error && size > 0;
}

LibraryUse::LibraryUse(LibraryUse&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)),
      isFirst_(other.isFirst_),
      wasLeftOpen_(other.wasLeftOpen_) {}

LibraryUse& LibraryUse::operator=(LibraryUse&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    std::swap(isFirst_, other.isFirst_);
    std::swap(wasLeftOpen_, other.wasLeftOpen_);
    return *this;
}

LibraryUse::~LibraryUse() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

void LibraryUse::markOpen() const { write(descriptor_, openMark); }

void LibraryUse::markClosed() const {
    if (::flock(descriptor_, LOCK_EX | LOCK_NB) == 0) write(descriptor_, closedMark);
}

}  // namespace tesserine
