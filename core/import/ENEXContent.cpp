#include "core/import/ENEXContent.h"

#include "base/Text.h"
#include "core/body/CanonicalBody.h"
#include "core/body/HTMLSerializer.h"
#include "core/import/ENEXTasks.h"
#include "core/import/ENMLConverter.h"
#include "core/import/ENMLDocument.h"
#include "core/import/Recognition.h"
#include "core/import/SourceDate.h"
#include "core/import/SourceNames.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <set>

namespace tesserine {
namespace {

std::string shownName(const ENEXResource& file) {
    const std::string name(text::trimmed(file.filename));
    return name.empty() ? "A file" : "“" + name + "”";
}

/// The digests of the files that the text shows.
std::set<std::string> shownFiles(const HTMLDocument& enml) {
    struct Reader {
        void enter(const HTMLNode& node) {
            if (node.name() != "en-media") return;
            digests.insert(
                text::asciiLowercased(text::trimmed(node.attribute("hash").value_or(""))));
        }
        void leave(const HTMLNode&) {}

        std::set<std::string> digests;
    };
    Reader reader;
    walk(enml.root(), reader);
    return reader.digests;
}

/// A sentence about a file that cannot come in; none for one that can.
std::optional<std::string> refusalOf(const ENEXResource& file) {
    const std::string name = shownName(file);
    switch (file.state) {
    case ENEXResource::State::damaged:
        return name + " is damaged in the export, so it was left out.";
    case ENEXResource::State::tooLarge:
        return name + " is larger than the 100 MB limit, so it was left out.";
    case ENEXResource::State::whole: break;
    }
    if (file.byteCount == 0) return name + " is empty, so there was nothing to attach.";
    return std::nullopt;
}

std::optional<double> degrees(std::string_view text, double most) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isPlace =
        error == std::errc() && end == text.data() + text.size() && value >= -most && value <= most;
    return isPlace ? std::optional(value) : std::nullopt;
}

std::optional<NoteLocation> locationOf(const ENEXFields& attributes) {
    const auto latitude = degrees(attributes.text("latitude"), 90);
    const auto longitude = degrees(attributes.text("longitude"), 180);
    if (!latitude || !longitude) return std::nullopt;
    return NoteLocation{*latitude, *longitude};
}

std::optional<Instant> reminderOf(const ENEXFields& attributes) {
    if (!attributes.text("reminder-done-time").empty()) return std::nullopt;
    return compactDate(attributes.text("reminder-time"));
}

/// Attributes that have a place of their own in a note, unless they were not understood.
void takeAttributes(const ENEXFields& attributes, ImportDraft& draft) {
    draft.location = locationOf(attributes);
    draft.reminderAt = reminderOf(attributes);
    const std::string_view source = attributes.text("source-url");
    if (!source.empty()) draft.sourceURL = source;
    for (const auto& [name, text] : attributes.all()) {
        const bool isPlace = name == "latitude" || name == "longitude";
        const bool isTaken = (isPlace && draft.location)
                             || (name == "reminder-time" && draft.reminderAt)
                             || (name == "source-url" && draft.sourceURL);
        if (isTaken || text::isBlank(text)) continue;
        draft.metadata.emplace_back(name, text::trimmed(text));
    }
}

/// Marks made of what the text says, so that a note has one fingerprint wherever things lead.
class Marks final : public ENMLReferences {
public:
    std::optional<std::string> file(std::string_view md5) override {
        hasReferences = true;
        return "<div data-ts-attachment=\"" + importedNoteID({}, md5).text() + "\">file</div>";
    }
    std::optional<std::string> noteAddress(std::string_view linkText) override {
        linkTexts.emplace_back(linkText);
        return NoteService::noteURL(importedNoteID({}, linkText));
    }
    std::string taskGroup(std::string_view) override {
        hasReferences = true;
        return {};
    }

    std::vector<std::string> linkTexts;
    bool hasReferences = false;
};

}  // namespace

/// References of a note that is going into the library.
class ENEXContent::WrittenReferences final : public ENMLReferences {
public:
    WrittenReferences(
        const ENEXContent& content,
        const Uuid& noteID,
        const NoteTitles& titles,
        NoteLinks& links,
        AttachmentIntake& intake,
        std::vector<std::string>& warnings)
        : content_(content),
          noteID_(noteID),
          titles_(titles),
          links_(links),
          intake_(intake),
          warnings_(warnings) {
        for (const ENEXResource& file : content.note_.resources) {
            if (!refusalOf(file)) files_.emplace(file.md5, &file);
        }
    }

