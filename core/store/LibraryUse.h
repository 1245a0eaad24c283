#pragma once

#include <filesystem>
#include <optional>

namespace tesserine {

/// Tells who has a library open: each process holds a lock on ".Tesserine.users" in its folder for
/// as long, and the last to close leaves a mark there. Throws `FileError`.
class LibraryUse {
public:
    /// Joins those that have it open.
    static LibraryUse share(const std::filesystem::path& library);
    /// Keeps everybody else away; none when somebody has it open.
    static std::optional<LibraryUse> alone(const std::filesystem::path& library);
    /// Whether a library was ever opened in this folder.
    static bool isKnown(const std::filesystem::path& library);

    LibraryUse(const LibraryUse&) = delete;
    LibraryUse(LibraryUse&& other) noexcept;
    LibraryUse& operator=(const LibraryUse&) = delete;
    LibraryUse& operator=(LibraryUse&& other) noexcept;
    ~LibraryUse();

    /// Whether nobody else had it open at the time.
    bool isFirst() const noexcept { return isFirst_; }
    /// Whether the last one that had it open never closed it.
    bool wasLeftOpen() const noexcept { return wasLeftOpen_; }
    void markOpen() const;
    /// Does nothing while others have it open.
    void markClosed() const;

private:
    explicit LibraryUse(const std::filesystem::path& library);

    int descriptor_ = -1;
    bool isFirst_ = false;
    bool wasLeftOpen_ = false;
};

}  // namespace tesserine
