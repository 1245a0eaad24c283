#pragma once

#include "sync/WireRecords.h"

#include <filesystem>
#include <mutex>
#include <optional>
#include <span>
#include <string>

namespace tesserine::server {

/// The files of all accounts: one folder for each account, each file under its digest. Digests have
/// been checked to be 64 hexadecimal digits, identifiers of accounts to be our own. Safe from any
/// thread.
class BlobFolder {
public:
    explicit BlobFolder(std::filesystem::path folder) : folder_(std::move(folder)) {}

    bool has(const std::string& user, const std::string& digest) const;
    /// Whole or not at all. Throws `FileError`.
    void put(
        const std::string& user, const std::string& digest, std::span<const std::uint8_t> bytes);
    std::optional<std::string> get(const std::string& user, const std::string& digest) const;
    /// How many bytes are free now; none when it was not there.
    std::optional<std::int64_t> remove(const std::string& user, const std::string& digest);
    BlobUsage usage(const std::string& user) const;

    static bool isDigest(const std::string& text);

private:
    std::filesystem::path pathOf(const std::string& user, const std::string& digest) const;

    const std::filesystem::path folder_;
    std::mutex writing_;
};

}  // namespace tesserine::server
