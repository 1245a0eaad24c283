#pragma once

#include "base/Log.h"
#include "base/SecretStore.h"

#include <optional>
#include <string>

namespace tesserine {

/// The user's key for a language model provider, in the desktop's keyring. It is never written to a
/// file or a log, and belongs to the host it was entered for: no other host is ever sent it.
class AICredentialStore {
public:
    /// The name of the built-in provider's key.
    static constexpr const char* account = "xai-api-key";

    /// `secrets` holds those of the service "app.tesserine.ai" and outlives this. An empty `host`
    /// is the built-in provider.
    AICredentialStore(SecretStore& secrets, const Log& log, const std::string& host = {});

    /// These log what went wrong, without the key, and throw `KeychainError`.
    std::optional<std::string> read() const;
    void save(const std::string& key) const;
    void remove() const;

private:
    SecretStore& secrets_;
    Log log_;
    std::string account_;
};

}  // namespace tesserine
