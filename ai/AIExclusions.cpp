#include "ai/AIExclusions.h"

#include "base/Preferences.h"

namespace tesserine {

AIExclusions AIExclusions::load(const Preferences& preferences) {
    using Names = std::vector<std::string>;
    return {
        .notebooks = preferences.strings(notebooksKey).value_or(Names()),
        .tags = preferences.strings(tagsKey).value_or(Names())};
}

}  // namespace tesserine
