#pragma once

#include "base/SecretStore.h"

#include <string>

namespace tesserine {

/// What `Keychain` does, by libsecret.
class DesktopKeyring final : public SecretStore {
public:
    explicit DesktopKeyring(std::string service) : service_(std::move(service)) {}

    std::optional<std::string> read(const std::string& name) override;
    void write(const std::string& name, const std::string& secret) override;
    void remove(const std::string& name) override;

private:
    const std::string service_;
};

}  // namespace tesserine
