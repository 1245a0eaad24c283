#pragma once

#include "app/look/Theme.h"

#include <QSize>
#include <QString>

class QLabel;
class QPushButton;
class QWidget;

namespace tesserine::app {

/// A text of several lines in one of the type sizes.
QLabel* makeText(const QString& text, TextRole role, QWidget* parent);
/// The same, less loud: explanations.
QLabel* makeHint(const QString& text, QWidget* parent);
/// Gives a label another ink, also when the theme changes afterwards.
enum class Tone { text, secondary, danger, success };
void setTone(QLabel& label, Tone tone);

/// The button of the step that the page is for: filled, pressed by Return.
QPushButton* makeMainButton(const QString& title, QWidget* parent);
bool isMainButton(const QPushButton& button);

/// Gives a window that was built its usual size, or more where larger letters need it.
void resizeToFit(QWidget& window, QSize usual);

/// Opens the folder in the desktop's file manager; tells whether one was found.
bool showFolder(const QString& folder);

}  // namespace tesserine::app
