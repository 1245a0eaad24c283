#pragma once

#include "app/desktop/Notifier.h"

#include <QWidget>

#include <map>
#include <string>

namespace tesserine::app {

class NoticeBar;

/// Notifications that no desktop shows, as lines at the top of the window: a line for each, with
/// its actions, until one of them is chosen, the line is closed or it is no longer wanted.
class NotificationLines final : public QWidget {
    Q_OBJECT

public:
    explicit NotificationLines(QWidget* parent = nullptr);

    void show(const Notification& notification);
    /// Nothing where there is no such line.
    void withdraw(const std::string& identifier);

signals:
    void acted(const std::string& identifier, const std::string& action);

private:
    std::map<std::string, NoticeBar*> lines_;  // by identifier; kept for the next one of the same
};

}  // namespace tesserine::app
