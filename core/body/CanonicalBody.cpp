#include "core/body/CanonicalBody.h"

#include "base/Text.h"
#include "core/body/BodyError.h"
#include "core/body/BodySanitizer.h"
#include "core/body/HTMLTreeBuilder.h"
#include "core/body/Limits.h"

#include <utility>

namespace tesserine {

CanonicalBody canonicalBody(std::string_view html, const SanitizerOptions& options) {
    if (!text::isClean(html)) return canonicalBody(text::sanitized(std::string(html)), options);
    BodySanitizer sanitizer(options, limits::canonicalBodyBytes, BodyWriter::Nesting::readable);
    parseHTML(html, sanitizer);
    auto [written, plainText, report] = sanitizer.finish();
    return {std::move(written), std::move(plainText), std::move(report)};
}

bool isCanonical(std::string_view html) {
    if (html.size() > limits::canonicalBodyBytes || !text::isClean(html)) return false;
    try {
        return canonicalBody(html).html == html;
    } catch (const BodyError&) {
        return false;  // what a stored form is made into is as large as itself
    }
}

}  // namespace tesserine
