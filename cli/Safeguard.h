#pragma once

#include "core/store/LibraryBackup.h"

#include <string>

/// Backups that the program makes of its own accord.
namespace tesserine::cli {

class Session;

LibraryBackups backupsOf(Session& session);

/// Makes a backup before something that deletes or changes much, unless this run has just made one
/// of the same state; `reason` becomes part of its name.
/// Throws `BackupError`, and then nothing must be changed.
void backUpBefore(Session& session, const std::string& reason);

/// What every start with the right to write does: one backup a day, and the purge of old notes in
/// the trash that the user asked for. What fails is logged; the command goes on.
void doStartWork(Session& session);

}  // namespace tesserine::cli
