#include "server/BlobFolder.h"

#include "base/Files.h"

namespace tesserine::server {

namespace fs = std::filesystem;

bool BlobFolder::isDigest(const std::string& text) {
    constexpr std::size_t length = 64;
    return text.size() == length && text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

fs::path BlobFolder::pathOf(const std::string& user, const std::string& digest) const {
    return folder_ / user / digest.substr(0, 2) / digest;
}

bool BlobFolder::has(const std::string& user, const std::string& digest) const {
    std::error_code problem;
    return isDigest(digest) && fs::is_regular_file(pathOf(user, digest), problem);
}

void BlobFolder::put(
    const std::string& user, const std::string& digest, std::span<const std::uint8_t> bytes) {
    const std::scoped_lock lock(writing_);
    const fs::path path = pathOf(user, digest);
    files::createPrivateFolder(path.parent_path());
    files::writeAtomically(path, bytes);
}

std::optional<std::string> BlobFolder::get(
    const std::string& user, const std::string& digest) const {
    if (!has(user, digest)) return std::nullopt;
    const Bytes bytes = files::read(pathOf(user, digest), UINT64_MAX, files::Links::refuse);
    return std::string(textOf(bytes));
}

std::optional<std::int64_t> BlobFolder::remove(const std::string& user, const std::string& digest) {
    const std::scoped_lock lock(writing_);
    if (!has(user, digest)) return std::nullopt;
    const fs::path path = pathOf(user, digest);
    const auto size = static_cast<std::int64_t>(fs::file_size(path));
    files::removeIfPresent(path);
    return size;
}

BlobUsage BlobFolder::usage(const std::string& user) const {
    std::int64_t count = 0;
    std::int64_t bytes = 0;
    std::error_code problem;
    for (const auto& entry : fs::recursive_directory_iterator(folder_ / user, problem)) {
        if (!entry.is_regular_file() || !isDigest(entry.path().filename().string())) continue;
        ++count;
        bytes += static_cast<std::int64_t>(entry.file_size());
    }
    return {.files = count, .bytes = bytes};
}

}  // namespace tesserine::server
