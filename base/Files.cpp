#include "base/Files.h"

#include "base/FailPoint.h"
#include "base/Random.h"
#include "base/Text.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <thread>
#include <utility>

namespace tesserine {
namespace {

namespace fs = std::filesystem;

constexpr mode_t privateFile = S_IRUSR | S_IWUSR;
constexpr mode_t privateFolder = S_IRWXU;

/// The last component, fit for a sentence: valid text, without what would disturb a terminal.
std::string shownName(const fs::path& path) {
    const fs::path last = path.has_filename() ? path.filename() : path.parent_path().filename();
    std::string name = text::sanitized(last.empty() ? path.native() : last.native());
    for (char& c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) c = '?';
    }
    return name;
}

std::string sentence(const fs::path& path, std::string_view verb, std::string_view reason) {
    return "“" + shownName(path) + "” could not be " + std::string(verb) + ": "
           + std::string(reason) + ".";
}

FileError::Kind kindOf(int error) {
    switch (error) {
    case ENOENT:
    case ENOTDIR: return FileError::Kind::notFound;
    case EACCES:
    case EPERM:
    case EROFS: return FileError::Kind::permission;
    case ENOSPC:
    case EDQUOT: return FileError::Kind::noSpace;
    case EEXIST:
    case ENOTEMPTY: return FileError::Kind::exists;
    case ELOOP:
    case EISDIR: return FileError::Kind::notRegular;
    default: return FileError::Kind::other;
    }
}

std::string reasonOf(int error) {
    switch (error) {
    case ENOENT: return "it does not exist";
    case ENOTDIR: return "a part of its path is not a folder";
    case EACCES:
    case EPERM: return "permission denied";
    case EROFS: return "the disk is read-only";
    case ENOSPC: return "there is no space left on the disk";
    case EDQUOT: return "the disk quota is used up";
    case EEXIST: return "it exists already";
    case ELOOP: return "it is a link";
    case EISDIR: return "it is a folder";
    case EIO: return "the disk reported an error";
    case EBUSY: return "another process is using it";
    default: break;
    }
    std::string reason = std::generic_category().message(error);
    if (!reason.empty() && reason[0] >= 'A' && reason[0] <= 'Z') {
        reason[0] = static_cast<char>(reason[0] + ('a' - 'A'));
    }
    return reason;
}

[[noreturn]] void fail(const fs::path& path, std::string_view verb) {
    throw FileError::fromErrno(path, verb, errno);
}

/// An open descriptor and its owner.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    int number() const { return number_; }
    bool isOpen() const { return number_ >= 0; }
    /// Closes it now; tells whether that went well (a full network disk may say so only here).
    bool close() { return ::close(std::exchange(number_, -1)) == 0; }

private:
    int number_;
};

std::string randomSuffix() {
    SecureRandom random;
    std::array<std::uint8_t, 8> bytes{};
    random.fill(bytes);
    return ".tmp-" + hex(bytes);
}

bool isTemporaryName(const std::string& name) {
    constexpr std::string_view mark = ".tmp-";
    constexpr std::size_t digitCount = 16;
    if (name.size() < mark.size() + digitCount) return false;
    const std::string_view end = std::string_view(name).substr(name.size() - digitCount);
    const std::size_t markPlace = name.size() - digitCount - mark.size();
    return std::string_view(name).substr(markPlace, mark.size()) == mark
           && end.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

/// False when it fails; `errno` says why.
bool writeAll(int descriptor, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) return false;
        if (count > 0) bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

/// A new file beside its target that becomes the target when it is whole, and vanishes otherwise.
class PendingFile {
public:
    explicit PendingFile(const fs::path& target)
        : target_(target),
          path_(target.native() + randomSuffix()),
          descriptor_(::open(
              path_.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_NOFOLLOW | O_CLOEXEC, privateFile)) {
        if (!descriptor_.isOpen()) fail(target, "written");
        ::fchmod(descriptor_.number(), privateFile);
    }
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;
    ~PendingFile() {
        if (!isPublished_) ::unlink(path_.c_str());
    }

    void append(std::span<const std::uint8_t> bytes) {
        if (!writeAll(descriptor_.number(), bytes)) fail(target_, "written");
    }

    void sync() {
        if (::fsync(descriptor_.number()) != 0) fail(target_, "written");
        if (!descriptor_.close()) fail(target_, "written");
    }

    /// Takes the target's name, whatever has it now.
    void replace() {
        if (::rename(path_.c_str(), target_.c_str()) != 0) fail(target_, "written");
        isPublished_ = true;
    }

    /// Takes the target's name if nothing has it.
    void publishNew() {
        if (::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target_.c_str(), RENAME_NOREPLACE)
            == 0) {
            isPublished_ = true;
            return;
        }
        // Some file systems know no such rename. A second name for the file is as exclusive.
        const bool isUnknown = errno == EINVAL || errno == ENOSYS;
        if (!isUnknown || ::link(path_.c_str(), target_.c_str()) != 0) fail(target_, "written");
    }

private:
    fs::path target_;
    fs::path path_;
    Descriptor descriptor_;
    bool isPublished_ = false;
};

