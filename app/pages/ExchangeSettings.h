#pragma once

#include "app/look/SettingsForm.h"
#include "app/state/Job.h"
#include "base/Uuid.h"

class QVBoxLayout;

namespace tesserine::app {

/// The ways in and out, and past imports, which can be undone.
class ExchangeSettings final : public SettingsForm {
    Q_OBJECT

public:
    explicit ExchangeSettings(AppEnvironment& environment, QWidget* parent = nullptr);

signals:
    void importAsked();
    void exportAsked();

private:
    void showImports();
    void addImport(const Uuid& id, const QString& title, const QString& outcome, bool canUndo);
    void prepareToUndo(const Uuid& id);
    void askToUndo(const Uuid& id, const QString& text);
    void undo(const Uuid& id);

    AppEnvironment& environment_;
    QVBoxLayout* imports_ = nullptr;
    QWidget* list_ = nullptr;
    Job job_;
};

}  // namespace tesserine::app
