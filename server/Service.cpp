#include "server/Service.h"

#include "base/Files.h"
#include "base/PercentEncoding.h"
#include "server/Eras.h"
#include "server/Exchange.h"
#include "server/Pages.h"
#include "server/Refusal.h"

#include <algorithm>

namespace tesserine::server {
namespace {

std::vector<std::string_view> pieces(std::string_view path) {
    std::vector<std::string_view> result;
    while (!path.empty()) {
        const std::size_t slash = std::min(path.find('/'), path.size());
        if (slash > 0) result.push_back(path.substr(0, slash));
        path.remove_prefix(std::min(slash + 1, path.size()));
    }
    return result;
}

}  // namespace

struct Service::Route {
    enum class Access {
        anybody,
        token,   // also a personal API token
        device,  // signed-in devices only
    };
    std::string_view method;
    std::string_view path;  // "*" stands for one piece
    Access access;
    Handler handler;
    enum class Body { small, records, file } body = Body::small;
};

const std::vector<Service::Route>& Service::routes() {
    using Access = Route::Access;
    using Body = Route::Body;
    static const std::vector<Route> table = {
        {"GET", "api/v1/auth/google/start", Access::anybody, &Service::signInPage},
        {"POST", "api/v1/auth/google/start", Access::anybody, &Service::signIn},
        {"POST", "api/v1/auth/exchange", Access::anybody, &Service::exchangeCode},
        {"POST", "api/v1/auth/refresh", Access::anybody, &Service::refresh},
        {"POST", "api/v1/auth/logout", Access::anybody, &Service::signOut},
        {"GET", "api/v1/auth/sessions", Access::device, &Service::sessions},
        {"POST", "api/v1/auth/sessions/*/revoke", Access::device, &Service::endSession},
        {"GET", "api/v1/sync/changes", Access::token, &Service::changes},
        {"POST", "api/v1/sync/push", Access::token, &Service::push, Body::records},
        {"GET", "api/v1/sync/state", Access::token, &Service::state},
        {"GET", "api/v1/sync/revisions/*", Access::token, &Service::revisions},
        {"POST", "api/v1/blobs/check", Access::token, &Service::missingBlobs, Body::records},
        {"GET", "api/v1/blobs", Access::token, &Service::blobUsage},
        {"PUT", "api/v1/blobs/*", Access::token, &Service::putBlob, Body::file},
        {"GET", "api/v1/blobs/*", Access::token, &Service::getBlob},
        {"DELETE", "api/v1/blobs/*", Access::token, &Service::deleteBlob},
        {"POST", "api/v1/notes/*/share", Access::device, &Service::share},
        {"DELETE", "api/v1/notes/*/share", Access::device, &Service::unshare},
        {"GET", "api/v1/notes/*/share", Access::token, &Service::shareStatus},
        {"POST", "api/v1/api-tokens", Access::device, &Service::createToken},
        {"GET", "api/v1/api-tokens", Access::device, &Service::tokens},
        {"DELETE", "api/v1/api-tokens/*", Access::device, &Service::deleteToken},
        {"GET", "shared/*", Access::anybody, &Service::sharedNote},
    };
    return table;
}

Service::Service(const Configuration& configuration, const Environment& environment)
    : configuration_(configuration),
      environment_(environment),
      database_((files::createPrivateFolder(configuration.folder), configuration.folder)),
      accounts_(database_, environment.clock, environment.random, configuration.passwordRounds),
      records_(database_, configuration.quotas),
      blobs_(configuration.folder / "blobs"),
      shares_(database_),
      limit_(environment.clock),
      perAddress_(environment.clock, configuration.perAddress),
      perToken_(environment.clock, configuration.perToken),
      live_(configuration.live) {
    Eras::begin(database_, environment.random);
}

HTTPReply Service::answer(const HTTPRequest& request, const std::string& from) {
    return answer(request, from, [&request](std::size_t limit) -> std::optional<std::string> {
        std::string body = request.body.value_or("");
        return body.size() > limit ? std::nullopt : std::optional(std::move(body));
    });
}

HTTPReply Service::answer(
    const HTTPRequest& request, const std::string& from, const BodyReader& body) {
    return guarded([&] { return dispatch(request, from, body); });
}

HTTPReply Service::guarded(const std::function<HTTPReply()>& work) {
    try {
        return work();
    } catch (const Refusal& refusal) {
        return refusal.reply();
    } catch (const std::exception& error) {
        environment_.log.error(std::string("a request failed: ") + error.what());
        return Refusal(500, "The server could not do that. Try again later.").reply();
    }
}

HTTPReply Service::dispatch(
    const HTTPRequest& request, const std::string& from, const BodyReader& body) {
    if (const auto wait = perAddress_.waitOf(from)) throw Refusal::tooMany(*wait);
    const std::string_view url = request.url;
    const std::size_t mark = std::min(url.find('?'), url.size());
    const auto asked = pieces(url.substr(0, mark));
    Exchange exchange{
        .request = request,
        .from = from,
        .query = url.substr(std::min(mark + 1, url.size())),
        .parameters = {}};
    for (const Route& route : routes()) {
        const auto wanted = pieces(route.path);
        if (route.method != request.method || wanted.size() != asked.size()) continue;
        exchange.parameters.clear();
        const bool fits = std::ranges::equal(wanted, asked, [&](auto pattern, auto piece) {
            if (pattern == "*") exchange.parameters.push_back(percentDecoded(piece));
            return pattern == "*" || pattern == piece;
        });
        if (fits) return handle(route, exchange, body);
    }
    return pages::notFound();
}

HTTPReply Service::handle(const Route& route, Exchange& exchange, const BodyReader& body) {
    if (route.access != Route::Access::anybody) {
        constexpr std::string_view scheme = "Bearer ";
        const std::string* const header = exchange.header("authorization");
        const bool hasToken = header != nullptr && header->starts_with(scheme);
        exchange.caller = callerWith(hasToken ? header->substr(scheme.size()) : "");
        if (route.access == Route::Access::device && !exchange.caller.isDevice) {
            throw Refusal(403, "A personal API token may not do that.");
        }
    }
    auto read = body(bodyLimit(route));
    if (!read) throw Refusal(413, "That is too large for this server.");
    exchange.body = *std::move(read);
    return (this->*route.handler)(exchange);
}

std::size_t Service::bodyLimit(const Route& route) const {
    constexpr std::size_t formOrFewWords = std::size_t{64} << 10;
    switch (route.body) {
    case Route::Body::small: return formOrFewWords;
    // One record alone may be as large as all the others of a request together.
    case Route::Body::records: return 2 * static_cast<std::size_t>(configuration_.quotas.record);
    case Route::Body::file: return static_cast<std::size_t>(configuration_.quotas.file);
    }
    return 0;
}

Caller Service::callerWith(const std::string& token) {
    const auto caller = accounts_.callerWith(token);
    if (!caller) throw Refusal(401, "Sign in first.");
    if (const auto wait = perToken_.waitOf(caller->session)) throw Refusal::tooMany(*wait);
    return *caller;
}

Service::Listening Service::listen(const std::string& token, const std::string& from) {
    Listening listening;
    listening.refusal = guarded([&]() -> HTTPReply {
        if (const auto wait = perAddress_.waitOf(from)) throw Refusal::tooMany(*wait);
        const Caller caller = callerWith(token);
        auto seat = live_.enter(caller);  // first, so that no change slips in between
        if (!seat) throw Refusal::tooMany(std::chrono::seconds(60));
        listening.head = records_.head(caller.user);
        listening.seat = std::move(seat);
        return {};
    });
    return listening;
}

}  // namespace tesserine::server
