#include "core/import/ENEXNoteBuilder.h"

#include "base/Text.h"
#include "core/services/Limits.h"

#include <utility>

namespace tesserine {
namespace {

/// Decoded bytes are digested and put away in pieces of this size.
constexpr std::size_t decodedPieceSize = 65'536;

}  // namespace

std::string_view ENEXFields::text(std::string_view name) const {
    for (const auto& [field, text] : fields_) {
        if (field == name) return text::trimmed(text);
    }
    return {};
}

void ENEXNoteBuilder::open(std::string_view name, const XMLAttributes& attributes) {
    open_.push_back(text_ == nullptr ? opened(name, attributes) : Part::other);
}

void ENEXNoteBuilder::text(std::string_view text) {
    if (isInData()) {
        decoder_.decode(text, decoded_);
        if (decoded_.size() >= decodedPieceSize) takeData();
    } else if (text_ != nullptr && !note_.failure) {
        *text_ += text;
    }
}

void ENEXNoteBuilder::close() {
    if (isInData()) finishData();
    if (open_.size() == textDepth_) text_ = nullptr;
    open_.pop_back();
}

void ENEXNoteBuilder::fail(std::string sentence) {
    note_ = {.failure = std::move(sentence), .title = std::move(note_.title)};
    text_ = nullptr;
}

ENEXNoteBuilder::Part ENEXNoteBuilder::opened(
    std::string_view name, const XMLAttributes& attributes) {
    if (note_.failure) return name == "data" ? Part::data : Part::other;
    switch (open_.back()) {
    case Part::note: return openedInNote(name);
    case Part::attributes: {
        const std::string_view key = attributes.value("key");
        note_.attributes.add(std::string(key.empty() ? name : key), {});
        return take(note_.attributes.last());
    }
    case Part::resource: return openedInResource(name);
    case Part::resourceAttributes:
        return name == "file-name" ? take(note_.resources.back().filename) : Part::other;
    case Part::task:
        if (name == "reminder") return Part::reminder;
        note_.tasks.back().add(std::string(name), {});
        return take(note_.tasks.back().last());
    case Part::reminder:
        note_.tasks.back().add("reminder." + std::string(name), {});
        return take(note_.tasks.back().last());
    case Part::data:
    case Part::other: break;
    }
    return Part::other;
}

ENEXNoteBuilder::Part ENEXNoteBuilder::openedInNote(std::string_view name) {
    if (name == "title") return take(note_.title);
    if (name == "content") return take(note_.content);
    if (name == "created") return take(note_.created);
    if (name == "updated") return take(note_.updated);
    if (name == "tag") return take(note_.tags.emplace_back());
    if (name == "note-attributes") return Part::attributes;
    if (name == "task") {
        note_.tasks.emplace_back();
        return Part::task;
    }
    if (name != "resource") return Part::other;
    if (note_.resources.size() == ENEXReader::mostResources) {
        fail("The note has more than 5,000 files, so it was not imported.");
        return Part::other;
    }
    note_.resources.emplace_back();
    return Part::resource;
}

ENEXNoteBuilder::Part ENEXNoteBuilder::openedInResource(std::string_view name) {
    ENEXResource& resource = note_.resources.back();
    if (name == "mime") return take(resource.type);
    if (name == "recognition") return take(resource.recognition);
    if (name == "resource-attributes") return Part::resourceAttributes;
    // A second one would be other bytes under the same name: only the first is the file.
    if (name != "data" || resource.byteCount > 0) return Part::other;
    resource.offset = note_.files.size();
    return Part::data;
}

ENEXNoteBuilder::Part ENEXNoteBuilder::take(std::string& text) {
    text_ = &text;
    textDepth_ = open_.size() + 1;
    return Part::other;
}

void ENEXNoteBuilder::takeData() {
    if (files_ == ENEXReader::Files::digests) {
        sha256_.update(decoded_);
    } else {
        md5_.update(decoded_);
    }
    keep(decoded_);
    decoded_.clear();
}

void ENEXNoteBuilder::keep(std::span<const std::uint8_t> bytes) {
    if (note_.failure) return;
    ENEXResource& resource = note_.resources.back();
    resource.byteCount += bytes.size();
    if (resource.byteCount > limits::attachmentBytes) {
        resource.state = ENEXResource::State::tooLarge;
        note_.files.truncate(resource.offset);
    } else if (files_ == ENEXReader::Files::content) {
        note_.files.append(bytes);
    }
}

void ENEXNoteBuilder::finishData() {
    takeData();
    const bool isWhole = decoder_.finish();
    std::string md5 = md5_.finishHex();
    const SHA256Digest digest = sha256_.finish();
    if (note_.failure) return;
    ENEXResource& resource = note_.resources.back();
    resource.md5 = std::move(md5);
    resource.digest = digest;
    if (isWhole) return;
    resource.state = ENEXResource::State::damaged;
    note_.files.truncate(resource.offset);
}

}  // namespace tesserine
