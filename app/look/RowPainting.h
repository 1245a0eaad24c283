#pragma once

#include "app/look/Theme.h"

#include <QRect>
#include <QString>

class QPainter;
class QStyleOptionViewItem;

namespace tesserine::app {

/// The ground of a line in a list: selected, under the pointer or plain, and a frame when it has
/// the focus of the keyboard. Leaves the painter with the colour of text.
void paintRowGround(QPainter& painter, const QStyleOptionViewItem& option, const QColor& plain);

/// One line of text, cut with "…" where it is too long, and aligned as its language runs.
void paintText(QPainter& painter, const QRect& line, const QString& text);

/// The same, but it begins where all lines of the window do: for what stands behind an icon.
void paintName(QPainter& painter, const QRect& line, const QString& text);

/// Cuts a piece off the end of `line` where reading begins in the layout of the painter, or where
/// it ends; the piece has this size and stands in the middle of the line's height.
QRect cutStart(const QPainter& painter, QRect& line, const QSize& size);
QRect cutEnd(const QPainter& painter, QRect& line, const QSize& size);

/// An icon where the reading of `line` ends; the line becomes shorter by it.
void paintSign(QPainter& painter, QRect& line, const QIcon& icon);

/// A rounded patch with a short text where the reading of `line` begins; the line becomes shorter
/// by it. False, and nothing painted, when there is no room.
bool paintChip(QPainter& painter, QRect& line, const QString& text);

}  // namespace tesserine::app
