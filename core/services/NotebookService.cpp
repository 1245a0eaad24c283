#include "core/services/NotebookService.h"

#include "base/Text.h"
#include "core/services/StoredNames.h"
#include "core/store/StoreContext.h"

namespace tesserine {
namespace {

/// Oldest first, so that of two twins it is always the same one that is found.
const std::vector<SortDescriptor> oldestFirst{{"createdAt"}};

Predicate withName(const std::string& name, const CDNotebook* parent) {
    if (parent == nullptr) return {"name ==[c] %@ AND parent == nil", name};
    return {"name ==[c] %@ AND parent.id == %@", name, parent->id.valueOr(Uuid{})};
}

/// "Work/ Plans" as "work / plans": how paths are compared.
std::string comparablePath(std::string_view path) {
    std::string result;
    while (true) {
        const std::size_t slash = path.find('/');
        if (!result.empty()) result += " / ";
        result += text::trimmed(path.substr(0, slash));
        if (slash == std::string_view::npos) return text::caseFolded(result);
        path.remove_prefix(slash + 1);
    }
}

}  // namespace

CDNotebook& NotebookService::findOrCreate(
    StoreContext& context, std::string_view name, CDNotebook* parent) const {
    if (CDNotebook* existing = find(context, name, parent)) return *existing;

    auto& made = context.insert<CDNotebook>();
    made.name = storedNotebookName(name);
    made.createdAt = clock_.now();
    made.updatedAt = made.createdAt;
    made.parent = parent;
    return made;
}

CDNotebook* NotebookService::findOrCreatePath(
    StoreContext& context, const std::vector<std::string>& names) const {
    CDNotebook* notebook = nullptr;
    for (const std::string& name : names) {
        notebook = &findOrCreate(context, name, notebook);
    }
    return notebook;
}

CDNotebook* NotebookService::find(
    StoreContext& context, std::string_view name, CDNotebook* parent) const {
    return context.fetchFirst<CDNotebook>(
        {.predicate = withName(storedNotebookName(name), parent), .sort = oldestFirst});
}

std::vector<CDNotebook*> NotebookService::named(
    StoreContext& context, std::string_view text) const {
    const std::string wanted = comparablePath(text);
    std::vector<CDNotebook*> byPath;
    std::vector<CDNotebook*> byName;
    for (CDNotebook* notebook : context.fetch<CDNotebook>({.sort = oldestFirst})) {
        const std::string name = comparablePath(notebook->name.valueOr(""));
        if (!wanted.ends_with(name)) continue;
        if (name == wanted) byName.push_back(notebook);
        if (comparablePath(pathText(*notebook)) == wanted) byPath.push_back(notebook);
    }
    return byPath.empty() ? byName : byPath;
}

std::vector<CDNotebook*> NotebookService::children(
    StoreContext& context, CDNotebook* parent, const text::Collator& collator) const {
    auto result = parent != nullptr ? parent->children.all()
                                    : context.fetch<CDNotebook>({.predicate = {"parent == nil"}});
    tree::sortByName(result, collator);
    return result;
}

std::vector<tree::Row<CDNotebook>> NotebookService::tree(
    StoreContext& context, const text::Collator& collator) const {
    auto all = context.fetch<CDNotebook>();
    tree::sortByName(all, collator);
    return tree::rows(all);
}

bool NotebookService::move(CDNotebook& notebook, CDNotebook* parent) const {
    if (parent != nullptr && tree::isWithin(*parent, notebook)) return false;
    notebook.parent = parent;
    notebook.updatedAt = clock_.now();
    return true;
}

bool NotebookService::wouldMakeTwins(
    StoreContext& context, const CDNotebook& notebook, CDNotebook* parent) const {
    const auto there = context.fetch<CDNotebook>(
        {.predicate = withName(notebook.name.valueOr(""), parent), .limit = 2});
    return std::any_of(
        there.begin(), there.end(), [&](const CDNotebook* other) { return other != &notebook; });
}

void NotebookService::rename(
    StoreContext& context, CDNotebook& notebook, std::string_view name) const {
    const std::string trimmed(text::trimmed(name));
    if (trimmed.empty()) return;
    const auto there =
        context.fetch<CDNotebook>({.predicate = withName(trimmed, notebook.parent), .limit = 2});
    for (const CDNotebook* other : there) {
        if (other != &notebook) throw NotebookError::duplicateName(trimmed);
    }
    notebook.name = trimmed;
    notebook.updatedAt = clock_.now();
}

void NotebookService::setColor(
    CDNotebook& notebook, const std::optional<std::string>& color) const {
    const auto stored = color ? storedColor(*color) : std::nullopt;
    if (color && !stored) throw NotebookError::badColor(*color);
    notebook.colorHex = stored;
    notebook.updatedAt = clock_.now();
}

void NotebookService::setFavorite(CDNotebook& notebook, bool isFavorite) const {
    notebook.isFavorite = isFavorite;
    notebook.updatedAt = clock_.now();
}

void NotebookService::remove(StoreContext& context, CDNotebook& notebook) const {
    context.remove(notebook);
}

void NotebookService::setNoteTemplate(CDNotebook& notebook, const CDNote* noteTemplate) const {
    notebook.templateNoteId = noteTemplate != nullptr ? noteTemplate->id.get() : std::nullopt;
    notebook.updatedAt = clock_.now();
}

CDNote* NotebookService::noteTemplate(StoreContext& context, const CDNotebook& notebook) const {
    if (!notebook.templateNoteId) return nullptr;
    auto* const found = context.find<CDNote>(*notebook.templateNoteId);
    const bool isUsable = found != nullptr && found->isTemplate && !found->trashedAt;
    return isUsable ? found : nullptr;
}

}  // namespace tesserine
