#include "ai/AICredentialStore.h"

#include "base/Text.h"

namespace tesserine {

AICredentialStore::AICredentialStore(SecretStore& secrets, const Log& log, const std::string& host)
    : secrets_(secrets),
      log_(log.category("credentials")),
      account_(host.empty() ? account : std::string(account) + "@" + host) {}

std::optional<std::string> AICredentialStore::read() const {
    try {
        auto key = secrets_.read(account_);
        if (key && !text::isClean(*key)) {
            log_.error(
                "keychain value for " + account_ + " was not valid UTF-8 ("
                + std::to_string(key->size()) + " bytes)");
            return std::nullopt;
        }
        if (key && key->empty()) {
            log_.error("keychain returned success but no data for " + account_);
            return std::nullopt;
        }
        return key;
    } catch (const KeychainError& error) {
        log_.error("keychain read failed for " + account_ + ": status " + error.what());
        throw;
    }
}

void AICredentialStore::save(const std::string& key) const {
    try {
        secrets_.write(account_, key);
    } catch (const KeychainError& error) {
        log_.error("keychain add failed for " + account_ + ": status " + error.what());
        throw;
    }
}

void AICredentialStore::remove() const { secrets_.remove(account_); }

}  // namespace tesserine
