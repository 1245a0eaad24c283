#pragma once

#include <string>

namespace Poco::Net {  // NOLINT(readability-identifier-naming): named by the library
class HTTPServerRequest;
class HTTPServerResponse;
}  // namespace Poco::Net

namespace tesserine::server {

class Service;

/// Whether a request asks for the live channel.
bool asksForLiveChannel(const Poco::Net::HTTPServerRequest& request);
/// Answers it, and speaks on the channel until it ends. `from` tells clients apart for limits.
void serveLiveChannel(
    Service& service,
    const std::string& from,
    Poco::Net::HTTPServerRequest& request,
    Poco::Net::HTTPServerResponse& response);

}  // namespace tesserine::server
