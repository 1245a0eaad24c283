#include "core/body/SelectiveEncryption.h"

#include "base/Cipher.h"
#include "base/Encoding.h"
#include "base/UTF8.h"

#include <algorithm>
#include <array>
#include <span>

namespace tesserine {
namespace {

constexpr std::uint8_t formatVersion = 1;
constexpr std::size_t saltSize = 16;
/// Part of the format, like the sizes.
constexpr int derivationRounds = 210'000;
constexpr std::size_t headerSize = 1 + saltSize;
constexpr std::size_t smallestBlob = headerSize + cipher::nonceSize + cipher::tagSize;
static_assert(smallestBlob == 45);

SecretBytes keyFor(std::string_view passphrase, std::span<const std::uint8_t> salt) {
    try {
        return cipher::deriveKey(passphrase, salt, derivationRounds);
    } catch (const cipher::Error&) {
        throw SelectiveEncryptionError::keyDerivationFailed();
    }
}

/// The bytes of a blob in this format, of any content.
Bytes blobOf(std::string_view base64) {
    auto blob = fromBase64(base64);
    if (!blob || blob->size() < smallestBlob || blob->front() != formatVersion) {
        throw SelectiveEncryptionError::malformedCipherBlob();
    }
    return std::move(*blob);
}

/// U+0000 is allowed: another program may have locked it in.
bool isUTF8(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t clean = utf8::cleanPrefix(bytes);
        if (clean == bytes.size()) return true;
        if (bytes[clean] != '\0') return false;
        bytes.remove_prefix(clean + 1);
    }
    return true;
}

}  // namespace

std::string SelectiveEncryption::encrypt(
    std::string_view text, std::string_view passphrase, Random& random) {
    if (passphrase.empty()) throw SelectiveEncryptionError::emptyPassphrase();
    std::array<std::uint8_t, headerSize> header{formatVersion};
    const auto salt = std::span(header).last(saltSize);
    random.fill(salt);
    std::array<std::uint8_t, cipher::nonceSize> nonce{};
    random.fill(nonce);

    const SecretBytes key = keyFor(passphrase, salt);
    Bytes blob(header.begin(), header.end());
    try {
        const Bytes sealed = cipher::seal(key, nonce, bytesOf(text));
        blob.insert(blob.end(), sealed.begin(), sealed.end());
    } catch (const cipher::Error&) {
        throw SelectiveEncryptionError::malformedCipherBlob();
    }
    return base64(blob);
}

SecretBytes SelectiveEncryption::decrypt(std::string_view blob, std::string_view passphrase) {
    const Bytes bytes = blobOf(blob);
    if (passphrase.empty()) throw SelectiveEncryptionError::emptyPassphrase();

    const std::span<const std::uint8_t> all(bytes);
    const SecretBytes key = keyFor(passphrase, all.subspan(1, saltSize));
    std::optional<SecretBytes> text;
    try {
        text = cipher::open(key, all.subspan(headerSize));
    } catch (const cipher::Error&) {
        throw SelectiveEncryptionError::malformedCipherBlob();
    }
    if (!text) throw SelectiveEncryptionError::wrongPassphrase();
    if (!isUTF8(text->text())) throw SelectiveEncryptionError::malformedCipherBlob();
    return std::move(*text);
}

}  // namespace tesserine
