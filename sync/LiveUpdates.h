#pragma once

#include "base/Clock.h"
#include "base/Log.h"
#include "base/WebSocket.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <thread>

namespace tesserine {

class AccountSession;

/// What the live channel told.
struct LiveNews {
    enum class Kind {
        opened,     ///< from now on news is told; some may have been missed before
        closed,     ///< until it is opened again, the service has to be asked
        changes,    ///< the service holds changes up to `seq`
        signedOut,  ///< the session may have ended: look
        unknown,    ///< something: there may be changes
    };
    Kind kind = Kind::unknown;
    std::int64_t seq = 0;

    /// What one message of the service says.
    static LiveNews read(std::string_view message);
};

/// Keeps the live channel to the service open, on a thread of its own, from its making to its end.
///
/// A channel that is lost is opened again after a second, later and later if it does not last. When
/// the session has ended, or its token cannot travel this way, that is given up: whoever signs in
/// again makes another. The token is never logged. Ends at once.
class LiveUpdates {
public:
    static constexpr std::chrono::seconds firstPause{1};  // doubles with every loss
    static constexpr std::chrono::seconds longestPause{60};

    /// What it stands on; all of it outlives it.
    struct Environment {
        AccountSession& session;
        std::string address;  ///< of the channel
        const Clock& clock;
        Log log{};  ///< its category becomes "live"
        WebSocketListening socket = listenToWebSocket;
    };
    /// Called on the thread of the channel; must not throw. `closed` is told once for each time
    /// that the channel does not stand, `opened` each time it does.
    using Listener = std::function<void(const LiveNews& news)>;

    LiveUpdates(Environment environment, Listener listener);
    LiveUpdates(const LiveUpdates&) = delete;
    LiveUpdates& operator=(const LiveUpdates&) = delete;
    ~LiveUpdates() = default;

private:
    void run(const std::stop_token& stop);
    /// Whether another try makes sense.
    bool listenOnce(const std::stop_token& stop);
    void tell(const LiveNews& news);

    // Fixed after construction.
    const Environment environment_;
    const Listener listener_;
    const Log log_;
    // Touched on the thread only.
    bool isOpen_ = true;   // as far as the listener knows
    std::jthread thread_;  // last: it ends before what it uses
};

}  // namespace tesserine
