#pragma once

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace tesserine::inspect {

/// An empty folder for one answer; gone with all it holds afterwards.
class ScratchFolder {
public:
    ScratchFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "tesserine-XXXXXX").native();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::system_error(errno, std::generic_category(), "mkdtemp");
        }
        path_ = name;
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

}  // namespace tesserine::inspect
