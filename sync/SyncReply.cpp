#include "sync/SyncReply.h"

#include "sync/SyncRetryPolicy.h"
#include "sync/WireRecords.h"

#include <utility>

namespace tesserine {
namespace {

ServerProblem problemOf(const HTTPReply& reply, Instant now) {
    ProblemBody body = ProblemBody::read(reply.body);
    ServerProblem problem{.status = reply.status};
    if (!body.message.value_or("").empty()) {
        problem.message = *std::move(body.message);
    } else if (!body.detail.value_or("").empty()) {
        problem.message = *std::move(body.detail);
    } else {
        problem.message = "The server returned an error (" + std::to_string(reply.status) + ").";
    }
    if (const std::string* const header = reply.header("Retry-After")) {
        problem.retryAfter = parseRetryAfter(*header, now);
    }
    problem.code = std::move(body.code).value_or("");
    problem.references = std::move(body.references);
    return problem;
}

}  // namespace

void checkReply(const HTTPReply& reply, Instant now, After500 after500) {
    if (reply.status == 0) throw SyncError::malformed("no status");
    if (reply.status >= 200 && reply.status <= 299) return;
    if (reply.status == 401) throw SyncError::signedOut();
    ServerProblem problem = problemOf(reply, now);
    problem.mayRepeatAfter500 = after500 == After500::mayRepeat;
    throw SyncError::server(std::move(problem));
}

}  // namespace tesserine
