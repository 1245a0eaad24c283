#include "base/SecretBytes.h"

#include "base/Encoding.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace tesserine {
namespace {

std::size_t wholePages(std::size_t size) {
    static const auto pageSize = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    return (size + pageSize - 1) / pageSize * pageSize;
}

}  // namespace

SecretBytes::SecretBytes(std::size_t size) : size_(size), capacity_(wholePages(size)) {
    if (size == 0) return;
    if (capacity_ < size) throw std::bad_alloc();
    void* const pages =
        ::mmap(nullptr, capacity_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) throw std::bad_alloc();
    // Both only make it better: a user may lock few pages, or none.
    ::mlock(pages, capacity_);
    ::madvise(pages, capacity_, MADV_DONTDUMP);
    data_ = static_cast<std::uint8_t*>(pages);
}

SecretBytes SecretBytes::copyOf(std::span<const std::uint8_t> bytes) {
    SecretBytes copy(bytes.size());
    std::ranges::copy(bytes, copy.data_);
    return copy;
}

SecretBytes SecretBytes::copyOf(std::string_view text) { return copyOf(bytesOf(text)); }

SecretBytes::SecretBytes(SecretBytes&& other) noexcept { swap(other); }

SecretBytes& SecretBytes::operator=(SecretBytes&& other) noexcept {
    SecretBytes taken(std::move(other));
    swap(taken);
    return *this;
}

SecretBytes::~SecretBytes() {
    if (data_ == nullptr) return;
    ::explicit_bzero(data_, capacity_);
    ::munmap(data_, capacity_);
}

std::string_view SecretBytes::text() const noexcept { return textOf(bytes()); }

void SecretBytes::append(std::string_view bytes) {
    const std::size_t needed = size_ + bytes.size();
    if (needed > capacity_) {
        SecretBytes larger(std::max(needed, 2 * capacity_));
        std::ranges::copy(this->bytes(), larger.data_);
        larger.size_ = size_;
        swap(larger);
    }
    std::ranges::copy(bytesOf(bytes), data_ + size_);
    size_ = needed;
}

void SecretBytes::shrink(std::size_t size) noexcept {
    if (size >= size_) return;
    ::explicit_bzero(data_ + size, size_ - size);
    size_ = size;
}

void SecretBytes::swap(SecretBytes& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
}

void wipe(std::string& text) noexcept {
    ::explicit_bzero(text.data(), text.capacity());
    text.clear();
}

void wipe(std::vector<std::uint8_t>& bytes) noexcept {
    ::explicit_bzero(bytes.data(), bytes.size());
    bytes.clear();
}

}  // namespace tesserine
