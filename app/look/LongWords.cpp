#include "app/look/LongWords.h"

#include <QTextBoundaryFinder>

namespace tesserine::app {
namespace {

/// Letters that may stand together; few enough for the narrowest line of the window.
constexpr qsizetype longestPiece = 16;
constexpr QChar zeroWidthSpace(0x200B);

}  // namespace

QString withBreaks(const QString& words) {
    QString broken;
    qsizetype piece = 0;
    qsizetype from = 0;
    QTextBoundaryFinder letters(QTextBoundaryFinder::Grapheme, words);
    for (qsizetype to = letters.toNextBoundary(); to > 0; to = letters.toNextBoundary()) {
        if (piece == longestPiece) {
            broken += zeroWidthSpace;
            piece = 0;
        }
        piece = words[from].isSpace() ? 0 : piece + 1;
        broken += words.sliced(from, to - from);
        from = to;
    }
    return broken;
}

}  // namespace tesserine::app
