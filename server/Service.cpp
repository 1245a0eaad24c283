#include "server/Service.h"

#include "base/Digest.h"
#include "base/Files.h"
#include "base/JSON.h"
#include "base/PercentEncoding.h"
#include "base/Product.h"
#include "base/Text.h"
#include "server/Pages.h"
#include "sync/WireCoding.h"

#include <algorithm>
#include <charconv>

namespace tesserine::server {
namespace {

using boost::json::array;
using boost::json::object;

/// What goes wrong with a request, as the client is told.
class Refusal final : public std::runtime_error {
public:
    Refusal(int status, const std::string& message) : Refusal(status, message, {}) {}
    static Refusal tooMany(std::chrono::seconds wait) {
        return {
            429,
            "Too many requests. Wait a moment.",
            {{"Retry-After", std::to_string(wait.count())}}};
    }

    HTTPReply reply() const {
        HTTPReply reply{
            .status = status_,
            .headers = headers_,
            .body = json::write(object{{"error", object{{"message", what()}}}})};
        reply.headers.push_back({"Content-Type", "application/json"});
        return reply;
    }

private:
    Refusal(int status, const std::string& message, HTTPHeaders headers)
        : std::runtime_error(message), status_(status), headers_(std::move(headers)) {}

    int status_;
    HTTPHeaders headers_;
};

constexpr const char* unreadable = "The request could not be read.";

HTTPReply replied(const object& body, int status = 200) {
    return {
        .status = status,
        .headers = {{"Content-Type", "application/json"}, {"Cache-Control", "no-store"}},
        .body = json::write(body)};
}

template <class Record>
HTTPReply replied(const Record& record) {
    return replied(wire::encode(record));
}

HTTPReply done() { return {.status = 204}; }

std::vector<std::string_view> pieces(std::string_view path) {
    std::vector<std::string_view> result;
    while (!path.empty()) {
        const std::size_t slash = std::min(path.find('/'), path.size());
        if (slash > 0) result.push_back(path.substr(0, slash));
        path.remove_prefix(std::min(slash + 1, path.size()));
    }
    return result;
}

/// Members of a form or a query, "a=b&c=d".
std::optional<std::string> formMember(std::string_view form, std::string_view name) {
    while (!form.empty()) {
        const std::string_view item = form.substr(0, form.find('&'));
        form.remove_prefix(std::min(item.size() + 1, form.size()));
        const std::size_t equals = item.find('=');
        if (equals == std::string_view::npos || item.substr(0, equals) != name) continue;
        std::string value(item.substr(equals + 1));
        std::ranges::replace(value, '+', ' ');
        return text::sanitized(percentDecoded(value));
    }
    return std::nullopt;
}

std::int64_t numberMember(std::string_view query, std::string_view name, std::int64_t otherwise) {
    const auto text = formMember(query, name);
    if (!text) return otherwise;
    std::int64_t number = 0;
    const char* const end = text->data() + text->size();
    const auto [read, problem] = std::from_chars(text->data(), end, number);
    if (problem != std::errc{} || read != end || number < 0) throw Refusal(400, unreadable);
    return number;
}

const std::string* headerOf(const HTTPRequest& request, std::string_view name) {
    for (const HTTPHeader& header : request.headers) {
        if (text::asciiLowercased(header.name) == name) return &header.value;
    }
    return nullptr;
}

}  // namespace

/// One request taken apart.
struct Service::Exchange {
    const HTTPRequest& request;
    std::string from;
    std::string_view query;
    std::vector<std::string> parameters;  // what stood in the places of "*" in the path
    Caller caller{};
    std::string body{};

