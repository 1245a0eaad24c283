#include "base/WebAddress.h"

#include "base/Text.h"

#include <curl/curl.h>

#include <algorithm>
#include <charconv>
#include <memory>

namespace tesserine {
namespace {

struct Cleanup {
    void operator()(CURLU* address) const { curl_url_cleanup(address); }
    void operator()(char* part) const { curl_free(part); }
};
using Handle = std::unique_ptr<CURLU, Cleanup>;
using Part = std::unique_ptr<char, Cleanup>;

bool isHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

/// RFC 3986, section 2: reserved, unreserved, and whole percent-encodings.
bool hasOnlyCharactersOfAddresses(std::string_view text) {
    constexpr std::string_view marks = ":/?#[]@!$&'()*+,;=-._~";
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (isLetter(c) || isDigit(c) || marks.find(c) != std::string_view::npos) continue;
        const bool isEncoded =
            c == '%' && i + 2 < text.size() && isHexDigit(text[i + 1]) && isHexDigit(text[i + 2]);
        if (!isEncoded) return false;
    }
    return true;
}

/// The length of the scheme that `text` begins with, 0 for none. RFC 3986, section 3.1.
std::size_t schemeLength(std::string_view text) {
    const auto* const end = std::ranges::find_if(text, [](char c) {
        return !isLetter(c) && !isDigit(c) && c != '+' && c != '-' && c != '.';
    });
    if (end == text.end() || *end != ':' || !isLetter(text.front())) return 0;
    return static_cast<std::size_t>(end - text.begin());
}

std::optional<std::string> part(CURLU* address, CURLUPart which) {
    char* text = nullptr;
    if (curl_url_get(address, which, &text, 0) != CURLUE_OK) return std::nullopt;
    const Part owned(text);
    return std::string(text);
}

}  // namespace

std::optional<WebAddress> WebAddress::parse(std::string_view text) {
    if (text.empty() || !hasOnlyCharactersOfAddresses(text)) return std::nullopt;
    WebAddress result{.text = std::string(text)};
    const std::size_t scheme = schemeLength(text);
    if (scheme == 0) return result;
    result.scheme = text::asciiLowercased(text.substr(0, scheme));
    if (!text.substr(scheme).starts_with("://")) return result;  // such as "mailto:"

    const Handle address(curl_url());
    if (!address) return std::nullopt;
    constexpr unsigned flags = CURLU_NON_SUPPORT_SCHEME | CURLU_NO_AUTHORITY | CURLU_PATH_AS_IS;
    if (curl_url_set(address.get(), CURLUPART_URL, result.text.c_str(), flags) != CURLUE_OK) {
        return std::nullopt;
    }
    result.host = text::asciiLowercased(part(address.get(), CURLUPART_HOST).value_or(""));
    result.path = part(address.get(), CURLUPART_PATH).value_or("");
    result.hasUserInfo = part(address.get(), CURLUPART_USER).has_value()
                         || part(address.get(), CURLUPART_PASSWORD).has_value();
    if (const auto port = part(address.get(), CURLUPART_PORT)) {
        int number = 0;
        std::from_chars(port->data(), port->data() + port->size(), number);
        result.port = number;
    }
    return result;
}

std::optional<WebAddress> WebAddress::resolved(std::string_view reference) const {
    if (reference.empty() || !hasOnlyCharactersOfAddresses(reference)) return std::nullopt;
    if (schemeLength(reference) > 0) return parse(reference);
    const Handle address(curl_url());
    const std::string relative(reference);
    const bool isWhole =
        address && curl_url_set(address.get(), CURLUPART_URL, text.c_str(), 0) == CURLUE_OK
        && curl_url_set(address.get(), CURLUPART_URL, relative.c_str(), 0) == CURLUE_OK;
    if (!isWhole) return std::nullopt;
    return parse(part(address.get(), CURLUPART_URL).value_or(""));
}

bool WebAddress::hasIPHost() const {
    if (host.starts_with('[')) return true;
    // A resolver reads "127.1" and "0x7f.1" as addresses; no name ends in such a label.
    const std::string_view last = std::string_view(host).substr(host.rfind('.') + 1);
    if (last.empty()) return false;
    const bool isHexadecimal = last.starts_with("0x");
    return isHexadecimal ? std::ranges::all_of(last.substr(2), isHexDigit)
                         : std::ranges::all_of(last, isDigit);
}

bool WebAddress::isWithin(std::string_view domain) const {
    if (host == domain) return true;
    return host.size() > domain.size() + 1 && host.ends_with(domain)
           && host[host.size() - domain.size() - 1] == '.';
}

}  // namespace tesserine
