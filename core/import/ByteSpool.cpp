#include "core/import/ByteSpool.h"

#include "base/Files.h"

#include <algorithm>
#include <cassert>
#include <cerrno>

namespace tesserine {
namespace {

[[noreturn]] void fail(const char* verb) {
    throw FileError::fromErrno("temporary file", verb, errno);
}

}  // namespace

void ByteSpool::append(std::span<const std::uint8_t> bytes) {
    if (bytes.empty()) return;
    if (!file_ && size_ + bytes.size() > mostInMemory) moveToFile();
    if (file_) {
        seek(size_);
        if (std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size()) {
            fail("written");
        }
    } else {
        memory_.insert(memory_.end(), bytes.begin(), bytes.end());
    }
    size_ += bytes.size();
}

Bytes ByteSpool::read(std::uint64_t offset, std::size_t count) const {
    assert(offset + count <= size_ && "only what was appended is read");
    if (!file_) {
        const auto* const begin = memory_.data() + offset;
        return {begin, begin + count};
    }
    Bytes bytes(count);
    seek(offset);
    if (std::fread(bytes.data(), 1, count, file_.get()) != count) fail("read");
    return bytes;
}

void ByteSpool::truncate(std::uint64_t size) {
    size_ = std::min(size_, size);
    if (!file_) memory_.resize(static_cast<std::size_t>(size_));
}

void ByteSpool::moveToFile() {
    file_.reset(std::tmpfile());
    if (!file_) fail("made");
    if (std::fwrite(memory_.data(), 1, memory_.size(), file_.get()) != memory_.size()) {
        fail("written");
    }
    memory_ = {};
}

void ByteSpool::seek(std::uint64_t offset) const {
    if (::fseeko(file_.get(), static_cast<off_t>(offset), SEEK_SET) != 0) fail("read");
}

}  // namespace tesserine
