#include "server/LiveSocket.h"

#include "base/JSON.h"
#include "base/Text.h"
#include "server/FrontReply.h"
#include "server/Service.h"

#include <Poco/Buffer.h>
#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerResponse.h>
#include <Poco/Net/NetException.h>
#include <Poco/Net/WebSocket.h>
#include <poll.h>

#include <array>
#include <chrono>

namespace tesserine::server {
namespace {

namespace net = Poco::Net;

constexpr std::string_view path = "/api/v1/sync/socket";
constexpr std::string_view protocol = "tesserine";
constexpr std::string_view protocolsHeader = "Sec-WebSocket-Protocol";

/// A device says something every half minute; one that is silent for so long is gone.
constexpr std::chrono::milliseconds longestSilence{90'000};
/// For a frame of either side; who reads no faster is dropped, and asks again later.
const Poco::Timespan frameTime(5, 0);
constexpr int longestFrame = 1'024;  // bytes of what a device says
constexpr int pongFrame = 0x8A;      // RFC 6455, section 5.2

/// The second of the sub-protocols in "tesserine, TOKEN".
std::string tokenIn(const std::string& protocols) {
    const std::size_t comma = std::min(protocols.find(','), protocols.size());
    const bool isOurs = text::trimmed(protocols.substr(0, comma)) == protocol;
    if (!isOurs || comma == protocols.size()) return {};
    return std::string(text::trimmed(protocols.substr(comma + 1)));
}

/// One open channel.
class Channel {
public:
    Channel(const net::WebSocket& socket, LiveHub::Seat& seat) : socket_(socket), seat_(seat) {
        socket_.setMaxPayloadSize(longestFrame);
        socket_.setReceiveTimeout(frameTime);
        socket_.setSendTimeout(frameTime);
        socket_.setNoDelay(true);
    }

    void serve(std::int64_t head) {
        tell({.changes = head});
        while (hear() && tell(seat_.take())) {}
    }

private:
    void say(const boost::json::object& message) {
        const std::string text = json::write(message);
        socket_.sendFrame(text.data(), static_cast<int>(text.size()), net::WebSocket::FRAME_TEXT);
    }

    /// False when that was the last thing to tell.
    bool tell(const LiveHub::News& news) {
        if (news.changes) say({{"type", "changes"}, {"seq", *news.changes}});
        if (news.isSignedOut) say({{"type", "signed_out"}});
        const bool isLast = news.isSignedOut || news.isEnd;
        if (isLast) socket_.shutdown(net::WebSocket::WS_ENDPOINT_GOING_AWAY);
        return !isLast;
    }

    /// Waits for the device, or for something to tell it. False when the device is gone.
    bool hear() {
        std::array<pollfd, 2> waiting{{
            {.fd = socket_.impl()->sockfd(), .events = POLLIN, .revents = 0},
            {.fd = seat_.signal(), .events = POLLIN, .revents = 0},
        }};
        bool hasInput = socket_.available() > 0;  // read from the wire already
        if (!hasInput) {
            constexpr int patience = static_cast<int>(longestSilence.count());
            if (::poll(waiting.data(), waiting.size(), patience) <= 0) return false;
            hasInput = waiting[0].revents != 0;
        }
        return !hasInput || takeFrame();
    }

    /// Pings are answered; a device has nothing else to say.
    bool takeFrame() {
        Poco::Buffer<char> frame(0);
        int flags = 0;
        const int length = socket_.receiveFrame(frame, flags);
        if (length == 0 && flags == 0) return false;
        switch (flags & net::WebSocket::FRAME_OP_BITMASK) {
        case net::WebSocket::FRAME_OP_PING:
            socket_.sendFrame(frame.begin(), static_cast<int>(frame.size()), pongFrame);
            return true;
        case net::WebSocket::FRAME_OP_PONG: return true;
        default: return false;
        }
    }

    net::WebSocket socket_;
    LiveHub::Seat& seat_;
};

}  // namespace

bool asksForLiveChannel(const net::HTTPServerRequest& request) {
    return request.getURI() == path && request.has("Upgrade");
}

void serveLiveChannel(
    Service& service,
    const std::string& from,
    net::HTTPServerRequest& request,
    net::HTTPServerResponse& response) {
    const std::string header(protocolsHeader);
    const auto listening = service.listen(tokenIn(request.get(header, "")), from);
    if (!listening.seat) return sendReply(listening.refusal, response);
    try {
        response.set(header, std::string(protocol));
        Channel(net::WebSocket(request, response), *listening.seat).serve(listening.head);
    } catch (const Poco::Exception&) {}  // lost, or it did not keep to the protocol
}

}  // namespace tesserine::server
