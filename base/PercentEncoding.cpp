#include "base/PercentEncoding.h"

#include "base/Encoding.h"

namespace tesserine {

std::string percentDecoded(std::string_view address) {
    std::string bytes;
    for (std::size_t i = 0; i < address.size(); ++i) {
        const auto byte = address[i] == '%' ? fromHex(address.substr(i + 1, 2)) : std::nullopt;
        if (byte && byte->size() == 1) {
            bytes += static_cast<char>(byte->front());
            i += 2;
        } else {
            bytes += address[i];
        }
    }
    return bytes;
}

}  // namespace tesserine
