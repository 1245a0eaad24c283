#include "app/editor/Paster.h"

#include "app/editor/BodyEdit.h"
#include "app/editor/NoteObject.h"
#include "app/editor/NoticeBar.h"
#include "app/editor/OpenNote.h"
#include "app/editor/PasteRules.h"
#include "app/editor/StyleCommands.h"
#include "app/look/Notice.h"
#include "app/state/AppEnvironment.h"
#include "base/UserError.h"
#include "core/body/AttributedTextReader.h"
#include "core/services/AttachmentService.h"

#include <QBuffer>
#include <QClipboard>
#include <QFileDialog>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextCursor>
#include <QUrl>

#include <optional>
#include <utility>

namespace tesserine::app {
namespace {

Bytes bytesOf(const QByteArray& data) { return {data.begin(), data.end()}; }

bool isAddress(const QString& text) {
    static const QRegularExpression address("^(https?|mailto|tesserine):[^\\s]+$");
    return address.match(text).hasMatch();
}

std::vector<std::filesystem::path> localFiles(const QMimeData& data) {
    std::vector<std::filesystem::path> files;
    for (const QUrl& url : data.urls()) {
        if (url.isLocalFile()) files.emplace_back(url.toLocalFile().toStdString());
    }
    return files;
}

}  // namespace

Paster::Paster(const Parts& parts, QObject* parent) : QObject(parent), parts_(parts) {
    connect(&parts.body, &BodyEdit::pasted, this, [this](const QMimeData* data) { paste(*data); });
}

void Paster::paste(const QMimeData& data) {
    if (!parts_.open.id() || parts_.body.isReadOnly()) return;
    const auto files = localFiles(data);
    if (!files.empty()) return attach(files);
    const NoteDocument& note = parts_.body.note();
    const bool isInCode = note.kind(parts_.body.textCursor().block()) == BlockStyle::Kind::codeBlock
                          && !note.isEmpty();
    const bool isOurs = data.hasFormat(paste::bodyType);
    if (isOurs && !isInCode) {
        return insert([&] { return paste::fromBody(data.data(paste::bodyType).toStdString()); });
    }
    if (data.hasHtml() && !isInCode) {
        return insert([&] { return paste::fromHTML(data.html().toStdString()); });
    }
    if (data.hasImage()) return pastePicture(data);
    if (data.hasText()) pasteText(data.text());
}

void Paster::pastePlain() {
    if (parts_.open.id()) pasteText(QGuiApplication::clipboard()->text());
}

void Paster::insert(const std::function<paste::Pasted()>& read) {
    try {
        paste::Pasted pasted = read();
        paste::changeObjects(
            pasted.text, [this](const std::string& object) { return adopted(object); });
        if (!parts_.environment.save(&parts_.body)) return;
        parts_.body.edit(
            [&](NoteDocument& note, QTextCursor& cursor) { note.insert(cursor, pasted.text); });
        if (pasted.leftOut.empty()) return;
        parts_.notice.tell(QString::fromStdString(pasted.leftOut), {}, NoticeBar::Lasting::moment);
    } catch (const UserError& error) {
        showNotice(&parts_.body, error.what());
    }
}

void Paster::pasteText(const QString& pasted) {
    parts_.body.edit([&](NoteDocument& note, QTextCursor& cursor) {
        const bool isCode = note.kind(cursor.block()) == BlockStyle::Kind::codeBlock;
        const QString text = isCode ? pasted : QString(pasted).replace('\t', paste::tab);
        if (isAddress(text.trimmed()) && cursor.hasSelection()) {
            return editing::setLink(note, cursor, text.trimmed().toStdString());
        }
        if (!text.contains('\n')) {
            return note.insertText(cursor, text, note.style(cursor.charFormat()));
        }
        const auto kind = isCode ? BlockStyle::Kind::codeBlock : BlockStyle::Kind::paragraph;
        note.insertParagraphs(cursor, paste::fromLines(text.toStdString(), kind));
    });
}

void Paster::pastePicture(const QMimeData& data) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    qvariant_cast<QImage>(data.imageData()).save(&buffer, "PNG");
    insertObjects({attachmentFor(
        {.filename = "Picture.png",
         .declaredType = "image/png",
         .data = bytesOf(bytes),
         .sourceKind = "paste"})});
}

