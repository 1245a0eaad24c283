#include "core/services/AttachmentService.h"

#include "base/Digest.h"
#include "base/Files.h"
#include "base/Text.h"
#include "core/body/HTMLSerializer.h"
#include "core/services/ImageSize.h"
#include "core/services/Limits.h"
#include "core/store/StoreContext.h"

#include <algorithm>
#include <array>

namespace tesserine {
namespace {

constexpr std::size_t longestExtension = 10;

std::string_view lastComponent(std::string_view path) {
    const std::size_t separator = path.find_last_of("/\\");
    return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

/// What stands after the last dot, when it looks like an extension: the "2" of "Report 1.2" and
/// the "5 draft" of "v0.5 draft" do not.
std::string_view extensionOfName(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return {};
    const std::string_view extension = name.substr(dot + 1);
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const auto isPlain = [&](char c) {
        return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    };
    const bool looksRight = extension.size() <= longestExtension
                            && std::ranges::all_of(extension, isPlain)
                            && !std::ranges::all_of(extension, isDigit);
    return looksRight ? extension : std::string_view{};
}

/// The name in a sentence about a file that was not attached.
std::string shownName(std::string_view filename) {
    const std::string_view name = lastComponent(filename);
    return text::isBlank(name) ? "Attachment" : files::safeName(name);
}

std::string kindOf(const CDAttachment& attachment, std::string_view type) {
    if (attachment.sourceKind == std::string("scan")) return "scan";
    if (type == "application/pdf") return "pdf";
    if (type.starts_with("audio/")) return "audio";
    if (type.starts_with("video/")) return "video";
    return "file";
}

/// A picture that may be shown in a note. A drawing of type SVG is a program of a kind: it stays a
/// file.
bool isPicture(std::string_view type) {
    return type.starts_with("image/") && type != "image/svg+xml";
}

/// A length in pixels as bodies write it; none when it is unknown or beyond what they take.
std::optional<std::string> shownLength(double length) {
    constexpr double largest = 10'000;
    if (!(length >= 1 && length <= largest)) return std::nullopt;
    return std::to_string(static_cast<int>(length));
}

}  // namespace

CDAttachment& AttachmentService::insert(
    StoreContext& context, CDNote& note, AttachmentDraft draft) const {
    const std::string name = shownName(draft.filename);
    if (draft.data.empty()) throw AttachmentError::empty(name);
    if (draft.data.size() > limits::attachmentBytes) throw AttachmentError::tooLarge(name);

    const std::string digest = sha256Hex(draft.data);
    const auto present = note.attachments.all();
    for (CDAttachment* attachment : present) {
        if (attachment->sha256 == digest) return *attachment;
    }
    if (present.size() >= limits::attachmentsPerNote) throw AttachmentError::tooMany(name);

    const std::string extension(extensionOfName(lastComponent(draft.filename)));
    const std::string type = mime::chosen(
        {.declared = mime::normalised(draft.declaredType),
         .sniffed = mime::sniffed(draft.data),
         .ofExtension = mime::ofExtension(extension, registry_)});

    auto& made = context.insert<CDAttachment>();
    if (draft.id) made.id = *draft.id;
    made.filename = storedFilename(draft.filename, type);
    made.mimeType = type;
    made.byteCount = static_cast<std::int64_t>(draft.data.size());
    made.sha256 = digest;
    made.createdAt = clock_.now();
    made.ocrStatus = mime::ocrStatus(type);
    made.sourceKind = draft.sourceKind;
    made.integrityVerified = true;
    if (const auto size = imageSize(draft.data); size && type.starts_with("image/")) {
        made.width = size->width;
        made.height = size->height;
    }
    made.fileData = std::move(draft.data);
    made.note = &note;
    return made;
}

CDAttachment& AttachmentService::insertFile(
    StoreContext& context,
    CDNote& note,
    const std::filesystem::path& file,
    const std::string& sourceKind) const {
    const std::string name = text::sanitized(file.filename().string());
    AttachmentDraft draft{.filename = name, .sourceKind = sourceKind};
    try {
        draft.data = files::read(file, limits::attachmentBytes);
    } catch (const FileError& error) {
        if (error.kind() != FileError::Kind::tooLarge) throw;
        throw AttachmentError::tooLarge(shownName(name));
    }
    return insert(context, note, std::move(draft));
}

std::string AttachmentService::bodyElement(const CDAttachment& attachment) {
    const std::string id = attachment.id.valueOr(Uuid{}).text();
    const std::string type = attachment.mimeType.valueOr("");
    HTMLSerializer element;
    if (!isPicture(type)) {
        const std::string kind = kindOf(attachment, type);
        const std::array<HTMLAttribute, 2> attributes{
            {{"data-ts-attachment", id}, {"data-ts-kind", kind}}};
        element.open(HTMLElement::div, "div", attributes);
        element.text(attachment.filename.valueOr("Attachment"));
        element.close();
        return element.html();
    }
    const std::string address = std::string(attachmentScheme) + id;
    const auto width = shownLength(attachment.width.valueOr(0));
    const auto height = shownLength(attachment.height.valueOr(0));
    std::vector<HTMLAttribute> attributes{{"src", address}};
    if (width && height) {
        attributes.push_back({"width", *width});
        attributes.push_back({"height", *height});
    }
    element.open(HTMLElement::img, "img", attributes);
    element.close();
    return element.html();
}

void AttachmentService::appendToBody(
    StoreContext& context,
    CDNote& note,
    const std::vector<const CDAttachment*>& attachments) const {
    std::string body = note.html.valueOr("");
    for (const CDAttachment* attachment : attachments) {
        const std::string element = bodyElement(*attachment);
        body += element.starts_with("<img") ? "<p>" + element + "</p>" : element;
    }
    notes_.updateNote(context, note, {.html = std::move(body)});
}

std::size_t AttachmentService::cloneReferenced(StoreContext& context, CDNote& note) const {
    std::map<Uuid, Uuid> replacements;
    for (const Uuid& id : attachmentReferences(note.html.valueOr(""))) {
        const CDAttachment* source = context.find<CDAttachment>(id);
        if (source == nullptr || source->note.get() == &note) continue;
        replacements.emplace(id, *clone(context, *source, note).id);
    }
    if (!replacements.empty()) note.html = withReplacedReferences(*note.html, replacements);
    return replacements.size();
}

CDAttachment& AttachmentService::clone(
    StoreContext& context, const CDAttachment& source, CDNote& note) const {
    auto& copy = context.insert<CDAttachment>();
    copy.filename = source.filename;
    copy.mimeType = source.mimeType;
    copy.byteCount = source.byteCount;
    copy.sha256 = source.sha256;
    copy.createdAt = clock_.now();
    copy.ocrText = source.ocrText;
    copy.ocrStatus = source.ocrStatus;
    copy.ocrLanguage = source.ocrLanguage;
    copy.extractedText = source.extractedText;
    copy.width = source.width;
    copy.height = source.height;
    copy.pageCount = source.pageCount;
    copy.fileData = source.fileData;
    copy.thumbnailData = source.thumbnailData;
    copy.sourceKind = source.sourceKind;
    copy.integrityVerified = source.integrityVerified;
    copy.note = &note;
    return copy;
}

AttachmentService::Integrity AttachmentService::saveToFile(
    const CDAttachment& attachment, const std::filesystem::path& file, IfExists ifExists) const {
    if (!attachment.fileData) {
        throw AttachmentError::missingData(attachment.filename.valueOr("Attachment"));
    }
    const Bytes& data = *attachment.fileData;
    try {
        if (ifExists == IfExists::replace) {
            files::writeAtomically(file, data);
        } else {
            files::writeNew(file, data);
        }
    } catch (const FileError& error) {
        if (error.kind() != FileError::Kind::exists) throw;
        throw AttachmentError::exists(text::sanitized(file.string()));
    }
    return attachment.sha256 == sha256Hex(data) ? Integrity::intact : Integrity::damaged;
}

std::string AttachmentService::damageWarning(const CDAttachment& attachment) {
    return "“" + attachment.filename.valueOr("Attachment")
           + "” is not what was attached: its content has changed since.";
}

std::vector<CDNoteRevision*> AttachmentService::referringRevisions(
    const CDAttachment& attachment) const {
    const CDNote* note = attachment.note;
    if (note == nullptr || !attachment.id) return {};
    auto revisions = notes_.revisions(*note);
    std::erase_if(revisions, [&](const CDNoteRevision* revision) {
        const auto references = attachmentReferences(revision->html.valueOr(""));
        return std::ranges::find(references, *attachment.id) == references.end();
    });
    return revisions;
}

void AttachmentService::deleteAttachment(StoreContext& context, CDAttachment& attachment) const {
    CDNote* note = attachment.note;
    if (note != nullptr && note->html && attachment.id) {
        const auto references = attachmentReferences(*note->html);
        if (std::ranges::find(references, *attachment.id) != references.end()) {
            notes_.updateNote(
                context, *note, {.html = withoutReferences(*note->html, *attachment.id)});
        }
    }
    context.remove(attachment);
}

CDAttachment& AttachmentService::getAttachment(StoreContext& context, const Uuid& id) const {
    return context.get<CDAttachment>(id, "The attachment");
}

std::vector<CDAttachment*> AttachmentService::attachments(const CDNote& note) const {
    return note.attachments.all();
}

std::string AttachmentService::storedFilename(
    std::string_view filename, const std::string& type) const {
    const std::string_view given = lastComponent(filename);
    if (text::isBlank(given)) {
        const std::string name = type.starts_with("image/") ? "Image." : "Attachment.";
        return name + mime::extensionOf(type, registry_);
    }
    std::string name = files::safeName(given);
    const std::string_view extension = extensionOfName(name);
    const bool isRight =
        type == mime::unknownType || mime::ofExtension(extension, registry_) == type;
    if (isRight) return name;
    if (!extension.empty()) name.resize(name.size() - extension.size() - 1);
    return files::safeName(name + "." + mime::extensionOf(type, registry_));
}

}  // namespace tesserine
