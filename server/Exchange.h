#pragma once

#include "base/HTTP.h"
#include "base/Uuid.h"
#include "server/Accounts.h"
#include "sync/WireCoding.h"

#include <boost/json/object.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine::server {

/// One request taken apart. What it should hold and does not makes these throw `Refusal`.
struct Exchange {
    const HTTPRequest& request;
    std::string from;
    std::string_view query;
    std::vector<std::string> parameters;  ///< what stood in the places of "*" in the path
    Caller caller{};
    std::string body{};

    /// None when there is no such header; `name` in lower case.
    const std::string* header(std::string_view name) const;
    /// A number of the query, 0 or above.
    std::int64_t number(std::string_view name, std::int64_t otherwise) const;
    /// A field of the form that is the body.
    std::string field(std::string_view name) const;
    /// The body as a JSON object, a text in it, and a list in it.
    boost::json::object json() const;
    std::string text(std::string_view key) const;
    boost::json::array list(std::string_view key) const;
    /// The first parameter as the identifier of a record, and as the digest of a file.
    Uuid identifier() const;
    const std::string& digest() const;
};

/// Replies.
HTTPReply replied(const boost::json::object& body, int status = 200);
template <class Record>
HTTPReply replied(const Record& record) {
    return replied(wire::encode(record));
}
HTTPReply done();

}  // namespace tesserine::server
