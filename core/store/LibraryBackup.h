#pragma once

#include "base/Clock.h"
#include "base/Instant.h"
#include "base/Log.h"
#include "base/Random.h"
#include "base/UserError.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace tesserine {

class StoreCore;
class TesserineStore;

/// Why a backup could not be made or restored.
class BackupError final : public UserError {
public:
    enum class Kind { failed, notABackup, inUse, targetExists, cancelled };

    static BackupError failed(const std::string& detail) {
        return {Kind::failed, "The backup could not be made. " + detail};
    }
    static BackupError notABackup(const std::filesystem::path& folder, const std::string& detail) {
        return {Kind::notABackup, "“" + folder.string() + "” is not a complete backup. " + detail};
    }
    static BackupError inUse() {
        return {
            Kind::inUse,
            "The library is open in another window or program. Close it there, then restore."};
    }
    static BackupError targetExists(const std::filesystem::path& target) {
        return {
            Kind::targetExists,
            "“" + target.string() + "” is there already. Choose another place."};
    }
    static BackupError cancelled() { return {Kind::cancelled, "The backup was cancelled."}; }
    Kind kind() const noexcept { return kind_; }

private:
    BackupError(Kind kind, const std::string& sentence) : UserError(sentence), kind_(kind) {}
    Kind kind_;
};

/// One backup: a folder that holds a whole library of its own.
struct LibraryBackup {
    std::filesystem::path folder;
    Instant createdAt;
    std::string reason;  ///< "daily", "import", "migration", "purge", "manual"
    std::uint64_t byteCount = 0;
};

/// What a restore did.
struct RestoreOutcome {
    LibraryBackup backup;
    /// Where the library's file went that stood here before; none when there was none.
    std::optional<std::filesystem::path> keptAside;
};

/// Copies of the library, whole and verified, and the way back.
///
/// They stand in the folder "Backups" of the library, named "2026-03-14 09.15.00 daily". A backup
/// appears under its name only when it is complete, verified and synced, so there is always one
/// complete backup more than none. Its large values are hard links to the library's own, which
/// never change. Kept: the newest of each of the last 7 days, 4 weeks and 6 months with one, and
/// every one younger than a day; those made by hand are never removed. Throws
/// `BackupError`, `FileError` or `StoreError`.
class LibraryBackups {
public:
    LibraryBackups(
        std::filesystem::path libraryFolder, const Clock& clock, Random& random, Log log = {});

    /// Copies the library as it stands, while others may write. `target`: a folder that does not
    /// exist yet; none: a new one in "Backups".
    LibraryBackup create(
        const TesserineStore& store,
        const std::string& reason,
        const std::optional<std::filesystem::path>& target = std::nullopt,
        std::stop_token stop = {}) const;
    /// One a day: makes a backup when the library holds anything that the newest does not and that
    /// one is older than a day, then removes what is no longer kept. Returns the new backup.
    std::optional<LibraryBackup> createDaily(const TesserineStore& store) const;
    /// Newest first; incomplete folders are none.
    std::vector<LibraryBackup> list() const;
    /// Whether the copy opens, is whole and has its large values. Throws `BackupError::notABackup`.
    LibraryBackup verify(const std::filesystem::path& folder) const;
    /// How many notes are in the copy, without templates and trash; none when it cannot be read.
    static std::optional<std::size_t> noteCount(const std::filesystem::path& folder);
    /// Puts the backup in the library's place. The library must not be open anywhere. What stood
    /// there (readable or not) is kept beside as "Tesserine.sqlite.replaced-<time>". Verifies
    /// first.
    RestoreOutcome restore(const std::filesystem::path& folder) const;
    /// Removes backups that the rule no longer keeps; returns how many.
    std::size_t prune() const;

    std::filesystem::path folder() const { return library_ / "Backups"; }

private:
    friend class StoreCore;
    LibraryBackup createFrom(
        StoreCore& core,
        const std::string& reason,
        const std::optional<std::filesystem::path>& target,
        const std::stop_token& stop) const;
    RestoreOutcome restoreFrom(const std::filesystem::path& backupFolder) const;
    std::size_t removeUnkept() const;
    void copyInto(
        StoreCore& core, const std::filesystem::path& making, const std::stop_token& stop) const;
    std::filesystem::path freeName(Instant now, const std::string& reason) const;
    void beginNewHistory(const std::filesystem::path& file) const;
    void sweepUnfinished() const;
    static std::int64_t lastChange(const LibraryBackup& backup);
    static Instant fileTime(const std::filesystem::path& file);
    static void discard(const std::filesystem::path& making) noexcept;

    std::filesystem::path library_;
    const Clock& clock_;
    Random& random_;
    Log log_;
};

}  // namespace tesserine