    std::optional<std::string> file(std::string_view md5) override {
        const auto known = elements_.find(md5);
        if (known != elements_.end()) return known->second;
        const auto found = files_.find(md5);
        if (found == files_.end()) return std::nullopt;
        return take(*found->second);
    }
    /// Takes the files that the text does not show.
    void takeOthers() {
        for (const auto& [md5, file] : files_) {
            if (!elements_.contains(md5)) take(*file);
        }
    }
    std::optional<std::string> noteAddress(std::string_view linkText) override {
        const auto note = titles_.find(linkText);
        const auto id = note ? links_.address(*note, noteID_) : std::nullopt;
        if (!id) return std::nullopt;
        return NoteService::noteURL(*id);
    }
    std::string taskGroup(std::string_view id) override {
        return content_.options_.createsTasks ? std::string{} : taskChecklist(content_.note_, id);
    }

private:
    std::string take(const ENEXResource& file) {
        AttachmentDraft draft{
            .filename = text::sanitized(std::string(text::trimmed(file.filename))),
            .declaredType = std::string(text::trimmed(file.type)),
            .data =
                content_.note_.files.read(file.offset, static_cast<std::size_t>(file.byteCount))};
        std::optional<std::string> words;
        if (!text::isBlank(file.recognition)) words = recognisedText(file.recognition);
        try {
            const CDAttachment& taken = intake_.take(std::move(draft), words);
            return elements_[file.md5] = AttachmentService::bodyElement(taken);
        } catch (const AttachmentError& error) {
            warnings_.emplace_back(error.what());
        }
        return elements_[file.md5] = refusedElement(file);
    }
    static std::string refusedElement(const ENEXResource& file) {
        constexpr std::array<HTMLAttribute, 1> attributes{{{"class", "ts-unsupported"}}};
        HTMLSerializer element;
        element.open(HTMLElement::div, "div", attributes);
        element.text(shownName(file));
        element.close();
        return element.html();
    }

    const ENEXContent& content_;
    const Uuid noteID_;
    const NoteTitles& titles_;
    NoteLinks& links_;
    AttachmentIntake& intake_;
    std::vector<std::string>& warnings_;
    std::map<std::string, const ENEXResource*, std::less<>> files_;  // by digest
    std::map<std::string, std::string, std::less<>> elements_;       // of those that were taken
};

ENEXContent::ENEXContent(
    ENEXNote note, const ImportEnvironment& environment, const ImportOptions& options)
    : environment_(environment),
      options_(options),
      note_(std::move(note)),
      enml_(parsedENML(note_.content)) {
    note_.content = {};
    adoptStrayFile();
    for (const ENEXResource& file : note_.resources) {
        if (auto refusal = refusalOf(file)) warnings_.push_back(std::move(*refusal));
    }
    if (note_.wasMended) {
        warnings_.emplace_back("Characters that an export file may not hold were replaced.");
    }
    Marks marks;
    std::vector<std::string> laterWarnings;
    canonical_ =
        canonicalBody(htmlFromENML(enml_, marks, options.keepsRemoteImages, laterWarnings)).html;
    linkTexts_ = std::move(marks.linkTexts);
    hasReferences_ = marks.hasReferences || !linkTexts_.empty() || !laterWarnings.empty();
}

/// One file that nothing shows and one place that shows a file which is not there belong together:
/// the export was written with a wrong digest.
void ENEXContent::adoptStrayFile() {
    const std::set<std::string> shown = shownFiles(enml_);
    std::set<std::string> missing = shown;
    std::vector<ENEXResource*> stray;
    for (ENEXResource& file : note_.resources) {
        if (!shown.contains(file.md5)) stray.push_back(&file);
        missing.erase(file.md5);
    }
    if (missing.size() != 1 || stray.size() != 1 || missing.begin()->empty()) return;
    if (!refusalOf(*stray.front())) {
        warnings_.push_back(
            shownName(*stray.front())
            + " has another digest than the note says; it was taken in as it is.");
    }
    stray.front()->md5 = *missing.begin();
}

ImportDraft ENEXContent::draft() {
    ImportDraft draft{
        .createdAt = compactDate(note_.created),
        .updatedAt = compactDate(note_.updated),
        .originalFormat = enexFormat,
        .originalSource = std::move(note_.source),
        .warnings = warnings_};
    draft.title = sourceTitle(note_.title, draft.warnings);
    if (!draft.updatedAt) draft.updatedAt = draft.createdAt;
    draft.fingerprint = importFingerprint(enexFormat, draft.title, draft.createdAt, canonical_);
    SourceTags tags;
    for (const std::string& tag : note_.tags) {
        tags.add(tag, draft.warnings);
    }
    draft.tags = tags.names();
    takeAttributes(note_.attributes, draft);
    if (options_.createsTasks) draft.tasks = enexTasks(note_, environment_.calendar);
    return draft;
}

std::string ENEXContent::body(
    const Uuid& noteID,
    const NoteTitles& titles,
    NoteLinks& links,
    AttachmentIntake& intake,
    std::vector<std::string>& warnings) {
    WrittenReferences references(*this, noteID, titles, links, intake, warnings);
    std::string html = hasReferences_
                           ? htmlFromENML(enml_, references, options_.keepsRemoteImages, warnings)
                           : std::move(canonical_);
    references.takeOthers();
    return html;
}

std::vector<std::size_t> ENEXContent::linkedNotes(const NoteTitles& titles) const {
    std::vector<std::size_t> notes;
    for (const std::string& text : linkTexts_) {
        if (const auto note = titles.find(text)) notes.push_back(*note);
    }
    return notes;
}

}  // namespace tesserine
