#include "base/network/CurlAddress.h"

#include "base/Text.h"

#include <curl/curl.h>

#include <charconv>
#include <memory>

namespace tesserine::curladdress {
namespace {

struct Cleanup {
    void operator()(CURLU* address) const { curl_url_cleanup(address); }
    void operator()(char* part) const { curl_free(part); }
};
using Handle = std::unique_ptr<CURLU, Cleanup>;
using Part = std::unique_ptr<char, Cleanup>;

std::optional<std::string> part(CURLU* address, CURLUPart which) {
    char* text = nullptr;
    if (curl_url_get(address, which, &text, 0) != CURLUE_OK) return std::nullopt;
    const Part owned(text);
    return std::string(text);
}

}  // namespace

bool takeApart(WebAddress& address) {
    const Handle handle(curl_url());
    constexpr unsigned flags = CURLU_NON_SUPPORT_SCHEME | CURLU_NO_AUTHORITY | CURLU_PATH_AS_IS;
    const bool isWellFormed =
        handle
        && curl_url_set(handle.get(), CURLUPART_URL, address.text.c_str(), flags) == CURLUE_OK;
    if (!isWellFormed) return false;
    address.host = text::asciiLowercased(part(handle.get(), CURLUPART_HOST).value_or(""));
    address.path = part(handle.get(), CURLUPART_PATH).value_or("");
    address.hasUserInfo = part(handle.get(), CURLUPART_USER).has_value()
                          || part(handle.get(), CURLUPART_PASSWORD).has_value();
    if (const auto port = part(handle.get(), CURLUPART_PORT)) {
        int number = 0;
        std::from_chars(port->data(), port->data() + port->size(), number);
        address.port = number;
    }
    return true;
}

std::optional<std::string> resolve(const std::string& base, const std::string& reference) {
    const Handle handle(curl_url());
    const bool isWhole =
        handle && curl_url_set(handle.get(), CURLUPART_URL, base.c_str(), 0) == CURLUE_OK
        && curl_url_set(handle.get(), CURLUPART_URL, reference.c_str(), 0) == CURLUE_OK;
    return isWhole ? part(handle.get(), CURLUPART_URL) : std::nullopt;
}

}  // namespace tesserine::curladdress
