#include "app/assistant/Assistant.h"

#include "ai/AIExclusions.h"
#include "ai/Dispatch.h"
#include "ai/ModelExchange.h"
#include "ai/NoteRetriever.h"
#include "ai/Passages.h"
#include "app/state/AppEnvironment.h"
#include "base/Product.h"
#include "base/SecretStore.h"
#include "base/UserError.h"
#include "search/SearchCoordinator.h"
#include "search/SearchEngine.h"
#include "search/SearchSynonyms.h"
#include "search/StoreQueryLibrary.h"
#include "sync/SyncService.h"

namespace tesserine::app {
namespace {

/// The key is where it cannot be asked for.
class KeyringError final : public UserError {
public:
    KeyringError() : UserError("The desktop's keyring cannot be reached, so there is no key.") {}
};

ProviderSources sourcesOf(AppEnvironment& environment) {
    return {
        .session = environment.network(),
        .secrets = environment.secrets(product::assistantSecretService),
        .address = ProviderAddress::load(environment.preferences()),
        .account =
            [service = environment.sync()] {
                return service != nullptr ? RelayAccount::of(*service) : std::nullopt;
            },
        .log = environment.log().category("assistant")};
}

/// Where each passage is best shown in its note.
std::vector<std::string> placesOf(
    const std::vector<RetrievedChunk>& passages, const QuestionTerms& terms) {
    std::vector<std::string> places;
    for (const RetrievedChunk& passage : passages) {
        const bool isInNote = passage.origin != RetrievedChunk::Origin::attachmentText;
        places.emplace_back(isInNote ? bestPlace(passage.text, terms.words) : "");
    }
    return places;
}

}  // namespace

Assistant::Assistant(AppEnvironment& environment)
    : environment_(environment),
      settings_(AISettings::load(environment.preferences())),
      sources_(sourcesOf(environment)),
      serviceURL_(environment.sync() != nullptr ? environment.sync()->client().baseURL() : ""),
      calendar_(environment.calendar()) {
    environment.search();  // opened on this thread
}

std::string Assistant::destination() const {
    const bool isRelay = settings_.backend == AISettings::Backend::relay;
    return ai::hostOf(isRelay ? serviceURL_ : sources_.address.baseURL);
}

std::unique_ptr<AIProvider> Assistant::provider() const {
    try {
        return chooseProvider(settings_, sources_);
    } catch (const KeychainError&) {
        throw KeyringError();
    }
}

FramedQuestion Assistant::frame(const AskedQuestion& question, StoreContext& context) const {
    const AskTesserine asker(settings_, calendar_);
    if (!question.options.useNotes) {
        return {.prepared = asker.prepare(question.text, question.options, {}), .places = {}};
    }
    StoreQueryLibrary library(context, environment_.clock(), calendar_);
    const auto synonyms = SearchSynonyms::load(environment_.preferences());
    environment_.search().catchUp();
    SearchEngine engine(
        {.index = environment_.search().index(),
         .library = &library,
         .clock = environment_.clock(),
         .calendar = calendar_,
         .synonyms = synonyms});
    NoteRetriever retriever(engine, context, AIExclusions::load(environment_.preferences()));
    const auto passages = retriever.retrieve(lookedFor(question.text, question.filters));
    return {
        .prepared = asker.prepare(question.text, question.options, passages),
        .places = placesOf(passages, QuestionTerms::of(question.text))};
}

AIRequest Assistant::frameAction(
    NoteAction action, const std::string& noteText, const std::string& question) const {
    return AskTesserine(settings_, calendar_).prepareAction(action, noteText, question);
}

AIResponse Assistant::send(
    const AIRequest& request,
    const std::string& purpose,
    const std::vector<std::string>& titles,
    const std::stop_token& stop) const {
    const auto provider = this->provider();
    SentLog log = sentLogOf(environment_);
    return dispatch(
        *provider,
        request,
        log,
        {.sentAt = environment_.now(), .purpose = purpose, .titles = titles},
        stop);
}

SentLog sentLogOf(const AppEnvironment& environment) {
    const AppSetting& setting = environment.setting();
    const auto folder =
        setting.logFile.empty() ? setting.dataFolder : setting.logFile.parent_path();
    return SentLog(folder / SentLog::fileName);
}

}  // namespace tesserine::app
