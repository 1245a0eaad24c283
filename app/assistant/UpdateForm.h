#pragma once

#include "app/assistant/UpdateWork.h"
#include "app/look/SettingsForm.h"

class QLabel;
class QPushButton;

namespace tesserine::app {

class AppEnvironment;

/// The settings of updates.
class UpdateForm final : public SettingsForm {
    Q_OBJECT

public:
    UpdateForm(AppEnvironment& environment, UpdateSource source, QWidget* parent);

private:
    void follow();
    QString idleSentence() const;

    AppEnvironment& environment_;
    UpdateWork work_;
    QLabel* state_ = nullptr;
    QPushButton* check_ = nullptr;
    QPushButton* details_ = nullptr;
};

}  // namespace tesserine::app
