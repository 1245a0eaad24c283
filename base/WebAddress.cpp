#include "base/WebAddress.h"

#include "base/network/NetworkModule.h"
#include "base/Text.h"

#include <algorithm>

namespace tesserine {
namespace {

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

}  // namespace

std::optional<WebAddress> WebAddress::parse(std::string_view text) {
    if (text.empty() || !hasOnlyCharactersOfAddresses(text)) return std::nullopt;
    WebAddress result{.text = std::string(text)};
    const std::size_t scheme = schemeLength(text);
    if (scheme == 0) return result;
    result.scheme = text::asciiLowercased(text.substr(0, scheme));
    if (!text.substr(scheme).starts_with("://")) return result;  // such as "mailto:"

    if (!networkModule().takeApart(result)) return std::nullopt;
    return result;
}

std::optional<WebAddress> WebAddress::resolved(std::string_view reference) const {
    if (reference.empty() || !hasOnlyCharactersOfAddresses(reference)) return std::nullopt;
    if (schemeLength(reference) > 0) return parse(reference);
    const auto whole = networkModule().resolve(text, std::string(reference));
    return whole ? parse(*whole) : std::nullopt;
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
