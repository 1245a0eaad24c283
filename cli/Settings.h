#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace tesserine::cli {

/// A preference that people may see and change.
struct Setting {
    enum class Type {
        integer,
        boolean,
        synonyms,  ///< groups of words between semicolons, the words between commas
    };
    std::string_view key;
    Type type = Type::integer;
    std::int64_t least = 0;  ///< of an integer
    std::int64_t most = 0;
    std::string_view fallback;  ///< what counts while it is not set, as help shows it
    std::string_view summary;
};

/// Every setting, in the order of the list.
std::span<const Setting> settings();
/// By key, which may be given without its beginning "tesserine."; null when there is none.
const Setting* findSetting(std::string_view key);

}  // namespace tesserine::cli
