#include "core/import/AppleNoteContent.h"

#include "base/Files.h"
#include "base/Text.h"
#include "core/body/BodyError.h"
#include "core/body/CanonicalBody.h"
#include "core/body/HTMLSerializer.h"
#include "core/body/Limits.h"
#include "core/import/AppleNoteTable.h"
#include "core/import/SourceNames.h"
#include "core/services/Limits.h"

#include <array>
#include <set>

namespace tesserine {
namespace {

constexpr std::string_view inLine = "com.apple.notes.inlinetextattachment.";

std::string element(
    HTMLElement element,
    std::string_view attribute,
    std::string_view value,
    std::string_view text) {
    const std::array<HTMLAttribute, 1> attributes{{{attribute, value}}};
    HTMLSerializer html;
    html.open(element, html::nameOf(element), attributes);
    html.text(text);
    html.close();
    return html.html();
}

std::string unsupported(std::string_view text) {
    return element(HTMLElement::span, "class", "ts-unsupported", text);
}

std::string escaped(std::string_view text) {
    std::string html;
    html::appendEscapedText(html, text);
    return html;
}

}  // namespace

/// Says what each kind of attachment becomes; where files and links lead is left open.
class AppleNoteContent::References : public AppleNoteReferences {
public:
    explicit References(AppleNoteContent& content) : content_(content) {}

    std::string attachment(const AppleSpan& span) final {
        const auto [entry, isNew] = elements_.try_emplace(span.attachment);
        if (isNew) entry->second = made(span);
        // A text that repeats a large table ends before memory does.
        byteCount_ += entry->second.size();
        if (byteCount_ > mostElementBytes) throw BodyError::tooLarge();
        return entry->second;
    }

protected:
    virtual std::string file(const Part& part) = 0;
    virtual void warn(std::string sentence) = 0;

private:
    std::string made(const AppleSpan& span) {
        const Part& part = content_.part(span);
        const AppleAttachment& what = part.attachment;
        if (what.type.starts_with(inLine)) return textInLine(what);
        if (what.type == "com.apple.notes.table") return table(what);
        if (what.type == "public.url" && !what.address.empty()) {
            return element(
                HTMLElement::a,
                "href",
                what.address,
                what.title.empty() ? what.address : what.title);
        }
        if (part.file) return file(part);
        warn("“" + what.type + "” could not be taken over.");
        return unsupported(what.type);
    }
    std::string textInLine(const AppleAttachment& what) {
        const std::string note = linkedAppleNote(what.target);
        const auto address = note.empty() ? std::nullopt : noteAddress(note);
        if (!address) return escaped(what.text);
        return element(HTMLElement::a, "href", *address, what.text);
    }
    std::string table(const AppleAttachment& what) {
        // No table stands in another one, so a table that names itself is damaged.
        const bool wasInTable = std::exchange(isInTable_, true);
        const auto html = wasInTable ? std::nullopt : appleNoteTable(what.table, *this);
        isInTable_ = wasInTable;
        if (html) return *html;
        warn("A table is damaged, so it could not be taken over.");
        return unsupported("Table");
    }

    static constexpr std::size_t mostElementBytes = 4 * limits::canonicalBodyBytes;

    AppleNoteContent& content_;
    std::unordered_map<std::string, std::string> elements_;  // by identifier
    std::size_t byteCount_ = 0;
    bool isInTable_ = false;
};

/// Marks made of what the text says, so that a note has one fingerprint wherever things lead.
class AppleNoteContent::Marks final : public References {
public:
    explicit Marks(AppleNoteContent& content) : References(content), linked_(content.linked_) {}

    std::optional<std::string> noteAddress(std::string_view identifier) override {
        linked_.emplace_back(identifier);
        return NoteService::noteURL(importedNoteID({}, identifier));
    }

private:
    std::string file(const Part& part) override {
        const std::string id = importedNoteID({}, part.file->filename().string()).text();
        return element(HTMLElement::div, "data-ts-attachment", id, "file");
    }
    void warn(std::string) override {}

    std::vector<std::string>& linked_;
};

/// References of a note that is going into the library.
class AppleNoteContent::WrittenReferences final : public References {
public:
    WrittenReferences(
        AppleNoteContent& content,
        const Uuid& noteID,
        const AppleNoteNumbers& numbers,
        NoteLinks& links,
        AttachmentIntake& intake,
        std::vector<std::string>& warnings)
        : References(content),
          noteID_(noteID),
          numbers_(numbers),
          links_(links),
          intake_(intake),
          warnings_(warnings) {}

