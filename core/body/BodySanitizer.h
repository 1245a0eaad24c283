#pragma once

#include "core/body/AttributePolicy.h"
#include "core/body/BodyWriter.h"
#include "core/body/HTMLSink.h"
#include "core/body/Sanitizer.h"

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace tesserine {

/// Takes any tree and writes what a body may hold of it: decides element by element what is left
/// out, renamed, kept or unwrapped.
class BodySanitizer final : public HTMLSink {
public:
    /// `limit` is the largest result, in bytes of HTML; beyond it any call throws
    /// `BodyError::tooLarge`.
    BodySanitizer(const SanitizerOptions& options, std::size_t limit, BodyWriter::Nesting nesting)
        : options_(options), attributes_(options_, report_), writer_(limit, nesting) {}

    void open(HTMLElement element, std::string_view name, std::span<const HTMLAttribute> attributes)
        override;
    void close() override;
    void text(std::string_view text) override;
    void comment(std::string_view /*text*/) override {}

    /// What came of it; to be called once, when all elements are closed.
    SanitizationResult finish();

private:
    void unwrap(HTMLElement element, std::string_view name, bool isTooDeep);
    void writeKept(HTMLElement element, std::span<const HTMLAttribute> attributes);
    void writeImage(std::span<const HTMLAttribute> attributes);
    void writePlaceholder(std::string_view alternative);
    void writeEncrypted(HTMLElement element, const KeptAttributes& attributes);

    const SanitizerOptions options_;
    SanitizationReport report_;
    AttributePolicy attributes_;
    BodyWriter writer_;
    /// The open elements that are walked, `none` for one that is not written.
    std::vector<BodyWriter::Handle> path_;
    /// Open elements from the innermost one that is left out with its content, itself included.
    std::size_t leftOut_ = 0;
};

}  // namespace tesserine
