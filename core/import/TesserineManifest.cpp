#include "core/import/TesserineManifest.h"

#include "base/Files.h"
#include "base/JSON.h"
#include "base/Text.h"
#include "core/import/TesserineFolder.h"
#include "core/tasks/TaskSnapshot.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <algorithm>
#include <limits>

namespace tesserine {
namespace {

using boost::json::object;
using boost::json::value;
using Manifest = TesserineManifest;

constexpr std::int64_t readableVersion = 1;
constexpr std::uint64_t largestManifest = std::uint64_t{1} << 30;

/// Reads the members of one record; one that is missing or of another type is absent.
class Record {
public:
    explicit Record(const object& record) : record_(record) {}

    std::optional<std::string> optionalText(std::string_view key) const {
        const value* const found = record_.if_contains(key);
        if (found == nullptr || !found->is_string()) return std::nullopt;
        return text::sanitized(std::string(found->get_string()));
    }
    std::string text(std::string_view key) const { return optionalText(key).value_or(""); }
    std::optional<Uuid> identifier(std::string_view key) const { return Uuid::parse(text(key)); }
    std::optional<Instant> instant(std::string_view key) const {
        return Instant::parseISO(text(key));
    }
    bool isTrue(std::string_view key) const {
        const value* const found = record_.if_contains(key);
        return found != nullptr && found->is_bool() && found->get_bool();
    }
    std::optional<std::int64_t> integer(std::string_view key) const {
        const value* const found = record_.if_contains(key);
        return found != nullptr && found->is_int64() ? std::optional(found->get_int64())
                                                     : std::nullopt;
    }
    std::optional<double> number(std::string_view key) const {
        const value* const found = record_.if_contains(key);
        return found != nullptr && found->is_number() ? std::optional(found->to_number<double>())
                                                      : std::nullopt;
    }
    std::optional<int> small(std::string_view key) const {
        const auto found = integer(key);
        if (!found || *found < 0 || *found > std::numeric_limits<int>::max()) return std::nullopt;
        return static_cast<int>(*found);
    }
    std::vector<std::string> texts(std::string_view key) const {
        std::vector<std::string> list;
        forEach(key, [&list](const value& element) {
            if (!element.is_string()) return;
            list.push_back(text::sanitized(std::string(element.get_string())));
        });
        return list;
    }
    const object* member(std::string_view key) const {
        const value* const found = record_.if_contains(key);
        return found != nullptr && found->is_object() ? &found->get_object() : nullptr;
    }
    /// Hands every element of a list to `take`.
    template <class Take>
    void forEach(std::string_view key, Take take) const {
        const value* const found = record_.if_contains(key);
        if (found == nullptr || !found->is_array()) return;
        for (const value& element : found->get_array()) {
            take(element);
        }
    }

private:
    const object& record_;
};

/// A rule in the range that the library keeps.
std::optional<RecurrenceRule> rule(const Record& owner) {
    const object* const found = owner.member("recurrenceRule");
    if (found == nullptr) return std::nullopt;
    const Record record(*found);
    const auto unit = recurrenceUnit(record.text("unit"));
    if (!unit) return std::nullopt;
    RecurrenceRule read{.unit = *unit, .interval = record.small("interval").value_or(1)};
    record.forEach("weekdays", [&read](const value& day) {
        const bool isWeekday = day.is_int64() && day.get_int64() >= 1 && day.get_int64() <= 7;
        if (isWeekday) read.weekdays.insert(static_cast<int>(day.get_int64()));
    });
    read.dayOfMonth = record.small("dayOfMonth");
    read.monthOfYear = record.small("monthOfYear");
    return RecurrenceRule::fromStorageString(read.storageString());
}

/// What an earlier import left over: texts by name.
std::optional<Bytes> importMetadata(const Record& record) {
    const object* const found = record.member("importMetadata");
    if (found == nullptr) return std::nullopt;
    const std::string text = json::write(*found);
    return Bytes(text.begin(), text.end());
}

void read(const Record& record, Manifest::Notebook& notebook) {
    notebook.name = record.text("name");
    notebook.parentID = record.identifier("parentID");
    notebook.path = record.text("path");
    notebook.isFavorite = record.isTrue("isFavorite");
    notebook.colorHex = record.optionalText("colorHex");
}

void read(const Record& record, Manifest::Tag& tag) {
    tag.name = record.text("name");
    tag.parentID = record.identifier("parentID");
    tag.colorHex = record.optionalText("colorHex");
}

void read(const Record& record, Manifest::Attachment& attachment) {
    attachment.filename = record.text("filename");
    attachment.mimeType = record.text("mimeType");
    attachment.byteCount = std::max<std::int64_t>(record.integer("byteCount").value_or(0), 0);
    attachment.sha256 = record.text("sha256");
    attachment.path = record.text("path");
    attachment.ocrText = record.optionalText("ocrText");
    attachment.extractedText = record.optionalText("extractedText");
    attachment.sourceKind = record.text("sourceKind");
    attachment.integrityVerified = record.isTrue("integrityVerified");
}

void read(const Record& record, Manifest::Project& project) {
    project.name = record.text("name");
    project.isInbox = record.isTrue("isInbox");
}

void read(const Record& record, Manifest::Task& task) {
    task.title = record.text("title");
    task.details = record.text("details");
    task.projectID = record.identifier("projectID");
    task.dueDate = record.instant("dueDate");
    task.dueHasTime = record.isTrue("dueHasTime");
    task.reminderAt = record.instant("reminderAt");
    task.priority = record.integer("priority").value_or(4);
    task.completedAt = record.instant("completedAt");
    task.rule = rule(record);
    task.labels = record.texts("labels");
    task.linkedNoteID = record.identifier("linkedNoteID");
    task.parentTaskID = record.identifier("parentTaskID");
    task.createdAt = record.instant("createdAt");
    task.updatedAt = record.instant("updatedAt");
}

void read(const Record& record, Manifest::TaskTemplate& taskTemplate) {
    taskTemplate.content = {
        .name = record.text("name"),
        .title = record.text("title"),
        .notes = record.text("details"),
        .priority = taskPriority(record.integer("priority").value_or(4)),
        .labels = record.texts("labels"),
        .dueOffsetDays = record.integer("dueOffsetDays"),
        .dueTime = timeOfDay(record.text("dueTime")),
        .recurrence = rule(record),
        .projectID = record.identifier("projectID"),
        .subtasks = record.texts("subtasks")};
    taskTemplate.createdAt = record.instant("createdAt");
    taskTemplate.updatedAt = record.instant("updatedAt");
}

void read(const Record& record, Manifest::Note& note);

/// The records of a list that have an identifier; tells how many have none.
template <class Entry>
std::size_t readList(const Record& owner, std::string_view key, std::vector<Entry>& entries) {
    std::size_t unreadable = 0;
    owner.forEach(key, [&](const value& element) {
        const auto id =
            element.is_object() ? Record(element.get_object()).identifier("id") : std::nullopt;
        if (!id) {
            ++unreadable;
            return;
        }
        entries.emplace_back().id = *id;
        read(Record(element.get_object()), entries.back());
    });
    return unreadable;
}

void read(const Record& record, Manifest::Note& note) {
    note.title = record.text("title");
    note.createdAt = record.instant("createdAt");
    note.updatedAt = record.instant("updatedAt");
    note.notebookID = record.identifier("notebookID");
    note.tags = record.texts("tags");
    note.isPinned = record.isTrue("isPinned");
    note.isTemplate = record.isTrue("isTemplate");
    note.reminderAt = record.instant("reminderAt");
    note.trashedAt = record.instant("trashedAt");
    note.sourceURL = record.optionalText("sourceURL");
    note.latitude = record.number("latitude");
    note.longitude = record.number("longitude");
    note.htmlPath = record.text("htmlPath");
    note.originalSourcePath = record.text("originalSourcePath");
    note.originalFormat = record.optionalText("originalFormat");
    note.importMetadata = importMetadata(record);
    readList(record, "attachments", note.attachments);
    note.revisionCount = record.integer("revisionCount").value_or(0);
}

}  // namespace

TesserineManifest TesserineManifest::read(const TesserineFolder& folder) {
    if (!folder.file("manifest.json")) throw TesserineImportError::noManifest(folder.title());
    const auto bytes = folder.read("manifest.json", largestManifest);
    if (!bytes) throw TesserineImportError::badManifest("it is larger than 1 GiB");
    value parsed;
    try {
        parsed = json::parse(textOf(*bytes), {.byteCount = largestManifest, .depth = 16});
    } catch (const json::JSONError& error) {
        throw TesserineImportError::badManifest(error.what());
    }
    if (!parsed.is_object()) throw TesserineImportError::badManifest("it is no object");
    const Record record(parsed.get_object());
    const std::int64_t version = record.integer("formatVersion").value_or(0);
    if (version != readableVersion) throw TesserineImportError::otherVersion(version);

    TesserineManifest manifest;
    manifest.unreadable += readList(record, "notebooks", manifest.notebooks);
    manifest.unreadable += readList(record, "tags", manifest.tags);
    manifest.unreadable += readList(record, "notes", manifest.notes);
    manifest.unreadable += readList(record, "projects", manifest.projects);
    manifest.unreadable += readList(record, "tasks", manifest.tasks);
    manifest.unreadable += readList(record, "taskTemplates", manifest.taskTemplates);
    return manifest;
}

}  // namespace tesserine
