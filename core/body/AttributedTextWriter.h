#pragma once

#include "core/body/AttributedText.h"

#include <cstddef>
#include <string>

namespace tesserine {

/// The body that a note being edited stands for. What `attributedText` made of a canonical body
/// comes out as that body, byte for byte; what was edited is to be sanitised like any other body.
/// Never fails; linear in time, no recursion.
std::string canonicalHTML(const AttributedText& edited);

/// Where a paragraph begins.
struct ParagraphPlace {
    std::size_t paragraph = 0;
    std::size_t offset = 0;  ///< in the text
    std::size_t run = 0;     ///< the first that does not end before
};

/// What `canonicalHTML` writes for the paragraphs from `first` on, without their containers.
std::string htmlFrom(const AttributedText& edited, const ParagraphPlace& first);

}  // namespace tesserine
