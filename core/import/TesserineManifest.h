#pragma once

#include "base/Encoding.h"
#include "base/Instant.h"
#include "base/UserError.h"
#include "base/Uuid.h"
#include "core/tasks/TaskTemplateContent.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tesserine {

class TesserineFolder;

/// A folder that cannot be imported as an export of a library. Nothing was changed.
class TesserineImportError final : public UserError {
public:
    static TesserineImportError noManifest(const std::string& folder) {
        return TesserineImportError(
            "“" + folder + "” is no whole export of a library: it has no manifest.json.");
    }
    static TesserineImportError badManifest(const std::string& reason) {
        return TesserineImportError("manifest.json cannot be read: " + reason + ".");
    }
    static TesserineImportError otherVersion(std::int64_t version) {
        return TesserineImportError(
            "The export has format version " + std::to_string(version)
            + ", which this version of Tesserine cannot read.");
    }

private:
    explicit TesserineImportError(const std::string& sentence) : UserError(sentence) {}
};

/// What the manifest of an export says, as plain values: texts are clean, identifiers and dates are
/// some or absent; nothing else was checked. A record without an identifier is left out and
/// counted. The format is described in `docs/formats/export.md`.
struct TesserineManifest {
    struct Notebook {
        Uuid id;
        std::string name{};
        std::optional<Uuid> parentID{};
        std::string path{};  ///< "Work / Plans"
        bool isFavorite = false;
        std::optional<std::string> colorHex{};
    };
    struct Tag {
        Uuid id;
        std::string name{};
        std::optional<Uuid> parentID{};
        std::optional<std::string> colorHex{};
    };
    struct Attachment {
        Uuid id;
        std::string filename{};
        std::string mimeType{};
        std::int64_t byteCount = 0;
        std::string sha256{};
        std::string path{};  ///< empty: its bytes are not in the export
        std::optional<std::string> ocrText{};
        std::optional<std::string> extractedText{};
        std::string sourceKind{};
        bool integrityVerified = false;
    };
    struct Note {
        Uuid id;
        std::string title{};
        std::optional<Instant> createdAt{};
        std::optional<Instant> updatedAt{};
        std::optional<Uuid> notebookID{};
        std::vector<std::string> tags{};
        bool isPinned = false;
        bool isTemplate = false;
        std::optional<Instant> reminderAt{};
        std::optional<Instant> trashedAt{};
        std::optional<std::string> sourceURL{};
        std::optional<double> latitude{};
        std::optional<double> longitude{};
        std::string htmlPath{};
        std::string originalSourcePath{};
        std::optional<std::string> originalFormat{};
        std::optional<Bytes> importMetadata{};  ///< as the library keeps it
        std::vector<Attachment> attachments{};
        std::int64_t revisionCount = 0;
    };
    struct Project {
        Uuid id;
        std::string name{};
        bool isInbox = false;
    };
    struct Task {
        Uuid id;
        std::string title{};
        std::string details{};
        std::optional<Uuid> projectID{};
        std::optional<Instant> dueDate{};
        bool dueHasTime = false;
        std::optional<Instant> reminderAt{};
        std::int64_t priority = 4;
        std::optional<Instant> completedAt{};
        std::optional<RecurrenceRule> rule{};
        std::vector<std::string> labels{};
        std::optional<Uuid> linkedNoteID{};
        std::optional<Uuid> parentTaskID{};
        std::optional<Instant> createdAt{};
        std::optional<Instant> updatedAt{};
    };
    struct TaskTemplate {
        Uuid id;
        TaskTemplateContent content{};
        std::optional<Instant> createdAt{};
        std::optional<Instant> updatedAt{};
    };

    std::vector<Notebook> notebooks{};
    std::vector<Tag> tags{};
    std::vector<Note> notes{};
    std::vector<Project> projects{};
    std::vector<Task> tasks{};
    std::vector<TaskTemplate> taskTemplates{};
    std::size_t unreadable = 0;  ///< records that were left out

    /// Throws `TesserineImportError` and `FileError`.
    static TesserineManifest read(const TesserineFolder& folder);
};

}  // namespace tesserine
