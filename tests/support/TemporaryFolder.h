#pragma once

#include <filesystem>
#include <string>

namespace tesserine::test {

/// A fresh folder of its own under the system's temporary folder; removed with all it holds.
class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    const std::filesystem::path& path() const noexcept { return path_; }

    friend std::filesystem::path operator/(
        const TemporaryFolder& folder, const std::filesystem::path& name) {
        return folder.path_ / name;
    }

private:
    std::filesystem::path path_;
};

/// The whole content of a file; throws when there is none.
std::string contentOf(const std::filesystem::path& file);
/// Writes a file plainly, as another program would.
void putContent(const std::filesystem::path& file, const std::string& content);

}  // namespace tesserine::test
