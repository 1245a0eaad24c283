#include "app/editor/ThemeColors.h"

#include "app/editor/BlockLook.h"
#include "app/editor/NoteDocument.h"

#include <QTextBlock>

namespace tesserine::app {

// The document is only being made, so nothing but its address is used.
ThemeColors::ThemeColors(NoteDocument& document)
    : QSyntaxHighlighter(static_cast<QObject*>(nullptr)), document_(document) {
    setDocument(&document);
}

void ThemeColors::highlightBlock(const QString& /*text*/) {
    const QTextBlock block = currentBlock();
    const AttributedText::Paragraph& paragraph = document_.paragraph(block);
    for (auto place = block.begin(); !place.atEnd(); ++place) {
        const QTextFragment fragment = place.fragment();
        const QTextCharFormat colors =
            look::themeColors(document_.style(fragment.charFormat()), paragraph);
        if (colors.propertyCount() == 0) continue;
        setFormat(fragment.position() - block.position(), fragment.length(), colors);
    }
}

}  // namespace tesserine::app
