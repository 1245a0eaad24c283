#pragma once

#include "base/Encoding.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tesserine {

/// A stretch of a paragraph that looks the same all along, or an attachment.
struct AppleSpan {
    std::string text{};
    bool isBold = false;
    bool isItalic = false;
    bool isUnderlined = false;
    bool isStruck = false;
    int baseline = 0;  ///< above 0: superscript; below: subscript
    std::string link{};
    std::string attachment{};  ///< identifier; not empty when the span is an attachment
    std::string type{};        ///< of the attachment
};

struct AppleParagraph {
    enum class Style : std::uint8_t {
        body,
        title,
        heading,
        subheading,
        monospace,
        bulleted,
        dashed,
        numbered,
        checkbox,
    };
    static constexpr std::size_t mostIndent = 20;

    Style style = Style::body;
    std::size_t indent = 0;
    bool isChecked = false;
    bool isQuoted = false;
    std::vector<AppleSpan> spans{};

    /// What it says, without attachments.
    std::string text() const;
};

/// The paragraphs of a note: `data` is the compressed value of `ZICNOTEDATA.ZDATA`. None when it is
/// damaged. Linear; the text is bounded by 64 MB.
std::optional<std::vector<AppleParagraph>> appleNoteText(std::span<const std::uint8_t> data);

/// The paragraphs of one text with its runs, as `data` and the cells of tables hold it.
std::vector<AppleParagraph> appleParagraphs(std::string_view message);

}  // namespace tesserine
