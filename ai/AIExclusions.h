#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

class Preferences;

/// What the user never wants sent to a language model: names of notebooks and tags, in any case.
/// Whatever lies below them is meant as well.
struct AIExclusions {
    static constexpr std::string_view notebooksKey = "tesserine.assistant.excludedNotebooks";
    static constexpr std::string_view tagsKey = "tesserine.assistant.excludedTags";

    std::vector<std::string> notebooks;
    std::vector<std::string> tags;

    static AIExclusions load(const Preferences& preferences);
};

}  // namespace tesserine
