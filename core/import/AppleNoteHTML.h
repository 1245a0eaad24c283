#pragma once

#include "core/import/AppleNoteText.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tesserine {

/// Knows what the text of a note refers to.
class AppleNoteReferences {
public:
    AppleNoteReferences() = default;
    AppleNoteReferences(const AppleNoteReferences&) = delete;
    AppleNoteReferences& operator=(const AppleNoteReferences&) = delete;
    virtual ~AppleNoteReferences() = default;

    /// What stands for the attachment: HTML in stored form.
    virtual std::string attachment(const AppleSpan& span) = 0;
    /// The address of the note with this identifier; none when it is not known.
    virtual std::optional<std::string> noteAddress(std::string_view identifier) = 0;
};

/// The identifier of the note that an address of Apple Notes leads to; empty for other addresses.
std::string linkedAppleNote(std::string_view address);

/// The paragraphs as HTML that `canonicalBody` takes. Linear; no recursion.
std::string appleNoteHTML(
    std::span<const AppleParagraph> paragraphs, AppleNoteReferences& references);

}  // namespace tesserine