    object json() const {
        try {
            const auto value = json::parse(body);
            if (value.is_object()) return value.get_object();
        } catch (const json::JSONError&) {}
        throw Refusal(400, unreadable);
    }
    std::string text(std::string_view key) const {
        const object members = json();
        const auto* const member = members.if_contains(key);
        if (member == nullptr || !member->is_string()) throw Refusal(400, unreadable);
        return tesserine::text::sanitized(std::string(member->get_string()));
    }
    Uuid identifier() const {
        const auto id = Uuid::parse(parameters.at(0));
        if (!id) throw Refusal(404, "There is no such record.");
        return *id;
    }
    const std::string& digest() const {
        if (!BlobFolder::isDigest(parameters.at(0))) throw Refusal(404, "There is no such file.");
        return parameters.at(0);
    }
};

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
      limit_(environment.clock),
      perAddress_(environment.clock, configuration.perAddress),
      perToken_(environment.clock, configuration.perToken),
      live_(configuration.live) {}

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
        const std::string* const header = headerOf(exchange.request, "authorization");
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

// MARK: signing in

HTTPReply Service::signInPage(const Exchange& /*exchange*/) { return pages::signIn(); }

HTTPReply Service::signIn(const Exchange& exchange) {
    const std::string email = formMember(exchange.body, "email").value_or("");
    const std::string password = formMember(exchange.body, "password").value_or("");
    const std::string name = text::caseFolded(email);
    if (!limit_.allows(name) || !limit_.allows(exchange.from)) {
        return pages::signIn("Too many attempts. Wait a quarter of an hour, then try again.");
    }
    const auto code = accounts_.signIn(email, password);
    if (!code) {
        limit_.failed(name);
        limit_.failed(exchange.from);
        return pages::signIn("That address and password do not go together.");
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

// MARK: records

HTTPReply Service::changes(const Exchange& exchange) {
    constexpr std::int64_t usualPage = 200;
    return replied(records_.changes(
        exchange.caller.user,
        numberMember(exchange.query, "since", 0),
        numberMember(exchange.query, "limit", usualPage)));
}

HTTPReply Service::push(const Exchange& exchange) {
    const object request = exchange.json();
    const auto* const changes = request.if_contains("changes");
    if (changes == nullptr || !changes->is_array()) throw Refusal(400, unreadable);
    std::vector<SyncPush> pushes;
    try {
        for (const auto& change : changes->get_array()) {
            pushes.push_back(wire::decode<SyncPush>(change));
        }
    } catch (const WireError&) {
        throw Refusal(400, unreadable);
    }
    const std::string& user = exchange.caller.user;
    const PushResponse response = records_.push(
        user, pushes, [&](const std::string& digest) { return blobs_.has(user, digest); });
    const bool isChanged = std::ranges::any_of(
        response.results, [](const PushResult& result) { return result.status == "applied"; });
    if (isChanged) live_.changed(user, response.head);
    return replied(response);
}

HTTPReply Service::state(const Exchange& exchange) {
    return replied(records_.state(exchange.caller.user));
}

HTTPReply Service::revisions(const Exchange& exchange) {
    return replied(RevisionsReply{records_.revisions(exchange.caller.user, exchange.identifier())});
}

// MARK: files

HTTPReply Service::missingBlobs(const Exchange& exchange) {
    const object request = exchange.json();
    const auto* const digests = request.if_contains("sha256");
    if (digests == nullptr || !digests->is_array()) throw Refusal(400, unreadable);
    BlobCheckReply reply;
    for (const auto& digest : digests->get_array()) {
        if (!digest.is_string()) throw Refusal(400, unreadable);
        const std::string text(digest.get_string());
        if (!blobs_.has(exchange.caller.user, text)) reply.missing.push_back(text);
    }
    return replied(reply);
}

HTTPReply Service::blobUsage(const Exchange& exchange) {
    BlobUsage usage = blobs_.usage(exchange.caller.user);
    usage.quotaBytes = configuration_.quotas.files;
    return replied(usage);
}

HTTPReply Service::putBlob(const Exchange& exchange) {
    const std::string& digest = exchange.digest();
    const std::string& body = exchange.body;
    const std::string& user = exchange.caller.user;
    if (sha256Hex(bytesOf(body)) != digest) throw Refusal(400, "The file was damaged on its way.");
    if (blobs_.has(user, digest)) return done();
    if (const auto quota = configuration_.quotas.files) {
        const std::int64_t used = blobs_.usage(user).bytes.value_or(0);
        const bool fits = used + static_cast<std::int64_t>(body.size()) <= *quota;
        if (!fits) return {.status = 507};  // the client has a sentence of its own for this
    }
    blobs_.put(user, digest, bytesOf(body));
    return done();
}

HTTPReply Service::getBlob(const Exchange& exchange) {
    auto bytes = blobs_.get(exchange.caller.user, exchange.digest());
    if (!bytes) throw Refusal(404, "There is no such file.");
    return {
        .status = 200,
        .headers =
            {{"Content-Type", "application/octet-stream"}, {"X-Content-Type-Options", "nosniff"}},
        .body = *std::move(bytes)};
}

HTTPReply Service::deleteBlob(const Exchange& exchange) {
    const std::string& user = exchange.caller.user;
    const auto references = records_.referencesTo(user, exchange.digest());
    if (!references.empty()) {
        const object error{
            {"code", "in_use"},
            {"message", "The file is still in use."},
            {"references", array(references.begin(), references.end())}};
        return replied(object{{"error", error}}, 409);
    }
    const auto freed = blobs_.remove(user, exchange.digest());
    if (!freed) throw Refusal(404, "There is no such file.");
    return replied(BlobDeleteReply{freed});
}

// MARK: sharing

HTTPReply Service::share(const Exchange& exchange) {
    const Uuid note = exchange.identifier();
    const auto record = records_.record(exchange.caller.user, note);
    const bool isNote = record && !record->deleted && record->kind == "note";
    if (!isNote) throw Refusal(404, "Sync the note first, then share it.");
    const ShareLink link{
        .id = Uuid::random(environment_.random).wireText(),
        .token = accounts_.newSecret(),
        .createdAt = environment_.clock.now()};
    database_.transact([&](SQLiteDatabase& database) {
        Statement& store = database.cached(
            "INSERT OR REPLACE INTO shares (user, note, id, digest, created) VALUES (?, ?, ?, ?, ?)");
        store.bindText(1, exchange.caller.user);
        store.bindText(2, note.wireText());
        store.bindText(3, link.id);
        store.bindText(4, Accounts::digestOf(link.token));
        store.bindDouble(5, link.createdAt.seconds());
        store.step();
    });
    ShareLink shown = link;
    shown.url = configuration_.publicURL + "/shared/" + link.token;
    return replied(shown);
}

HTTPReply Service::unshare(const Exchange& exchange) {
    const Uuid note = exchange.identifier();
    database_.transact([&](SQLiteDatabase& database) {
        Statement& remove = database.cached("DELETE FROM shares WHERE user = ? AND note = ?");
        remove.bindText(1, exchange.caller.user);
        remove.bindText(2, note.wireText());
        remove.step();
    });
    return done();
}

HTTPReply Service::shareStatus(const Exchange& exchange) {
    const Uuid note = exchange.identifier();
    return replied(database_.read([&](SQLiteDatabase& database) {
        Statement& find = database.cached("SELECT created FROM shares WHERE user = ? AND note = ?");
        find.bindText(1, exchange.caller.user);
        find.bindText(2, note.wireText());
        ShareStatus status{.shared = find.step()};
        if (status.shared) status.createdAt = Instant::fromSeconds(find.real(0));
        find.reset();
        return status;
    }));
}

/// Whoever has the link may read the note as it is now; a deleted or trashed one is not shown.
HTTPReply Service::sharedNote(const Exchange& exchange) {
    struct Shared {
        std::string user;
        std::optional<Uuid> note;
    };
    const Shared shared = database_.read([&](SQLiteDatabase& database) {
        Statement& find = database.cached("SELECT user, note FROM shares WHERE digest = ?");
        find.bindText(1, Accounts::digestOf(exchange.parameters.at(0)));
        Shared found;
        if (find.step()) {
            found = {find.text(0).value_or(""), Uuid::parse(find.text(1).value_or(""))};
        }
        find.reset();
        return found;
    });
    const auto record = shared.note ? records_.record(shared.user, *shared.note) : std::nullopt;
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

// MARK: personal tokens

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
