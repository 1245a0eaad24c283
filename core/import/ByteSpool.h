#pragma once

#include "base/Encoding.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>

namespace tesserine {

/// Keeps bytes until they are wanted: few in memory, more in a temporary file that has no name and
/// is gone with the process. Moves; not synchronised. Every function throws `FileError` when there
/// is no room for the temporary file.
class ByteSpool {
public:
    static constexpr std::size_t mostInMemory = 32'000'000;

    void append(std::span<const std::uint8_t> bytes);
    std::uint64_t size() const noexcept { return size_; }
    /// `count` bytes from `offset` on, all of which were appended.
    Bytes read(std::uint64_t offset, std::size_t count) const;
    /// Forgets what was appended beyond the first `size` bytes.
    void truncate(std::uint64_t size);

private:
    struct Close {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };

    void moveToFile();
    void seek(std::uint64_t offset) const;

    Bytes memory_;
    std::unique_ptr<std::FILE, Close> file_;  // all bytes are in it as soon as there is one
    std::uint64_t size_ = 0;
};

}  // namespace tesserine
