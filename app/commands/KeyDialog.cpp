#include "app/commands/KeyDialog.h"

#include "app/look/Theme.h"
#include "base/UserError.h"

#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tesserine::app {
namespace {

/// Takes one stroke, at once. Return and Escape lead out of it: nobody is to be caught there.
class KeyField final : public QKeySequenceEdit {
public:
    using QKeySequenceEdit::QKeySequenceEdit;

private:
    void keyPressEvent(QKeyEvent* event) override {
        const int key = event->key();
        const bool leadsOut =
            key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape;
        if (leadsOut && event->modifiers() == Qt::NoModifier) return event->ignore();
        QKeySequenceEdit::keyPressEvent(event);
        if (keySequence().isEmpty()) return;
        setKeySequence(keySequence());
        emit keySequenceChanged(keySequence());
    }
};

}  // namespace

KeyDialog::KeyDialog(Commands& commands, std::string_view id, QWidget* parent)
    : QDialog(parent),
      commands_(commands),
      id_(id),
      pressed_(new KeyField(this)),
      refusal_(new QLabel(this)) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Change Keys"));
    setObjectName("keyDialog");

    const QString title = commands.action(id).text();
    auto* const request = new QLabel(tr("Press the keys for “%1”.").arg(title), this);
    request->setWordWrap(true);
    pressed_->setAccessibleName(request->text());
    refusal_->setWordWrap(true);
    refusal_->setObjectName("keyRefusal");
    QPalette warning = refusal_->palette();
    warning.setColor(QPalette::WindowText, Theme::colors().danger);
    refusal_->setPalette(warning);

    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    QPushButton* const useThese =
        buttons->addButton(tr("Use These Keys"), QDialogButtonBox::AcceptRole);
    QPushButton* const none = buttons->addButton(tr("No Keys"), QDialogButtonBox::ActionRole);
    const QList<QKeySequence> usual = Commands::usualKeys(id);
    QPushButton* const reset = buttons->addButton(tr("Usual Keys"), QDialogButtonBox::ResetRole);
    reset->setEnabled(commands.keys(id) != usual);
    useThese->setEnabled(false);
    useThese->setDefault(true);

    auto* const column = new QVBoxLayout(this);
    column->setSpacing(space::medium);
    column->addWidget(request);
    column->addWidget(pressed_);
    column->addWidget(refusal_);
    column->addWidget(buttons);
    setMinimumWidth(400);

    // The field may still tell of keys while the dialog goes; what it changes goes after it.
    connect(
        pressed_,
        &QKeySequenceEdit::keySequenceChanged,
        refusal_,
        [refusal = refusal_, useThese](const QKeySequence& keys) {
            refusal->clear();
            useThese->setEnabled(!keys.isEmpty());
        });
    connect(useThese, &QPushButton::clicked, this, [this] { use({pressed_->keySequence()}); });
    connect(none, &QPushButton::clicked, this, [this] { use({}); });
    connect(reset, &QPushButton::clicked, this, [this, usual] { use(usual); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    pressed_->setFocus();
}

void KeyDialog::use(const QList<QKeySequence>& keys) {
    try {
        commands_.setKeys(id_, keys);
        accept();
    } catch (const UserError& error) {
        refusal_->setText(QString::fromStdString(error.what()));
        pressed_->setFocus();
    }
}

}  // namespace tesserine::app
