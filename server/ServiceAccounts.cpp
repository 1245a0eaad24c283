// Signing in, devices and personal tokens.
#include "base/Product.h"
#include "base/Text.h"
#include "server/Exchange.h"
#include "server/Pages.h"
#include "server/Refusal.h"
#include "server/Service.h"

namespace tesserine::server {

HTTPReply Service::signInPage(const Exchange& /*exchange*/) { return pages::signIn(); }

HTTPReply Service::signIn(const Exchange& exchange) {
    const std::string email = exchange.field("email");
    const std::string password = exchange.field("password");
    const std::string name = text::caseFolded(email);
    if (!limit_.allows(name) || !limit_.allows(exchange.from)) {
        return pages::signInAgain(
            email, "Too many attempts. Wait a quarter of an hour, then try again.");
    }
    const auto code = accounts_.signIn(email, password);
    if (!code) {
        limit_.failed(name);
        limit_.failed(exchange.from);
        return pages::signInAgain(email, "That address and password do not go together.");
    }
    return pages::signedIn(std::string(product::urlScheme) + "://auth?code=" + *code);
}

HTTPReply Service::exchangeCode(const Exchange& exchange) {
    const auto tokens = accounts_.exchange(exchange.text("code"), exchange.text("label"));
    if (!tokens) throw Refusal(400, "That code is not valid any more. Sign in again.");
    return replied(*tokens);
}

HTTPReply Service::refresh(const Exchange& exchange) {
    const auto tokens = accounts_.refresh(exchange.text("refresh_token"));
    if (!tokens) throw Refusal(401, "Sign in again.");
    return replied(*tokens);
}

HTTPReply Service::signOut(const Exchange& exchange) {
    const auto ended = accounts_.signOut(exchange.text("refresh_token"));
    if (ended) live_.ended(*ended);
    return done();
}

HTTPReply Service::sessions(const Exchange& exchange) {
    SessionsReply reply;
    for (const DeviceSessionInfo& session : accounts_.sessions(exchange.caller)) {
        const JSONValue used = session.lastUsed ? JSONValue(session.lastUsed->iso()) : JSONValue();
        reply.sessions.emplace_back(JSONObject{
            {"id", session.id},
            {"kind", session.kind},
            {"label", session.label},
            {"last_used_at", used},
            {"is_current_device", session.isCurrentDevice}});
    }
    return replied(reply);
}

HTTPReply Service::endSession(const Exchange& exchange) {
    const bool isEnded = accounts_.endSession(exchange.caller.user, exchange.parameters.at(0));
    if (!isEnded) throw Refusal(404, "That device is not signed in.");
    live_.ended(exchange.parameters.at(0));
    return done();
}

HTTPReply Service::createToken(const Exchange& exchange) {
    return replied(accounts_.createAPIToken(exchange.caller.user, exchange.text("label")));
}

HTTPReply Service::tokens(const Exchange& exchange) {
    return replied(APITokensReply{accounts_.apiTokens(exchange.caller.user)});
}

HTTPReply Service::deleteToken(const Exchange& exchange) {
    const bool isGone = accounts_.deleteAPIToken(exchange.caller.user, exchange.parameters.at(0));
    if (!isGone) throw Refusal(404, "There is no such token.");
    live_.ended(exchange.parameters.at(0));
    return done();
}

}  // namespace tesserine::server
