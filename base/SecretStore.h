#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>

namespace tesserine {

/// Secure storage could not be reached, is locked or refused. `what()` is for the log; it names no
/// secret.
class KeychainError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Named secrets of the user. Safe from any thread. Every operation throws `KeychainError`.
class SecretStore {
public:
    SecretStore() = default;
    SecretStore(const SecretStore&) = delete;
    SecretStore& operator=(const SecretStore&) = delete;
    virtual ~SecretStore() = default;

    /// None only when there is no such secret; a store that cannot be asked throws.
    virtual std::optional<std::string> read(const std::string& name) = 0;
    /// Replaces one of that name.
    virtual void write(const std::string& name, const std::string& secret) = 0;
    /// Removing what is not there is no error.
    virtual void remove(const std::string& name) = 0;
};

/// Secrets that are gone when the program ends; for runs that must not touch the user's keyring.
class InMemorySecrets final : public SecretStore {
public:
    std::optional<std::string> read(const std::string& name) override {
        const std::scoped_lock lock(mutex_);
        const auto found = secrets_.find(name);
        return found == secrets_.end() ? std::nullopt : std::optional(found->second);
    }
    void write(const std::string& name, const std::string& secret) override {
        const std::scoped_lock lock(mutex_);
        secrets_[name] = secret;
    }
    void remove(const std::string& name) override {
        const std::scoped_lock lock(mutex_);
        secrets_.erase(name);
    }

private:
    std::mutex mutex_;
    std::map<std::string, std::string> secrets_;
};

}  // namespace tesserine
