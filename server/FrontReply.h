#pragma once

#include "base/HTTP.h"

#include <Poco/Net/HTTPServerResponse.h>

namespace tesserine::server {

/// Sends a whole reply of the service.
inline void sendReply(const HTTPReply& reply, Poco::Net::HTTPServerResponse& response) {
    response.setStatusAndReason(static_cast<Poco::Net::HTTPResponse::HTTPStatus>(reply.status));
    for (const HTTPHeader& header : reply.headers) {
        response.set(header.name, header.value);
    }
    response.sendBuffer(reply.body.data(), reply.body.size());
}

}  // namespace tesserine::server
