#include "ai/AIExclusions.h"

#include "base/Preferences.h"
#include "base/Text.h"
#include "core/model/NoteEntities.h"
#include "core/services/Tree.h"

#include <algorithm>

namespace tesserine {
namespace {

/// Whether the notebook or tag, or one above it, has one of the names.
template <class Node>
bool isWithin(const Node& node, const std::vector<std::string>& names) {
    const auto isNamed = [&names](const Node& one) {
        const std::string name = text::folded(one.name.valueOr(""));
        return std::ranges::any_of(names, [&name](const std::string& excluded) {
            return text::folded(text::trimmed(excluded)) == name;
        });
    };
    return isNamed(node) || std::ranges::any_of(tree::ancestors(node), [&](const Node* above) {
               return isNamed(*above);
           });
}

}  // namespace

AIExclusions AIExclusions::load(const Preferences& preferences) {
    using Names = std::vector<std::string>;
    return {
        .notebooks = preferences.strings(notebooksKey).value_or(Names()),
        .tags = preferences.strings(tagsKey).value_or(Names())};
}

bool AIExclusions::permit(const CDNote& note) const {
    if (note.trashedAt || note.isTemplate) return false;
    const CDNotebook* const notebook = note.notebook;
    if (notebook != nullptr && isWithin(*notebook, notebooks)) return false;
    return std::ranges::none_of(
        note.tags.all(), [this](const CDTag* tag) { return isWithin(*tag, tags); });
}

void AIExclusions::require(const CDNote& note) const {
    if (!permit(note)) throw NeverSentError();
}

}  // namespace tesserine
