#pragma once

#include "base/SecretStore.h"

#include <memory>
#include <string>

namespace tesserine {

/// The user's keyring, by the desktop's secret service. Never asks the user to unlock it: a locked
/// one is as good as none. A call takes a few milliseconds, 5 s at most.
class Keychain final : public SecretStore {
public:
    /// `service` keeps our secrets apart, such as "app.tesserine.tokens".
    explicit Keychain(std::string service);

    std::optional<std::string> read(const std::string& name) override;
    void write(const std::string& name, const std::string& secret) override;
    void remove(const std::string& name) override;

private:
    const std::unique_ptr<SecretStore> keyring_;  // in a module that is loaded for it
};

}  // namespace tesserine
