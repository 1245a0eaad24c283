#pragma once

#include "base/Encoding.h"
#include "base/UserError.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tesserine {

/// A file or folder could not be read or written; `what()` names it and says why.
class FileError final : public UserError {
public:
    enum class Kind { notFound, permission, noSpace, exists, notRegular, tooLarge, other };

    FileError(Kind kind, const std::string& sentence) : UserError(sentence), kind_(kind) {}
    /// From an `errno` value: "“plan.md” could not be read: permission denied."
    static FileError fromErrno(const std::filesystem::path& path, std::string_view verb, int error);
    Kind kind() const noexcept { return kind_; }

private:
    Kind kind_;
};

/// Files as the program needs them: private, whole or not at all, never through a link that
/// somebody else put there. Every function throws `FileError`.
namespace files {

/// Makes `folder` and its parents; a new one has mode 0700.
void createPrivateFolder(const std::filesystem::path& folder);

/// Writes `bytes` to a new file beside `file`, syncs it, renames it to `file` and syncs the folder.
/// Afterwards `file` holds either what it held before or all of `bytes`. Mode 0600.
void writeAtomically(const std::filesystem::path& file, std::span<const std::uint8_t> bytes);
/// Creates `file`, which must not exist, with `bytes`, and syncs file and folder. Mode 0600.
void writeNew(const std::filesystem::path& file, std::span<const std::uint8_t> bytes);
/// One of many files: not synced, nor whole after a kill; `syncFileSystem` follows the last one.
void writeOneOfMany(const std::filesystem::path& file, std::span<const std::uint8_t> bytes);
/// Syncs everything that was written to the file system of `folder`.
void syncFileSystem(const std::filesystem::path& folder);

/// The whole content of a regular file of at most `limit` bytes. A link is followed only if
/// `followLinks`; folders, pipes and devices are refused.
enum class Links { follow, refuse };
Bytes read(const std::filesystem::path& file, std::uint64_t limit, Links links = Links::follow);
/// The same, read in pieces of at most `pieceSize` bytes handed to `take`.
void readInPieces(
    const std::filesystem::path& file,
    std::size_t pieceSize,
    const std::function<void(std::span<const std::uint8_t>)>& take);

/// Copies a regular file to the new file `target` by hard link where possible, else by bytes,
/// synced.
void linkOrCopy(const std::filesystem::path& source, const std::filesystem::path& target);
/// Copies the bytes of a regular file to the new file `target`, synced. Mode 0600.
void copyNew(const std::filesystem::path& source, const std::filesystem::path& target);
void syncFile(const std::filesystem::path& file);
void syncFolder(const std::filesystem::path& folder);
/// Removes the file if it is there.
void removeIfPresent(const std::filesystem::path& file);
/// Removes temporary files of `writeAtomically` that a killed process left in `folder`, if they are
/// older than an hour.
void sweepTemporaries(const std::filesystem::path& folder);

/// `name` as one safe path component: / \ : * ? " < > | and controls become "-", as do leading and
/// trailing dots and spaces; reserved device names get "_"; NFC; at most 80 characters and 200
/// bytes, the extension kept; nothing left gives "Untitled". Direction marks are removed.
std::string safeName(std::string_view name);

/// An advisory lock on a lock file, held until the object goes away (flock(2)). The file stays.
class FolderLock {
public:
    /// Tries until `timeout` is over; none when another process still holds it.
    static std::optional<FolderLock> acquire(
        const std::filesystem::path& lockFile, std::chrono::milliseconds timeout);
    FolderLock(FolderLock&&) noexcept;
    FolderLock& operator=(FolderLock&&) noexcept;
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;
    ~FolderLock();

private:
    explicit FolderLock(int descriptor) : descriptor_(descriptor) {}
    int descriptor_ = -1;
};

}  // namespace files
}  // namespace tesserine
