#include "server/HTTPFront.h"

#include "base/UserError.h"
#include "server/FrontReply.h"
#include "server/LiveSocket.h"
#include "server/Service.h"

#include <Poco/Net/HTTPRequestHandler.h>
#include <Poco/Net/HTTPRequestHandlerFactory.h>
#include <Poco/Net/HTTPServer.h>
#include <Poco/Net/HTTPServerParams.h>
#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerResponse.h>
#include <Poco/Net/SecureServerSocket.h>
#include <Poco/Net/ServerSocket.h>

#include <array>
#include <istream>

namespace tesserine::server {
namespace {

namespace net = Poco::Net;

/// A refused body is read on for so long, so that its sender gets to see the refusal.
constexpr std::uint64_t mostUnread = std::uint64_t{8} << 20;

/// The body of one request, read when it is asked for.
class IncomingBody {
public:
    explicit IncomingBody(net::HTTPServerRequest& request)
        : stream_(request.stream()), announced_(announcedBy(request)) {}

    /// None when it is longer than `limit`.
    std::optional<std::string> read(std::size_t limit) {
        if (announced_ > limit) return std::nullopt;
        std::string body;
        while (!isRead_) {
            const std::string_view piece = next();
            if (body.size() + piece.size() > limit) return std::nullopt;
            body.append(piece);
        }
        return body;
    }
    /// Throws the rest away; false when that is too much.
    bool skip() {
        if (announced_ > mostUnread) return isRead_;
        for (std::uint64_t skipped = 0; !isRead_; skipped += next().size()) {
            if (skipped > mostUnread) return false;
        }
        return true;
    }

private:
    static std::uint64_t announcedBy(const net::HTTPServerRequest& request) {
        const auto length = request.getContentLength64();
        return length > 0 ? static_cast<std::uint64_t>(length) : 0;
    }
    std::string_view next() {
        stream_.read(piece_.data(), static_cast<std::streamsize>(piece_.size()));
        const auto count = static_cast<std::size_t>(stream_.gcount());
        isRead_ = count < piece_.size();
        return {piece_.data(), count};
    }

    std::istream& stream_;
    const std::uint64_t announced_;
    std::array<char, 65'536> piece_{};
    bool isRead_ = false;
};

class Handler final : public net::HTTPRequestHandler {
public:
    explicit Handler(Service& service) : service_(service) {}

    void handleRequest(
        net::HTTPServerRequest& request, net::HTTPServerResponse& response) override {
        const std::string from = request.clientAddress().host().toString();
        if (asksForLiveChannel(request)) {
            return serveLiveChannel(service_, from, request, response);
        }
        HTTPRequest asked{.method = request.getMethod(), .url = request.getURI()};
        for (const auto& [name, value] : request) {
            asked.headers.push_back({name, value});
        }
        IncomingBody body(request);
        const HTTPReply reply =
            service_.answer(asked, from, [&body](std::size_t limit) { return body.read(limit); });
        // What is left of the body would be taken for the next request.
        if (!body.skip()) response.setKeepAlive(false);
        sendReply(reply, response);
    }

private:
    Service& service_;
};

class Factory final : public net::HTTPRequestHandlerFactory {
public:
    explicit Factory(Service& service) : service_(service) {}
    net::HTTPRequestHandler* createRequestHandler(const net::HTTPServerRequest&) override {
        return new Handler(service_);  // the server owns it
    }

private:
    Service& service_;
};

/// Takes the address for itself: two services at one address would share its calls.
net::ServerSocket listening(net::ServerSocket socket, const HTTPFront::Options& options) {
    const net::SocketAddress address(options.host, static_cast<Poco::UInt16>(options.port));
    try {
        socket.bind(address, true, false);
        socket.listen();
    } catch (const Poco::IOException&) {
        throw UserError(
            "The service cannot listen on " + address.toString()
            + "; perhaps another program does already.");
    }
    return socket;
}

net::ServerSocket listeningSocket(const HTTPFront::Options& options) {
    if (!options.certificate || !options.key) return listening(net::ServerSocket(), options);
    net::Context::Ptr context = new net::Context(
        net::Context::TLS_SERVER_USE,
        options.key->string(),
        options.certificate->string(),
        {},
        net::Context::VERIFY_NONE);  // of clients: they show tokens, no certificates
    context->requireMinimumProtocol(net::Context::PROTO_TLSV1_2);
    // NOLINTNEXTLINE(cppcoreguidelines-slicing): sockets are handles of what they share
    return listening(net::SecureServerSocket(context), options);
}

/// A channel holds its thread for as long as it is open.
int mostThreads(const HTTPFront::Options& options) { return options.threads + options.channels; }

net::HTTPServerParams::Ptr parameters(const HTTPFront::Options& options) {
    net::HTTPServerParams::Ptr result = new net::HTTPServerParams;
    const Poco::Timespan patience(options.patience.count(), 0);
    result->setTimeout(patience);
    result->setKeepAlive(true);
    result->setKeepAliveTimeout(patience);
    result->setMaxThreads(mostThreads(options));
    result->setMaxQueued(256);
    result->setSoftwareVersion("Tesserine");
    return result;
}

}  // namespace

struct HTTPFront::Sockets {
    Sockets(Service& answering, const Options& options)
        : service(answering),
          threads(2, mostThreads(options)),
          socket(listeningSocket(options)),
          server(new Factory(answering), threads, socket, parameters(options)) {
        service.live().open();
        server.start();
    }
    Sockets(const Sockets&) = delete;
    Sockets& operator=(const Sockets&) = delete;
    ~Sockets() {
        service.live().close();
        server.stopAll(true);
    }

    Service& service;
    Poco::ThreadPool threads;
    net::ServerSocket socket;
    net::HTTPServer server;
};

HTTPFront::HTTPFront(Service& service, const Options& options)
    : sockets_(std::make_unique<Sockets>(service, options)) {}

HTTPFront::~HTTPFront() = default;

int HTTPFront::port() const { return sockets_->socket.address().port(); }

}  // namespace tesserine::server