    std::optional<std::string> noteAddress(std::string_view identifier) override {
        const auto number = numbers_.find(std::string(identifier));
        const auto id =
            number == numbers_.end() ? std::nullopt : links_.address(number->second, noteID_);
        if (!id) return std::nullopt;
        return NoteService::noteURL(*id);
    }

private:
    std::string file(const Part& part) override {
        std::string name = part.attachment.filename;
        if (name.empty()) name = text::sanitized(part.file->filename().string());
        try {
            return AttachmentService::bodyElement(intake_.take(
                {.filename = name,
                 .data = files::read(*part.file, limits::attachmentBytes, files::Links::refuse)}));
        } catch (const AttachmentError& error) {
            warn(error.what());
        } catch (const FileError& error) {
            const bool isTooLarge = error.kind() == FileError::Kind::tooLarge;
            warn(isTooLarge ? AttachmentError::tooLarge(name).what() : error.what());
        }
        return unsupported(name);
    }
    void warn(std::string sentence) override { warnings_.push_back(std::move(sentence)); }

    const Uuid noteID_;
    const AppleNoteNumbers& numbers_;
    NoteLinks& links_;
    AttachmentIntake& intake_;
    std::vector<std::string>& warnings_;
};

AppleNoteContent::AppleNoteContent(
    const AppleNote& note, AppleNoteStore& store, const AppleNoteFiles& files)
    : note_(note), store_(store), files_(files), source_(store.text(note)), title_(note.title) {
    if (note.isLocked) {
        canonical_ = element(HTMLElement::div, "class", "ts-unsupported", "Locked in Apple Notes");
        return;
    }
    if (!source_.empty()) {
        auto paragraphs = appleNoteText(source_);
        if (!paragraphs) throw AppleNotesError::damagedText();
        paragraphs_ = std::move(*paragraphs);
    }
    takeTitle();
    Marks marks(*this);
    canonical_ = canonicalBody(appleNoteHTML(paragraphs_, marks)).html;
}

/// The first line is the title, whatever it looks like.
void AppleNoteContent::takeTitle() {
    if (paragraphs_.empty()) return;
    const AppleParagraph& first = paragraphs_.front();
    const std::string text = text::collapsed(first.text());
    const bool isTitle =
        first.style == AppleParagraph::Style::title || text == text::collapsed(note_.title);
    const bool isPlain = std::ranges::all_of(
        first.spans, [](const AppleSpan& span) { return span.attachment.empty(); });
    if (!isTitle || !isPlain || text.empty()) return;
    title_ = text;
    paragraphs_.erase(paragraphs_.begin());
}

const AppleNoteContent::Part& AppleNoteContent::part(const AppleSpan& span) {
    const auto [entry, isNew] = parts_.try_emplace(span.attachment);
    Part& part = entry->second;
    if (!isNew) return part;
    part.attachment = store_.attachment(span.attachment).value_or(AppleAttachment{});
    AppleAttachment& what = part.attachment;
    if (what.type.empty()) what.type = span.type.empty() ? "Attachment" : span.type;
    if (!what.media.empty()) part.file = files_.medium(what.media, what.filename);
    if (!part.file) part.file = files_.fallback(span.attachment);
    if (what.type == std::string(inLine) + "hashtag" && what.text.starts_with('#')) {
        tags_.push_back(what.text.substr(1));
    }
    return part;
}

ImportDraft AppleNoteContent::draft() {
    ImportDraft draft{
        .createdAt = note_.createdAt,
        .updatedAt = note_.updatedAt,
        .notebookPath = note_.folder,
        .isPinned = note_.isPinned,
        .originalFormat = appleNotesFormat,
        .originalSource = std::move(source_)};
    if (note_.isLocked) {
        draft.warnings.emplace_back(
            "The note is locked in Apple Notes, so only its title came in.");
    }
    draft.title = sourceTitle(title_, draft.warnings);
    draft.fingerprint =
        importFingerprint(appleNotesFormat, draft.title, draft.createdAt, canonical_);
    SourceTags tags;
    for (const std::string& tag : tags_) {
        tags.add(tag, draft.warnings);
    }
    draft.tags = tags.names();
    if (!note_.identifier.empty()) draft.metadata.emplace_back("identifier", note_.identifier);
    return draft;
}

std::string AppleNoteContent::body(
    const Uuid& noteID,
    const AppleNoteNumbers& numbers,
    NoteLinks& links,
    AttachmentIntake& intake,
    std::vector<std::string>& warnings) {
    if (note_.isLocked) return canonical_;
    WrittenReferences references(*this, noteID, numbers, links, intake, warnings);
    return appleNoteHTML(paragraphs_, references);
}

std::vector<std::filesystem::path> AppleNoteContent::files() const {
    std::set<std::filesystem::path> paths;
    for (const auto& [identifier, part] : parts_) {
        if (part.file) paths.insert(*part.file);
    }
    return {paths.begin(), paths.end()};
}

}  // namespace tesserine
