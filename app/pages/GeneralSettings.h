#pragma once

#include "app/look/SettingsForm.h"

namespace tesserine::app {

class AppEnvironment;

/// Appearance, behaviour, tasks, keys.
class GeneralSettings final : public SettingsForm {
    Q_OBJECT

public:
    /// "light", "dark", or as the desktop while it is not set.
    static constexpr const char* appearanceKey = "tesserine.appearance";
    static constexpr const char* reduceMotionKey = "tesserine.reduceMotion";

    explicit GeneralSettings(AppEnvironment& environment, QWidget* parent = nullptr);

signals:
    void keysAsked();
};

}  // namespace tesserine::app
