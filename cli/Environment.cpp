#include "cli/Environment.h"

namespace tesserine::cli {

std::optional<std::string> Environment::variable(std::string_view name) const {
    const auto found = variables.find(name);
    if (found == variables.end() || found->second.empty()) return std::nullopt;
    return found->second;
}

std::filesystem::path Environment::folder(
    std::string_view variableName, std::string_view fallback) const {
    // The base directory rules say that a relative path counts as none.
    const std::filesystem::path given = variable(variableName).value_or("");
    const std::filesystem::path base = given.is_absolute() ? given : home / fallback;
    return base / "Tesserine";
}

std::string Environment::locale() const {
    for (const char* name : {"LC_ALL", "LC_COLLATE", "LANG"}) {
        if (const auto value = variable(name)) return value->substr(0, value->find('.'));
    }
    return {};
}

}  // namespace tesserine::cli
