#include "core/export/NoteExport.h"

#include "base/Encoding.h"
#include "core/body/PlainText.h"
#include "core/export/MarkdownFile.h"
#include "core/export/NoteFacts.h"
#include "core/export/NotePage.h"

namespace tesserine {
namespace {

/// Pictures of the note as addresses that hold them; other attachments have none.
AddressMap picturesOf(const CDNote& note) {
    return [&note](std::string_view address) -> std::string {
        if (!address.starts_with(attachmentAddress)) return std::string(address);
        const auto id = Uuid::parse(address.substr(attachmentAddress.size()));
        for (const CDAttachment* const attachment : note.attachments.all()) {
            const std::string type = attachment->mimeType.valueOr("");
            if (attachment->id != id || !type.starts_with("image/")) continue;
            const auto& data = attachment->fileData.get();
            return data ? "data:" + type + ";base64," + base64(*data) : "";
        }
        return {};
    };
}

std::string page(const CDNote& note, const Calendar& calendar, const text::Collator& collator) {
    NotePage page{
        .title = displayTitle(note.title.valueOr(""), note.plainText.valueOr("")),
        .facts = factsOf(note, tagNames(note, collator), calendar),
        .body = note.html.valueOr(""),
        .files = {}};
    for (const CDAttachment* const attachment : note.attachments.all()) {
        const auto byteCount = static_cast<std::uint64_t>(attachment->byteCount.valueOr(0));
        page.files.push_back({attachment->filename.valueOr(""), "", byteCount});
    }
    return htmlPage(page, picturesOf(note));
}

}  // namespace

std::optional<NoteFileForm> noteFileFormOf(const std::filesystem::path& file) {
    const std::string extension = text::asciiLowercased(file.extension().string());
    if (extension == ".html" || extension == ".htm") return NoteFileForm::page;
    if (extension == ".md" || extension == ".markdown") return NoteFileForm::markdown;
    if (extension == ".txt") return NoteFileForm::text;
    return std::nullopt;
}

std::string noteFile(
    const CDNote& note,
    NoteFileForm form,
    const Calendar& calendar,
    const text::Collator& collator) {
    switch (form) {
    case NoteFileForm::page: return page(note, calendar, collator);
    case NoteFileForm::markdown:
        return markdownFileOf(markdownHeadOf(note, collator), note.html.valueOr(""), {});
    case NoteFileForm::text: return note.plainText.valueOr("") + "\n";
    }
    return {};
}

}  // namespace tesserine