void Paster::attach(const std::vector<std::filesystem::path>& files) {
    std::vector<std::string> objects;
    CDNote* const note = parts_.open.note();
    // It may have gone to the trash while the files were chosen.
    if (note == nullptr || parts_.body.isReadOnly()) return;
    for (const std::filesystem::path& file : files) {
        try {
            objects.push_back(
                AttachmentService::bodyElement(parts_.environment.attachments().insertFile(
                    parts_.environment.context(), *note, file)));
        } catch (const UserError& error) {
            showNotice(&parts_.body, error.what());
        }
    }
    insertObjects(objects);
}

void Paster::choose(Wanted wanted) {
    if (!parts_.open.id() || parts_.body.isReadOnly()) return;
    const bool wantsPictures = wanted == Wanted::pictures;
    const QStringList chosen = QFileDialog::getOpenFileNames(
        &parts_.body,
        wantsPictures ? "Insert pictures" : "Attach files",
        {},
        wantsPictures ? "Pictures (*.png *.jpg *.jpeg *.gif *.webp *.svg *.bmp *.tiff)"
                      : "All files (*)");
    std::vector<std::filesystem::path> files;
    for (const QString& file : chosen) {
        files.emplace_back(file.toStdString());
    }
    if (!files.empty()) attach(files);
}

std::string Paster::attachmentFor(AttachmentDraft draft) {
    CDNote* const note = parts_.open.note();
    if (note == nullptr) return {};
    try {
        return AttachmentService::bodyElement(parts_.environment.attachments().insert(
            parts_.environment.context(), *note, std::move(draft)));
    } catch (const UserError& error) {
        showNotice(&parts_.body, error.what());
        return {};
    }
}

/// What a pasted picture or file becomes in this note; none when it stays as it is.
std::optional<std::string> Paster::adopted(const std::string& html) {
    const NoteObject object = NoteObject::of(html);
    constexpr std::string_view dataScheme = "data:";
    if (object.kind == NoteObject::Kind::picture && object.source.starts_with(dataScheme)) {
        const std::size_t comma = object.source.find(',');
        const std::string type =
            object.source.substr(dataScheme.size(), object.source.find(';') - dataScheme.size());
        return attachmentFor(
            {.filename = object.label,
             .declaredType = type,
             .data = bytesOf(QByteArray::fromBase64(
                 QByteArray::fromStdString(object.source.substr(comma + 1)))),
             .sourceKind = "paste"});
    }
    if (!object.attachment) return {};
    StoreContext& context = parts_.environment.context();
    const CDAttachment* const source = context.find<CDAttachment>(*object.attachment);
    CDNote* const note = parts_.open.note();
    if (source == nullptr || note == nullptr) return std::string();
    if (source->note.get() == note) return {};
    return AttachmentService::bodyElement(
        parts_.environment.attachments().clone(context, *source, *note));
}

/// Pictures stand in paragraphs of their own: the toolkit makes the line before a picture that does
/// not fit into it as tall as the picture. In a list or a quote they stay in their line.
void Paster::insertObjects(const std::vector<std::string>& objects) {
    const NoteDocument& shown = parts_.body.note();
    const QTextBlock host = parts_.body.textCursor().block();
    const bool isApart =
        shown.kind(host) == BlockStyle::Kind::paragraph || shown.isObjectBlock(host);
    std::string html;
    for (const std::string& object : objects) {
        const bool isPicture = object.starts_with("<img");
        html += isPicture && isApart ? "<p>" + object + "</p>" : object;
    }
    if (html.empty() || !parts_.environment.save(&parts_.body)) return;
    AttributedText text = attributedText(html);
    for (AttributedText::Paragraph& paragraph : text.paragraphs) {
        paragraph.holder = AttributedText::Holder::usual;  // pictures are bare in a list
    }
    parts_.body.edit([&](NoteDocument& note, QTextCursor& cursor) {
        isApart ? note.insertParagraphs(cursor, text) : note.insert(cursor, text);
    });
}

}  // namespace tesserine::app
