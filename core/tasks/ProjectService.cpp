#include "core/tasks/ProjectService.h"

#include "base/Text.h"
#include "core/store/StoreContext.h"
#include "core/tasks/Places.h"

namespace tesserine {
namespace {

/// Oldest first, so that of two twins it is always the same one that is found.
const std::vector<SortDescriptor> oldestFirst{{"createdAt"}};

/// The name a project is stored under; empty when nothing is left of it.
std::string_view storedName(std::string_view name) {
    const auto cut = text::prefix(text::trimmed(name), ProjectService::maximumNameCharacters);
    return text::trimmed(cut);
}

bool isInboxName(std::string_view name) {
    return text::caseFolded(name) == text::caseFolded(ProjectService::inboxName);
}

/// The project that has the name already, other than `except`.
bool isTaken(StoreContext& context, std::string_view name, CDProject* except = nullptr) {
    if (isInboxName(name)) return true;
    return context.fetchFirst<CDProject>(
               {.predicate = {"name ==[c] %@ AND SELF != %@", name, except}})
           != nullptr;
}

std::vector<CDProject*> inboxes(StoreContext& context) {
    return context.fetch<CDProject>({.predicate = {"isInbox == YES"}, .sort = oldestFirst});
}

}  // namespace

CDProject& ProjectService::inbox(StoreContext& context) const {
    const auto found = inboxes(context);
    if (!found.empty()) return *found.front();
    CDProject& made = insert(context, inboxName);
    made.isInbox = true;
    return made;
}

CDProject* ProjectService::find(StoreContext& context, std::string_view name) const {
    const std::string_view stored = storedName(name);
    if (stored.empty()) return nullptr;
    if (isInboxName(stored)) return &inbox(context);
    return context.fetchFirst<CDProject>(
        {.predicate = {"name ==[c] %@", stored}, .sort = oldestFirst});
}

CDProject& ProjectService::findOrCreate(StoreContext& context, std::string_view name) const {
    if (CDProject* existing = find(context, name)) return *existing;
    const std::string_view stored = storedName(name);
    return stored.empty() ? inbox(context) : insert(context, stored);
}

std::vector<CDProject*> ProjectService::all(StoreContext& context) const {
    return context.fetch<CDProject>({.sort = {{"sortIndex"}, {"createdAt"}}});
}

CDProject& ProjectService::create(StoreContext& context, std::string_view name) const {
    const std::string_view stored = storedName(name);
    if (stored.empty()) throw ProjectError::emptyName();
    if (isTaken(context, stored)) throw ProjectError::duplicate(std::string(stored));
    return insert(context, stored);
}

void ProjectService::rename(
    StoreContext& context, CDProject& project, std::string_view name) const {
    if (project.isInbox) throw ProjectError::isInbox();
    const std::string_view stored = storedName(name);
    if (stored.empty()) throw ProjectError::emptyName();
    if (isTaken(context, stored, &project)) throw ProjectError::duplicate(std::string(stored));
    project.name = std::string(stored);
    project.updatedAt = clock_.now();
}

void ProjectService::remove(StoreContext& context, CDProject& project) const {
    if (project.isInbox) throw ProjectError::isInbox();
    moveTasks(project, inbox(context));
    context.remove(project);
}

std::size_t ProjectService::mergeInboxes(StoreContext& context) const {
    const auto found = inboxes(context);
    for (std::size_t i = 1; i < found.size(); ++i) {
        moveTasks(*found[i], *found.front());
        context.remove(*found[i]);
    }
    return found.empty() ? 0 : found.size() - 1;
}

CDProject& ProjectService::insert(StoreContext& context, std::string_view name) const {
    const CDProject* last =
        context.fetchFirst<CDProject>({.sort = {{"sortIndex", SortDescriptor::Order::descending}}});
    auto& made = context.insert<CDProject>();
    made.name = std::string(name);
    made.sortIndex = last == nullptr ? 0 : placeAfter(last->sortIndex.valueOr(0));
    made.createdAt = clock_.now();
    made.updatedAt = made.createdAt;
    return made;
}

void ProjectService::moveTasks(const CDProject& from, CDProject& to) const {
    for (CDTask* task : from.tasks.all()) {
        task->project = &to;
        task->updatedAt = clock_.now();
    }
}

}  // namespace tesserine
