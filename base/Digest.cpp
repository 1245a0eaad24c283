#include "base/Digest.h"

#include "base/Encoding.h"
#include "base/Files.h"

#include <openssl/evp.h>

#include <new>

namespace tesserine {
namespace {

constexpr std::size_t pieceSize = 1 << 20;

/// Fetched once: looking the algorithm up costs more than hashing a short text.
const EVP_MD* algorithm() {
    static const EVP_MD* const fetched = EVP_MD_fetch(nullptr, "SHA256", nullptr);
    return fetched;
}

/// SHA-256 has no other failure than a lack of memory.
void require(int isDone) {
    if (isDone != 1) throw std::bad_alloc();
}

}  // namespace

struct SHA256::Context {
    struct Free {
        void operator()(EVP_MD_CTX* context) const noexcept { EVP_MD_CTX_free(context); }
    };
    std::unique_ptr<EVP_MD_CTX, Free> state{EVP_MD_CTX_new()};
};

SHA256::SHA256() : context_(std::make_unique<Context>()) {
    if (context_->state == nullptr) throw std::bad_alloc();
    require(EVP_DigestInit_ex(context_->state.get(), algorithm(), nullptr));
}

SHA256::SHA256(SHA256&&) noexcept = default;
SHA256& SHA256::operator=(SHA256&&) noexcept = default;
SHA256::~SHA256() = default;

void SHA256::update(std::span<const std::uint8_t> bytes) {
    if (bytes.empty()) return;
    require(EVP_DigestUpdate(context_->state.get(), bytes.data(), bytes.size()));
}

SHA256Digest SHA256::finish() {
    SHA256Digest digest{};
    require(EVP_DigestFinal_ex(context_->state.get(), digest.data(), nullptr));
    require(EVP_DigestInit_ex(context_->state.get(), algorithm(), nullptr));
    return digest;
}

SHA256Digest sha256(std::span<const std::uint8_t> bytes) {
    SHA256Digest digest{};
    const std::uint8_t nothing = 0;
    const std::uint8_t* const start = bytes.empty() ? &nothing : bytes.data();
    require(EVP_Digest(start, bytes.size(), digest.data(), nullptr, algorithm(), nullptr));
    return digest;
}

std::string sha256Hex(std::span<const std::uint8_t> bytes) { return hex(sha256(bytes)); }

std::string sha256HexOfFile(const std::filesystem::path& file) {
    SHA256 digest;
    files::readInPieces(file, pieceSize, [&](auto piece) { digest.update(piece); });
    return hex(digest.finish());
}

}  // namespace tesserine
