#pragma once

#include "core/model/StoreObject.h"

#include <cstdint>
#include <string>

namespace tesserine {

class CDAttachment;
class CDNote;
class CDNotebook;
class CDNoteRevision;
class CDTag;
class CDTask;

template <>
inline constexpr EntityKind entityKindOf<CDNote> = EntityKind::note;
template <>
inline constexpr EntityKind entityKindOf<CDNotebook> = EntityKind::notebook;
template <>
inline constexpr EntityKind entityKindOf<CDTag> = EntityKind::tag;
template <>
inline constexpr EntityKind entityKindOf<CDAttachment> = EntityKind::attachment;
template <>
inline constexpr EntityKind entityKindOf<CDNoteRevision> = EntityKind::noteRevision;
template <>
inline constexpr EntityKind entityKindOf<CDTask> = EntityKind::task;

/// A note.
class CDNote final : public StoreObject {
public:
    static constexpr EntityKind kind = EntityKind::note;
    using StoreObject::StoreObject;

    Attribute<Uuid> id{*this, "id"};
    Attribute<std::string> title{*this, "title"};
    /// The body in its canonical form.
    Attribute<std::string> html{*this, "html", {.isDigested = true, .tier = Tier::large}};
    /// The body as plain text, for previews and search.
    Attribute<std::string> plainText{*this, "plainText", {.tier = Tier::large}};
    Attribute<Instant> createdAt{*this, "createdAt", {.isIndexed = true}};
    Attribute<Instant> updatedAt{*this, "updatedAt", {.isIndexed = true}};
    Attribute<std::string> sourceURL{*this, "sourceURL", {.tier = Tier::detail}};
    Attribute<bool> isPinned{*this, "isPinned", {.defaultValue = false, .isIndexed = true}};
    /// Present while the note is in the trash.
    Attribute<Instant> trashedAt{*this, "trashedAt", {.isIndexed = true}};
    Attribute<double> latitude{*this, "latitude", {.defaultValue = 0, .tier = Tier::detail}};
    Attribute<double> longitude{*this, "longitude", {.defaultValue = 0, .tier = Tier::detail}};
    /// Whether latitude and longitude mean anything.
    Attribute<bool> hasLocation{
        *this, "hasLocation", {.defaultValue = false, .tier = Tier::detail}};
    Attribute<std::string> originalFormat{*this, "originalFormat", {.tier = Tier::detail}};
    /// The imported source bytes, untouched.
    Attribute<Bytes> originalSource{
        *this, "originalSource", {.isExternal = true, .isDigested = true, .tier = Tier::large}};
    Attribute<Bytes> importMetadata{
        *this, "importMetadata", {.isExternal = true, .tier = Tier::large}};
    Attribute<std::string> importFingerprint{
        *this, "importFingerprint", {.isIndexed = true, .tier = Tier::detail}};
    Attribute<std::string> importedFrom{*this, "importedFrom", {.tier = Tier::detail}};
    /// Another writer's version was kept as a revision and waits to be looked at.
    Attribute<bool> hasConflict{*this, "hasConflict", {.defaultValue = false}};
    Attribute<std::int64_t> contentVersion{*this, "contentVersion", {.defaultValue = 1}};
    Attribute<Instant> reminderAt{*this, "reminderAt", {.isIndexed = true}};
    Attribute<bool> isTemplate{*this, "isTemplate", {.defaultValue = false, .isIndexed = true}};
    /// When it was pinned; orders the pinned notes.
    Attribute<Instant> favoritedAt{*this, "favoritedAt", {.isIndexed = true}};

    ToOne<CDNotebook> notebook{*this, "notebook", "notes"};
    ToMany<CDTag> tags{*this, "tags", "notes", {.ownsLinks = true}};
    ToMany<CDAttachment> attachments{
        *this, "attachments", "note", {.deleteRule = DeleteRule::cascade}};
    ToMany<CDNoteRevision> revisions{
        *this, "revisions", "note", {.deleteRule = DeleteRule::cascade}};
    ToMany<CDTask> tasks{*this, "tasks", "linkedNote"};
};

/// A folder of notes; notebooks form a tree.
class CDNotebook final : public StoreObject {
public:
    static constexpr EntityKind kind = EntityKind::notebook;
    using StoreObject::StoreObject;

