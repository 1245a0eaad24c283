#pragma once

#include "app/assistant/Assistant.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QDateEdit;
class QLabel;

namespace tesserine::app {

class AppEnvironment;

/// Where an answer is looked for: a notebook, a span of days, and whether the web as well.
class AskFilters final : public QWidget {
    Q_OBJECT

public:
    explicit AskFilters(AppEnvironment& environment, QWidget* parent = nullptr);

    QuestionFilters filters() const;
    AskTesserine::Options options() const;
    /// Takes over the notebooks there are, and whether the web may be asked.
    void refresh();

private:
    void fillNotebooks();
    void showSpan();

    AppEnvironment& environment_;
    QComboBox* const notebook_;
    QComboBox* const span_;
    QWidget* const days_;
    QDateEdit* const from_;
    QDateEdit* const to_;
    QCheckBox* const web_;
    QLabel* const webHint_;
};

}  // namespace tesserine::app
