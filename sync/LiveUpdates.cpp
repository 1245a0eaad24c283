#include "sync/LiveUpdates.h"

#include "base/JSON.h"
#include "base/OperationCancelled.h"
#include "sync/AccountSession.h"
#include "sync/SyncError.h"

#include <boost/json/object.hpp>

#include <algorithm>
#include <utility>

namespace tesserine {
namespace {

constexpr const char* protocol = "tesserine";
constexpr int unauthorised = 401;

std::int64_t numberIn(const boost::json::object& members, std::string_view key) {
    const auto* const member = members.if_contains(key);
    return member != nullptr && member->is_int64() ? member->get_int64() : -1;
}

}  // namespace

LiveNews LiveNews::read(std::string_view message) {
    try {
        const boost::json::value value = json::parse(message);
        const auto* const members = value.if_object();
        const auto* const type = members == nullptr ? nullptr : members->if_contains("type");
        if (type == nullptr || !type->is_string()) return {};
        if (type->get_string() == "signed_out") return {.kind = Kind::signedOut};
        const std::int64_t seq = numberIn(*members, "seq");
        if (type->get_string() == "changes" && seq >= 0) return {.kind = Kind::changes, .seq = seq};
    } catch (const json::JSONError&) {}  // not for us to understand
    return {};
}

LiveUpdates::LiveUpdates(Environment environment, Listener listener)
    : environment_(std::move(environment)),
      listener_(std::move(listener)),
      log_(environment_.log.category("live")),
      thread_([this](const std::stop_token& stop) { run(stop); }) {}

void LiveUpdates::run(const std::stop_token& stop) {
    std::chrono::nanoseconds pause = firstPause;
    try {
        for (;;) {
            const auto began = environment_.clock.monotonic();
            const bool isWorthwhile = listenOnce(stop);
            if (isOpen_) tell({.kind = LiveNews::Kind::closed});
            if (!isWorthwhile) return;
            const bool hasLasted = environment_.clock.monotonic() - began >= longestPause;
            if (hasLasted) pause = firstPause;
            if (!environment_.clock.sleep(pause, stop)) return;
            pause = std::min<std::chrono::nanoseconds>(pause * 2, longestPause);
        }
    } catch (const OperationCancelled&) {}  // the end
}

bool LiveUpdates::listenOnce(const std::stop_token& stop) {
    try {
        const std::string token = environment_.session.validAccessToken(stop);
        if (!isProtocolName(token)) {
            log_.warning("the token cannot travel on a live channel");
            return false;
        }
        environment_.socket(
            {.url = environment_.address, .protocols = std::string(protocol) + ", " + token},
            {.opened = [this] { tell({.kind = LiveNews::Kind::opened}); },
             .received = [this](std::string_view message) { tell(LiveNews::read(message)); }},
            stop);
    } catch (const SyncError& error) {
        if (error.kind() == SyncError::Kind::signedOut) return false;
        log_.info(std::string("no live channel: ") + error.what());
    } catch (const WebSocketError& error) {
        // The token may have been taken back before its time.
        if (error.status() == unauthorised) environment_.session.invalidateAccessToken();
        const std::string status = error.status() == 0 ? "" : " " + std::to_string(error.status());
        log_.info(std::string("no live channel: ") + error.what() + status);
    } catch (const OperationCancelled&) {
        throw;
    } catch (const std::exception& error) {  // such as too many open files
        log_.error(std::string("no live channel: ") + error.what());
    }
    return true;
}

void LiveUpdates::tell(const LiveNews& news) {
    if (news.kind == LiveNews::Kind::opened) isOpen_ = true;
    if (news.kind == LiveNews::Kind::closed) isOpen_ = false;
    listener_(news);
}

}  // namespace tesserine
