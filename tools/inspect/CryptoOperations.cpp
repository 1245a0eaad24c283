#include "core/body/SelectiveEncryption.h"
#include "tools/inspect/Operations.h"

namespace tesserine::inspect {
namespace {

using boost::json::object;
using boost::json::value;
using Kind = SelectiveEncryptionError::Kind;

const char* nameOf(Kind kind) {
    switch (kind) {
    case Kind::wrongPassphrase: return "wrongPassphrase";
    case Kind::malformedCipherBlob: return "malformedCipherBlob";
    case Kind::emptyPassphrase: return "emptyPassphrase";
    case Kind::keyDerivationFailed: return "keyDerivationFailed";
    }
    return "";
}

/// `crypto.decrypt`: what a locked passage holds, or the case in which opening it fails.
value decrypted(const object& input) {
    try {
        const SecretBytes opened =
            SelectiveEncryption::decrypt(text(input, "blob"), text(input, "passphrase"));
        return object{{"text", opened.text()}};
    } catch (const SelectiveEncryptionError& error) {
        return object{{"error", nameOf(error.kind())}};
    }
}

}  // namespace

void addCryptoOperations(Operations& operations) { operations.add("crypto.decrypt", decrypted); }

}  // namespace tesserine::inspect
