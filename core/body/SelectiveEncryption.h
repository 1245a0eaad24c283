#pragma once

#include "base/Random.h"
#include "base/SecretBytes.h"
#include "base/UserError.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tesserine {

/// Why a passage could not be locked or unlocked. A locked passage is as it was.
class SelectiveEncryptionError final : public UserError {
public:
    enum class Kind : std::uint8_t {
        wrongPassphrase,
        malformedCipherBlob,
        emptyPassphrase,
        keyDerivationFailed,
    };

    static SelectiveEncryptionError wrongPassphrase() { return didNotWork(Kind::wrongPassphrase); }
    static SelectiveEncryptionError malformedCipherBlob() {
        return {Kind::malformedCipherBlob, "This encrypted block could not be read."};
    }
    static SelectiveEncryptionError emptyPassphrase() { return didNotWork(Kind::emptyPassphrase); }
    static SelectiveEncryptionError keyDerivationFailed() {
        return didNotWork(Kind::keyDerivationFailed);
    }

    Kind kind() const noexcept { return kind_; }

private:
    SelectiveEncryptionError(Kind kind, const char* sentence) : UserError(sentence), kind_(kind) {}
    static SelectiveEncryptionError didNotWork(Kind kind) {
        return {kind, "That passphrase didn't work."};
    }

    Kind kind_;
};

/// Locks a passage of a note with a passphrase that is kept nowhere, and unlocks it again; see
/// `docs/formats/locked-passage.md`.
///
/// Holds no state; safe from any thread. Deriving the key takes about 0.1 s, so a window calls it
/// off its main thread. Passphrases are used byte for byte, without Unicode normalisation.
class SelectiveEncryption {
public:
    /// What a locked passage shows in the note.
    static constexpr std::string_view placeholder = "🔒 Encrypted text";

    /// `text` (UTF-8) as a blob in base64, another one each time. Throws
    /// `SelectiveEncryptionError`.
    static std::string encrypt(std::string_view text, std::string_view passphrase, Random& random);
    /// The text that `blob` holds, valid UTF-8. Throws `SelectiveEncryptionError`:
    /// `malformedCipherBlob` before the passphrase is looked at, then `emptyPassphrase`.
    static SecretBytes decrypt(std::string_view blob, std::string_view passphrase);
};

}  // namespace tesserine
