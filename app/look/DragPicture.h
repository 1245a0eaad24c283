#pragma once

#include <QPixmap>
#include <QString>

class QWidget;

namespace tesserine::app {

/// What follows the pointer while something is dragged from `source`: a small patch with a few
/// words, which leaves the places below it to be seen.
QPixmap dragPicture(const QString& text, const QWidget& source);

}  // namespace tesserine::app
