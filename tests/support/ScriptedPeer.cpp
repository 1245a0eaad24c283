#include "tests/support/ScriptedPeer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace tesserine::test {
namespace {

std::size_t contentLength(std::string_view head) {
    constexpr std::string_view name = "\r\nContent-Length: ";
    const std::size_t start = head.find(name);
    std::size_t length = 0;
    if (start == std::string_view::npos) return length;
    const char* const digits = head.data() + start + name.size();
    std::from_chars(digits, head.data() + head.size(), length);
    return length;
}

/// The next request of `connection`; none when the other side ended it.
std::optional<std::string> receive(int connection, std::string& buffered) {
    for (;;) {
        const std::size_t headEnd = buffered.find("\r\n\r\n");
        if (headEnd != std::string::npos) {
            const std::string_view head(buffered.data(), headEnd + 2);
            const std::size_t whole = headEnd + 4 + contentLength(head);
            if (buffered.size() >= whole) {
                std::string request = buffered.substr(0, whole);
                buffered.erase(0, whole);
                return request;
            }
        }
        std::array<char, 16384> piece{};
        const ssize_t count = recv(connection, piece.data(), piece.size(), 0);
        if (count <= 0) return std::nullopt;
        buffered.append(piece.data(), static_cast<std::size_t>(count));
    }
}

bool sendAll(int connection, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

}  // namespace

std::string httpReply(int status, const std::string& body, const std::string& headers) {
    return "HTTP/1.1 " + std::to_string(status) + " Status\r\nContent-Length: "
           + std::to_string(body.size()) + "\r\n" + headers + "\r\n" + body;
}

ScriptedPeer::ScriptedPeer(std::vector<PeerAnswer> script) : script_(script.begin(), script.end()) {
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    const bool listens = bind(listener_, generic, size) == 0 && listen(listener_, 16) == 0
                         && getsockname(listener_, generic, &size) == 0;
    if (!listens) throw std::runtime_error("the loopback cannot be listened on");
    port_ = ntohs(address.sin_port);
    acceptor_ = std::thread([this] { acceptAll(); });
}

ScriptedPeer::~ScriptedPeer() {
    shutdown(listener_, SHUT_RDWR);
    acceptor_.join();
    for (const int connection : connections_) {
        shutdown(connection, SHUT_RDWR);
    }
    for (std::thread& server : servers_) {
        server.join();
    }
    for (const int connection : connections_) {
        close(connection);
    }
    close(listener_);
}

std::string ScriptedPeer::url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
}

std::vector<std::string> ScriptedPeer::requests() const {
    const std::scoped_lock lock(mutex_);
    return requests_;
}

std::size_t ScriptedPeer::connectionCount() const {
    const std::scoped_lock lock(mutex_);
    return connections_.size();
}

void ScriptedPeer::waitForRequests(std::size_t count) {
    std::unique_lock lock(mutex_);
    arrived_.wait(lock, [&] { return requests_.size() >= count; });
}

void ScriptedPeer::acceptAll() {
    for (;;) {
        const int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0) return;
        const std::scoped_lock lock(mutex_);
        connections_.push_back(connection);
        servers_.emplace_back([this, connection] { serve(connection); });
    }
}

void ScriptedPeer::serve(int connection) {
    std::string buffered;
    while (auto request = receive(connection, buffered)) {
        const PeerAnswer answer = nextAnswer(*std::move(request));
        bool isHeard = sendAll(connection, answer.bytes);
        while (isHeard && !answer.endless.empty()) {
            isHeard = sendAll(connection, answer.endless);
        }
        if (!isHeard || answer.then == PeerAnswer::Then::close) break;
        if (answer.then == PeerAnswer::Then::hang) receive(connection, buffered);
    }
    shutdown(connection, SHUT_RDWR);
}

PeerAnswer ScriptedPeer::nextAnswer(std::string request) {
    const std::scoped_lock lock(mutex_);
    requests_.push_back(std::move(request));
    arrived_.notify_all();
    if (script_.empty()) return {.bytes = {}, .then = PeerAnswer::Then::close};
    PeerAnswer answer = std::move(script_.front());
    script_.pop_front();
    return answer;
}

}  // namespace tesserine::test
