#include "base/WebSocket.h"

#include "base/OperationCancelled.h"
#include "tests/support/ScriptedPeer.h"

#include <gtest/gtest.h>
#include <Poco/Buffer.h>
#include <Poco/Net/HTTPRequestHandler.h>
#include <Poco/Net/HTTPRequestHandlerFactory.h>
#include <Poco/Net/HTTPServer.h>
#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerResponse.h>
#include <Poco/Net/NetException.h>
#include <Poco/Net/WebSocket.h>

#include <thread>

namespace tesserine {
namespace {

namespace net = Poco::Net;
using Kind = WebSocketError::Kind;
using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;
using test::ScriptedPeer;
using Then = test::PeerAnswer::Then;

constexpr std::size_t limit = 1'000;

/// A server on the loopback that opens every socket and then does with it what the test says.
class Peer {
public:
    using Behaviour = std::function<void(net::WebSocket& socket)>;

    explicit Peer(Behaviour behaviour)
        : socket_(net::SocketAddress("127.0.0.1", 0)),
          server_(new Factory(std::move(behaviour)), socket_, new net::HTTPServerParams) {
        server_.start();
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer() { server_.stopAll(true); }

    std::string url() const {
        return "ws://127.0.0.1:" + std::to_string(socket_.address().port()) + "/news";
    }

private:
    class Handler final : public net::HTTPRequestHandler {
    public:
        explicit Handler(const Behaviour& behaviour) : behaviour_(behaviour) {}
        void handleRequest(
            net::HTTPServerRequest& request, net::HTTPServerResponse& response) override {
            net::WebSocket socket(request, response);
            try {
                behaviour_(socket);
            } catch (const Poco::Exception&) {}  // the other side left
        }

    private:
        const Behaviour& behaviour_;
    };
    class Factory final : public net::HTTPRequestHandlerFactory {
    public:
        explicit Factory(Behaviour behaviour) : behaviour_(std::move(behaviour)) {}
        net::HTTPRequestHandler* createRequestHandler(const net::HTTPServerRequest&) override {
            return new Handler(behaviour_);
        }

    private:
        const Behaviour behaviour_;
    };

    net::ServerSocket socket_;
    net::HTTPServer server_;
};

struct Heard {
    std::string text;  // messages, one after the other
    Kind end{};
    int status = 0;
    bool isCancelled = false;
};

Heard listen(WebSocketRequest request, const std::stop_token& stop = {}) {
    request.protocols = "tesserine, token";
    request.messageLimit = limit;
    Heard heard;
    try {
        listenToWebSocket(
            request,
            {.opened = [] {},
             .received =
                 [&heard](std::string_view text) { heard.text += std::string(text) + "|"; }},
            stop);
    } catch (const WebSocketError& error) {
        heard.end = error.kind();
        heard.status = error.status();
    } catch (const OperationCancelled&) {
        heard.isCancelled = true;
    }
    return heard;
}

void send(net::WebSocket& socket, const std::string& text, int flags) {
    socket.sendFrame(text.data(), static_cast<int>(text.size()), flags);
}

constexpr int first = net::WebSocket::FRAME_OP_TEXT;   // of several frames
constexpr int next = net::WebSocket::FRAME_OP_SETRAW;  // no flag at all: one in the middle
constexpr int last = net::WebSocket::FRAME_FLAG_FIN;   // one that continues
constexpr int whole = net::WebSocket::FRAME_TEXT;

TEST(WebSocket, MessagesArriveWholeUntilTheServerCloses) {
    const Peer peer([](net::WebSocket& socket) {
        send(socket, "one", whole);
        send(socket, "t", first);
        send(socket, "w", next);
        send(socket, "o", last);
        send(socket, "", whole);
        send(socket, std::string(limit, 'x'), whole);
        socket.shutdown();
    });
    const Heard heard = listen({.url = peer.url()});
    EXPECT_EQ(heard.text, "one|two||" + std::string(limit, 'x') + "|");
    EXPECT_EQ(heard.end, Kind::lost);
}

TEST(WebSocket, AMessageBeyondTheLimitEndsIt) {
    const Peer atOnce(
        [](net::WebSocket& socket) { send(socket, std::string(limit + 1, 'x'), whole); });
    const Peer inPieces([](net::WebSocket& socket) {
        send(socket, std::string(limit, 'x'), first);
        for (;;) {
            send(socket, "x", next);
        }
    });
    for (const Peer* const peer : {&atOnce, &inPieces}) {
        const Heard heard = listen({.url = peer->url()});
        EXPECT_EQ(heard.end, Kind::lost);
        EXPECT_EQ(heard.text, "");
    }
}

TEST(WebSocket, AServerThatAnswersNoPingIsGivenUp) {
    const Peer deaf([](net::WebSocket&) { std::this_thread::sleep_for(seconds(2)); });
    const auto start = steady_clock::now();
    EXPECT_EQ(listen({.url = deaf.url(), .silence = milliseconds(100)}).end, Kind::lost);
    EXPECT_LT(steady_clock::now() - start, seconds(2));

    const Peer polite([](net::WebSocket& socket) {
        constexpr int pong = 0x8A;
        for (int pings = 0; pings < 5; ++pings) {
            Poco::Buffer<char> frame(0);
            int flags = 0;
            socket.receiveFrame(frame, flags);
            socket.sendFrame(frame.begin(), static_cast<int>(frame.size()), pong);
        }
        send(socket, "still here", whole);
    });
    const Heard heard = listen({.url = polite.url(), .silence = milliseconds(50)});
    EXPECT_EQ(heard.text, "still here|");
}

TEST(WebSocket, ARefusalTellsItsStatus) {
    ScriptedPeer peer({
        {test::httpReply(503, "busy")},
        {test::httpReply(200, "no socket here")},
        {"nonsense\r\n\r\n", Then::close},
    });
    const std::string url = "ws" + peer.url("/news").substr(4);
    EXPECT_EQ(listen({.url = url}).status, 503);
    EXPECT_NE(
        peer.requests().at(0).find("Sec-WebSocket-Protocol: tesserine, token\r\n"),
        std::string::npos);
    EXPECT_EQ(listen({.url = url}).end, Kind::refused);
    EXPECT_EQ(listen({.url = url}).end, Kind::unreachable);
    for (const char* bad : {"http://127.0.0.1/", "ws://", "ws://u@127.0.0.1/", "news", ""}) {
        EXPECT_EQ(listen({.url = bad}).end, Kind::badRequest) << bad;
    }
    EXPECT_EQ(listen({.url = "ws://127.0.0.1:1/"}).end, Kind::unreachable);
}

TEST(WebSocket, StopEndsItAtOnceAndPatienceInTime) {
    ScriptedPeer silent({{"", Then::hang}, {"", Then::hang}});
    const std::string url = "ws" + silent.url("/news").substr(4);
    const Peer open([](net::WebSocket&) { std::this_thread::sleep_for(seconds(3)); });
    for (const std::string& one : {url, open.url()}) {
        std::stop_source stop;
        const std::jthread stopper([&stop] {
            std::this_thread::sleep_for(milliseconds(200));
            stop.request_stop();
        });
        const auto start = steady_clock::now();
        EXPECT_TRUE(listen({.url = one}, stop.get_token()).isCancelled);
        EXPECT_LT(steady_clock::now() - start, seconds(2));
    }
    const auto start = steady_clock::now();
    EXPECT_EQ(listen({.url = url, .opening = seconds(1)}).end, Kind::unreachable);
    EXPECT_LT(steady_clock::now() - start, seconds(5));
}

TEST(WebSocket, NamesOfSubProtocols) {
    EXPECT_TRUE(isProtocolName("eyJhbGciOi.JIUzI1NiJ9-_~!#$%&'*+^`|"));
    for (const char* bad : {"", "a b", "a,b", "a/b", "a=", "a\r\nb", "\"a\"", "ä"}) {
        EXPECT_FALSE(isProtocolName(bad)) << bad;
    }
}

}  // namespace
}  // namespace tesserine
