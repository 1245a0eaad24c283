#pragma once

#include "core/body/AttributedText.h"

class QTextBlockFormat;
class QTextCharFormat;

namespace tesserine::app {

/// How paragraphs and words of a note look: margins, sizes, colours. Says nothing about what they
/// are; what stands beside the text (markers, bars, grounds) is drawn by `BlockPainter`.
namespace look {

/// Distance by which one level of a list stands to the right, in device-independent pixels.
inline constexpr double indentWidth = 26;

void dress(QTextBlockFormat& format, const AttributedText::Paragraph& paragraph);
/// `format` is that of words with `style` in `paragraph`.
void dress(
    QTextCharFormat& format, const InlineStyle& style, const AttributedText::Paragraph& paragraph);

}  // namespace look
}  // namespace tesserine::app
