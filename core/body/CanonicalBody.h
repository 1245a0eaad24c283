#pragma once

#include "core/body/Sanitizer.h"

#include <string>
#include <string_view>

namespace tesserine {

/// A body as the library keeps it.
struct CanonicalBody {
    std::string html;
    std::string plainText;
    SanitizationReport report;
};

/// The door by which every body enters the library: `html` (any bytes; bad UTF-8 becomes U+FFFD,
/// U+0000 goes) read, sanitised and written in stored form, without a tree in between. Linear in
/// time and, beyond the result, bounded in memory by the size of `html`. Throws
/// `BodyError::tooLarge` when the stored form exceeds `limits::canonicalBodyBytes`.
CanonicalBody canonicalBody(std::string_view html, const SanitizerOptions& options = {});

/// Whether `html` is a stored form, so that making it canonical changes nothing.
bool isCanonical(std::string_view html);

}  // namespace tesserine
