#pragma once

#include "base/Digest.h"
#include "base/Encoding.h"
#include "base/SerialQueue.h"

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <filesystem>
#include <functional>
#include <mutex>

namespace tesserine {

/// Makes and writes new files on two threads of its own, while what the next ones are made of is
/// being read. What is to be made of at most `mostWaiting` bytes waits, or of one larger value.
/// After a failure no further file is begun. Called from one thread.
class FileWriter {
public:
    static constexpr std::size_t mostWaiting = 16'000'000;
    /// Gives the bytes of a file; called once, on another thread.
    using Maker = std::function<Bytes()>;

    /// Has `make` give the bytes of the new file `file`, whose folder is there, out of about
    /// `size` bytes that it holds. Throws the `FileError` of an earlier file.
    void write(std::filesystem::path file, std::size_t size, Maker make);
    /// Waits until everything is written. Throws the `FileError` of a file that could not be.
    void finish();

    std::uint64_t bytesWritten() const;

    struct WrittenFile {
        std::filesystem::path path;
        SHA256Digest digest;
    };
    /// What was written, in the order of the calls; to be asked after `finish`.
    const std::deque<WrittenFile>& written() const { return files_; }

private:
    std::uint64_t writeNow(WrittenFile& file, const Maker& make);
    bool hasFailed() const;
    void throwFailure() const;

    std::deque<WrittenFile> files_;  // each touched by the thread that writes it, until `finish`
    mutable std::mutex mutex_;
    std::condition_variable fewerWait_;
    // Behind the mutex.
    std::size_t waiting_ = 0;  // bytes
    std::uint64_t bytesWritten_ = 0;
    std::exception_ptr failure_;

    // They take turns, and go first: they write what waits.
    std::array<SerialQueue, 2> queues_{SerialQueue("export"), SerialQueue("export")};
};

}  // namespace tesserine
