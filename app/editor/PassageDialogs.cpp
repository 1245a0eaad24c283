#include "app/editor/PassageDialogs.h"

#include "app/look/Theme.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace tesserine::app {
namespace {

constexpr qsizetype shortPassphrase = 8;

QLineEdit* passphraseField(const QString& name, const QString& purpose, QWidget* parent) {
    auto* const field = new QLineEdit(parent);
    field->setObjectName(name);
    field->setAccessibleName(purpose);
    field->setEchoMode(QLineEdit::Password);
    return field;
}

QLabel* paragraph(const QString& text, QWidget* parent) {
    auto* const label = new QLabel(text, parent);
    label->setWordWrap(true);
    return label;
}

/// The typed bytes. What the text field itself keeps is beyond this program.
SecretBytes taken(QLineEdit& field) {
    QByteArray bytes = field.text().toUtf8();
    field.clear();
    SecretBytes secret = SecretBytes::copyOf(
        std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
    bytes.fill('\0');
    return secret;
}

}  // namespace

LockDialog::LockDialog(QWidget* parent)
    : QDialog(parent),
      first_(passphraseField("passphrase", "Passphrase", this)),
      second_(passphraseField("confirmation", "Confirm passphrase", this)),
      hint_(paragraph({}, this)) {
    setObjectName("lockDialog");
    setWindowTitle("Lock Selection");
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    lock_ = buttons->addButton("Lock", QDialogButtonBox::AcceptRole);
    auto* const form = new QFormLayout;
    form->addRow("Passphrase", first_);
    form->addRow("Confirm Passphrase", second_);
    auto* const column = new QVBoxLayout(this);
    column->setSpacing(space::medium);
    column->addWidget(paragraph(
        "The selected text is replaced by a locked block. Its passphrase is kept nowhere: if you "
        "forget it, the text is lost.",
        this));
    column->addLayout(form);
    column->addWidget(hint_);
    column->addWidget(paragraph(
        "Only the text is locked, without its styles. Backups, exports and what a sync service "
        "keeps are older copies: they may still hold the text.",
        this));
    column->addWidget(buttons);
    hint_->setForegroundRole(QPalette::PlaceholderText);
    connect(first_, &QLineEdit::textChanged, this, &LockDialog::check);
    connect(second_, &QLineEdit::textChanged, this, &LockDialog::check);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    check();
    setMinimumWidth(420);
}

void LockDialog::check() {
    const bool isGiven = !first_->text().isEmpty();
    const bool areSame = first_->text() == second_->text();
    lock_->setEnabled(isGiven && areSame);
    if (isGiven && !second_->text().isEmpty() && !areSame) {
        hint_->setText("The two passphrases differ.");
    } else if (isGiven && first_->text().size() < shortPassphrase) {
        hint_->setText("A passphrase of fewer than 8 characters is easy to guess.");
    } else {
        hint_->setText(" ");
    }
}

SecretBytes LockDialog::takePassphrase() {
    second_->clear();
    return taken(*first_);
}

UnlockDialog::UnlockDialog(QWidget* parent)
    : QDialog(parent),
      passphrase_(passphraseField("passphrase", "Passphrase", this)),
      message_(paragraph("Enter the passphrase you set when you encrypted this passage.", this)),
      asking_(new QWidget(this)) {
    setObjectName("unlockDialog");
    setWindowTitle("Unlock Passage");
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, asking_);
    unlock_ = buttons->addButton("Unlock", QDialogButtonBox::AcceptRole);
    auto* const fields = new QVBoxLayout(asking_);
    fields->setContentsMargins(0, 0, 0, 0);
    fields->addWidget(passphrase_);
    fields->addWidget(buttons);
    auto* const column = new QVBoxLayout(this);
    column->setSpacing(space::medium);
    column->addWidget(message_);
    column->addWidget(asking_);
    connect(buttons, &QDialogButtonBox::accepted, this, &UnlockDialog::passphraseGiven);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    setMinimumWidth(420);
}

SecretBytes UnlockDialog::takePassphrase() { return taken(*passphrase_); }

void UnlockDialog::setWaiting(bool isWaiting) {
    asking_->setEnabled(!isWaiting);
    if (!isWaiting) passphrase_->setFocus();
}

void UnlockDialog::showError(const std::string& sentence) {
    message_->setText(QString::fromStdString(sentence));
}

void UnlockDialog::showText(SecretBytes text) {
    text_ = std::move(text);
    asking_->hide();
    message_->setText("This text is shown here only. The note stays locked.");
    auto* const shown = new QPlainTextEdit(this);
    shown->setObjectName("unlockedText");
    shown->setAccessibleName("Unlocked text");
    shown->setUndoRedoEnabled(false);
    shown->setReadOnly(true);
    shown->setPlainText(
        QString::fromUtf8(text_.text().data(), static_cast<qsizetype>(text_.text().size())));
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    auto* const removal =
        buttons->addButton("Remove Encryption…", QDialogButtonBox::DestructiveRole);
    removal->setObjectName("removeEncryption");
    buttons->button(QDialogButtonBox::Close)->setDefault(true);
    connect(removal, &QPushButton::clicked, this, &UnlockDialog::removalWanted);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout()->addWidget(shown);
    layout()->addWidget(buttons);
    resize(480, 320);
}

}  // namespace tesserine::app
