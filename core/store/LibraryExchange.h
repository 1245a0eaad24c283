#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace tesserine::exchange {

/// Puts `arriving`, a whole and synced library file in the folder `library`, in the place of
/// "Tesserine.sqlite". What stood there, with its journal, gets `suffix` after its name; returns
/// its new path, or none when nothing was there.
///
/// The folder must be locked and the library open nowhere. A kill at any moment leaves either the
/// old state or one that `finish` completes. Throws `FileError`.
std::optional<std::filesystem::path> replaceLibrary(
    const std::filesystem::path& library,
    const std::filesystem::path& arriving,
    const std::string& suffix);

/// Completes an exchange that was cut off; called with the folder locked, before the library is
/// opened. Throws `FileError`.
void finish(const std::filesystem::path& library);

/// The name, in the folder of the library, of a file that is to become it.
std::filesystem::path arrivingName(
    const std::filesystem::path& library, const std::string& distinction);
/// Removes such files when they are older than a day: nobody is making them any more.
void sweepArriving(const std::filesystem::path& library);

}  // namespace tesserine::exchange
