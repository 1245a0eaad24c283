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

/// An icon at the right end of `line`, which becomes shorter by it.
void paintSign(QPainter& painter, QRect& line, const QIcon& icon);

/// A rounded patch with a short text at the left of `line`, which becomes shorter by it; false, and
/// nothing painted, when there is no room.
bool paintChip(QPainter& painter, QRect& line, const QString& text);

}  // namespace tesserine::app
