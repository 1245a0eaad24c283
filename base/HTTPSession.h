#pragma once

#include "base/HTTP.h"

#include <chrono>
#include <memory>
#include <string>

namespace tesserine {

/// The program's one speaker of HTTP: over TLS with the machine's trusted certificates, through the
/// proxy that the environment names.
///
/// Safe from any thread; calls run side by side and take over each other's connections when they
/// end. Keep one for the whole program: a new one reads the certificates again. Never follows a
/// redirect and never sends a request twice that is not `isRepeatable`.
class HTTPSession final : public HTTPTransport {
public:
    struct Options {
        std::string userAgent = "Tesserine";
        /// For the name, the connection and the TLS handshake together.
        std::chrono::seconds connectTimeout{30};
        /// PEM texts to trust instead of the machine's certificates.
        std::string trustedCertificates{};
        bool usesProxy = true;
    };

    HTTPSession();
    explicit HTTPSession(Options options);
    HTTPSession(const HTTPSession&) = delete;
    HTTPSession& operator=(const HTTPSession&) = delete;
    ~HTTPSession() override;

    HTTPReply send(const HTTPRequest& request, const std::stop_token& stop) override;

private:
    const std::unique_ptr<HTTPTransport> session_;  // in a module that is loaded for it
};

}  // namespace tesserine
