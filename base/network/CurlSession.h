#pragma once

#include "base/HTTPSession.h"

#include <memory>
#include <mutex>
#include <vector>

namespace tesserine {

/// What `HTTPSession` does, by libcurl.
class CurlSession final : public HTTPTransport {
public:
    explicit CurlSession(HTTPSession::Options options);
    CurlSession(const CurlSession&) = delete;
    CurlSession& operator=(const CurlSession&) = delete;
    ~CurlSession() override;

    HTTPReply send(const HTTPRequest& request, const std::stop_token& stop) override;

private:
    struct Lane;
    class Loan;

    // Fixed after construction.
    const HTTPSession::Options options_;
    // Behind the mutex: lanes that nobody uses, the warmest connection last.
    std::mutex mutex_;
    std::vector<std::unique_ptr<Lane>> idle_;
};

}  // namespace tesserine
