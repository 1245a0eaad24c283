#include "server/Refusal.h"

#include "base/JSON.h"

namespace tesserine::server {

HTTPReply Refusal::reply() const {
    const boost::json::object problem{{"message", what()}};
    HTTPReply reply{
        .status = status_,
        .headers = headers_,
        .body = json::write(boost::json::object{{"error", problem}})};
    reply.headers.push_back({"Content-Type", "application/json"});
    return reply;
}

}  // namespace tesserine::server
