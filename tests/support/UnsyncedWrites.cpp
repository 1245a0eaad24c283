#include "tests/support/UnsyncedWrites.h"

#include "tests/support/SeededRandom.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <array>
#include <filesystem>

namespace tesserine::test {
namespace {

std::vector<std::uint8_t> present(const std::string& path) {
    if (!std::filesystem::exists(path)) return {};
    const std::string content = contentOf(path);
    return {content.begin(), content.end()};
}

}  // namespace

void UnsyncedWrites::willWrite(
    const std::string& path, std::uint64_t offset, std::span<const std::uint8_t> bytes) {
    add(path, {.offset = offset, .bytes = {bytes.begin(), bytes.end()}});
}

void UnsyncedWrites::willTruncate(const std::string& path, std::uint64_t size) {
    add(path, {.offset = size});
}

void UnsyncedWrites::add(const std::string& path, Operation operation) {
    const std::lock_guard lock(mutex_);
    const auto [file, isFirst] = files_.try_emplace(path);
    if (isFirst) file->second.synced = present(path);
    file->second.operations.push_back(std::move(operation));
}

void UnsyncedWrites::forget(const std::string& path) {
    const std::lock_guard lock(mutex_);
    files_.erase(path);
}

void UnsyncedWrites::cutPower(std::uint64_t seed) {
    const std::lock_guard lock(mutex_);
    SeededRandom random(seed);
    for (const auto& [path, file] : files_) {
        std::vector<std::uint8_t> image = file.synced;
        for (const auto& [offset, bytes] : file.operations) {
            std::array<std::uint8_t, 1> chance{};
            random.fill(chance);
            if (chance[0] % 3 == 0) continue;
            if (bytes.empty()) {
                image.resize(offset);
                continue;
            }
            const std::size_t count = chance[0] % 3 == 1 ? bytes.size() : bytes.size() / 2;
            image.resize(std::max(image.size(), offset + count));
            std::copy_n(bytes.begin(), count, image.begin() + static_cast<std::ptrdiff_t>(offset));
        }
        putContent(path, {image.begin(), image.end()});
    }
}

}  // namespace tesserine::test
