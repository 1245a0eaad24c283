#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// Bytes that nobody else should see: a passphrase, a key, an unlocked text.
///
/// Lives in pages of its own, which stay out of core dumps and, where the system allows it, out of
/// swap, and which are overwritten before they are given back. Cannot be copied or printed. What
/// the kernel, a terminal or a text widget keeps of the same bytes is beyond it. Not synchronised.
class SecretBytes {
public:
    SecretBytes() = default;
    /// `size` zero bytes. Throws `std::bad_alloc`.
    explicit SecretBytes(std::size_t size);
    static SecretBytes copyOf(std::span<const std::uint8_t> bytes);
    static SecretBytes copyOf(std::string_view text);

    SecretBytes(SecretBytes&& other) noexcept;
    SecretBytes& operator=(SecretBytes&& other) noexcept;
    SecretBytes(const SecretBytes&) = delete;
    SecretBytes& operator=(const SecretBytes&) = delete;
    ~SecretBytes();

    bool isEmpty() const noexcept { return size_ == 0; }
    std::size_t size() const noexcept { return size_; }
    std::span<const std::uint8_t> bytes() const noexcept { return {data_, size_}; }
    std::span<std::uint8_t> bytes() noexcept { return {data_, size_}; }
    /// The bytes as text, without any check; valid as long as this object.
    std::string_view text() const noexcept;

    /// Adds bytes at the end.
    void append(std::string_view bytes);
    /// Forgets what stands behind the first `size` bytes.
    void shrink(std::size_t size) noexcept;

private:
    void swap(SecretBytes& other) noexcept;

    std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;  // what was mapped
};

/// Overwrites `text`, also what stands in it beyond its length, and empties it. For texts that a
/// library handed out as `std::string`.
void wipe(std::string& text) noexcept;
void wipe(std::vector<std::uint8_t>& bytes) noexcept;

}  // namespace tesserine
