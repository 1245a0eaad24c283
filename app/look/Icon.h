#pragma once

#include <QIcon>
#include <QString>

namespace tesserine::app {

/// What an icon is drawn with; the theme tells the colour.
enum class Ink { text, secondary, accent, onAccent, danger, warning, success };

/// The drawing `name` of the window's own set ("search", "trash"; see icons/), sharp at every size.
///
/// It takes its colour when it is painted, so that it follows the theme without being made anew.
/// Checked buttons show it in the accent, disabled ones faded. Names are ours: an unknown one is a
/// mistake, found by an assertion.
QIcon icon(const QString& name, Ink ink = Ink::text);
/// The same in a colour of its own, such as that of a priority; it does not follow the theme.
QIcon icon(const QString& name, const QColor& color);

/// The picture of the program, for windows, the tray and pages about it.
QIcon programIcon();

}  // namespace tesserine::app