    Attribute<Uuid> id{*this, "id"};
    Attribute<std::string> name{*this, "name"};
    Attribute<Instant> createdAt{*this, "createdAt"};
    Attribute<Instant> updatedAt{*this, "updatedAt"};
    Attribute<std::int64_t> sortIndex{*this, "sortIndex", {.defaultValue = 0}};
    Attribute<bool> isFavorite{*this, "isFavorite", {.defaultValue = false, .isIndexed = true}};
    Attribute<std::string> colorHex{*this, "colorHex"};
    /// The note template that new notes here start from.
    Attribute<Uuid> templateNoteId{*this, "templateNoteId"};

    ToMany<CDNote> notes{*this, "notes", "notebook"};
    ToMany<CDNotebook> children{*this, "children", "parent"};
    ToOne<CDNotebook> parent{*this, "parent", "children"};
};

/// A label of notes and tasks; tags form a tree.
class CDTag final : public StoreObject {
public:
    static constexpr EntityKind kind = EntityKind::tag;
    using StoreObject::StoreObject;

    Attribute<Uuid> id{*this, "id"};
    Attribute<std::string> name{*this, "name", {.isIndexed = true}};
    Attribute<Instant> createdAt{*this, "createdAt"};
    Attribute<Instant> updatedAt{*this, "updatedAt"};
    Attribute<std::string> colorHex{*this, "colorHex"};

    ToMany<CDNote> notes{*this, "notes", "tags"};
    ToMany<CDTag> children{*this, "children", "parent"};
    ToOne<CDTag> parent{*this, "parent", "children"};
    ToMany<CDTask> tasks{*this, "tasks", "labels"};
};

/// A search kept under a name.
class CDSavedSearch final : public StoreObject {
public:
    static constexpr EntityKind kind = EntityKind::savedSearch;
    using StoreObject::StoreObject;

    Attribute<Uuid> id{*this, "id"};
    Attribute<std::string> name{*this, "name"};
    Attribute<std::string> query{*this, "query"};
    Attribute<Instant> createdAt{*this, "createdAt"};
    Attribute<Instant> updatedAt{*this, "updatedAt"};
    Attribute<std::int64_t> sortIndex{*this, "sortIndex", {.defaultValue = 0}};
};

/// A file that belongs to a note.
class CDAttachment final : public StoreObject {
public:
    static constexpr EntityKind kind = EntityKind::attachment;
    using StoreObject::StoreObject;

    Attribute<Uuid> id{*this, "id"};
    Attribute<std::string> filename{*this, "filename"};
    Attribute<std::string> mimeType{*this, "mimeType"};
    Attribute<std::int64_t> byteCount{*this, "byteCount", {.defaultValue = 0}};
    /// Lower-case hexadecimal SHA-256 of the file's bytes.
    Attribute<std::string> sha256{*this, "sha256", {.isIndexed = true}};
    Attribute<Instant> createdAt{*this, "createdAt"};
    Attribute<std::string> ocrText{*this, "ocrText", {.tier = Tier::large}};
    Attribute<std::string> ocrStatus{*this, "ocrStatus"};
    Attribute<std::string> ocrLanguage{*this, "ocrLanguage"};
    Attribute<std::string> extractedText{*this, "extractedText", {.tier = Tier::large}};
    /// In points; 0 when unknown.
    Attribute<double> width{*this, "width", {.defaultValue = 0}};
    Attribute<double> height{*this, "height", {.defaultValue = 0}};
    Attribute<std::int64_t> pageCount{*this, "pageCount", {.defaultValue = 0}};
    Attribute<Bytes> fileData{
        *this, "fileData", {.isExternal = true, .isDigested = true, .tier = Tier::large}};
    Attribute<Bytes> thumbnailData{
        *this, "thumbnailData", {.isExternal = true, .tier = Tier::large}};
    Attribute<std::string> sourceKind{*this, "sourceKind"};
    Attribute<bool> integrityVerified{*this, "integrityVerified", {.defaultValue = false}};

    ToOne<CDNote> note{*this, "note", "attachments"};
};

/// An earlier state of a note.
class CDNoteRevision final : public StoreObject {
public:
    static constexpr EntityKind kind = EntityKind::noteRevision;
    using StoreObject::StoreObject;

    Attribute<Uuid> id{*this, "id"};
    Attribute<Instant> createdAt{*this, "createdAt"};
    Attribute<std::string> title{*this, "title"};
    Attribute<std::string> html{*this, "html", {.isDigested = true, .tier = Tier::large}};
    Attribute<std::string> plainText{*this, "plainText", {.tier = Tier::large}};
    /// Raw value of a `NoteRevisionReason`.
    Attribute<std::string> reason{*this, "reason"};

    ToOne<CDNote> note{*this, "note", "revisions"};
};

}  // namespace tesserine
