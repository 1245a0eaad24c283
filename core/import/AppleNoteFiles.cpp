#include "core/import/AppleNoteFiles.h"

#include "base/Text.h"

#include <algorithm>
#include <tuple>

namespace tesserine {
namespace {

constexpr std::size_t identifierLength = 36;

bool isDocument(const std::string& name) { return text::asciiLowercased(name).ends_with(".pdf"); }

}  // namespace

AppleNoteFiles::AppleNoteFiles(const std::filesystem::path& folder)
    : folder_({folder}, [](std::string_view) { return false; }) {
    for (const SourceFile& file : folder_.others()) {
        add(file);
    }
}

/// Files below "Media" are media, those below "Previews" and "Fallback…" stand for something; each
/// is known by every identifier that begins a component of its path after that.
void AppleNoteFiles::add(const SourceFile& file) {
    FilesByIdentifier* use = nullptr;
    for (const auto& part : std::filesystem::path(file.relative)) {
        const std::string name = part.string();
        const auto identifier = Uuid::parse(name.substr(0, identifierLength));
        if (use != nullptr && identifier) {
            const auto path = folder_.path(file);
            (*use)[*identifier].push_back(
                {path, path.filename().string(), SourceFolder::times(path).byteCount});
        } else if (name == "Media") {
            use = &media_;
        } else if (name == "Previews" || name.starts_with("Fallback")) {
            use = &fallbacks_;
        }
    }
}

const std::vector<AppleNoteFiles::File>* AppleNoteFiles::find(
    const FilesByIdentifier& files, const std::string& identifier) {
    const auto id = Uuid::parse(identifier);
    const auto found = id ? files.find(*id) : files.end();
    return found == files.end() ? nullptr : &found->second;
}

std::optional<std::filesystem::path> AppleNoteFiles::medium(
    const std::string& identifier, const std::string& filename) const {
    const auto* files = find(media_, identifier);
    if (files == nullptr) return std::nullopt;
    const auto named = std::ranges::find(*files, filename, &File::name);
    if (named != files->end()) return named->path;
    return files->size() == 1 ? std::optional(files->front().path) : std::nullopt;
}

std::optional<std::filesystem::path> AppleNoteFiles::fallback(const std::string& identifier) const {
    const auto* files = find(fallbacks_, identifier);
    if (files == nullptr) return std::nullopt;
    const auto best = std::ranges::max_element(*files, {}, [](const File& file) {
        return std::tuple(isDocument(file.name), file.byteCount);
    });
    return best->path;
}

}  // namespace tesserine
