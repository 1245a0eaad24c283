#include "app/editor/LinkCommands.h"

#include "app/commands/Commands.h"
#include "app/editor/BodyEdit.h"
#include "app/editor/StyleCommands.h"
#include "app/look/Theme.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QTextCursor>
#include <QUrl>

namespace tesserine::app {
namespace {

/// What was typed as an address: without a scheme it is one of the web, or of a person.
std::string addressFrom(const QString& typed) {
    const QString text = typed.trimmed();
    if (text.isEmpty() || !QUrl(text).scheme().isEmpty()) return text.toStdString();
    return (text.contains('@') ? "mailto:" + text : "https://" + text).toStdString();
}

}  // namespace

LinkCommands::LinkCommands(Commands& commands, BodyEdit& body, QObject* parent)
    : QObject(parent), body_(body) {
    commands.on("format.link", this, [this] { editLink(); });
}

void LinkCommands::editLink() {
    QTextCursor cursor = body_.textCursor();
    const std::string address = editing::selectLink(body_.note(), cursor);
    auto* const dialog = new QDialog(&body_);
    dialog->setObjectName("linkDialog");
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle("Link");
    auto* const target = new QLineEdit(QString::fromStdString(address), dialog);
    target->setObjectName("linkAddress");
    target->setPlaceholderText("https://");
    target->setMinimumWidth(360);
    auto* const words = new QLineEdit(cursor.selectedText(), dialog);
    words->setObjectName("linkText");
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, dialog);
    buttons->addButton(address.empty() ? "Add Link" : "Change Link", QDialogButtonBox::AcceptRole);
    if (!address.empty()) {
        auto* const removal = buttons->addButton("Remove Link", QDialogButtonBox::DestructiveRole);
        connect(removal, &QPushButton::clicked, target, &QLineEdit::clear);
        connect(removal, &QPushButton::clicked, dialog, &QDialog::accept);
    }
    auto* const form = new QFormLayout(dialog);
    form->addRow("Address", target);
    form->addRow("Text", words);
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    const QString before = cursor.selectedText();
    connect(dialog, &QDialog::accepted, this, [this, cursor, target, words, before]() mutable {
        const std::string chosen = addressFrom(target->text());
        const bool hasNewText = words->text() != before || before.isEmpty();
        cursor.beginEditBlock();
        if (hasNewText && !(chosen.empty() && words->text().isEmpty())) {
            const QString shown =
                words->text().isEmpty() ? QString::fromStdString(chosen) : words->text();
            const int start = cursor.selectionStart();
            body_.note().insertText(cursor, shown, {});
            cursor.setPosition(start, QTextCursor::KeepAnchor);
        }
        editing::setLink(body_.note(), cursor, chosen);
        cursor.endEditBlock();
        cursor.setPosition(cursor.selectionEnd());
        body_.setTextCursor(cursor);
        body_.setFocus();
    });
    dialog->open();
}

}  // namespace tesserine::app
