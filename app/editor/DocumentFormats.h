#pragma once

#include "app/editor/Interned.h"
#include "core/body/AttributedText.h"

#include <QTextFormat>

namespace tesserine::app {

/// The formats by which a `QTextDocument` carries what the paragraphs and words of a note are.
///
/// A format holds one number for all that a paragraph or a stretch of words is, and the look that
/// follows from it. Formats of any other origin stand for plain paragraphs and plain words.
class DocumentFormats {
public:
    /// The property of blocks, "app.tesserine.block", and that of words.
    static constexpr int blockProperty = QTextFormat::UserProperty + 1;
    static constexpr int styleProperty = QTextFormat::UserProperty + 2;
    /// The type of a U+FFFC that stands for a picture, a file or preserved HTML.
    static constexpr int objectType = QTextFormat::UserObject + 1;

    using Paragraph = AttributedText::Paragraph;

    QTextBlockFormat blockFormat(const Paragraph& paragraph);
    /// `length` of the result means nothing.
    const Paragraph& paragraph(const QTextFormat& blockFormat) const;

    /// Of words with `style`, or of the object that it holds, in `paragraph`.
    QTextCharFormat charFormat(const InlineStyle& style, const Paragraph& paragraph);
    const InlineStyle& style(const QTextFormat& charFormat) const;

private:
    Interned<Paragraph> paragraphs_;
    Interned<InlineStyle> styles_;
};

}  // namespace tesserine::app
