#pragma once

#include "app/pages/ImportSources.h"
#include "app/pages/ProgressStep.h"
#include "app/state/Job.h"

#include <QDialog>

#include <memory>
#include <optional>
#include <vector>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QStackedWidget;

namespace tesserine::app {

/// Leads through an import: from where, what is in it, how it goes, what came of it. The library
/// is only changed once Import was pressed, after a backup; what came in can be undone.
class ImportAssistant final : public QDialog {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ImportAssistant)

public:
    explicit ImportAssistant(AppEnvironment& environment, QWidget* parent = nullptr);
    ~ImportAssistant() override;

    /// Goes on with files or folders that are there already: dropped, or opened from the desktop.
    /// False when nothing can be imported from the first of them.
    bool begin(const std::vector<std::filesystem::path>& paths);

signals:
    /// Notes came in; with the first of them, if any did.
    void imported(const std::optional<tesserine::Uuid>& first);

private:
    QWidget* makeChoice();
    QWidget* makePreview();
    QWidget* makeReport();

    void pick(const ImportSource& source);
    void look();
    void beginLook();
    void showPreview(const ImportPreview& preview);
    ImportOptions options() const;
    void run();
    void showReport(const ImportReport& report);
    void undo();
    void showUndoing(bool isUndoing);
    void showFailure(const QString& sentence);
    void reject() override;

    AppEnvironment& environment_;
    const std::vector<ImportSource> sources_;
    const ImportSource* source_ = nullptr;
    ImportSource::Paths paths_;
    bool isLookDue_ = false;
    std::optional<Uuid> reportID_;
    Job job_;

    QStackedWidget* const steps_;
    ProgressStep progress_;
    QLabel* from_ = nullptr;
    QLabel* content_ = nullptr;
    QWidget* choices_ = nullptr;
    QLineEdit* notebook_ = nullptr;
    QLineEdit* tag_ = nullptr;
    QComboBox* duplicates_ = nullptr;
    QCheckBox* tasks_ = nullptr;
    QPushButton* import_ = nullptr;
    QLabel* outcome_ = nullptr;
    QPlainTextEdit* troubles_ = nullptr;
    QPushButton* undo_ = nullptr;
    QPushButton* done_ = nullptr;
};

}  // namespace tesserine::app