Descriptor openToRead(const fs::path& file, files::Links links) {
    // Non-blocking, so that a pipe put in place of the file cannot hold us up.
    const int noFollow = links == files::Links::refuse ? O_NOFOLLOW : 0;
    return Descriptor(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | noFollow));
}

struct stat statusOfRegular(const fs::path& file, const Descriptor& descriptor) {
    if (!descriptor.isOpen()) fail(file, "read");
    struct stat status {};
    if (::fstat(descriptor.number(), &status) != 0) fail(file, "read");
    if (!S_ISREG(status.st_mode)) {
        throw FileError(
            FileError::Kind::notRegular, sentence(file, "read", "it is not a regular file"));
    }
    return status;
}

/// Reads up to `room` bytes; less only at the end of the file.
std::size_t readFully(const fs::path& file, int descriptor, std::span<std::uint8_t> room) {
    std::size_t filled = 0;
    while (filled < room.size()) {
        const ssize_t count = ::read(descriptor, room.data() + filled, room.size() - filled);
        if (count == 0) break;
        if (count < 0 && errno != EINTR) fail(file, "read");
        if (count > 0) filled += static_cast<std::size_t>(count);
    }
    return filled;
}

std::string sizeText(std::uint64_t bytes) {
    constexpr std::uint64_t megabyte = 1 << 20;
    if (bytes >= megabyte) return std::to_string(bytes / megabyte) + " MB";
    return std::to_string(bytes) + " bytes";
}

fs::path folderOf(const fs::path& file) {
    return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

}  // namespace

FileError FileError::fromErrno(const fs::path& path, std::string_view verb, int error) {
    return {kindOf(error), sentence(path, verb, reasonOf(error))};
}

namespace files {

void createPrivateFolder(const fs::path& folder) {
    if (folder.empty()) return;
    struct stat status {};
    if (::stat(folder.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) return;
        throw FileError::fromErrno(folder, "made", EEXIST);
    }
    if (errno != ENOENT) fail(folder, "made");

    const fs::path parent = (folder.has_filename() ? folder : folder.parent_path()).parent_path();
    createPrivateFolder(parent);
    if (::mkdir(folder.c_str(), privateFolder) != 0) {
        if (errno != EEXIST) fail(folder, "made");
        return;  // made by somebody else at this moment
    }
    ::chmod(folder.c_str(), privateFolder);
    syncFolder(parent.empty() ? fs::path(".") : parent);
}

void writeAtomically(const fs::path& file, std::span<const std::uint8_t> bytes) {
    PendingFile pending(file);
    pending.append(bytes);
    FAIL_POINT("files.written");
    pending.sync();
    FAIL_POINT("files.synced");
    pending.replace();
    FAIL_POINT("files.renamed");
    syncFolder(folderOf(file));
}

void writeNew(const fs::path& file, std::span<const std::uint8_t> bytes) {
    {
        PendingFile pending(file);
        pending.append(bytes);
        pending.sync();
        pending.publishNew();
    }
    syncFolder(folderOf(file));
}

void writeOneOfMany(const fs::path& file, std::span<const std::uint8_t> bytes) {
    // Under its own name at once: with thousands of files the renaming is what takes the time.
    constexpr int newFile = O_CREAT | O_EXCL | O_WRONLY | O_NOFOLLOW | O_CLOEXEC;
    Descriptor made(::open(file.c_str(), newFile, privateFile));
    if (!made.isOpen()) fail(file, "written");
    const int error = writeAll(made.number(), bytes) && made.close() ? 0 : errno;
    if (error == 0) return;
    ::unlink(file.c_str());
    throw FileError::fromErrno(file, "written", error);
}

void syncFileSystem(const fs::path& folder) {
    const Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor.isOpen() || ::syncfs(descriptor.number()) != 0) fail(folder, "written");
}

