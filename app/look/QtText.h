#pragma once

#include <QString>

#include <string_view>

namespace tesserine::app {

/// UTF-8 as the toolkit holds text.
inline QString qt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace tesserine::app
