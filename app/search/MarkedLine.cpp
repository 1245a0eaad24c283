#include "app/search/MarkedLine.h"

#include "app/look/Theme.h"
#include "search/MarkedText.h"

#include <QPainter>
#include <QTextLayout>

#include <utility>

namespace tesserine::app {

MarkedLine::MarkedLine(const std::string& marked) {
    marked::forEachPiece(marked, [this](std::string_view piece, bool isMarked) {
        QString text = QString::fromUtf8(piece.data(), static_cast<qsizetype>(piece.size()));
        for (QChar& character : text) {
            if (character.isSpace()) character = ' ';
        }
        if (isMarked) matches_.push_back({text_.size(), text.size()});
        text_ += text;
    });
}

QStringList MarkedLine::matches() const {
    QStringList pieces;
    for (const Piece& match : matches_) {
        pieces << text_.mid(match.begin, match.length);
    }
    return pieces;
}

QString MarkedLine::richText() const {
    QString rich;
    qsizetype done = 0;
    for (const Piece& match : matches_) {
        rich += text_.mid(done, match.begin - done).toHtmlEscaped();
        rich += "<b>" + text_.mid(match.begin, match.length).toHtmlEscaped() + "</b>";
        done = match.begin + match.length;
    }
    return rich + text_.mid(done).toHtmlEscaped();
}

void MarkedLine::paint(QPainter& painter, const QRect& place) const {
    const QFontMetrics metrics(painter.font());
    const QString shown = metrics.elidedText(text_, Qt::ElideRight, place.width());
    const qsizetype end = shown == text_ ? shown.size() : shown.size() - 1;  // before "…"
    QList<QTextLayout::FormatRange> formats;
    for (const Piece& match : matches_) {
        if (match.begin >= end) break;
        QTextCharFormat format;
        format.setBackground(Theme::colors().highlight);
        format.setForeground(Theme::colors().text);
        const qsizetype length = std::min(match.length, end - match.begin);
        formats.append({static_cast<int>(match.begin), static_cast<int>(length), format});
    }
    QTextLayout layout(shown, painter.font());
    QTextOption option;
    option.setTextDirection(text_.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    option.setWrapMode(QTextOption::NoWrap);
    layout.setTextOption(option);
    layout.setFormats(formats);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    if (line.isValid()) line.setLineWidth(place.width());
    layout.endLayout();
    const int top = place.top() + (place.height() - metrics.height()) / 2;
    layout.draw(&painter, QPointF(place.left(), top));
}

}  // namespace tesserine::app
