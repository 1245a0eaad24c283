#include "core/export/FileWriter.h"

#include "base/FailPoint.h"
#include "base/Files.h"

#include <utility>

namespace tesserine {

void FileWriter::write(std::filesystem::path file, Bytes bytes) {
    {
        std::unique_lock lock(mutex_);
        written_.wait(
            lock, [&] { return waiting_ == 0 || waiting_ + bytes.size() <= mostWaiting; });
        waiting_ += bytes.size();
    }
    throwFailure();
    queue_.async(
        [this, file = std::move(file), bytes = std::move(bytes)] { writeNow(file, bytes); });
}

void FileWriter::writeNow(const std::filesystem::path& file, const Bytes& bytes) {
    std::exception_ptr failure;
    if (!hasFailed()) {
        try {
            FAIL_POINT("export.file");
            files::writeOneOfMany(file, bytes);
            writtenFiles_.push_back({.path = file, .digest = sha256(bytes)});
        } catch (const FileError&) {
            failure = std::current_exception();
        }
    }
    const std::lock_guard lock(mutex_);
    if (failure) failure_ = failure;
    waiting_ -= bytes.size();
    written_.notify_one();
}

void FileWriter::finish() {
    queue_.sync([] {});
    throwFailure();
}

bool FileWriter::hasFailed() {
    const std::lock_guard lock(mutex_);
    return failure_ != nullptr;
}

void FileWriter::throwFailure() {
    const std::lock_guard lock(mutex_);
    if (failure_) std::rethrow_exception(failure_);
}

}  // namespace tesserine
