#include "core/import/SourceNames.h"

#include "base/Text.h"
#include "core/services/Limits.h"

namespace tesserine {

void SourceTags::add(std::string_view name, std::vector<std::string>& warnings) {
    name = text::trimmed(name);
    if (name.empty()) return;
    const bool isTooLong = text::prefix(name, mostCharacters).size() < name.size();
    if (!isTooLong && names_.size() < mostTags) {
        names_.emplace_back(name);
        return;
    }
    if (!hasWarned_) warnings.emplace_back("Tags were left out: too many, or too long.");
    hasWarned_ = true;
}

std::string sourceTitle(std::string_view title, std::vector<std::string>& warnings) {
    title = text::trimmed(title);
    const std::string_view cut = text::prefix(title, limits::titleCharacters);
    if (cut.size() < title.size()) warnings.emplace_back("The title was cut.");
    return std::string(cut);
}

}  // namespace tesserine
