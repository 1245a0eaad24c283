#include "core/export/FileWriter.h"

#include "base/FailPoint.h"
#include "base/Files.h"

#include <utility>

namespace tesserine {

void FileWriter::write(std::filesystem::path file, std::size_t size, Maker make) {
    {
        std::unique_lock lock(mutex_);
        fewerWait_.wait(lock, [&] { return waiting_ == 0 || waiting_ + size <= mostWaiting; });
        if (failure_) std::rethrow_exception(failure_);
        waiting_ += size;
    }
    WrittenFile& written = files_.emplace_back(WrittenFile{.path = std::move(file), .digest = {}});
    SerialQueue& queue = queues_[files_.size() % queues_.size()];
    queue.async([this, &written, size, make = std::move(make)] {
        std::uint64_t byteCount = 0;
        std::exception_ptr failure;
        try {
            if (!hasFailed()) byteCount = writeNow(written, make);
        } catch (...) {
            failure = std::current_exception();
        }
        const std::lock_guard lock(mutex_);
        if (failure && !failure_) failure_ = failure;
        bytesWritten_ += byteCount;
        waiting_ -= size;
        fewerWait_.notify_one();
    });
}

/// Returns how many bytes the file has.
std::uint64_t FileWriter::writeNow(WrittenFile& file, const Maker& make) {
    const Bytes bytes = make();
    FAIL_POINT("export.file");
    files::writeOneOfMany(file.path, bytes);
    file.digest = sha256(bytes);
    return bytes.size();
}

void FileWriter::finish() {
    for (SerialQueue& queue : queues_) {
        queue.sync([] {});
    }
    throwFailure();
}

std::uint64_t FileWriter::bytesWritten() const {
    const std::lock_guard lock(mutex_);
    return bytesWritten_;
}

bool FileWriter::hasFailed() const {
    const std::lock_guard lock(mutex_);
    return failure_ != nullptr;
}

void FileWriter::throwFailure() const {
    const std::lock_guard lock(mutex_);
    if (failure_) std::rethrow_exception(failure_);
}

}  // namespace tesserine
