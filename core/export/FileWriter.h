#pragma once

#include "base/Digest.h"
#include "base/Encoding.h"
#include "base/SerialQueue.h"

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <mutex>
#include <vector>

namespace tesserine {

/// Writes new files on a thread of its own, in their order, while the next ones are being made. At
/// most `mostWaiting` bytes wait, or one larger file. After a failure nothing more is written.
/// Called from one thread.
class FileWriter {
public:
    static constexpr std::size_t mostWaiting = 16'000'000;

    FileWriter() : queue_("export") {}

    /// Hands over `bytes` for the new file `file`, whose folder is there. Throws the `FileError` of
    /// this file or of an earlier one.
    void write(std::filesystem::path file, Bytes bytes);
    /// Waits until everything is written. Throws as `write`.
    void finish();

    struct WrittenFile {
        std::filesystem::path path;
        SHA256Digest digest;
    };
    /// What was written, in its order; to be asked after `finish`.
    const std::vector<WrittenFile>& written() const { return writtenFiles_; }

private:
    void writeNow(const std::filesystem::path& file, const Bytes& bytes);
    bool hasFailed();
    void throwFailure();

    std::mutex mutex_;
    std::condition_variable written_;
    std::vector<WrittenFile> writtenFiles_;  // touched on the queue until `finish`
    // Behind the mutex.
    std::size_t waiting_ = 0;  // bytes
    std::exception_ptr failure_;

    SerialQueue queue_;  // goes first: it writes what waits
};

}  // namespace tesserine
