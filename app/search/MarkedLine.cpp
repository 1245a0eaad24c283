#include "app/search/MarkedLine.h"

#include "app/look/Theme.h"
#include "search/MarkedText.h"

#include <QPainter>
#include <QTextLayout>

#include <algorithm>
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

MarkedLine MarkedLine::cutFor(const QFontMetrics& metrics, int width) const {
    if (matches_.empty()) return *this;
    const Piece& first = matches_.front();
    const QString until = text_.left(first.begin + first.length);
    if (metrics.horizontalAdvance(until + "…") <= width) return *this;
    const int room = std::max(width - metrics.horizontalAdvance(until.mid(first.begin)), 0) / 2;
    qsizetype from = first.begin;  // what fits into half of the room before it, in whole words
    for (qsizetype word = from; word > 0;) {
        word = word < 2 ? 0 : text_.lastIndexOf(' ', word - 2) + 1;
        if (metrics.horizontalAdvance("…" + text_.mid(word, first.begin - word)) > room) break;
        from = word;
    }
    if (from == 0) return *this;
    MarkedLine cut = *this;
    cut.text_ = "…" + text_.mid(from);
    for (Piece& match : cut.matches_) {
        match.begin -= from - 1;
    }
    return cut;
}

void MarkedLine::paint(QPainter& painter, const QRect& place) const {
    cutFor(QFontMetrics(painter.font()), place.width()).paintBeginning(painter, place);
}

void MarkedLine::paintBeginning(QPainter& painter, const QRect& place) const {
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
