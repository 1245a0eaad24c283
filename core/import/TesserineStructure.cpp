#include "core/import/TesserineStructure.h"

#include "base/Text.h"
#include "core/services/NotebookService.h"
#include "core/services/StoredNames.h"
#include "core/services/TagService.h"
#include "core/store/StoreContext.h"
#include "core/tasks/ProjectService.h"
#include "core/tasks/TaskService.h"
#include "core/tasks/TaskSnapshot.h"

#include <map>

namespace tesserine {
namespace {

constexpr std::size_t tasksPerBatch = 500;

std::optional<std::string> colorOf(const std::optional<std::string>& color) {
    return color ? storedColor(*color) : std::nullopt;
}

/// The place behind everything of its kind that is there.
template <class Entity>
std::int64_t nextPlace(StoreContext& context) {
    const SortDescriptor last{"sortIndex", SortDescriptor::Order::descending};
    const Entity* const found = context.fetchFirst<Entity>({.sort = {last}});
    return found == nullptr ? 0 : found->sortIndex.valueOr(0) + 1;
}

/// The records in an order in which none comes before its parent; those of a ring last.
template <class Record>
std::vector<const Record*> parentsFirst(
    const std::vector<Record>& records, std::optional<Uuid> Record::*parent) {
    std::set<Uuid> ids;
    for (const Record& record : records) {
        ids.insert(record.id);
    }
    std::map<Uuid, std::vector<const Record*>> children;
    std::vector<const Record*> ordered;
    for (const Record& record : records) {
        const std::optional<Uuid>& above = record.*parent;
        (above && ids.contains(*above) ? children[*above] : ordered).push_back(&record);
    }
    const auto add = [&ordered](const std::vector<const Record*>& below) {
        ordered.insert(ordered.end(), below.begin(), below.end());
    };
    for (std::size_t i = 0; i < ordered.size(); ++i) {
        const auto below = children.extract(ordered[i]->id);
        if (!below.empty()) add(below.mapped());
    }
    for (const auto& [id, below] : children) {
        add(below);
    }
    return ordered;
}

template <class Entity>
Entity* found(
    StoreContext& context,
    const std::unordered_map<Uuid, Uuid>& standIns,
    const std::optional<Uuid>& id) {
    const auto known = id ? standIns.find(*id) : standIns.end();
    return known == standIns.end() ? nullptr : context.find<Entity>(known->second);
}

}  // namespace

std::size_t TesserineStructure::addNotebooks(
    const std::vector<TesserineManifest::Notebook>& records) {
    const std::size_t before = made_.size();
    for (const auto* const record : parentsFirst(records, &TesserineManifest::Notebook::parentID)) {
        notebookIDs_[record->id] = *standIn(*record, notebook(record->parentID)).id;
    }
    return made_.size() - before;
}

CDNotebook& TesserineStructure::standIn(
    const TesserineManifest::Notebook& record, CDNotebook* parent) {
    if (auto* const present = context_.find<CDNotebook>(record.id)) return *present;
    const std::string name = storedNotebookName(record.name);
    // Two of one name in the export stay two.
    CDNotebook* const named = NotebookService(clock_).find(context_, name, parent);
    if (named != nullptr && !made_.contains(*named->id)) return *named;

    auto& notebook = context_.insert<CDNotebook>();
    notebook.id = record.id;
    notebook.name = name;
    notebook.parent = parent;
    notebook.isFavorite = record.isFavorite;
    notebook.colorHex = colorOf(record.colorHex);
    notebook.createdAt = clock_.now();
    notebook.updatedAt = notebook.createdAt;
    made_.insert(record.id);
    return notebook;
}

std::size_t TesserineStructure::addTags(const std::vector<TesserineManifest::Tag>& records) {
    const std::size_t before = made_.size();
    std::unordered_map<Uuid, CDTag*> byRecord;
    for (const auto* const record : parentsFirst(records, &TesserineManifest::Tag::parentID)) {
        const auto parent = record->parentID ? byRecord.find(*record->parentID) : byRecord.end();
        CDTag* const tag = standIn(*record, parent == byRecord.end() ? nullptr : parent->second);
        if (tag == nullptr) continue;
        byRecord[record->id] = tag;
        tagIDs_.emplace(text::caseFolded(*tag->name), *tag->id);
    }
    return made_.size() - before;
}

CDTag* TesserineStructure::standIn(const TesserineManifest::Tag& record, CDTag* parent) {
    if (auto* const present = context_.find<CDTag>(record.id)) return present;
    const auto name = storedTagName(record.name);
    if (!name) return nullptr;
    CDTag* const named = TagService(clock_).find(context_, *name);
    if (named != nullptr && !made_.contains(*named->id)) return named;

    auto& tag = context_.insert<CDTag>();
    tag.id = record.id;
    tag.name = *name;
    tag.parent = parent;
    tag.colorHex = colorOf(record.colorHex);
    tag.createdAt = clock_.now();
    tag.updatedAt = tag.createdAt;
    made_.insert(record.id);
    return &tag;
}

std::size_t TesserineStructure::addProjects(
    const std::vector<TesserineManifest::Project>& records) {
    const std::size_t before = made_.size();
    auto place = nextPlace<CDProject>(context_);
    for (const auto& record : records) {
        projectIDs_[record.id] = *standIn(record, place++).id;
    }
    return made_.size() - before;
}

CDProject& TesserineStructure::standIn(
    const TesserineManifest::Project& record, std::int64_t place) {
    if (auto* const present = context_.find<CDProject>(record.id)) return *present;
    const std::string name(
        text::prefix(text::trimmed(record.name), ProjectService::maximumNameCharacters));
    CDProject* const same =
        record.isInbox ? context_.fetchFirst<CDProject>({.predicate = {"isInbox == YES"}})
                       : context_.fetchFirst<CDProject>({.predicate = {"name ==[c] %@", name}});
    if (same != nullptr && (record.isInbox || !made_.contains(*same->id))) return *same;

    auto& project = context_.insert<CDProject>();
    project.id = record.id;
    project.name = name;
    project.isInbox = record.isInbox;
    project.sortIndex = place;
    project.createdAt = clock_.now();
    project.updatedAt = project.createdAt;
    made_.insert(record.id);
    return project;
}

std::size_t TesserineStructure::addTaskTemplates(
    const std::vector<TesserineManifest::TaskTemplate>& records) {
    std::size_t count = 0;
    for (const auto& record : records) {
        if (context_.find<CDTaskTemplate>(record.id) != nullptr) continue;
        TaskTemplateContent content = record.content;
        if (content.projectID) {
            const CDProject* const owner = project(content.projectID);
            content.projectID = owner == nullptr ? std::nullopt : owner->id.get();
        }
        auto& taskTemplate = context_.insert<CDTaskTemplate>();
        taskTemplate.id = record.id;
        content.store(taskTemplate);
        taskTemplate.createdAt = record.createdAt.value_or(clock_.now());
        taskTemplate.updatedAt = record.updatedAt.value_or(clock_.now());
        ++count;
    }
    return count;
}

std::size_t TesserineStructure::addTasks(
    const std::vector<TesserineManifest::Task>& records, const std::stop_token& stop) {
    std::size_t count = 0;
    const auto firstPlace = nextPlace<CDTask>(context_);
    for (const auto* const record : parentsFirst(records, &TesserineManifest::Task::parentTaskID)) {
        if (stop.stop_requested()) break;
        if (context_.find<CDTask>(record->id) != nullptr) continue;
        insertTask(*record, firstPlace + (record - records.data()));
        if (++count % tasksPerBatch != 0) continue;
        context_.save();
        context_.reset();
    }
    context_.save();
    return count;
}

void TesserineStructure::insertTask(const TesserineManifest::Task& record, std::int64_t place) {
    auto& task = context_.insert<CDTask>();
    task.id = record.id;
    task.title = std::string(text::prefix(record.title, TaskService::maximumTitleCharacters));
    task.details = record.details;
    task.dueDate = record.dueDate;
    task.dueHasTime = record.dueHasTime;
    task.reminderAt = record.reminderAt;
    task.priority = static_cast<std::int16_t>(taskPriority(record.priority));
    task.completedAt = record.completedAt;
    if (record.rule) task.recurrenceRule = record.rule->storageString();
    task.createdAt = record.createdAt.value_or(clock_.now());
    task.updatedAt = record.updatedAt.value_or(clock_.now());
    task.sortIndex = place;
    task.project = project(record.projectID);
    if (record.parentTaskID) task.parent = context_.find<CDTask>(*record.parentTaskID);
    if (record.linkedNoteID) task.linkedNote = context_.find<CDNote>(*record.linkedNoteID);
    for (CDTag* const label : tags(record.labels)) {
        task.labels.add(*label);
    }
}

CDNotebook* TesserineStructure::notebook(const std::optional<Uuid>& id) const {
    return found<CDNotebook>(context_, notebookIDs_, id);
}

CDProject* TesserineStructure::project(const std::optional<Uuid>& id) const {
    return found<CDProject>(context_, projectIDs_, id);
}

std::vector<CDTag*> TesserineStructure::tags(const std::vector<std::string>& names) {
    std::vector<CDTag*> result;
    for (const std::string& name : names) {
        const std::string key = text::caseFolded(text::trimmed(name));
        const auto known = tagIDs_.find(key);
        CDTag* tag = known == tagIDs_.end() ? nullptr : context_.find<CDTag>(known->second);
        if (tag == nullptr) tag = TagService(clock_).findOrCreate(context_, name);
        if (tag == nullptr) continue;
        tagIDs_[key] = *tag->id;
        result.push_back(tag);
    }
    return result;
}

}  // namespace tesserine
