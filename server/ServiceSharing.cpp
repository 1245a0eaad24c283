// Notes that whoever has a link may read.
#include "server/Exchange.h"
#include "server/Pages.h"
#include "server/Refusal.h"
#include "server/Service.h"

namespace tesserine::server {

HTTPReply Service::share(const Exchange& exchange) {
    const Uuid note = exchange.identifier();
    const auto record = records_.record(exchange.caller.user, note);
    const bool isNote = record && !record->deleted && record->kind == "note";
    if (!isNote) throw Refusal(404, "Sync the note first, then share it.");
    ShareLink link{
        .id = Uuid::random(environment_.random).wireText(),
        .token = accounts_.newSecret(),
        .createdAt = environment_.clock.now()};
    link.url = configuration_.publicURL + "/shared/" + link.token;
    shares_.begin(exchange.caller.user, note, link);
    return replied(link);
}

HTTPReply Service::unshare(const Exchange& exchange) {
    shares_.end(exchange.caller.user, exchange.identifier());
    return done();
}

HTTPReply Service::shareStatus(const Exchange& exchange) {
    return replied(shares_.status(exchange.caller.user, exchange.identifier()));
}

/// Whoever has the link may read the note as it is now; a deleted or trashed one is not shown.
HTTPReply Service::sharedNote(const Exchange& exchange) {
    const auto shared = shares_.noteOf(exchange.parameters.at(0));
    const auto record = shared ? records_.record(shared->user, shared->id) : std::nullopt;
    if (!record || record->deleted) return pages::notFound();
    const JSONValue payload(record->payload);
    const auto textOf = [&payload](std::string_view key) {
        const JSONValue* const member = payload.member(key);
        return member == nullptr || member->string() == nullptr ? "" : *member->string();
    };
    const JSONValue* const trashed = payload.member("trashed_at");
    if (trashed != nullptr && !trashed->isNull()) return pages::notFound();
    return pages::note(textOf("title"), textOf("html"));
}

}  // namespace tesserine::server
