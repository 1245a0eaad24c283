#pragma once

#include <QRectF>

#include <optional>

class QPainter;
class QTextBlock;

namespace tesserine::app {

class NoteDocument;

/// Draws what stands beside and behind the text of a note: grounds of code, bars of quotes,
/// dividing lines, and the markers of lists with the boxes to tick.
///
/// Everything is in coordinates of the document, which is laid out already. Looks only at the
/// blocks in the visible part.
class BlockPainter {
public:
    explicit BlockPainter(const NoteDocument& document) : document_(document) {}

    void paintBehind(QPainter& painter, const QRectF& visible) const;
    void paintMarkers(QPainter& painter, const QRectF& visible) const;
    /// Where the box of an item of a checklist stands.
    QRectF boxOf(const QTextBlock& item) const;
    /// The item whose box is at `point`, as the position of its block.
    std::optional<int> itemAt(const QPointF& point) const;

private:
    QTextBlock firstVisible(const QRectF& visible) const;
    void paintCode(QPainter& painter, const QTextBlock& block) const;
    void paintQuote(QPainter& painter, const QTextBlock& block) const;
    void paintDivider(QPainter& painter, const QTextBlock& block) const;
    void paintMarker(QPainter& painter, const QTextBlock& block) const;
    void paintBox(QPainter& painter, const QTextBlock& block) const;
    /// The stretch beside the first line of an item in which its marker stands.
    QRectF markerPlace(const QTextBlock& block) const;
    QRectF groundOf(const QTextBlock& block) const;
    bool isAlike(const QTextBlock& block, const QTextBlock& neighbour) const;

    const NoteDocument& document_;
};

}  // namespace tesserine::app
