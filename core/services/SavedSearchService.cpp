#include "core/services/SavedSearchService.h"

#include "core/services/StoredNames.h"
#include "core/store/StoreContext.h"

namespace tesserine {
namespace {

const std::vector<SortDescriptor> listOrder{{"sortIndex"}, {"createdAt"}};

}  // namespace

CDSavedSearch& SavedSearchService::create(
    StoreContext& context, std::string_view name, const std::string& query) const {
    const CDSavedSearch* last = context.fetchFirst<CDSavedSearch>(
        {.sort = {{"sortIndex", SortDescriptor::Order::descending}}});

    auto& made = context.insert<CDSavedSearch>();
    made.name = storedSavedSearchName(name);
    made.query = query;
    made.sortIndex = last != nullptr ? last->sortIndex.valueOr(0) + 1 : 0;
    made.createdAt = clock_.now();
    made.updatedAt = made.createdAt;
    return made;
}

void SavedSearchService::rename(CDSavedSearch& search, std::string_view name) const {
    search.name = storedSavedSearchName(name);
    search.updatedAt = clock_.now();
}

void SavedSearchService::setQuery(CDSavedSearch& search, const std::string& query) const {
    search.query = query;
    search.updatedAt = clock_.now();
}

void SavedSearchService::remove(StoreContext& context, CDSavedSearch& search) const {
    context.remove(search);
}

std::vector<CDSavedSearch*> SavedSearchService::list(StoreContext& context) const {
    return context.fetch<CDSavedSearch>({.sort = listOrder});
}

std::vector<CDSavedSearch*> SavedSearchService::named(
    StoreContext& context, std::string_view name) const {
    return context.fetch<CDSavedSearch>(
        {.predicate = {"name ==[c] %@", storedSavedSearchName(name)}, .sort = listOrder});
}

void SavedSearchService::reorder(const std::vector<CDSavedSearch*>& order) const {
    std::int64_t place = 0;
    for (CDSavedSearch* search : order) {
        if (search->sortIndex != place) {
            search->sortIndex = place;
            search->updatedAt = clock_.now();
        }
        ++place;
    }
}

}  // namespace tesserine
