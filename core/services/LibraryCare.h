#pragma once

#include "core/store/LibraryBackup.h"

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>

namespace tesserine {

class Preferences;
class TesserineStore;

/// What programs do of their own accord to keep a library safe and tidy: the daily backup, a backup
/// before much is deleted, the purge of the trash.
///
/// One per opening of the library, which outlives it. Belongs to one thread at a time.
class LibraryCare {
public:
    LibraryCare(TesserineStore& store, const Clock& clock, Random& random, Log log);

    /// Makes a backup before something that deletes or changes much, unless this object has just
    /// made one of the same state; `reason` becomes part of its name. Throws `BackupError` and
    /// `FileError`, and then nothing must be changed.
    void backUpBefore(const std::string& reason, const std::stop_token& stop = {});
    /// Remembers that there is a backup of the library as it stands.
    void noteBackup();

    /// One backup a day; with it goes what no follower and no row needs. What fails is logged.
    void makeDailyBackup();
    /// The purge of old notes that the user asked for, after a backup. What fails is logged.
    void purgeTrash(Preferences& preferences, const std::stop_token& stop = {});

private:
    bool hasBackupForPurge(const std::stop_token& stop);

    TesserineStore& store_;
    const Clock& clock_;
    LibraryBackups backups_;
    Log log_;
    std::optional<std::int64_t> backedUpChange_;
};

}  // namespace tesserine
