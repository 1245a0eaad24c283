#pragma once

#include "base/UserError.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace tesserine {

using Seconds = std::chrono::duration<double>;

constexpr int storageIsFull = 507;  ///< a status

/// What a reply with an error status says.
struct ServerProblem {
    int status = 0;
    std::string message{};
    std::optional<Seconds> retryAfter{};
    std::string code{};                     ///< a machine word, such as "indexing"
    std::vector<std::string> references{};  ///< what still uses a blob
    /// Cleared for a request that must not be sent again after a 500, which may have done its work.
    bool mayRepeatAfter500 = true;
};

/// Every failure of the service and of the session with it.
class SyncError final : public UserError {
public:
    enum class Kind {
        server,
        malformed,
        offline,
        signedOut,
        notInvited,
        cancelled,
        keychainUnavailable,
    };

    static SyncError server(ServerProblem problem);
    static SyncError malformed(const std::string& description);
    static SyncError offline();
    static SyncError signedOut();
    static SyncError notInvited();
    /// Of a sign-in; what a stop token ends is an `OperationCancelled`.
    static SyncError cancelled();
    static SyncError keychainUnavailable();

    Kind kind() const noexcept { return kind_; }
    /// What the server said; of `server` only.
    const ServerProblem& problem() const noexcept { return problem_; }
    /// Whether the same request may be tried again at once.
    bool isRetryable() const noexcept;
    /// Whether it is worth to keep the work and try later.
    bool isTransient() const noexcept;

private:
    SyncError(Kind kind, const std::string& sentence, ServerProblem problem = {})
        : UserError(sentence), kind_(kind), problem_(std::move(problem)) {}

    Kind kind_;
    ServerProblem problem_;
};

/// What is shown for a failure that is none of these.
inline constexpr const char* unexpectedSyncProblem =
    "Sync hit an unexpected problem. It will try again automatically.";

}  // namespace tesserine
