#pragma once

#include "base/WebAddress.h"

namespace tesserine::curladdress {

/// As `NetworkModule` says.
bool takeApart(WebAddress& address);
std::optional<std::string> resolve(const std::string& base, const std::string& reference);

}  // namespace tesserine::curladdress
