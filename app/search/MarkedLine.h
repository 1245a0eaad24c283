#pragma once

#include <QString>
#include <QStringList>

#include <string>
#include <vector>

class QFontMetrics;
class QPainter;
class QRect;

namespace tesserine::app {

/// A text of a search on one line, with what matched.
class MarkedLine {
public:
    /// `marked` holds the markers of the search.
    explicit MarkedLine(const std::string& marked);

    const QString& text() const { return text_; }
    /// What matched, piece by piece, as it stands there.
    QStringList matches() const;
    /// With tags for a label that shows rich text: what matched stands in bold.
    QString richText() const;
    /// The same without words at its beginning that would keep the first match out of `width`.
    MarkedLine cutFor(const QFontMetrics& metrics, int width) const;
    /// Draws it into `place`, cut so that the first match is seen, what matched on the colour of
    /// highlighting.
    void paint(QPainter& painter, const QRect& place) const;

private:
    void paintBeginning(QPainter& painter, const QRect& place) const;

    struct Piece {
        qsizetype begin;
        qsizetype length;
    };
    QString text_;
    std::vector<Piece> matches_;
};

}  // namespace tesserine::app
