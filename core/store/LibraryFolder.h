#pragma once

#include "base/UserError.h"

#include <filesystem>
#include <string>

namespace tesserine {

/// A folder that cannot be that of a library, whether or not there is one in it.
class LibraryFolderError final : public UserError {
public:
    /// `reason` completes "The folder “X” …".
    LibraryFolderError(const std::filesystem::path& folder, const std::string& reason)
        : UserError("The folder “" + folder.string() + "” " + reason + ".") {}
};

/// The folder of a library as it is opened: absolute, links resolved; it need not exist. Throws
/// `LibraryFolderError` for "/", for what is no folder, and for a folder of another user.
std::filesystem::path checkedLibraryFolder(const std::filesystem::path& folder);

}  // namespace tesserine
