#pragma once

#include "base/Clock.h"
#include "base/HTTP.h"
#include "base/Log.h"
#include "base/Random.h"
#include "server/Accounts.h"
#include "server/BlobFolder.h"
#include "server/Records.h"
#include "server/SignInLimit.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine::server {

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
    };
    struct Environment {
        const Clock& clock;
        Random& random;
        Log log{};
    };

    /// Makes the folder. Throws `FileError` and `SQLiteDatabase::Error`.
    Service(const Configuration& configuration, const Environment& environment);

    Accounts& accounts() { return accounts_; }

    /// `request.url` is path and query; `from` tells clients apart for the limit on guessing.
    HTTPReply answer(const HTTPRequest& request, const std::string& from);

private:
    struct Exchange;
    using Handler = HTTPReply (Service::*)(const Exchange& exchange);
    struct Route;
    static const std::vector<Route>& routes();

    HTTPReply dispatch(const HTTPRequest& request, const std::string& from);
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
    SignInLimit limit_;
};

}  // namespace tesserine::server
