#include "core/import/MarkdownNote.h"

#include "base/Digest.h"
#include "base/Files.h"
#include "base/Text.h"
#include "core/body/BodyError.h"
#include "core/body/CanonicalBody.h"
#include "core/body/Limits.h"
#include "core/import/ImportRun.h"
#include "core/import/LinkTable.h"
#include "core/import/MarkdownHTML.h"
#include "core/import/NoteLinks.h"
#include "core/import/ReferenceRewriter.h"
#include "core/import/TextDecoding.h"
#include "core/services/Limits.h"

#include <algorithm>

namespace tesserine {
namespace {

/// Puts in the place of every reference an identifier made of its address, so that a body has one
/// form and one fingerprint wherever its references lead today.
class Placeholders final : public ReferenceResolver {
public:
    ReferenceChange picture(std::string_view address) override {
        const std::string begin = text::asciiLowercased(address.substr(0, 8));
        if (begin.starts_with("http://") || begin.starts_with("https://")) return {};
        return {
            ReferenceChange::Kind::element,
            "<img src=\"" + std::string(attachmentScheme) + identifier(address) + "\">"};
    }
    ReferenceChange link(std::string_view address) override {
        const bool isWiki =
            address.starts_with(wikiLinkScheme) || address.starts_with(wikiEmbedScheme);
        const bool isElsewhere = localAddress(address, {}).kind == LocalAddress::Kind::elsewhere;
        if (!isWiki && isElsewhere) return {};
        return {ReferenceChange::Kind::address, "tesserine://note/" + identifier(address)};
    }

private:
    static std::string identifier(std::string_view address) {
        return importedNoteID({}, address).text();
    }
};

Bytes readSource(const std::filesystem::path& path) {
    try {
        return files::read(path, limits::canonicalBodyBytes, files::Links::refuse);
    } catch (const FileError& error) {
        if (error.kind() == FileError::Kind::tooLarge) throw BodyError::tooLarge();
        throw;
    }
}

bool isHTMLFile(std::string_view filename) {
    const std::string name = text::asciiLowercased(filename);
    return name.ends_with(".html") || name.ends_with(".htm");
}

bool isExportedFile(std::string_view filename) {
    return isHTMLFile(filename) || isMarkdownFile(filename);
}

std::string fileTitle(const SourceFile& file) {
    const std::filesystem::path path = std::filesystem::path(file.relative).filename();
    const std::string name = path.string();
    const std::string title =
        isHTMLFile(name) ? path.stem().string() : std::string(withoutMarkdownExtension(name));
    return text::composed(text::sanitized(title));
}

/// HTML as if it had been made from Markdown: its first heading of level 1 is the title.
MarkdownHTML readHTML(std::string text) {
    MarkdownHTML result{.html = std::move(text), .hasReferences = true};
    const std::string lowercased = text::asciiLowercased(result.html);
    const std::size_t begin = lowercased.find("<h1");
    const std::size_t end = lowercased.find("</h1>", std::min(begin, lowercased.size()));
    if (end == std::string::npos) return result;
    result.headingBegin = begin;
    result.headingEnd = end + std::string_view("</h1>").size();
    return result;
}

/// The heading as one line of text; empty when it is longer than a title may be.
std::string headingText(const MarkdownHTML& markdown) {
    std::string text = canonicalBody(markdown.heading()).plainText;
    std::ranges::replace(text, '\n', ' ');
    const std::string_view trimmed = text::trimmed(text);
    const bool fits = text::prefix(trimmed, limits::titleCharacters).size() == trimmed.size();
    return fits ? std::string(trimmed) : std::string{};
}

void takeTitle(MarkdownNote& note, MarkdownHTML& markdown, const SourceFile& file) {
    if (note.properties.title) {
        note.title = *note.properties.title;
        // Many programs write the title twice, as the first line again.
        const bool isRepeated = markdown.hasHeading() && markdown.headingBegin == 0
                                && headingText(markdown) == text::trimmed(note.title);
        if (isRepeated) markdown.removeHeading();
        return;
    }
    if (markdown.hasHeading()) note.title = headingText(markdown);
    if (note.title.empty()) {
        note.title = fileTitle(file);
    } else {
        markdown.removeHeading();
    }
}

/// Dates of the front matter before those of the file; never created after it was changed, and a
/// file from the future is from now.
void takeDates(MarkdownNote& note, const FileTimes& file, Instant now) {
    const auto& [created, updated] = std::pair(note.properties.created, note.properties.updated);
    note.updatedAt = updated.value_or(std::min(file.modified, now));
    note.createdAt = created.value_or(std::min({file.created, note.updatedAt, now}));
    if (!updated) note.updatedAt = std::max(note.updatedAt, note.createdAt);
}

std::string canonicalWithPlaceholders(const MarkdownNote& note) {
    if (!note.body) return canonicalBody(note.html).html;
    Placeholders placeholders;
    return canonicalBody(withResolvedReferences(*note.body, placeholders)).html;
}

}  // namespace

const FileDialect markdownFiles{"markdown", isMarkdownFile};
const FileDialect appleNotesFiles{"apple-notes", isExportedFile};

MarkdownNote readMarkdownNote(
    const FileDialect& dialect,
    const SourceFolder& folder,
    const SourceFile& file,
    const ImportEnvironment& environment,
    const ImportOptions& options) {
    MarkdownNote note;
    const auto path = folder.path(file);
    const FileTimes times = SourceFolder::times(path);
    note.source = readSource(path);

    DecodedText decoded = decodedText(note.source);
    if (!decoded.warning.empty()) note.warnings.push_back(std::move(decoded.warning));
    const bool isHTML = dialect.isNote == isExportedFile && isHTMLFile(file.relative);
    std::string_view markdownText = decoded.text;
    const auto matter = isHTML ? std::nullopt : parseFrontMatter(markdownText);
    if (matter) {
        note.properties = markdownProperties(*matter, environment.calendar);
        std::ranges::move(note.properties.warnings, std::back_inserter(note.warnings));
        markdownText.remove_prefix(matter->end);
    }

    const std::string name = text::asciiLowercased(file.relative);
    const MarkdownReading reading{
        .recognisesTags = options.recognisesTags, .isPlainText = name.ends_with(".txt")};
    MarkdownHTML markdown =
        isHTML ? readHTML(std::move(decoded.text)) : markdownToHTML(markdownText, reading);
    takeTitle(note, markdown, file);
    takeDates(note, times, environment.clock.now());
    std::ranges::move(markdown.tags, std::back_inserter(note.properties.tags));
    note.html = std::move(markdown.html);
    if (markdown.hasReferences) note.body = HTMLDocument::parse(note.html);
    note.fingerprint = importFingerprint(
        dialect.format, note.title, note.properties.created, canonicalWithPlaceholders(note));
    return note;
}

}  // namespace tesserine
