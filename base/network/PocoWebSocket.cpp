#include "base/network/PocoWebSocket.h"

#include "base/OperationCancelled.h"
#include "base/WebAddress.h"

#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#include <Poco/Buffer.h>
#include <Poco/Net/Context.h>
#include <Poco/Net/DNS.h>
#include <Poco/Net/HTTPClientSession.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/Net/NetException.h>
#include <Poco/Net/SecureStreamSocket.h>
#include <Poco/Net/StreamSocket.h>
#include <Poco/Net/WebSocket.h>
#include <sys/socket.h>

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace tesserine {
namespace {

namespace net = Poco::Net;
using Kind = WebSocketError::Kind;
using std::chrono::steady_clock;

constexpr std::chrono::seconds frameTime{10};  // from the first byte of a frame to its last
constexpr int pingFrame = 0x89;                // RFC 6455, section 5.2: the last of its message
constexpr int pongFrame = 0x8A;

Poco::Timespan timespan(std::chrono::nanoseconds time) {
    return {std::chrono::duration_cast<std::chrono::microseconds>(time).count()};
}

/// Wakes whoever waits on a connection, from another thread.
class Lifeline {
public:
    void hold(int descriptor) {
        const std::scoped_lock lock(mutex_);
        descriptor_ = descriptor;
        if (isCut_) ::shutdown(descriptor_, SHUT_RDWR);
    }
    /// Before the descriptor is closed.
    void release() {
        const std::scoped_lock lock(mutex_);
        descriptor_ = -1;
    }
    void cut() {
        const std::scoped_lock lock(mutex_);
        isCut_ = true;
        if (descriptor_ >= 0) ::shutdown(descriptor_, SHUT_RDWR);
    }

private:
    std::mutex mutex_;
    int descriptor_ = -1;
    bool isCut_ = false;
};

/// Cuts a lifeline when a time is over before it goes away itself.
class Deadline {
public:
    Deadline(Lifeline& line, std::chrono::nanoseconds time)
        : timer_([&line, time](const std::stop_token& stop) {
              std::mutex mutex;
              std::unique_lock lock(mutex);
              std::condition_variable_any never;
              never.wait_for(lock, stop, time, [] { return false; });
              if (!stop.stop_requested()) line.cut();
          }) {}

private:
    std::jthread timer_;
};

/// Looks a name up. That cannot be ended: when `stop` or `end` comes first, the look-up is left to
/// itself and owns all that it touches.
std::vector<net::IPAddress> addressesOf(
    const std::string& host, const std::stop_token& stop, steady_clock::time_point end) {
    net::IPAddress numeric;
    if (net::IPAddress::tryParse(host, numeric)) return {numeric};

    struct LookUp {
        std::mutex mutex;
        std::condition_variable_any ended;
        bool isDone = false;
        std::vector<net::IPAddress> addresses;
    };
    const auto lookUp = std::make_shared<LookUp>();
    std::thread([lookUp, host] {
        std::vector<net::IPAddress> found;
        try {
            found = net::DNS::hostByName(host).addresses();
        } catch (const Poco::Exception&) {}  // no such host: no addresses
        const std::scoped_lock lock(lookUp->mutex);
        lookUp->addresses = std::move(found);
        lookUp->isDone = true;
        lookUp->ended.notify_all();
    }).detach();

    std::unique_lock lock(lookUp->mutex);
    lookUp->ended.wait_until(lock, stop, end, [&lookUp] { return lookUp->isDone; });
    return lookUp->addresses;
}

/// Why a certificate was refused, if one was.
struct Verdict {
    std::string refusal;
};

int verify(X509_STORE_CTX* chain, void* verdict) {
    const int result = X509_verify_cert(chain);
    if (result <= 0) {
        static_cast<Verdict*>(verdict)->refusal =
            X509_verify_cert_error_string(X509_STORE_CTX_get_error(chain));
    }
    return result;
}

void trust(SSL_CTX* context, const std::string& certificates) {
    const std::unique_ptr<BIO, decltype(&BIO_free)> text(
        BIO_new_mem_buf(certificates.data(), static_cast<int>(certificates.size())), &BIO_free);
    for (;;) {
        const std::unique_ptr<X509, decltype(&X509_free)> certificate(
            PEM_read_bio_X509(text.get(), nullptr, nullptr, nullptr), &X509_free);
        if (!certificate) return;
        X509_STORE_add_cert(SSL_CTX_get_cert_store(context), certificate.get());
    }
}

/// The chain and the name are judged by OpenSSL within the handshake: the library's own check makes
/// an exception of "localhost".
net::Context::Ptr tlsContext(
    const WebSocketRequest& request, const std::string& host, Verdict& verdict) {
    const bool trustsMachine = request.trustedCertificates.empty();
    net::Context::Ptr context = new net::Context(
        net::Context::TLS_CLIENT_USE, "", net::Context::VERIFY_STRICT, 9, trustsMachine);
    context->requireMinimumProtocol(net::Context::PROTO_TLSV1_2);
    context->enableExtendedCertificateVerification(false);
    SSL_CTX* const native = context->sslContext();
    SSL_CTX_set_cert_verify_callback(native, verify, &verdict);
    if (!trustsMachine) trust(native, request.trustedCertificates);
    X509_VERIFY_PARAM* const name = SSL_CTX_get0_param(native);
    const bool isNumeric = X509_VERIFY_PARAM_set1_ip_asc(name, host.c_str()) == 1;
    if (!isNumeric) X509_VERIFY_PARAM_set1_host(name, host.c_str(), host.size());
    return context;
}

/// One socket, from the look-up of its host to its end.
class Connection {
public:
    Connection(const WebSocketRequest& request, const std::stop_token& stop)
        : request_(request), stop_(stop), address_(judged(request)) {}
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() { line_.release(); }

    [[noreturn]] void listen(const WebSocketHandler& handler) {
        const std::stop_callback cutAtStop(stop_, [this] { line_.cut(); });
        try {
            open();
            handler.opened();
            for (;;) {
                step(handler);
            }
        } catch (const Poco::TimeoutException&) {
            fail(Kind::lost, "a frame did not come to its end");
        } catch (const Poco::Exception& error) {
            fail(Kind::lost, error.displayText());
        }
    }

private:
    static WebAddress judged(const WebSocketRequest& request) {
        auto address = WebAddress::parse(request.url);
        const bool isFit = address && (address->scheme == "ws" || address->scheme == "wss")
                           && !address->host.empty() && !address->hasUserInfo;
        if (!isFit) throw WebSocketError(Kind::badRequest, "not the address of a WebSocket");
        const bool isBreaking = std::ranges::any_of(
            request.protocols, [](unsigned char c) { return c < 0x20 || c > 0x7E; });
        if (isBreaking) throw WebSocketError(Kind::badRequest, "not the name of a sub-protocol");
        return *std::move(address);
    }

    /// A stop asked for comes before every other reason.
    [[noreturn]] void fail(Kind kind, const std::string& why, int status = 0) const {
        if (stop_.stop_requested()) throw OperationCancelled();
        throw WebSocketError(kind, why, status);
    }

    bool isSecure() const { return address_.scheme == "wss"; }
    int port() const { return address_.port.value_or(isSecure() ? 443 : 80); }
    std::string bareHost() const {
        const bool isBracketed = address_.host.starts_with('[') && address_.host.ends_with(']');
        return isBracketed ? address_.host.substr(1, address_.host.size() - 2) : address_.host;
    }

    void open() {
        const auto end = steady_clock::now() + request_.opening;
        const Deadline deadline(line_, request_.opening);
        connect(end);
        net::HTTPClientSession session(isSecure() ? secured() : plain_);
        upgrade(session);
        socket_->setMaxPayloadSize(static_cast<int>(request_.messageLimit));
        socket_->setReceiveTimeout(timespan(frameTime));
        socket_->setSendTimeout(timespan(frameTime));
    }

    void connect(steady_clock::time_point end) {
        for (const net::IPAddress& one : addressesOf(bareHost(), stop_, end)) {
            line_.release();
            plain_ = net::StreamSocket();
            try {
                plain_.connectNB({one, static_cast<Poco::UInt16>(port())});
                line_.hold(plain_.impl()->sockfd());
                constexpr int answered = net::Socket::SELECT_WRITE | net::Socket::SELECT_ERROR;
                const bool isAnswered = plain_.poll(timespan(end - steady_clock::now()), answered);
                if (stop_.stop_requested()) break;
                if (!isAnswered || plain_.impl()->socketError() != 0) continue;
                plain_.setBlocking(true);
                plain_.setNoDelay(true);
                return;
            } catch (const Poco::Exception&) {}  // the next one may answer
        }
        fail(Kind::unreachable, "no connection");
    }

    net::StreamSocket secured() {
        Verdict verdict;
        const std::string host = bareHost();
        const bool isNumeric = address_.hasIPHost();  // a name to ask for is never a number
        const auto context = tlsContext(request_, host, verdict);
        try {
            return net::SecureStreamSocket::attach(plain_, isNumeric ? "" : host, context);
        } catch (const Poco::Exception& error) {
            if (!verdict.refusal.empty()) fail(Kind::untrusted, verdict.refusal);
            fail(Kind::unreachable, error.displayText());
        }
    }

    void upgrade(net::HTTPClientSession& session) {
        const std::string path = address_.path.empty() ? "/" : address_.path;
        net::HTTPRequest head("GET", path, net::HTTPMessage::HTTP_1_1);
        head.setHost(bareHost(), static_cast<Poco::UInt16>(port()));
        head.set("Sec-WebSocket-Protocol", request_.protocols);
        net::HTTPResponse answer;
        session.setTimeout(timespan(request_.opening));
        try {
            socket_.emplace(session, head, answer);
        } catch (const net::WebSocketException&) {
            fail(Kind::refused, "the server opened no socket", answer.getStatus());
        } catch (const Poco::Exception& error) {
            fail(Kind::unreachable, error.displayText());
        }
    }

    /// Waits for one frame, or for a silence to end.
    void step(const WebSocketHandler& handler) {
        const bool hasInput =
            socket_->available() > 0
            || socket_->poll(timespan(request_.silence), net::Socket::SELECT_READ);
        if (!hasInput) {
            if (isPinged_) fail(Kind::lost, "the server is silent");
            socket_->sendFrame("", 0, pingFrame);
            isPinged_ = true;
            return;
        }
        frame_.resize(0);
        int flags = 0;
        const int length = socket_->receiveFrame(frame_, flags);
        if (length == 0 && flags == 0) fail(Kind::lost, "the connection ended");
        isPinged_ = false;
        take(flags, handler);
    }

    void take(int flags, const WebSocketHandler& handler) {
        switch (flags & net::WebSocket::FRAME_OP_BITMASK) {
        case net::WebSocket::FRAME_OP_TEXT: message_.clear(); [[fallthrough]];
        case net::WebSocket::FRAME_OP_CONT:
            message_.append(frame_.begin(), frame_.size());
            if (message_.size() > request_.messageLimit) {
                fail(Kind::lost, "the message is too long");
            }
            if ((flags & net::WebSocket::FRAME_FLAG_FIN) != 0) handler.received(message_);
            return;
        case net::WebSocket::FRAME_OP_PING:
            socket_->sendFrame(frame_.begin(), static_cast<int>(frame_.size()), pongFrame);
            return;
        case net::WebSocket::FRAME_OP_CLOSE: fail(Kind::lost, "the server closed");
        default: return;  // pongs, and what a later protocol may add
        }
    }

    const WebSocketRequest& request_;
    const std::stop_token& stop_;
    const WebAddress address_;
    Lifeline line_;
    net::StreamSocket plain_;  // keeps the descriptor open for as long as the lifeline holds it
    std::optional<net::WebSocket> socket_;
    Poco::Buffer<char> frame_{0};
    std::string message_;
    bool isPinged_ = false;
};

}  // namespace

void listenByPoco(
    const WebSocketRequest& request, const WebSocketHandler& handler, const std::stop_token& stop) {
    Connection(request, stop).listen(handler);
}

}  // namespace tesserine
