#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace tesserine::test {
namespace {

namespace fs = std::filesystem;

/// A test may have left folders that nobody may write to.
void makeRemovable(const fs::path& folder) {
    std::error_code ignored;
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, ignored);
    for (const auto& entry : fs::directory_iterator(folder, ignored)) {
        if (entry.symlink_status(ignored).type() == fs::file_type::directory) {
            makeRemovable(entry.path());
        }
    }
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
    std::string name = (fs::temp_directory_path() / "tesserine-test-XXXXXX").native();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "mkdtemp");
    }
    path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    makeRemovable(path_);
    fs::remove_all(path_, ignored);
}

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw std::runtime_error("no file " + file.native());
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void putContent(const fs::path& file, const std::string& content) {
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream << content;
    stream.close();
    if (!stream) throw std::runtime_error("could not write " + file.native());
}

}  // namespace tesserine::test
