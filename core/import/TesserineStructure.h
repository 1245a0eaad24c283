#pragma once

#include "base/Clock.h"
#include "core/import/TesserineManifest.h"
#include "core/model/TaskEntities.h"

#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <unordered_map>
#include <vector>

namespace tesserine {

class StoreContext;

/// Puts what notes stand in (notebooks, tags) and tasks with theirs (projects, templates) from an
/// export into a library, under the identifiers they had.
///
/// What the library holds already under the same identifier, or under the same name in the same
/// place, stands for the record and stays as it is. On the thread that owns `context`, which
/// outlives it and may be reset between calls. Throws `StoreError`.
class TesserineStructure {
public:
    TesserineStructure(StoreContext& context, const Clock& clock)
        : context_(context), clock_(clock) {}

    // These do not save; they tell how many were made.

    std::size_t addNotebooks(const std::vector<TesserineManifest::Notebook>& records);
    std::size_t addTags(const std::vector<TesserineManifest::Tag>& records);
    std::size_t addProjects(const std::vector<TesserineManifest::Project>& records);
    std::size_t addTaskTemplates(const std::vector<TesserineManifest::TaskTemplate>& records);

    /// Saves and resets the context now and then, so that memory does not grow with the tasks.
    /// Stops between two of them when asked to.
    std::size_t addTasks(
        const std::vector<TesserineManifest::Task>& records, const std::stop_token& stop);

    /// The notebook that stands for the record `id`, if any.
    CDNotebook* notebook(const std::optional<Uuid>& id) const;
    /// The tags of these names, made where there are none.
    std::vector<CDTag*> tags(const std::vector<std::string>& names);

private:
    CDNotebook& standIn(const TesserineManifest::Notebook& record, CDNotebook* parent);
    CDTag* standIn(const TesserineManifest::Tag& record, CDTag* parent);
    CDProject& standIn(const TesserineManifest::Project& record, std::int64_t place);
    CDProject* project(const std::optional<Uuid>& id) const;
    void insertTask(const TesserineManifest::Task& record, std::int64_t place);

    StoreContext& context_;
    const Clock& clock_;
    // What stands for a record, by the record's identifier; for tags by case-folded name.
    std::unordered_map<Uuid, Uuid> notebookIDs_;
    std::unordered_map<Uuid, Uuid> projectIDs_;
    std::unordered_map<std::string, Uuid> tagIDs_;
    std::set<Uuid> made_;  // by this import
};

}  // namespace tesserine
