#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Addresses of the service.
namespace tesserine::address {

/// `id` as one piece of a path: everything but letters, digits and "-._~" is percent-encoded.
std::string pathPiece(std::string_view id);
/// Where `location` (of a redirect) leads from `address`. None when that is another scheme, host or
/// port, or no address.
std::optional<std::string> sameOrigin(const std::string& address, const std::string& location);

}  // namespace tesserine::address
