#include "base/WebSocket.h"

#include "base/network/NetworkModule.h"

#include <algorithm>
#include <exception>

namespace tesserine {

bool isProtocolName(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, [](char c) {
        constexpr std::string_view marks = "!#$%&'*+-.^_`|~";
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
               || marks.find(c) != std::string_view::npos;
    });
}

void listenToWebSocket(
    const WebSocketRequest& request, const WebSocketHandler& handler, const std::stop_token& stop) {
    networkModule().listen(request, handler, stop);
    std::terminate();  // it ends by an exception only
}

}  // namespace tesserine
