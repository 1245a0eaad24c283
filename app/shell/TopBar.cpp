#include "app/shell/TopBar.h"

#include "app/commands/Commands.h"
#include "app/look/Theme.h"

#include <QHBoxLayout>
#include <QToolButton>

namespace tesserine::app {
namespace {

constexpr int widestField = 560;

}  // namespace

TopBar::TopBar(Commands& commands, QWidget* parent) : QWidget(parent), row_(new QHBoxLayout(this)) {
    setObjectName("topBar");
    row_->setContentsMargins(space::small, space::small, space::small, space::small);
    row_->setSpacing(space::tiny);
    for (const char* command : {"view.sidebar", "go.back", "go.forward"}) {
        addButton(commands, command);
    }
    row_->addStretch(1);
    fieldPlace_ = row_->count();
    row_->addStretch(1);
    for (const char* command : {"task.new", "note.new"}) {
        addButton(commands, command);
    }
}

void TopBar::setField(QWidget* field) {
    field->setMaximumWidth(widestField);
    row_->insertWidget(fieldPlace_, field, 20);
    const int before = fieldPlace_ - 2;  // the last button, and the room behind it
    setTabOrder(row_->itemAt(before)->widget(), field);
}

void TopBar::addButton(Commands& commands, std::string_view command) {
    auto* button = new QToolButton(this);
    QAction& action = commands.action(command);
    button->setDefaultAction(&action);
    button->setAutoRaise(true);
    button->setIconSize(QSize(20, 20));
    button->setFocusPolicy(Qt::TabFocus);
    button->setAccessibleName(action.text().remove('&'));
    row_->addWidget(button);
}

}  // namespace tesserine::app
