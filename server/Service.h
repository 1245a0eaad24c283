#pragma once

#include "base/Clock.h"
#include "base/HTTP.h"
#include "base/Log.h"
#include "base/Random.h"
#include "server/Accounts.h"
#include "server/BlobFolder.h"
#include "server/LiveHub.h"
#include "server/RateLimit.h"
#include "server/Records.h"
#include "server/Shares.h"
#include "server/SignInLimit.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine::server {

struct Exchange;

/// Answers requests: the whole service but for the sockets.
///
/// Safe from any thread. Nothing that a request holds can make it throw: whatever goes wrong inside
/// is a 500 without details and a line in the log.
class Service {
public:
    struct Configuration {
        std::filesystem::path folder;  ///< all data: "service.sqlite" and "blobs"
        std::string publicURL{};       ///< where people reach the service; for shared links
        Quotas quotas{};
        int passwordRounds = Accounts::usualPasswordRounds;
        RateLimit::Allowance perAddress{.perSecond = 200, .atOnce = 2'000};
        RateLimit::Allowance perToken{.perSecond = 50, .atOnce = 500};
        LiveHub::Limits live{};
    };
    struct Environment {
        const Clock& clock;
        Random& random;
        Log log{};
    };

    /// Makes the folder, and begins an era (`Eras`). Throws `FileError` and
    /// `SQLiteDatabase::Error`.
    Service(const Configuration& configuration, const Environment& environment);

    Accounts& accounts() { return accounts_; }

    /// Reads the body that comes with a request; none when it is longer than `limit` bytes.
    using BodyReader = std::function<std::optional<std::string>(std::size_t limit)>;

    /// `request.url` is path and query; `from` tells clients apart for limits. `body` is asked only
    /// for a request that is let in, so that nobody else can fill the memory.
    HTTPReply answer(const HTTPRequest& request, const std::string& from, const BodyReader& body);
    /// For a request that holds its body.
    HTTPReply answer(const HTTPRequest& request, const std::string& from);

    /// A device that listens for news, or why it may not.
    struct Listening {
        std::unique_ptr<LiveHub::Seat> seat{};
        std::int64_t head = 0;  ///< the number of the latest change
        HTTPReply refusal{};    ///< without a seat
    };
    Listening listen(const std::string& token, const std::string& from);
    LiveHub& live() { return live_; }

private:
    using Handler = HTTPReply (Service::*)(const Exchange& exchange);
    struct Route;
    static const std::vector<Route>& routes();

    HTTPReply guarded(const std::function<HTTPReply()>& work);
    HTTPReply dispatch(const HTTPRequest& request, const std::string& from, const BodyReader& body);
    HTTPReply handle(const Route& route, Exchange& exchange, const BodyReader& body);
    std::size_t bodyLimit(const Route& route) const;
    /// Whose token that is. Throws when it is nobody's, or used too often.
    Caller callerWith(const std::string& token);
    HTTPReply signInPage(const Exchange& exchange);
    HTTPReply signIn(const Exchange& exchange);
    HTTPReply exchangeCode(const Exchange& exchange);
    HTTPReply refresh(const Exchange& exchange);
    HTTPReply signOut(const Exchange& exchange);
    HTTPReply sessions(const Exchange& exchange);
    HTTPReply endSession(const Exchange& exchange);
    HTTPReply changes(const Exchange& exchange);
    HTTPReply push(const Exchange& exchange);
    HTTPReply state(const Exchange& exchange);
    HTTPReply revisions(const Exchange& exchange);
    HTTPReply missingBlobs(const Exchange& exchange);
    HTTPReply blobUsage(const Exchange& exchange);
    HTTPReply putBlob(const Exchange& exchange);
    HTTPReply getBlob(const Exchange& exchange);
    HTTPReply deleteBlob(const Exchange& exchange);
    HTTPReply share(const Exchange& exchange);
    HTTPReply unshare(const Exchange& exchange);
    HTTPReply shareStatus(const Exchange& exchange);
    HTTPReply sharedNote(const Exchange& exchange);
    HTTPReply createToken(const Exchange& exchange);
    HTTPReply tokens(const Exchange& exchange);
    HTTPReply deleteToken(const Exchange& exchange);

    const Configuration configuration_;
    const Environment environment_;
    ServerDatabase database_;
    Accounts accounts_;
    Records records_;
    BlobFolder blobs_;
    Shares shares_;
    SignInLimit limit_;
    RateLimit perAddress_;
    RateLimit perToken_;
    LiveHub live_;
};

}  // namespace tesserine::server
