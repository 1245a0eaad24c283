#pragma once

#include "base/UserError.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

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

class Preferences;

/// Under which the folder stands that the user chose at the first start.
inline constexpr std::string_view libraryFolderKey = "tesserine.library";

/// Where the library lies unless a program was told otherwise: the folder that the user chose, else
/// the usual one. `dataHome` is the value of XDG_DATA_HOME.
std::filesystem::path usualLibraryFolder(
    const Preferences& preferences,
    const std::optional<std::string>& dataHome,
    const std::filesystem::path& home);

}  // namespace tesserine
