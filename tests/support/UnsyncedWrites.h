#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <span>
#include <string>
#include <vector>

namespace tesserine::test {

/// What a power cut would take from the files of a disk: everything written to them since each was
/// last synced. Names are taken to survive: making and removing a file counts at once. Safe from
/// any thread.
class UnsyncedWrites {
public:
    /// To be called before the operation reaches the file.
    void willWrite(
        const std::string& path, std::uint64_t offset, std::span<const std::uint8_t> bytes);
    void willTruncate(const std::string& path, std::uint64_t size);
    /// Everything written to the file so far is on the disk, or the file is gone.
    void forget(const std::string& path);

    /// Gives every file what a power cut may leave of it: all that was synced and, of each later
    /// operation, all, the first half or nothing, as `seed` has it.
    void cutPower(std::uint64_t seed);

private:
    struct Operation {
        std::uint64_t offset = 0;
        std::vector<std::uint8_t> bytes{};  ///< none: the file was cut off at `offset`
    };
    struct File {
        std::vector<std::uint8_t> synced{};
        std::vector<Operation> operations{};
    };

    void add(const std::string& path, Operation operation);

    std::mutex mutex_;
    std::map<std::string, File> files_;  // behind mutex_; those with something unsynced
};

}  // namespace tesserine::test
