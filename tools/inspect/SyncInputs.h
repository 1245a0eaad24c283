#pragma once

#include "base/HTTP.h"
#include "sync/SyncError.h"
#include "sync/SyncRetryPolicy.h"

#include <boost/json/object.hpp>

#include <optional>

/// Members of an input that tell of requests and replies, and how errors are written in outputs.
namespace tesserine::inspect {

std::optional<double> optionalNumber(const boost::json::object& input, std::string_view key);
/// The policy in `policy`; members that are missing keep their defaults. Throws `InputError`.
SyncRetryPolicy policyOf(const boost::json::object& input);
/// The reply {status, body, headers}; headers map names to values. Throws `InputError`.
HTTPReply replyOf(const boost::json::object& reply);

const char* nameOf(SyncError::Kind kind);
/// {error, message, retryable, transient}, and of a server's error its status and `retryAfter`.
boost::json::object described(const SyncError& error);

}  // namespace tesserine::inspect
