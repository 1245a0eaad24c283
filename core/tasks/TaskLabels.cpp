#include "core/tasks/TaskLabels.h"

#include "base/Text.h"
#include "core/model/TaskEntities.h"
#include "core/store/StoreContext.h"

namespace tesserine {

CDTag* labelNamed(StoreContext& context, std::string_view name, Instant now) {
    const std::string_view stored = text::trimmed(name);
    if (stored.empty()) return nullptr;
    auto* known = context.fetchFirst<CDTag>(
        {.predicate = {"name ==[c] %@", stored}, .sort = {{"createdAt"}}});
    if (known != nullptr) return known;

    auto& made = context.insert<CDTag>();
    made.name = std::string(stored);
    made.createdAt = now;
    made.updatedAt = now;
    return &made;
}

}  // namespace tesserine
