#pragma once

#include "base/SecretBytes.h"

#include <QDialog>

#include <functional>
#include <string>

class QLabel;
class QLineEdit;
class QPushButton;

namespace tesserine::app {

/// Asks for a passphrase twice, and says what locking means.
class LockDialog final : public QDialog {
    Q_OBJECT

public:
    explicit LockDialog(QWidget* parent);

    /// What was typed; empties the fields.
    SecretBytes takePassphrase();

private:
    void check();

    QLineEdit* const first_;
    QLineEdit* const second_;
    QLabel* const hint_;
    QPushButton* lock_ = nullptr;
};

/// Asks for the passphrase of a locked passage, and then shows its text, which is overwritten when
/// the dialog goes. It never reaches the note.
class UnlockDialog final : public QDialog {
    Q_OBJECT

public:
    explicit UnlockDialog(QWidget* parent);

    /// While the key is derived nothing can be pressed.
    void setWaiting(bool isWaiting);
    void showError(const std::string& sentence);
    void showText(SecretBytes text);
    /// What is shown; empty before.
    std::string_view text() const { return text_.text(); }

signals:
    void passphraseGiven();
    void removalWanted();

public:
    SecretBytes takePassphrase();

private:
    QLineEdit* const passphrase_;
    QLabel* const message_;
    QWidget* const asking_;
    QPushButton* unlock_ = nullptr;
    SecretBytes text_;
};

}  // namespace tesserine::app
