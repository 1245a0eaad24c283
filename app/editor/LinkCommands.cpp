#include "app/editor/LinkCommands.h"

#include "app/commands/Commands.h"
#include "app/editor/BodyEdit.h"
#include "app/editor/KeptPlace.h"
#include "app/editor/StyleCommands.h"
#include "app/editor/TableDialog.h"
#include "app/look/Notice.h"
#include "core/body/AttributedTextReader.h"
#include "core/body/CanonicalBody.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QTextCursor>
#include <QUrl>

#include <cstdlib>
#include <optional>

namespace tesserine::app {
namespace {

/// What was typed as an address: without a scheme it is one of the web, or of a person.
std::string addressFrom(const QString& typed) {
    const QString text = typed.trimmed();
    if (text.startsWith("//")) return ("https:" + text).toStdString();
    if (text.isEmpty() || !QUrl(text).scheme().isEmpty()) return text.toStdString();
    return (text.contains('@') ? "mailto:" + text : "https://" + text).toStdString();
}

/// Whether a stored note keeps a link to the address: none that runs something or opens a file.
bool isKept(const std::string& address) {
    const QString link =
        QString("<a href=\"%1\">x</a>").arg(QString::fromStdString(address).toHtmlEscaped());
    return address.empty() || canonicalBody(link.toStdString()).html.starts_with("<a href=");
}

/// Where the object stands now, of several like it the nearest to `before`.
std::optional<int> placeOf(const NoteDocument& note, const std::string& object, int before) {
    const AttributedText text = note.content();
    std::optional<int> nearest;
    for (const AttributedText::Run& run : text.runs) {
        const int place = static_cast<int>(run.start);
        const bool isNearer = !nearest || std::abs(place - before) < std::abs(*nearest - before);
        if (run.style.object == object && isNearer) nearest = place;
    }
    return nearest;
}

}  // namespace

LinkCommands::LinkCommands(Commands& commands, BodyEdit& body, QObject* parent)
    : QObject(parent), body_(body) {
    commands.on("format.link", this, [this] { editLink(); });
    commands.on("format.table", this, [this] { insertTable(); });
}

void LinkCommands::editLink() {
    if (body_.isReadOnly()) return;
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
    connect(buttons, &QDialogButtonBox::accepted, dialog, [dialog, target] {
        if (isKept(addressFrom(target->text()))) return dialog->accept();
        showNotice(
            dialog,
            "A note keeps links to the web, to other notes, to mail addresses and to telephone "
            "numbers only.");
    });
    connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    connect(dialog, &QDialog::accepted, this, [this, place = KeptPlace(cursor), target, words] {
        setLink(place, target->text(), words->text());
    });
    dialog->open();
}

/// Makes a link of what is selected, under other words where they differ; of no address, none.
void LinkCommands::setLink(const KeptPlace& place, const QString& target, const QString& words) {
    auto found = place.cursorIn(body_);
    if (!found) {
        return showNotice(
            &body_, "The note was changed meanwhile, so no link was made. Select the text again.");
    }
    QTextCursor& cursor = *found;
    const std::string address = addressFrom(target);
    const bool hasNewText = words != cursor.selectedText() || words.isEmpty();
    cursor.beginEditBlock();
    if (hasNewText && !(address.empty() && words.isEmpty())) {
        const int start = cursor.selectionStart();
        const QString shown = words.isEmpty() ? QString::fromStdString(address) : words;
        const bool replaces = cursor.hasSelection();
        const InlineStyle style = replaces ? body_.note().styleAt(start) : InlineStyle{};
        body_.note().insertText(cursor, shown, style);
        cursor.setPosition(start, QTextCursor::KeepAnchor);
    }
    editing::setLink(body_.note(), cursor, address);
    cursor.endEditBlock();
    cursor.setPosition(cursor.selectionEnd());
    body_.setTextCursor(cursor);
    body_.setFocus();
}

/// The table under the cursor, or a new one.
void LinkCommands::insertTable() {
    const auto object = body_.objectAtCursor();
    if (object && editTable(*object)) return;
    auto* const dialog = new TableDialog(TableContent(3, 3), &body_);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(
        dialog, &QDialog::accepted, this, [this, dialog] { placeTable(dialog->content().html()); });
    dialog->open();
}

bool LinkCommands::editTable(int position, CellPlace cell) {
    const std::string html = body_.note().styleAt(position).object;
    const auto content = TableContent::of(html);
    if (!content || body_.isReadOnly()) return false;
    auto* const dialog = new TableDialog(*content, &body_, cell);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, [this, dialog, position, html] {
        setTable(html, position, dialog->content().html());
    });
    dialog->open();
    return true;
}

/// The note may have been shown anew meanwhile: the table is looked for, and where it was changed
/// or taken away the one that was written stands beside what is there now.
void LinkCommands::setTable(const std::string& before, int position, const std::string& after) {
    if (body_.isReadOnly() || after == before) return;
    const auto found = placeOf(body_.note(), before, position);
    if (!found) {
        placeTable(after);
        return showNotice(
            &body_, "The table was changed elsewhere meanwhile. Yours stands in a second one.");
    }
    QTextCursor place(&body_.note());
    place.setPosition(*found);
    place.setPosition(*found + 1, QTextCursor::KeepAnchor);
    body_.note().changeStyles(place, [&](InlineStyle& style) { style.object = after; });
}

/// Below the paragraph of the cursor.
void LinkCommands::placeTable(const std::string& html) {
    body_.edit([&](NoteDocument& note, QTextCursor& cursor) {
        cursor.movePosition(QTextCursor::EndOfBlock);
        note.insertParagraphs(cursor, attributedText(html));
    });
}

}  // namespace tesserine::app
