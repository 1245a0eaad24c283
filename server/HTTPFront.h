#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace tesserine::server {

class Service;

/// The sockets of the service: reads requests, bounded in size and time, and hands them to it;
/// keeps the live channels.
class HTTPFront {
public:
    struct Options {
        std::string host = "127.0.0.1";
        int port = 8080;  ///< 0: a free one
        /// PEM files; both or none. Without them TLS is for a proxy in front.
        std::optional<std::filesystem::path> certificate{};
        std::optional<std::filesystem::path> key{};
        std::chrono::seconds patience{60};  ///< with a silent client
        int threads = 32;
        int channels = 64;  ///< live ones, besides those threads
    };

    /// Listens from now on. Throws `std::exception` with the cause when it cannot.
    HTTPFront(Service& service, const Options& options);
    HTTPFront(const HTTPFront&) = delete;
    HTTPFront& operator=(const HTTPFront&) = delete;
    /// Finishes the requests that are being answered.
    ~HTTPFront();

    int port() const;

private:
    struct Sockets;
    std::unique_ptr<Sockets> sockets_;
};

}  // namespace tesserine::server
