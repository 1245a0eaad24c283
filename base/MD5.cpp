#include "base/MD5.h"

#include "base/Encoding.h"

#include <openssl/evp.h>

#include <array>
#include <new>

namespace tesserine {
namespace {

void requireDone(int isDone) {
    if (isDone != 1) throw std::bad_alloc();
}

}  // namespace

struct MD5::Context {
    struct Free {
        void operator()(EVP_MD_CTX* context) const noexcept { EVP_MD_CTX_free(context); }
    };
    std::unique_ptr<EVP_MD_CTX, Free> state{EVP_MD_CTX_new()};
};

MD5::MD5() : context_(std::make_unique<Context>()) {
    if (context_->state == nullptr) throw std::bad_alloc();
    requireDone(EVP_DigestInit_ex(context_->state.get(), EVP_md5(), nullptr));
}

MD5::MD5(MD5&&) noexcept = default;
MD5& MD5::operator=(MD5&&) noexcept = default;
MD5::~MD5() = default;

void MD5::update(std::span<const std::uint8_t> bytes) {
    if (bytes.empty()) return;
    requireDone(EVP_DigestUpdate(context_->state.get(), bytes.data(), bytes.size()));
}

std::string MD5::finishHex() {
    std::array<std::uint8_t, 16> digest{};
    requireDone(EVP_DigestFinal_ex(context_->state.get(), digest.data(), nullptr));
    requireDone(EVP_DigestInit_ex(context_->state.get(), EVP_md5(), nullptr));
    return hex(digest);
}

}  // namespace tesserine
