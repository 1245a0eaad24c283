#include "app/pages/AssistantStep.h"

#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace tesserine::app {

AssistantStep::AssistantStep(const QString& title, QWidget* parent)
    : page(new QWidget(parent)), column(new QVBoxLayout), buttons(new QHBoxLayout) {
    auto* const all = new QVBoxLayout(page);
    all->setContentsMargins(space::huge, space::huge, space::huge, space::large);
    all->setSpacing(space::medium);
    all->addWidget(makeText(title, TextRole::title, page));
    all->addLayout(column, 1);
    all->addLayout(buttons);
    column->setSpacing(space::small);
    buttons->addStretch(1);
}

void showStep(QStackedWidget& steps, int step) {
    steps.setCurrentIndex(step);
    for (QPushButton* button : steps.currentWidget()->findChildren<QPushButton*>()) {
        if (!isMainButton(*button)) continue;
        button->setDefault(true);
        button->setFocus();  // Return must not press what stands beside it, such as an undo
    }
}

}  // namespace tesserine::app
