#include "cli/Assistant.h"

#include "ai/AICredentialStore.h"
#include "ai/AIError.h"
#include "ai/Dispatch.h"
#include "base/Product.h"
#include "cli/CommandError.h"
#include "cli/Session.h"
#include "cli/SyncAccess.h"

namespace tesserine::cli {

Assistant::Assistant(Session& session)
    : session_(session),
      settings_(AISettings::load(session.preferences())),
      address_(ProviderAddress::load(session.preferences())) {}

Assistant::~Assistant() = default;

SentLog Assistant::sentLog() const {
    const auto folder = session_.environment().folder("XDG_STATE_HOME", ".local/state");
    return SentLog(folder / SentLog::fileName);
}

AICredentialStore Assistant::credentials() const {
    SecretStore& secrets = session_.environment().secrets(product::assistantSecretService);
    return {secrets, session_.log(), address_.host};
}

std::unique_ptr<AIProvider> Assistant::provider() const {
    if (!settings_.isEnabled) throw AIError::disabled();
    if (!settings_.hasSeenDataNotice) {
        throw CommandError::notSetUp(
            "Run “tesserine assistant enable” first: it says what is sent where.");
    }
    const Environment& environment = session_.environment();
    try {
        return chooseProvider(
            settings_,
            {.session = environment.network(),
             .secrets = environment.secrets(product::assistantSecretService),
             .address = address_,
             .account = [this] { return account(); },
             .log = session_.log().category("assistant")});
    } catch (const KeychainError&) {
        throw CommandError::notSetUp(
            "The desktop's keyring cannot be reached, so there is no key.");
    }
}

std::optional<RelayAccount> Assistant::account() const {
    try {
        service_ = syncService(session_);
    } catch (const SyncSetupError&) {
        return std::nullopt;
    }
    return RelayAccount::of(*service_);
}

AIResponse Assistant::send(
    const AIRequest& request,
    const std::string& purpose,
    const std::vector<std::string>& titles) const {
    const auto provider = this->provider();
    session_.remark("Asking " + provider->destination() + ".");
    SentLog log = sentLog();
    return dispatch(
        *provider,
        request,
        log,
        {.sentAt = session_.now(), .purpose = purpose, .titles = titles},
        session_.stop());
}

}  // namespace tesserine::cli
