#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace tesserine {

/// MD5 (RFC 1321) of bytes that arrive in pieces. Only to know files by the names that other
/// programs give them: whoever wants to can make two files of one digest.
class MD5 {
public:
    MD5();
    MD5(MD5&&) noexcept;
    MD5& operator=(MD5&&) noexcept;
    MD5(const MD5&) = delete;
    MD5& operator=(const MD5&) = delete;
    ~MD5();

    void update(std::span<const std::uint8_t> bytes);
    /// 32 lower-case hexadecimal characters; the object starts afresh afterwards.
    std::string finishHex();

private:
    struct Context;
    std::unique_ptr<Context> context_;
};

}  // namespace tesserine
