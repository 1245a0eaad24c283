#pragma once

#include "app/look/PageParts.h"

class QHBoxLayout;
class QStackedWidget;
class QVBoxLayout;

namespace tesserine::app {

/// One step of an assistant: a page with its title, a column for what it holds, and a row of
/// buttons at the end below.
struct AssistantStep {
    AssistantStep(const QString& title, QWidget* parent);

    QWidget* const page;
    QVBoxLayout* const column;
    QHBoxLayout* const buttons;
};

/// Shows a step, and makes its main button the one that Return presses.
void showStep(QStackedWidget& steps, int step);

}  // namespace tesserine::app
