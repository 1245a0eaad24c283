#include "base/Cipher.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <memory>
#include <utility>

namespace tesserine::cipher {
namespace {

struct FreeContext {
    void operator()(EVP_CIPHER_CTX* context) const noexcept { EVP_CIPHER_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_CIPHER_CTX, FreeContext>;

void require(bool isDone) {
    if (!isDone) throw Error("the cipher library failed");
}

/// The library counts in `int`.
int lengthOf(std::size_t size) {
    require(std::in_range<int>(size));
    return static_cast<int>(size);
}

enum class Direction : std::uint8_t { opening, sealing };

Context begin(Direction direction, const SecretBytes& key, std::span<const std::uint8_t> nonce) {
    assert(key.size() == keySize && nonce.size() == nonceSize);
    Context context(EVP_CIPHER_CTX_new());
    require(context != nullptr);
    const int sealing = direction == Direction::sealing ? 1 : 0;
    require(
        EVP_CipherInit_ex2(
            context.get(), EVP_aes_256_gcm(), key.bytes().data(), nonce.data(), sealing, nullptr)
        == 1);
    return context;
}

void work(
    const Context& context, std::span<const std::uint8_t> input, std::span<std::uint8_t> output) {
    if (input.empty()) return;
    int written = 0;
    require(
        EVP_CipherUpdate(
            context.get(), output.data(), &written, input.data(), lengthOf(input.size()))
        == 1);
    require(std::cmp_equal(written, input.size()));
}

/// Ends the work; false when the tag is not that of the text.
bool finish(const Context& context) {
    std::array<std::uint8_t, EVP_MAX_BLOCK_LENGTH> rest{};  // stays empty in this mode
    int written = 0;
    return EVP_CipherFinal_ex(context.get(), rest.data(), &written) == 1;
}

}  // namespace

SecretBytes deriveKey(
    std::string_view passphrase, std::span<const std::uint8_t> salt, int roundCount) {
    SecretBytes key(keySize);
    require(
        PKCS5_PBKDF2_HMAC(
            passphrase.data(),
            lengthOf(passphrase.size()),
            salt.data(),
            lengthOf(salt.size()),
            roundCount,
            EVP_sha256(),
            lengthOf(key.size()),
            key.bytes().data())
        == 1);
    return key;
}

Bytes seal(
    const SecretBytes& key,
    std::span<const std::uint8_t> nonce,
    std::span<const std::uint8_t> plain) {
    Bytes sealed(nonce.begin(), nonce.end());
    sealed.resize(nonceSize + plain.size() + tagSize);
    const std::span<std::uint8_t> behindNonce = std::span(sealed).subspan(nonceSize);

    const Context context = begin(Direction::sealing, key, nonce);
    work(context, plain, behindNonce);
    require(finish(context));
    std::uint8_t* const tag = behindNonce.last(tagSize).data();
    require(EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_AEAD_GET_TAG, lengthOf(tagSize), tag) == 1);
    return sealed;
}

std::optional<SecretBytes> open(const SecretBytes& key, std::span<const std::uint8_t> sealed) {
    if (sealed.size() < nonceSize + tagSize) return std::nullopt;
    const auto nonce = sealed.first(nonceSize);
    const auto text = sealed.subspan(nonceSize, sealed.size() - nonceSize - tagSize);
    std::array<std::uint8_t, tagSize> tag{};
    std::ranges::copy(sealed.last(tagSize), tag.begin());

    SecretBytes plain(text.size());
    const Context context = begin(Direction::opening, key, nonce);
    work(context, text, plain.bytes());
    require(
        EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_AEAD_SET_TAG, lengthOf(tagSize), tag.data())
        == 1);
    if (!finish(context)) return std::nullopt;
    return plain;
}

}  // namespace tesserine::cipher
