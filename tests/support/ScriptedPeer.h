#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tesserine::test {

/// What a `ScriptedPeer` does with one request.
struct PeerAnswer {
    enum class Then { keep, close, hang };

    std::string bytes;  ///< sent as they are: whole replies, cut ones, nonsense
    Then then = Then::keep;
    std::string endless{};  ///< sent after them again and again until nobody listens
};

/// A reply with status, a length and a body.
std::string httpReply(int status, const std::string& body, const std::string& headers = {});

/// A server on the loopback that reads HTTP/1.1 requests and answers each with the next bytes of
/// its script, however wrong. After the last one it closes connections.
class ScriptedPeer {
public:
    explicit ScriptedPeer(std::vector<PeerAnswer> script);
    ScriptedPeer(const ScriptedPeer&) = delete;
    ScriptedPeer& operator=(const ScriptedPeer&) = delete;
    ~ScriptedPeer();

    std::string url(const std::string& path = "/") const;
    /// Whole requests, head and body, in the order of arrival.
    std::vector<std::string> requests() const;
    std::size_t connectionCount() const;
    /// Blocks until so many requests have arrived.
    void waitForRequests(std::size_t count);

private:
    void acceptAll();
    void serve(int connection);
    PeerAnswer nextAnswer(std::string request);

    int listener_ = -1;
    int port_ = 0;
    mutable std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<PeerAnswer> script_;
    std::vector<std::string> requests_;
    std::vector<int> connections_;
    std::vector<std::thread> servers_;
    std::thread acceptor_;
};

}  // namespace tesserine::test
