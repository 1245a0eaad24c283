#include "cli/Assistant.h"

#include "ai/AICredentialStore.h"
#include "ai/AIError.h"
#include "ai/ModelReply.h"
#include "base/Product.h"
#include "base/Text.h"
#include "cli/CommandError.h"
#include "cli/Session.h"

namespace tesserine::cli {

namespace {

std::size_t characterCount(const AIRequest& request) {
    std::size_t count = text::characterCount(request.instructions);
    for (const AIMessage& message : request.messages) {
        count += text::characterCount(message.content);
    }
    return count;
}

}  // namespace

Assistant::Assistant(Session& session)
    : session_(session),
      settings_(AISettings::load(session.preferences())),
      address_(ProviderAddress::load(session.preferences())) {}

SentLog Assistant::sentLog() const {
    const auto folder = session_.environment().folder("XDG_STATE_HOME", ".local/state");
    return SentLog(folder / "assistant-requests.jsonl");
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
             .log = session_.log().category("assistant")});
    } catch (const KeychainError&) {
        throw CommandError::notSetUp(
            "The desktop's keyring cannot be reached, so there is no key.");
    }
}

AIResponse Assistant::send(
    const AIRequest& request,
    const std::string& purpose,
    const std::vector<std::string>& titles) const {
    const auto provider = this->provider();
    sentLog().add(
        {.sentAt = session_.now(),
         .destination = provider->destination(),
         .purpose = purpose,
         .titles = titles,
         .characterCount = characterCount(request)});
    session_.remark("Asking " + provider->destination() + ".");
    return provider->complete(request, session_.stop());
}

std::string Assistant::exactRequest(const AIRequest& request) const {
    return settings_.backend == AISettings::Backend::relay ? ai::relay::requestBody(request)
                                                           : ai::grok::requestBody(request);
}

}  // namespace tesserine::cli
