#pragma once

#include "app/pages/ProgressStep.h"
#include "app/state/Job.h"
#include "core/export/ExportTypes.h"

#include <QDialog>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QStackedWidget;

namespace tesserine::app {

/// Leads through an export of the library into a folder: what, where to, how it goes, what was
/// written. Changes nothing in the library.
class ExportAssistant final : public QDialog {
    Q_OBJECT

public:
    /// `folder` is offered as the place.
    ExportAssistant(AppEnvironment& environment, const QString& folder, QWidget* parent = nullptr);

private:
    QWidget* makeChoice(const QString& folder);
    QWidget* makeResult();
    QCheckBox* addBox(QWidget* page, const QString& title, const char* name, bool isOn);

    void chooseFolder();
    void run();
    void showResult(const ExportSummary& summary);
    void endWith(const QString& text, bool isWritten);
    void reject() override;

    AppEnvironment& environment_;
    Job job_;
    QString written_;

    QStackedWidget* const steps_;
    ProgressStep progress_;
    QLineEdit* folder_ = nullptr;
    QCheckBox* markdown_ = nullptr;
    QCheckBox* attachments_ = nullptr;
    QCheckBox* tasks_ = nullptr;
    QCheckBox* originals_ = nullptr;
    QCheckBox* trash_ = nullptr;
    QLabel* outcome_ = nullptr;
    QPushButton* back_ = nullptr;
    QPushButton* show_ = nullptr;
};

}  // namespace tesserine::app
