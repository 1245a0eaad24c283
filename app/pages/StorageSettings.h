#pragma once

#include "app/look/SettingsForm.h"
#include "app/state/Job.h"

class QLabel;

namespace tesserine::app {

/// Where the library is, how large, its backups, its check, and how long the trash keeps notes.
class StorageSettings final : public SettingsForm {
    Q_OBJECT

public:
    explicit StorageSettings(AppEnvironment& environment, QWidget* parent = nullptr);

private:
    void addPlace();
    void addBackups();
    void addCheck();
    /// Reads sizes and backups off the main thread.
    void showFacts();
    void backUp();
    void check();

    AppEnvironment& environment_;
    QLabel* const size_;
    QLabel* const backups_;
    QLabel* const result_;
    Job job_;
};

}  // namespace tesserine::app
