#pragma once

#include "core/body/AttributedText.h"

class QTextBlockFormat;
class QTextCharFormat;

/// How paragraphs and words of a note look: margins, sizes, colours. Says nothing about what they
/// are; what stands beside the text (markers, bars, grounds) is drawn by `BlockPainter`.
///
/// What a format of the document holds can be undone, so it must be true in every theme. Colours of
/// the theme are laid over it by `ThemeColors`.
namespace tesserine::app::look {

/// Distance by which one level of a list stands to the right, in device-independent pixels.
inline constexpr double indentWidth = 26;

void dress(QTextBlockFormat& format, const AttributedText::Paragraph& paragraph);
/// `format` is that of words with `style` in `paragraph`.
void dress(
    QTextCharFormat& format, const InlineStyle& style, const AttributedText::Paragraph& paragraph);
/// The colours of such words in the present theme; none where they are those of plain words, or
/// where the writer of the note chose others.
QTextCharFormat themeColors(const InlineStyle& style, const AttributedText::Paragraph& paragraph);

}  // namespace tesserine::app::look
