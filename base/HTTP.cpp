#include "base/HTTP.h"

#include "base/Text.h"

namespace tesserine {

const std::string* HTTPReply::header(std::string_view name) const {
    const std::string wanted = text::asciiLowercased(name);
    for (const HTTPHeader& header : headers) {
        if (text::asciiLowercased(header.name) == wanted) return &header.value;
    }
    return nullptr;
}

}  // namespace tesserine
