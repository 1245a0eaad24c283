#include "base/HTTPSession.h"

#include "base/network/NetworkModule.h"

#include <utility>

namespace tesserine {

HTTPSession::HTTPSession() : HTTPSession(Options{}) {}
HTTPSession::HTTPSession(Options options)
    : session_(networkModule().makeSession(std::move(options))) {}
HTTPSession::~HTTPSession() = default;

HTTPReply HTTPSession::send(const HTTPRequest& request, const std::stop_token& stop) {
    return session_->send(request, stop);
}

}  // namespace tesserine
