#pragma once

#include "base/HTTPSession.h"
#include "base/SecretStore.h"
#include "base/WebAddress.h"
#include "base/WebSocket.h"

#include <memory>
#include <optional>
#include <string>

namespace tesserine {

/// What the libraries of the network and of the keyring do for us. They are met in a module that is
/// loaded when it is first asked for something: with all that they bring they are half of what a
/// program would load at its start, and most runs need none of them.
struct NetworkModule {
    /// The name under which the module offers its only object.
    static constexpr const char* symbol = "tesserineNetwork";

    std::unique_ptr<HTTPTransport> (*makeSession)(HTTPSession::Options options);
    std::unique_ptr<SecretStore> (*makeKeyring)(std::string service);
    /// As `listenToWebSocket`.
    void (*listen)(
        const WebSocketRequest& request,
        const WebSocketHandler& handler,
        const std::stop_token& stop);
    /// Fills in what stands behind "://" in the text of `address`; false: it is not well formed.
    bool (*takeApart)(WebAddress& address);
    /// Where `reference` leads from `base`; none when one of them is not well formed.
    std::optional<std::string> (*resolve)(const std::string& base, const std::string& reference);
};

/// The module, for the rest of the run. Throws `std::runtime_error` when its file, which lies in
/// ../lib/tesserine beside the programs, cannot be loaded. Safe from any thread.
const NetworkModule& networkModule();

}  // namespace tesserine
