#include "tools/inspect/SyncInputs.h"

#include "tools/inspect/Operations.h"

#include <string>

namespace tesserine::inspect {

using boost::json::object;
using boost::json::value;

std::optional<double> optionalNumber(const object& input, std::string_view key) {
    const value* const found = input.if_contains(key);
    if (found == nullptr || found->is_null()) return std::nullopt;
    if (!found->is_number()) throw InputError("“" + std::string(key) + "” is not a number");
    return found->to_number<double>();
}

SyncRetryPolicy policyOf(const object& input) {
    SyncRetryPolicy policy;
    const value* const given = input.if_contains("policy");
    if (given == nullptr || given->is_null()) return policy;
    if (!given->is_object()) throw InputError("“policy” is not an object");
    const object& fields = given->get_object();
    const auto seconds = [&fields](std::string_view key, Seconds& member) {
        const auto number = optionalNumber(fields, key);
        if (!number) return;
        if (*number < 0 || *number > 1e9) throw InputError("“" + std::string(key) + "” is no time");
        member = Seconds(*number);
    };
    policy.attempts = static_cast<int>(integer(fields, "attempts", policy.attempts));
    seconds("baseDelay", policy.baseDelay);
    seconds("ceiling", policy.ceiling);
    seconds("retryAfterCap", policy.retryAfterCap);
    seconds("blobInterval", policy.blobInterval);
    if (const value* const jitter = fields.if_contains("jitter")) {
        if (!jitter->is_bool()) throw InputError("“jitter” is not true or false");
        policy.jitter = jitter->get_bool();
    }
    return policy;
}

HTTPReply replyOf(const object& reply) {
    HTTPReply result{.status = static_cast<int>(integer(reply, "status"))};
    result.body = optionalText(reply, "body").value_or("");
    const value* const headers = reply.if_contains("headers");
    if (headers == nullptr || headers->is_null()) return result;
    if (!headers->is_object()) throw InputError("“headers” is not an object");
    for (const auto& header : headers->get_object()) {
        result.headers.push_back(
            {std::string(header.key()), text(headers->get_object(), header.key())});
    }
    return result;
}

const char* nameOf(SyncError::Kind kind) {
    switch (kind) {
    case SyncError::Kind::server: return "server";
    case SyncError::Kind::malformed: return "malformed";
    case SyncError::Kind::offline: return "offline";
    case SyncError::Kind::signedOut: return "signedOut";
    case SyncError::Kind::notInvited: return "notInvited";
    case SyncError::Kind::cancelled: return "cancelled";
    case SyncError::Kind::keychainUnavailable: return "keychainUnavailable";
    }
    return "";
}

object described(const SyncError& error) {
    object result{
        {"error", nameOf(error.kind())},
        {"message", error.what()},
        {"retryable", error.isRetryable()},
        {"transient", error.isTransient()}};
    if (error.kind() != SyncError::Kind::server) return result;
    result.emplace("status", error.problem().status);
    const auto delay = error.problem().retryAfter;
    result.emplace("retryAfter", delay ? value(delay->count()) : value(nullptr));
    return result;
}

}  // namespace tesserine::inspect
