#include "server/HTTPFront.h"

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

/// The whole body; none when it is longer than `limit`.
std::optional<std::string> bodyOf(net::HTTPServerRequest& request, std::size_t limit) {
    const auto length = request.getContentLength64();
    if (length > 0 && static_cast<std::uint64_t>(length) > limit) return std::nullopt;
    std::string body;
    std::array<char, 65'536> piece{};
    std::istream& stream = request.stream();
    for (;;) {
        stream.read(piece.data(), piece.size());
        const auto count = static_cast<std::size_t>(stream.gcount());
        if (body.size() + count > limit) return std::nullopt;
        body.append(piece.data(), count);
        if (count < piece.size()) return body;
    }
}

class Handler final : public net::HTTPRequestHandler {
public:
    Handler(Service& service, std::size_t bodyLimit) : service_(service), bodyLimit_(bodyLimit) {}

    void handleRequest(
        net::HTTPServerRequest& request, net::HTTPServerResponse& response) override {
        auto body = bodyOf(request, bodyLimit_);
        if (!body) return refuseTooLarge(response);
        HTTPRequest asked{
            .method = request.getMethod(), .url = request.getURI(), .body = *std::move(body)};
        for (const auto& [name, value] : request) {
            asked.headers.push_back({name, value});
        }
        const HTTPReply reply = service_.answer(asked, request.clientAddress().host().toString());
        response.setStatus(static_cast<net::HTTPResponse::HTTPStatus>(reply.status));
        response.setReason(net::HTTPResponse::getReasonForStatus(
            static_cast<net::HTTPResponse::HTTPStatus>(reply.status)));
        for (const HTTPHeader& header : reply.headers) {
            response.set(header.name, header.value);
        }
        response.sendBuffer(reply.body.data(), reply.body.size());
    }

private:
    static void refuseTooLarge(net::HTTPServerResponse& response) {
        response.setStatusAndReason(net::HTTPResponse::HTTP_REQUEST_ENTITY_TOO_LARGE);
        response.setKeepAlive(false);  // the rest of the body is never read
        response.setContentLength(0);
        response.send();
    }

    Service& service_;
    std::size_t bodyLimit_;
};

class Factory final : public net::HTTPRequestHandlerFactory {
public:
    Factory(Service& service, std::size_t bodyLimit) : service_(service), bodyLimit_(bodyLimit) {}
    net::HTTPRequestHandler* createRequestHandler(const net::HTTPServerRequest&) override {
        return new Handler(service_, bodyLimit_);  // the server owns it
    }

private:
    Service& service_;
    std::size_t bodyLimit_;
};

net::ServerSocket listeningSocket(const HTTPFront::Options& options) {
    const net::SocketAddress address(options.host, static_cast<Poco::UInt16>(options.port));
    if (!options.certificate || !options.key) return net::ServerSocket(address);
    net::Context::Ptr context = new net::Context(
        net::Context::TLS_SERVER_USE,
        options.key->string(),
        options.certificate->string(),
        {},
        net::Context::VERIFY_NONE);  // of clients: they show tokens, no certificates
    context->requireMinimumProtocol(net::Context::PROTO_TLSV1_2);
    return net::SecureServerSocket(address, 64, context);
}

net::HTTPServerParams::Ptr parameters(const HTTPFront::Options& options) {
    net::HTTPServerParams::Ptr result = new net::HTTPServerParams;
    const Poco::Timespan patience(options.patience.count(), 0);
    result->setTimeout(patience);
    result->setKeepAlive(true);
    result->setKeepAliveTimeout(patience);
    result->setMaxThreads(options.threads);
    result->setMaxQueued(256);
    result->setSoftwareVersion("Tesserine");
    return result;
}

}  // namespace

struct HTTPFront::Sockets {
    Sockets(Service& service, const Options& options)
        : threads(2, options.threads),
          socket(listeningSocket(options)),
          server(new Factory(service, options.bodyLimit), threads, socket, parameters(options)) {
        server.start();
    }
    ~Sockets() { server.stopAll(true); }

    Poco::ThreadPool threads;
    net::ServerSocket socket;
    net::HTTPServer server;
};

HTTPFront::HTTPFront(Service& service, const Options& options)
    : sockets_(std::make_unique<Sockets>(service, options)) {}

HTTPFront::~HTTPFront() = default;

int HTTPFront::port() const { return sockets_->socket.address().port(); }

}  // namespace tesserine::server
