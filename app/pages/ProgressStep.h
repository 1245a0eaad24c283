#pragma once

#include "app/pages/AssistantStep.h"

#include <QString>

class QLabel;
class QProgressBar;

namespace tesserine::app {

class Job;

/// The step of an assistant in which its job runs: how far it is, and a button to stop it.
class ProgressStep final : public AssistantStep {
public:
    ProgressStep(const QString& title, Job& job, QWidget* parent);

    /// What is done before the first note.
    void begin(const QString& text);

private:
    QProgressBar* const bar_;
    QLabel* const doing_;
};

}  // namespace tesserine::app
