#include "base/Keychain.h"

#include "base/network/NetworkModule.h"

#include <utility>

namespace tesserine {

Keychain::Keychain(std::string service)
    : keyring_(networkModule().makeKeyring(std::move(service))) {}

std::optional<std::string> Keychain::read(const std::string& name) { return keyring_->read(name); }

void Keychain::write(const std::string& name, const std::string& secret) {
    keyring_->write(name, secret);
}

void Keychain::remove(const std::string& name) { keyring_->remove(name); }

}  // namespace tesserine
