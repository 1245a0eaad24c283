#include "app/shell/NotificationLines.h"

#include "app/editor/NoticeBar.h"

#include <QVBoxLayout>

namespace tesserine::app {
namespace {

QString textOf(const Notification& notification) {
    if (notification.body.isEmpty()) return notification.title;
    return notification.title + "\n" + notification.body;
}

}  // namespace

NotificationLines::NotificationLines(QWidget* parent) : QWidget(parent) {
    setObjectName("notificationLines");
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
}

void NotificationLines::show(const Notification& notification) {
    NoticeBar*& line = lines_[notification.identifier];
    if (line == nullptr) {
        line = new NoticeBar(this);
        layout()->addWidget(line);
    }
    std::vector<NoticeBar::Action> actions;
    for (const Notification::Action& action : notification.actions) {
        actions.push_back(
            {action.label, [this, line, identifier = notification.identifier, key = action.key] {
                 line->hide();
                 emit acted(identifier, key);
             }});
    }
    line->tell(textOf(notification), actions);
}

void NotificationLines::withdraw(const std::string& identifier) {
    const auto line = lines_.find(identifier);
    if (line != lines_.end()) line->second->hide();
}

}  // namespace tesserine::app
