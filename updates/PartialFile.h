#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tesserine {

/// A file on its way into a folder: private, hidden, and gone unless it is kept at the end. It is
/// written through the one descriptor that made it. Every operation throws `FileError`.
class PartialFile {
public:
    /// Makes it in `folder`, where `name` is wanted for it, and removes what killed programs left
    /// of earlier ones.
    PartialFile(std::filesystem::path folder, std::string name);
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;
    ~PartialFile();

    void write(std::string_view piece);
    /// Gives the file its name, with a number when that is taken; what is there already stays.
    /// Returns where it is.
    std::filesystem::path keep();

private:
    void removeLeftOver() const;

    const std::filesystem::path folder_;
    const std::string name_;
    std::filesystem::path path_;
    int descriptor_ = -1;
};

}  // namespace tesserine
