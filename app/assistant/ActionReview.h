#pragma once

#include "ai/NoteAction.h"
#include "app/state/Job.h"
#include "base/Uuid.h"

#include <QDialog>

#include <cstdint>
#include <string>

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

namespace tesserine::app {

/// What the assistant made of one note, for the user to look at, change and take over. Until they
/// do, the note stays as it is. Shown over the window; deleted when it is closed.
class ActionReview final : public QDialog {
    Q_OBJECT

public:
    /// `note` is one of the library, with everything that was typed into it saved.
    ActionReview(AppEnvironment& environment, const Uuid& note, NoteAction action, QWidget* parent);

    /// Opens the sheet and, unless a question has to be typed first, asks.
    void begin();

private:
    enum class Way { below, replace };

    void build();
    QWidget* makeQuestion();
    QWidget* makeButtons();
    void ask();
    void send();
    CDNote* sendable();
    void showResult(const std::string& text, const std::string& model);
    void showSentence(const QString& sentence);
    void showBusy(bool isBusy);
    void take(Way way);
    CDNote* note();

    AppEnvironment& environment_;
    const Uuid noteID_;
    const NoteAction action_;
    std::int64_t version_ = 0;  // of the note when it was sent
    Job job_;
    QLineEdit* question_ = nullptr;
    QProgressBar* progress_ = nullptr;
    QLabel* state_ = nullptr;
    QPlainTextEdit* result_ = nullptr;
    QPushButton* ask_ = nullptr;
    QPushButton* cancel_ = nullptr;
    QPushButton* copy_ = nullptr;
    QPushButton* below_ = nullptr;
    QPushButton* replace_ = nullptr;
};

}  // namespace tesserine::app
