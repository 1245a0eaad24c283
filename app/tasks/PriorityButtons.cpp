#include "app/tasks/PriorityButtons.h"

#include "app/look/Icon.h"
#include "app/look/Theme.h"

#include <QButtonGroup>
#include <QEvent>
#include <QHBoxLayout>
#include <QToolButton>

namespace tesserine::app {

PriorityButtons::PriorityButtons(QWidget* parent)
    : QWidget(parent), buttons_(new QButtonGroup(this)) {
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(space::tiny);
    for (const int number : {1, 2, 3, 4}) {
        const bool isNone = number == 4;
        auto* const button = new QToolButton(this);
        button->setCheckable(true);
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::StrongFocus);
        button->setText(isNone ? QString("None") : QString("P%1").arg(number));
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setAccessibleName(
            isNone ? QString("No priority") : QString("Priority %1").arg(number));
        row->addWidget(button);
        buttons_->addButton(button, number);
    }
    row->addStretch();
    paintFlags();
    setPriority(TaskPriority::p4);
    connect(buttons_, &QButtonGroup::idClicked, this, [this] { emit chosen(priority()); });
}

void PriorityButtons::paintFlags() {
    for (const int number : {1, 2, 3, 4}) {
        const QString picture = number == 4 ? "flag" : "flag-full";
        buttons_->button(number)->setIcon(icon(picture, Theme::colors().priority[number - 1]));
    }
}

void PriorityButtons::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) paintFlags();
}

void PriorityButtons::setPriority(TaskPriority priority) {
    buttons_->button(static_cast<int>(priority))->setChecked(true);
}

TaskPriority PriorityButtons::priority() const {
    return static_cast<TaskPriority>(buttons_->checkedId());
}

}  // namespace tesserine::app
