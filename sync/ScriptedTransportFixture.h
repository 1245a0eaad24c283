#pragma once

#include "base/HTTP.h"
#include "base/OperationCancelled.h"

#include <deque>
#include <functional>
#include <mutex>
#include <variant>
#include <vector>

namespace tesserine {

/// Answers requests with a script instead of the network and remembers them. The last answer is
/// given again and again.
class ScriptedTransport final : public HTTPTransport {
public:
    using Answer = std::variant<HTTPReply, HTTPError::Kind>;

    explicit ScriptedTransport(std::vector<Answer> script = {})
        : script_(script.begin(), script.end()) {}

    void say(std::vector<Answer> script) {
        script_.assign(script.begin(), script.end());
        requests.clear();
    }

    HTTPReply send(const HTTPRequest& request, const std::stop_token& stop) override {
        if (stop.stop_requested()) throw OperationCancelled();
        const std::scoped_lock lock(mutex_);
        requests.push_back(request);
        const Answer answer = script_.empty() ? Answer(HTTPReply{.status = 404}) : script_.front();
        if (script_.size() > 1) script_.pop_front();
        if (const auto* const failure = std::get_if<HTTPError::Kind>(&answer)) {
            throw HTTPError(*failure, "scripted");
        }
        return std::get<HTTPReply>(answer);
    }

    std::vector<HTTPRequest> requests;

private:
    std::mutex mutex_;
    std::deque<Answer> script_;
};

/// The value of a request's header; empty when it has none.
inline std::string headerOf(const HTTPRequest& request, std::string_view name) {
    for (const HTTPHeader& header : request.headers) {
        if (header.name == name) return header.value;
    }
    return {};
}

}  // namespace tesserine
