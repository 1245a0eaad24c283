#include "base/Files.h"
#include "base/Text.h"
#include "core/services/MIMEType.h"

#include <algorithm>
#include <charconv>

namespace tesserine::mime {
namespace {

constexpr std::uint64_t listLimit = 8'000'000;
constexpr std::string_view noDirectories = "/usr/local/share:/usr/share";

/// The content of a file of the database; empty when there is none.
std::string content(const std::filesystem::path& file) {
    try {
        return text::sanitized(std::string(textOf(files::read(file, listLimit))));
    } catch (const FileError&) {
        return {};  // a machine without the database has no registry, and that is no failure
    }
}

/// Calls `take` with the parts of `text` between `separator`s.
template <class Take>
void forEachPart(std::string_view text, char separator, Take take) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        take(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

/// The extension of a glob such as "*.png"; none for globs of other shapes.
std::optional<std::string> extensionOfGlob(std::string_view glob) {
    if (!glob.starts_with("*.")) return std::nullopt;
    glob.remove_prefix(2);
    if (glob.empty() || glob.find_first_of("*?[/") != std::string_view::npos) return std::nullopt;
    return text::lowercased(glob);
}

/// Whether `type` is two plain names with "/" between them, and so a safe path below the database.
bool isPlainType(std::string_view type) {
    const auto slash = type.find('/');
    const auto isName = [](std::string_view name) {
        return !name.empty() && name.front() != '.' && name.find('/') == std::string_view::npos;
    };
    return slash != std::string_view::npos && isName(type.substr(0, slash))
           && isName(type.substr(slash + 1));
}

}  // namespace

TypeRegistry TypeRegistry::read(const std::filesystem::path& folder) {
    TypeRegistry registry;
    registry.folder_ = folder;
    registry.readGlobs(content(folder / "globs2"));
    registry.readAliases(content(folder / "aliases"));
    return registry;
}

TypeRegistry TypeRegistry::find(std::string_view dataDirectories) {
    if (dataDirectories.empty()) dataDirectories = noDirectories;
    std::optional<TypeRegistry> found;
    forEachPart(dataDirectories, ':', [&](std::string_view directory) {
        const auto folder = std::filesystem::path(directory) / "mime";
        std::error_code ignored;
        if (found || !folder.is_absolute()) return;
        if (std::filesystem::is_regular_file(folder / "globs2", ignored)) found = read(folder);
    });
    return found ? std::move(*found) : TypeRegistry{};
}

// A line is "weight:type:glob", with ":flags" where the glob is peculiar.
void TypeRegistry::readGlobs(const std::string& list) {
    forEachPart(list, '\n', [this](std::string_view line) {
        std::vector<std::string_view> fields;
        forEachPart(line, ':', [&](std::string_view field) { fields.push_back(field); });
        if (line.starts_with('#') || fields.size() != 3) return;
        Claim claim{.type = std::string(fields[1])};
        std::from_chars(fields[0].data(), fields[0].data() + fields[0].size(), claim.weight);
        const auto extension = extensionOfGlob(fields[2]);
        if (!extension) return;

        extensionOfType_.try_emplace(claim.type, *extension);
        // The order of the list is that of a hash table, so equal claims are told apart by name.
        const auto [place, isNew] = typeOfExtension_.try_emplace(*extension, claim);
        const Claim& standing = place->second;
        const bool isStronger = claim.weight > standing.weight
                                || (claim.weight == standing.weight && claim.type < standing.type);
        if (!isNew && isStronger) place->second = claim;
    });
}

void TypeRegistry::readAliases(const std::string& list) {
    forEachPart(list, '\n', [this](std::string_view line) {
        const std::size_t space = line.find(' ');
        if (space == std::string_view::npos) return;
        aliases_.emplace(line.substr(0, space), line.substr(space + 1));
    });
}

std::optional<std::string> TypeRegistry::typeOfExtension(const std::string& extension) const {
    const auto found = typeOfExtension_.find(extension);
    if (found == typeOfExtension_.end()) return std::nullopt;
    return found->second.type;
}

std::optional<std::string> TypeRegistry::extensionOfType(const std::string& type) const {
    const auto alias = aliases_.find(type);
    const std::string& name = alias != aliases_.end() ? alias->second : type;
    const auto listed = extensionOfType_.find(name);
    if (listed == extensionOfType_.end()) return std::nullopt;
    return describedExtension(name).value_or(listed->second);
}

/// The first glob of the type's own description, which keeps the order its author gave.
std::optional<std::string> TypeRegistry::describedExtension(const std::string& type) const {
    static constexpr std::string_view mark = "<glob pattern=\"";
    if (!isPlainType(type)) return std::nullopt;
    const std::string description = content(folder_ / (type + ".xml"));
    std::size_t begin = description.find(mark);
    while (begin != std::string::npos) {
        begin += mark.size();
        const std::size_t end = std::min(description.find('"', begin), description.size());
        if (auto extension =
                extensionOfGlob(std::string_view(description).substr(begin, end - begin))) {
            return extension;
        }
        begin = description.find(mark, end);
    }
    return std::nullopt;
}

}  // namespace tesserine::mime
