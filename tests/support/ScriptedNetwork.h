#pragma once

#include "base/HTTP.h"
#include "base/JSON.h"
#include "base/OperationCancelled.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tesserine::test {

/// A network of one server, which keeps what it is asked and answers as it is told: as a model that
/// was asked something, unless a test says otherwise. Safe from any thread.
class ScriptedNetwork final : public HTTPTransport {
public:
    HTTPReply send(const HTTPRequest& request, const std::stop_token& stop) override {
        {
            const std::scoped_lock lock(mutex_);
            requests_.push_back(request);
        }
        while (isSilent) {
            if (stop.stop_requested()) throw OperationCancelled();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        HTTPReply reply = answer(request);
        if (request.sink && reply.status == 200) {
            request.sink(reply.body);
            reply.body.clear();
        }
        return reply;
    }
    /// A copy, since another thread may be asking.
    std::vector<HTTPRequest> requests() {
        const std::scoped_lock lock(mutex_);
        return requests_;
    }
    static HTTPReply saying(const std::string& text) {
        const boost::json::value part{{"type", "output_text"}, {"text", text}};
        const boost::json::value message{
            {"type", "message"}, {"content", boost::json::array{part}}};
        return {
            .status = 200,
            .body = json::write(boost::json::object{
                {"output", boost::json::array{message}}, {"model", "grok-test"}})};
    }
    void say(const std::string& text) { reply(saying(text)); }
    void reply(const HTTPReply& same) {
        answer = [same](const HTTPRequest&) { return same; };
    }
    void forget() {
        const std::scoped_lock lock(mutex_);
        requests_.clear();
    }

    /// Set while nobody asks.
    std::function<HTTPReply(const HTTPRequest&)> answer = [](const HTTPRequest&) {
        return saying("By the lake [1].");
    };
    std::atomic<bool> isSilent = false;

private:
    std::mutex mutex_;
    std::vector<HTTPRequest> requests_;
};

}  // namespace tesserine::test
