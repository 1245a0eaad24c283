#pragma once

#include "app/pages/PageParts.h"

class QHBoxLayout;
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

}  // namespace tesserine::app
