#pragma once

#include <string>
#include <string_view>

namespace tesserine {

/// An address with "%20" and the like as the bytes they stand for (RFC 3986, section 2.1). A "%"
/// that begins none stays. The result may be any bytes.
std::string percentDecoded(std::string_view address);

}  // namespace tesserine
