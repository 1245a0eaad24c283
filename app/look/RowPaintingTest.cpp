#include "app/look/RowPainting.h"

#include <gtest/gtest.h>
#include <QImage>
#include <QPainter>

#include <algorithm>

namespace tesserine::app {
namespace {

constexpr QRect line(0, 0, 120, 20);

using Painting = void (*)(QPainter&, const QRect&, const QString&);

/// The columns of `line` that `paint` drew something in, in a window of this direction.
std::pair<int, int> inkOf(Painting paint, const QString& text, Qt::LayoutDirection layout) {
    QImage image(line.size(), QImage::Format_ARGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setLayoutDirection(layout);
    paint(painter, line, text);
    int first = line.width();
    int last = -1;
    for (int x = 0; x < image.width(); ++x) {
        for (int y = 0; y < image.height(); ++y) {
            if (image.pixelColor(x, y) == Qt::white) continue;
            first = std::min(first, x);
            last = x;
        }
    }
    return {first, last};
}

TEST(RowPainting, TextStandsWhereItsLanguageBeginsAndNamesWhereTheWindowDoes) {
    for (const QString text : {"milk", "חלב"}) {
        SCOPED_TRACE(text.toStdString());
        for (const auto layout : {Qt::LeftToRight, Qt::RightToLeft}) {
            const bool isTextLeft = inkOf(paintText, text, layout).first < 10;
            EXPECT_EQ(isTextLeft, text == "milk");
            const bool isNameLeft = inkOf(paintName, text, layout).first < 10;
            EXPECT_EQ(isNameLeft, layout == Qt::LeftToRight);
        }
    }
}

TEST(RowPainting, WhatIsTooLongEndsWithDotsWhereItsLanguageEnds) {
    const QString hebrew = "לקנות לחם וחלב בשוק לפני הערב, ולא לשכוח את הכרטיס";
    QImage image(line.size(), QImage::Format_ARGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    const QString shown = painter.fontMetrics().elidedText(hebrew, Qt::ElideRight, line.width());
    ASSERT_TRUE(shown.endsWith(QChar(0x2026)));
    const int left = std::max(line.width() - painter.fontMetrics().horizontalAdvance(shown), 0);
    paintText(painter, line, hebrew);
    painter.end();
    // Dots are low: nothing is drawn above them at that side.
    for (int x = left; x < left + 6; ++x) {
        for (int y = 0; y < line.height() / 2; ++y) {
            ASSERT_EQ(image.pixelColor(x, y), QColor(Qt::white)) << x << ", " << y;
        }
    }
}

TEST(RowPainting, OfALongTextAsMuchIsShownAsTheLineHolds) {
    for (const QString& text : {
             QString("word ").repeated(100),
             QString(400, 'l'),  // many more than of other letters
             QString(400, QChar(0x0301)).prepend('e').append(" and more"),  // take no room
             QString::fromUtf8("🌱").repeated(100),
             QString("All of it"),
         }) {
        SCOPED_TRACE(text.left(12).toStdString());
        QImage expected(line.size(), QImage::Format_ARGB32);
        expected.fill(Qt::white);
        QPainter painter(&expected);
        const QString shown = painter.fontMetrics().elidedText(text, Qt::ElideRight, line.width());
        painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, shown);
        painter.end();
        QImage image(line.size(), QImage::Format_ARGB32);
        image.fill(Qt::white);
        painter.begin(&image);
        paintText(painter, line, text);
        painter.end();
        EXPECT_EQ(image, expected);
    }
}

TEST(RowPainting, PiecesAreCutWhereReadingBeginsAndEnds) {
    QImage image(line.size(), QImage::Format_ARGB32);
    QPainter painter(&image);
    QRect rest = line;
    EXPECT_EQ(cutStart(painter, rest, {18, 10}), QRect(0, 5, 18, 10));
    EXPECT_EQ(cutEnd(painter, rest, {30, 20}), QRect(90, 0, 30, 20));
    EXPECT_EQ(rest, QRect(18, 0, 72, 20));

    painter.setLayoutDirection(Qt::RightToLeft);
    rest = line;
    EXPECT_EQ(cutStart(painter, rest, {18, 10}), QRect(102, 5, 18, 10));
    EXPECT_EQ(cutEnd(painter, rest, {30, 20}), QRect(0, 0, 30, 20));
    EXPECT_EQ(rest, QRect(30, 0, 72, 20));
}

}  // namespace
}  // namespace tesserine::app
