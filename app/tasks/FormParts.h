#pragma once

#include <QString>

class QHBoxLayout;
class QLabel;
class QPushButton;
class QWidget;

namespace tesserine::app {

/// A line of a form: a quiet icon, then the field it stands for.
QHBoxLayout* formLine(const QString& iconName, QWidget* field, QWidget* parent);

/// A button that shows a value and asks for another one when pressed. `name` says which one, for
/// screen readers and as tool tip; without spaces it is the object name.
QPushButton* valueButton(const QString& name, QWidget* parent);
/// Shows the value; one that is not set stands back as `whenNone`.
void setValue(QPushButton& button, const QString& value, const QString& whenNone);

/// A quiet line above the fields that belong together.
QLabel* sectionTitle(const QString& text, QWidget* parent);

}  // namespace tesserine::app
