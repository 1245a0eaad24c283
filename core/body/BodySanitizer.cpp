#include "core/body/BodySanitizer.h"

#include "base/Text.h"
#include "core/body/SanitizerTables.h"
#include "core/body/SelectiveEncryption.h"

#include <utility>

namespace tesserine {
namespace {

constexpr std::string_view imagePlaceholder = "Image";

void count(SanitizationReport::Counts& counts, std::string_view name) {
    const auto found = counts.find(name);
    if (found != counts.end()) {
        ++found->second;
    } else {
        counts.emplace(name, 1);
    }
}

}  // namespace

void BodySanitizer::open(
    HTMLElement element, std::string_view name, std::span<const HTMLAttribute> attributes) {
    if (leftOut_ > 0) {
        ++leftOut_;
        return;
    }
    const html::ElementPolicy& policy = html::policyFor(element);
    if (policy.isDropped) {
        count(report_.droppedElements, name);
        leftOut_ = 1;
        return;
    }
    const bool isTooDeep = std::cmp_greater_equal(path_.size(), options_.maximumDepth);
    if (isTooDeep || !policy.isKept) return unwrap(element, name, isTooDeep);
    writeKept(policy.canonical, attributes);
}

void BodySanitizer::close() {
    if (leftOut_ > 0) {
        --leftOut_;
        return;
    }
    writer_.close(path_.back());
    path_.pop_back();
}

void BodySanitizer::text(std::string_view text) {
    if (leftOut_ == 0) writer_.text(text);
}

SanitizationResult BodySanitizer::finish() {
    auto [html, plainText] = writer_.finish();
    return {std::move(html), std::move(plainText), std::move(report_)};
}

void BodySanitizer::unwrap(HTMLElement element, std::string_view name, bool isTooDeep) {
    count(report_.unwrappedElements, name);
    path_.push_back(BodyWriter::Handle::none);
    // Words on two lines must not become one word for want of depth.
    const HTMLElement canonical = html::policyFor(element).canonical;
    const bool breaksLine = canonical == HTMLElement::br || html::has(canonical, html::isBlock);
    if (isTooDeep && breaksLine) writer_.separateText();
}

void BodySanitizer::writeKept(HTMLElement element, std::span<const HTMLAttribute> attributes) {
    if (element == HTMLElement::img) return writeImage(attributes);
    const KeptAttributes& kept = attributes_.judge(element, attributes);
    if (attributes_.isEncrypted()) return writeEncrypted(element, kept);
    if (!html::has(element, html::isVoid)) {
        path_.push_back(writer_.open(element, kept));
        return;
    }
    writer_.writeVoid(element, kept);
    path_.push_back(BodyWriter::Handle::none);
}

void BodySanitizer::writeImage(std::span<const HTMLAttribute> attributes) {
    const KeptAttributes& kept = attributes_.judge(HTMLElement::img, attributes);
    if (kept.has(KeptAttribute::src)) {
        writer_.writeVoid(HTMLElement::img, kept);
    } else {
        writePlaceholder(kept.value(KeptAttribute::alt));
    }
    path_.push_back(BodyWriter::Handle::none);
}

void BodySanitizer::writePlaceholder(std::string_view alternative) {
    KeptAttributes attributes;
    attributes.add(KeptAttribute::classes) = "ts-unsupported";
    const auto placeholder = writer_.open(HTMLElement::span, attributes);
    writer_.text(text::isBlank(alternative) ? imagePlaceholder : alternative);
    writer_.close(placeholder);
    ++report_.unsupportedPlaceholders;
}

/// Writes a locked passage whole; whatever else the element held is left out.
void BodySanitizer::writeEncrypted(HTMLElement element, const KeptAttributes& attributes) {
    const auto passage = writer_.open(element, attributes);
    writer_.text(SelectiveEncryption::placeholder);
    writer_.close(passage);
    leftOut_ = 1;
}

}  // namespace tesserine
