#pragma once

#include <QToolButton>

namespace tesserine::app {

class AppEnvironment;
class OpenNote;

/// When the open note reminds its reader; a press asks for another time.
class ReminderButton final : public QToolButton {
    Q_OBJECT

public:
    ReminderButton(AppEnvironment& environment, OpenNote& open, QWidget* parent);

    void refresh();
    void ask();

private:
    AppEnvironment& environment_;
    OpenNote& open_;
};

}  // namespace tesserine::app
