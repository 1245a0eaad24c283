#pragma once

#include "app/look/SettingsForm.h"
#include "app/state/Job.h"

#include <string>

class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace tesserine::app {

/// Synonyms, what was searched for lately, and the index.
class SearchSettings final : public SettingsForm {
    Q_OBJECT

public:
    explicit SearchSettings(AppEnvironment& environment, QWidget* parent = nullptr);

private:
    void addSynonyms();
    void keepSynonyms();
    void hideEvent(QHideEvent* event) override;
    void addIndex();
    void showCoverage();
    void rebuild();

    AppEnvironment& environment_;
    QTimer typing_;
    QPlainTextEdit* const synonyms_;
    QLabel* const coverage_;
    Job job_;
};

}  // namespace tesserine::app
