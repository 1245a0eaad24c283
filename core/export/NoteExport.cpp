#include "core/export/NoteExport.h"

#include "base/Encoding.h"
#include "base/Files.h"
#include "core/body/PlainText.h"
#include "core/export/ExportFolder.h"
#include "core/export/MarkdownFile.h"
#include "core/export/NoteFacts.h"
#include "core/export/NotePage.h"

#include <system_error>
#include <unordered_map>

namespace tesserine {
namespace {

namespace fs = std::filesystem;

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

/// The attachments of a note, in a new folder beside the file that shows them. It goes again unless
/// `keep` is called.
class FilesBeside {
public:
    FilesBeside(const CDNote& note, const fs::path& file) {
        const auto attachments = note.attachments.all();
        if (attachments.empty()) return;
        makeFolder(file);
        for (const CDAttachment* const attachment : attachments) {
            write(*attachment);
        }
    }
    FilesBeside(const FilesBeside&) = delete;
    FilesBeside& operator=(const FilesBeside&) = delete;
    ~FilesBeside() {
        std::error_code ignored;
        if (!folder_.empty()) fs::remove_all(folder_, ignored);
    }
    void keep() { folder_.clear(); }

    /// The address of an attachment as seen from the file.
    std::string addressOf(std::string_view address) const {
        if (!address.starts_with(attachmentAddress)) return std::string(address);
        const auto id = Uuid::parse(address.substr(attachmentAddress.size()));
        const auto found = id ? names_.find(*id) : names_.end();
        if (found == names_.end()) return {};
        return addressFrom("", folder_.filename().string() + "/" + found->second);
    }

private:
    void makeFolder(const fs::path& file) {
        const std::string name = file.stem().string() + " files";
        fs::path folder = file.parent_path() / name;
        for (int number = 2; fs::exists(fs::symlink_status(folder)); ++number) {
            folder = file.parent_path() / (name + " " + std::to_string(number));
        }
        files::createPrivateFolder(folder);
        folder_ = folder;
    }
    void write(const CDAttachment& attachment) {
        const auto& data = attachment.fileData.get();
        if (!data) return;
        const fs::path given(files::safeName(attachment.filename.valueOr("")));
        fs::path place = folder_ / given;
        for (int number = 2; fs::exists(place); ++number) {
            place = folder_ / (given.stem().string() + " " + std::to_string(number));
            place += given.extension();
        }
        files::writeNew(place, *data);
        names_.emplace(attachment.id.valueOr(Uuid()), place.filename().string());
    }

    fs::path folder_;
    std::unordered_map<Uuid, std::string> names_;
};

void write(const fs::path& file, NoteFileTarget target, const std::string& text) {
    target == NoteFileTarget::newFile ? files::writeNew(file, bytesOf(text))
                                      : files::writeAtomically(file, bytesOf(text));
}

}  // namespace

std::optional<NoteFileForm> noteFileFormOf(const std::filesystem::path& file) {
    const std::string extension = text::asciiLowercased(file.extension().string());
    if (extension == ".html" || extension == ".htm") return NoteFileForm::page;
    if (extension == ".md" || extension == ".markdown") return NoteFileForm::markdown;
    if (extension == ".txt") return NoteFileForm::text;
    return std::nullopt;
}

void writeNoteFile(
    const CDNote& note,
    NoteFileForm form,
    const fs::path& file,
    NoteFileTarget target,
    const Calendar& calendar,
    const text::Collator& collator) {
    switch (form) {
    case NoteFileForm::page: return write(file, target, page(note, calendar, collator));
    case NoteFileForm::text: return write(file, target, note.plainText.valueOr("") + "\n");
    case NoteFileForm::markdown: break;
    }
    FilesBeside beside(note, file);
    const auto addressOf = [&](std::string_view address) { return beside.addressOf(address); };
    const std::string head = markdownHeadOf(note, collator);
    write(file, target, markdownFileOf(head, note.html.valueOr(""), addressOf));
    beside.keep();
}

}  // namespace tesserine
