#pragma once

#include "sync/SyncService.h"

#include <memory>
#include <string>

namespace tesserine::cli {

class Session;

/// The sync service as this machine is set up for, in the terminal. Making it touches neither the
/// network nor the keyring. Throws `SyncSetupError`.
std::unique_ptr<SyncService> syncService(Session& session);
/// The name by which the service lists this computer.
std::string deviceLabel();

}  // namespace tesserine::cli
