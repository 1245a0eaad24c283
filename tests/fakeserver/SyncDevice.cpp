#include "tests/fakeserver/SyncDevice.h"

#include "base/JSON.h"
#include "sync/RecordFields.h"
#include "sync/RecordKinds.h"
#include "sync/RecordMapper.h"
#include "sync/SyncLedger.h"

namespace tesserine::test {

SyncDevice::SyncDevice(HTTPTransport& service, std::uint64_t seed, const std::string& code)
    : random(seed), network(service, [this](unsigned bound) {
          return static_cast<unsigned>(random.below(bound));
      }) {
    restart();
    signIn(code);
}

void SyncDevice::restart() {
    engine_.reset();
    session_.reset();
    client_.reset();
    context_.reset();
    store_.reset();
    store_ = std::make_unique<TesserineStore>(
        StoreConfiguration{.directory = library()},
        StoreEnvironment{.clock = clock, .random = random});
    context_ = store_->newBackgroundContext();
    client_ = std::make_unique<SyncClient>(
        "https://service.test",
        SyncClient::Environment{.session = network, .clock = clock, .random = random});
    client_->setRetry({.attempts = 0});  // every fault is seen by the engine
    session_ = std::make_unique<AccountSession>(
        AccountSession::Environment{.client = *client_, .secrets = secrets_, .clock = clock});
    client_->setTokenSource(
        [this](const std::stop_token& stop) { return session_->validAccessToken(stop); });
    engine_ = std::make_unique<SyncEngine>(SyncEngine::Environment{
        .store = *store_,
        .session = *session_,
        .client = *client_,
        .clock = clock,
        .random = random});
}

std::string SyncDevice::sync(const SyncEngine::Consent& consent) {
    try {
        summary = engine_->synchronise(consent);
    } catch (const std::exception& error) {
        return error.what();
    }
    return {};
}

StoreContext& SyncDevice::context() {
    context_->reset();
    return *context_;
}

CDNote& SyncDevice::addNote(const std::string& title, const std::string& html) {
    CDNote& note = notes.createNote(context(), {.title = title, .html = html});
    save();
    return note;
}

void SyncDevice::write(const Uuid& id, const std::string& html) {
    clock.advance(std::chrono::seconds(1));
    StoreContext& fresh = context();
    notes.updateNote(fresh, *fresh.find<CDNote>(id), {.html = html});
    save();
}

std::map<std::string, std::string> SyncDevice::dump() {
    StoreContext& all = context();
    SyncLedger ledger(all);
    const RecordMapper mapper(all, ledger.unresolved());
    std::map<std::string, std::string> lines;
    for (const RecordKind& kind : recordKinds) {
        for (StoreObject* const object : all.fetchObjects(kind.entity, {})) {
            JSONObject payload = mapper.payload(*object);
            payload["kind"] = std::string(kind.name);
            lines[object->uuid().value_or(Uuid()).wireText()] = json::write(toJSON(payload));
        }
    }
    return lines;
}

std::string SyncDevice::allBodies() {
    std::string all;
    for (CDNote* const one : context().fetch<CDNote>()) {
        all += one->html.valueOr("");
        for (CDNoteRevision* const revision : one->revisions.all()) {
            all += revision->html.valueOr("");
        }
    }
    return all;
}

}  // namespace tesserine::test
