#include "core/export/ManifestRecords.h"

#include "base/JSON.h"
#include "core/export/NoteFacts.h"
#include "core/services/Tree.h"
#include "core/tasks/TaskSnapshot.h"
#include "core/tasks/TaskTemplateContent.h"

#include <optional>
#include <utility>
#include <vector>

namespace tesserine::manifest {
namespace {

using boost::json::array;
using boost::json::object;
using boost::json::value;

value valueOf(const std::string& text) { return boost::json::string(text); }
value valueOf(const Uuid& id) { return valueOf(id.text()); }
value valueOf(Instant instant) { return valueOf(instant.iso()); }

/// Adds a value, if it is there.
template <class T>
void add(object& record, const char* key, const std::optional<T>& found) {
    if (found) record[key] = valueOf(*found);
}
void addText(object& record, const char* key, const std::string& text) {
    if (!text.empty()) record[key] = text;
}

value texts(const std::vector<std::string>& list) {
    array values;
    for (const std::string& text : list) {
        values.push_back(valueOf(text));
    }
    return values;
}

value identifier(const Attribute<Uuid>& id) { return valueOf(id.valueOr(Uuid())); }

template <class Entity>
std::optional<Uuid> idOf(const Entity* object) {
    return object == nullptr ? std::nullopt : object->id.get();
}

/// What an import left over: an object of texts, or nothing that can be read.
std::optional<object> importMetadata(const CDNote& note) {
    const auto& bytes = note.importMetadata.get();
    if (!bytes) return std::nullopt;
    try {
        const value parsed = json::parse(std::string(bytes->begin(), bytes->end()));
        if (parsed.is_object()) return parsed.get_object();
    } catch (const json::JSONError&) {
        // Whatever it is, it is no metadata; the library keeps it.
    }
    return std::nullopt;
}

void addRule(object& record, const std::optional<RecurrenceRule>& rule) {
    if (rule) record["recurrenceRule"] = rule->json();
}

}  // namespace

object Counts::json() const {
    return {
        {"notes", notes},
        {"trashedNotes", trashedNotes},
        {"notebooks", notebooks},
        {"tags", tags},
        {"attachments", attachments},
        {"attachmentBytes", attachmentBytes},
        {"tasks", tasks},
        {"projects", projects},
        {"taskTemplates", taskTemplates}};
}

object record(const CDNotebook& notebook) {
    object record{{"id", identifier(notebook.id)}, {"name", notebook.name.valueOr("")}};
    add(record, "parentID", idOf(notebook.parent.get()));
    record["path"] = tree::pathText(notebook);
    record["isFavorite"] = notebook.isFavorite.valueOr(false);
    add(record, "colorHex", notebook.colorHex.get());
    return record;
}

object record(const CDTag& tag) {
    object record{{"id", identifier(tag.id)}, {"name", tag.name.valueOr("")}};
    add(record, "parentID", idOf(tag.parent.get()));
    add(record, "colorHex", tag.colorHex.get());
    return record;
}

object record(const CDNote& note, const std::vector<std::string>& tags, NoteFiles files) {
    const CDNotebook* const notebook = note.notebook;
    const Instant updated = note.updatedAt.valueOr(Instant());
    object record{
        {"id", identifier(note.id)},
        {"title", note.title.valueOr("")},
        {"createdAt", valueOf(note.createdAt.valueOr(updated))},
        {"updatedAt", valueOf(updated)}};
    add(record, "notebookID", idOf(notebook));
    record["notebookPath"] = notebook == nullptr ? "" : tree::pathText(*notebook);
    record["tags"] = texts(tags);
    record["isPinned"] = note.isPinned.valueOr(false);
    record["isTemplate"] = note.isTemplate.valueOr(false);
    add(record, "reminderAt", note.reminderAt.get());
    add(record, "trashedAt", note.trashedAt.get());
    add(record, "sourceURL", note.sourceURL.get());
    if (note.hasLocation) {
        record["latitude"] = note.latitude.valueOr(0);
        record["longitude"] = note.longitude.valueOr(0);
    }
    record["htmlPath"] = files.html;
    addText(record, "markdownPath", files.markdown);
    addText(record, "originalSourcePath", files.originalSource);
    add(record, "originalFormat", note.originalFormat.get());
    if (auto metadata = importMetadata(note)) record["importMetadata"] = std::move(*metadata);
    record["attachments"] = std::move(files.attachments);
    record["hasConflict"] = note.hasConflict.valueOr(false);
    record["revisionCount"] = note.revisions.count();
    return record;
}

object record(const CDAttachment& attachment, const std::string& path) {
    object record{
        {"id", identifier(attachment.id)},
        {"filename", attachment.filename.valueOr("")},
        {"mimeType", attachment.mimeType.valueOr("")},
        {"byteCount", attachment.byteCount.valueOr(0)},
        {"sha256", attachment.sha256.valueOr("")}};
    addText(record, "path", path);
    add(record, "ocrText", attachment.ocrText.get());
    add(record, "extractedText", attachment.extractedText.get());
    record["sourceKind"] = attachment.sourceKind.valueOr("");
    record["integrityVerified"] = attachment.integrityVerified.valueOr(false);
    return record;
}

object record(const CDProject& project) {
    return {
        {"id", identifier(project.id)},
        {"name", project.name.valueOr("")},
        {"isInbox", project.isInbox.valueOr(false)}};
}

object record(const CDTask& task, const text::Collator& collator) {
    const Instant updated = task.updatedAt.valueOr(Instant());
    object record{
        {"id", identifier(task.id)},
        {"title", task.title.valueOr("")},
        {"details", task.details.valueOr("")}};
    add(record, "projectID", idOf(task.project.get()));
    add(record, "dueDate", task.dueDate.get());
    record["dueHasTime"] = task.dueHasTime.valueOr(false);
    add(record, "reminderAt", task.reminderAt.get());
    record["priority"] = static_cast<int>(taskPriority(task.priority.valueOr(4)));
    add(record, "completedAt", task.completedAt.get());
    const auto rule = RecurrenceRule::fromStorageString(task.recurrenceRule.valueOr(""));
    addRule(record, rule);
    if (rule) record["recurrenceDescription"] = rule->description();
    record["labels"] = texts(labelNames(task, collator));
    add(record, "linkedNoteID", idOf(task.linkedNote.get()));
    add(record, "parentTaskID", idOf(task.parent.get()));
    record["createdAt"] = valueOf(task.createdAt.valueOr(updated));
    record["updatedAt"] = valueOf(updated);
    return record;
}

object record(const CDTaskTemplate& taskTemplate) {
    const TaskTemplateContent content = TaskTemplateContent::of(taskTemplate);
    const Instant updated = taskTemplate.updatedAt.valueOr(Instant());
    object record{
        {"id", identifier(taskTemplate.id)},
        {"name", content.name},
        {"title", content.title},
        {"details", content.notes},
        {"priority", static_cast<int>(content.priority)},
        {"labels", texts(content.labels)}};
    if (content.dueOffsetDays) record["dueOffsetDays"] = *content.dueOffsetDays;
    if (content.dueTime) record["dueTime"] = timeText(*content.dueTime);
    addRule(record, content.recurrence);
    add(record, "projectID", content.projectID);
    record["subtasks"] = texts(content.subtasks);
    record["createdAt"] = valueOf(taskTemplate.createdAt.valueOr(updated));
    record["updatedAt"] = valueOf(updated);
    return record;
}

}  // namespace tesserine::manifest
