#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

struct HTTPHeader {
    std::string name;
    std::string value;
};
using HTTPHeaders = std::vector<HTTPHeader>;

struct HTTPRequest {
    std::string method = "GET";
    std::string url;
    HTTPHeaders headers{};
    /// Bytes of any kind; none for a request without a body.
    std::optional<std::string> body{};
    /// Longest time without progress; not the time of the whole exchange.
    std::chrono::seconds inactivity{60};
    /// Longest reply that is taken, in bytes after decoding.
    std::size_t replyLimit = std::size_t{64} << 20;
    /// Takes the body of a 2xx reply in pieces in the place of `HTTPReply::body`, for what is too
    /// long to be held. What it throws ends the exchange and comes out of it.
    std::function<void(std::string_view piece)> sink{};
    /// Whether it may be sent again when a kept connection was lost before any answer. False for
    /// what must not happen twice.
    bool isRepeatable = true;
};

struct HTTPReply {
    int status = 0;
    HTTPHeaders headers{};
    std::string body{};

    /// The first header of that name, in any case.
    const std::string* header(std::string_view name) const;
};

/// No reply. `what()` is for the log: it names the cause, never an address, header or body.
class HTTPError final : public std::runtime_error {
public:
    enum class Kind {
        unreachable,  ///< no connection, no such host, time-out, connection lost, reply cut off
        untrusted,    ///< the server's certificate does not vouch for it
        tooLarge,     ///< the reply is longer than `replyLimit`
        malformed,    ///< what came is no HTTP
        badRequest,   ///< the request cannot be sent: its address or a header is none
    };

    HTTPError(Kind kind, const std::string& why) : std::runtime_error(why), kind_(kind) {}
    Kind kind() const noexcept { return kind_; }

private:
    Kind kind_;
};

/// Sends requests: the network, or what stands in for it in a test. Safe from any thread.
class HTTPTransport {
public:
    HTTPTransport() = default;
    HTTPTransport(const HTTPTransport&) = delete;
    HTTPTransport& operator=(const HTTPTransport&) = delete;
    virtual ~HTTPTransport() = default;

    /// Blocks until the whole reply is there, whatever its status; redirects are replies like any
    /// other. Throws `HTTPError`, or `OperationCancelled` soon after `stop`.
    virtual HTTPReply send(const HTTPRequest& request, const std::stop_token& stop) = 0;
};

}  // namespace tesserine
