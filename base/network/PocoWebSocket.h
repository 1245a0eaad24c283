#pragma once

#include "base/WebSocket.h"

namespace tesserine {

/// What `listenToWebSocket` does, by POCO.
[[noreturn]] void listenByPoco(
    const WebSocketRequest& request, const WebSocketHandler& handler, const std::stop_token& stop);

}  // namespace tesserine
