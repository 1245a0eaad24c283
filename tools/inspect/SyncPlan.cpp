#include "base/Clock.h"
#include "base/OperationCancelled.h"
#include "sync/SyncClient.h"
#include "tools/inspect/Operations.h"
#include "tools/inspect/SyncInputs.h"

#include <string>
#include <vector>

namespace tesserine::inspect {
namespace {

using boost::json::array;
using boost::json::object;
using boost::json::value;

/// Gives the replies of an input in order, the last one again and again. One without a status is a
/// server that could not be reached.
class PlannedReplies final : public HTTPTransport {
public:
    explicit PlannedReplies(const array& replies) : replies_(replies) {}

    HTTPReply send(const HTTPRequest& /*request*/, const std::stop_token& /*stop*/) override {
        const std::size_t place = std::min(requestCount++, replies_.size() - 1);
        const value& reply = replies_[place];
        if (!reply.is_object()) throw InputError("“replies” holds what is no object");
        const value* const status = reply.get_object().if_contains("status");
        if (status == nullptr || status->is_null()) {
            throw HTTPError(HTTPError::Kind::unreachable, "planned");
        }
        return replyOf(reply.get_object());
    }

    std::size_t requestCount = 0;

private:
    const array& replies_;
};

/// An operation of that method whose reply may be anything.
void request(SyncClient& client, const std::string& method) {
    const std::string digest(64, '0');
    if (method == "GET") {
        client.downloadBlob(digest);
    } else if (method == "PUT") {
        client.uploadBlob({}, digest, "application/octet-stream");
    } else if (method == "POST") {
        client.revokeSession("session");
    } else if (method == "DELETE") {
        client.revokeAPIToken("token");
    } else {
        throw InputError("no operation is a “" + method + "”");
    }
}

/// `sync.plan`: one request against planned replies, on a clock that stands.
value syncPlan(const object& input) {
    const array& replies = elements(input, "replies");
    if (replies.empty()) throw InputError("“replies” is empty");
    PlannedReplies service(replies);
    const FixedClock clock(
        Instant::parseISO(optionalText(input, "now").value_or("")).value_or(Instant()));
    SecureRandom random;
    SyncClient client(
        "https://service.test", {.session = service, .clock = clock, .random = random});
    client.setRetry(policyOf(input));
    client.setTokenSource([](const std::stop_token&) { return "token"; });

    object end{{"ok", true}};
    try {
        request(client, text(input, "method"));
    } catch (const SyncError& error) {
        end = described(error);
    }
    array waits;
    for (const Seconds& wait : client.waits()) {
        waits.emplace_back(wait.count());
    }
    return object{
        {"requests", service.requestCount}, {"waits", std::move(waits)}, {"final", std::move(end)}};
}

}  // namespace

void addSyncPlanOperations(Operations& operations) { operations.add("sync.plan", syncPlan); }

}  // namespace tesserine::inspect
