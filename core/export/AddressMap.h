#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace tesserine {

/// Gives the address that is written for one of a stored body, such as the file that was made of an
/// attachment; empty when nothing is there any more. Without a function, addresses stay as they
/// are.
using AddressMap = std::function<std::string(std::string_view address)>;

/// Under which an address map is asked for an attachment; its identifier follows.
inline constexpr std::string_view attachmentAddress = "tesserine-attachment://";

}  // namespace tesserine
