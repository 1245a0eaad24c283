#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>

namespace tesserine {

/// What to listen to, and how patiently.
struct WebSocketRequest {
    std::string url;                   ///< begins with "ws://" or "wss://"
    std::string protocols;             ///< the offered sub-protocols, "a, b"
    std::chrono::seconds opening{60};  ///< for name, connection, TLS and handshake together
    /// A ping is sent after so long a silence; a second such silence is the end.
    std::chrono::milliseconds silence{30'000};
    std::size_t messageLimit = std::size_t{64} << 10;  ///< bytes
    /// PEM texts to trust instead of the machine's certificates.
    std::string trustedCertificates{};
};

/// What is called while the socket is open, on the thread that listens. What these throw ends the
/// listening and comes out of it.
struct WebSocketHandler {
    std::function<void()> opened;
    std::function<void(std::string_view text)> received;  ///< whole messages of text
};

/// The socket could not be opened, or is lost. `what()` is for the log; it never names the address
/// or the sub-protocols, which may hold a secret.
class WebSocketError final : public std::runtime_error {
public:
    enum class Kind {
        badRequest,   ///< no such address, or characters that no sub-protocol may hold
        unreachable,  ///< no such host, no connection, time-out
        untrusted,    ///< the server's certificate does not vouch for it
        refused,      ///< the server answered, with `status()`, and opened no socket
        lost,         ///< closed by the server, silent, or beyond a limit
    };

    WebSocketError(Kind kind, const std::string& why, int status = 0)
        : std::runtime_error(why), kind_(kind), status_(status) {}
    Kind kind() const noexcept { return kind_; }
    int status() const noexcept { return status_; }

private:
    Kind kind_;
    int status_;
};

/// Whether `text` may name a sub-protocol (RFC 7230, "token").
bool isProtocolName(std::string_view text);

/// Opens a socket and listens until it is lost: throws `WebSocketError`, or `OperationCancelled` at
/// once after `stop`. Uses no proxy. Blocks; safe from any thread.
[[noreturn]] void listenToWebSocket(
    const WebSocketRequest& request, const WebSocketHandler& handler, const std::stop_token& stop);

/// `listenToWebSocket`, or what stands in for it in a test.
using WebSocketListening = std::function<void(
    const WebSocketRequest& request, const WebSocketHandler& handler, const std::stop_token& stop)>;

}  // namespace tesserine