Bytes read(const fs::path& file, std::uint64_t limit, Links links) {
    const Descriptor descriptor = openToRead(file, links);
    const struct stat status = statusOfRegular(file, descriptor);
    const auto tooLarge = [&] {
        return FileError(
            FileError::Kind::tooLarge,
            sentence(file, "read", "it is larger than " + sizeText(limit)));
    };
    const auto expected = static_cast<std::uint64_t>(status.st_size);
    if (expected > limit) throw tooLarge();

    // One byte more tells whether the file grew; files without a size (/proc) grow from nothing.
    const std::uint64_t mostRead = std::max(limit, limit + 1);
    Bytes bytes(expected + 1);
    std::size_t filled = readFully(file, descriptor.number(), bytes);
    while (filled == bytes.size() && filled <= limit) {
        bytes.resize(std::min<std::uint64_t>(bytes.size() * 2, mostRead));
        filled += readFully(file, descriptor.number(), std::span(bytes).subspan(filled));
    }
    if (filled > limit) throw tooLarge();
    bytes.resize(filled);
    return bytes;
}

void readInPieces(
    const fs::path& file,
    std::size_t pieceSize,
    const std::function<void(std::span<const std::uint8_t>)>& take) {
    const Descriptor descriptor = openToRead(file, Links::follow);
    statusOfRegular(file, descriptor);
    Bytes piece(pieceSize);
    while (true) {
        const std::size_t filled = readFully(file, descriptor.number(), piece);
        if (filled > 0) take(std::span(piece).first(filled));
        if (filled < piece.size()) return;
    }
}

void linkOrCopy(const fs::path& source, const fs::path& target) {
    struct stat status {};
    if (::lstat(source.c_str(), &status) != 0) fail(source, "copied");
    if (!S_ISREG(status.st_mode)) {
        throw FileError(
            FileError::Kind::notRegular, sentence(source, "copied", "it is not a regular file"));
    }
    if (::link(source.c_str(), target.c_str()) == 0) {
        syncFile(target);
        syncFolder(folderOf(target));
        return;
    }
    if (errno == EEXIST || errno == ENOSPC || errno == ENOENT) fail(target, "written");
    copyNew(source, target);
}

void copyNew(const fs::path& source, const fs::path& target) {
    constexpr std::size_t pieceSize = 1 << 20;
    {
        PendingFile pending(target);
        readInPieces(source, pieceSize, [&](auto piece) { pending.append(piece); });
        pending.sync();
        pending.publishNew();
    }
    syncFolder(folderOf(target));
}

void syncFile(const fs::path& file) {
    const Descriptor descriptor(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!descriptor.isOpen() || ::fsync(descriptor.number()) != 0) fail(file, "written");
}

void syncFolder(const fs::path& folder) {
    const Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor.isOpen()) fail(folder, "written");
    // Some network file systems cannot sync a folder and say so with EINVAL.
    if (::fsync(descriptor.number()) != 0 && errno != EINVAL) fail(folder, "written");
}

void removeIfPresent(const fs::path& file) {
    if (::unlink(file.c_str()) != 0 && errno != ENOENT) fail(file, "removed");
}

void sweepTemporaries(const fs::path& folder) {
    std::error_code error;
    fs::directory_iterator entries(folder, error);
    if (error) throw FileError::fromErrno(folder, "read", error.value());

    const auto limit = fs::file_time_type::clock::now() - std::chrono::hours(1);
    for (const fs::directory_entry& entry : entries) {
        if (!isTemporaryName(entry.path().filename().native())) continue;
        const bool isFile = entry.symlink_status(error).type() == fs::file_type::regular;
        const bool isOld = isFile && entry.last_write_time(error) < limit;
        if (isOld && !error) removeIfPresent(entry.path());
    }
}

std::optional<FolderLock> FolderLock::acquire(
    const fs::path& lockFile, std::chrono::milliseconds timeout) {
    constexpr auto longestPause = std::chrono::milliseconds(20);
    const int opened = ::open(
        lockFile.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, privateFile);
    if (opened < 0) fail(lockFile, "locked");

    FolderLock lock(opened);
    const auto end = std::chrono::steady_clock::now() + timeout;
    auto pause = std::chrono::milliseconds(1);
    while (::flock(opened, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) fail(lockFile, "locked");
        if (std::chrono::steady_clock::now() >= end) return std::nullopt;
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, longestPause);
    }
    return lock;
}

FolderLock::FolderLock(FolderLock&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)) {}

FolderLock& FolderLock::operator=(FolderLock&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

FolderLock::~FolderLock() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

}  // namespace files
}  // namespace tesserine
