#include "core/import/LinkTable.h"

#include "base/PercentEncoding.h"
#include "base/Text.h"

#include <algorithm>
#include <array>
#include <functional>

namespace tesserine {
namespace {

constexpr std::array<std::string_view, 3> extensions = {".md", ".markdown", ".txt"};

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

/// Whether `address` begins with a scheme; a single letter before the colon is a drive.
bool hasScheme(std::string_view address) {
    const std::size_t colon = address.find(':');
    if (colon == std::string_view::npos || colon < 2 || !isLetter(address.front())) return false;
    return std::ranges::all_of(address.substr(0, colon), [](char c) {
        return isLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
    });
}

std::string_view folderOf(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? std::string_view{} : path.substr(0, slash);
}

std::string_view nameOf(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

/// `path` as it is seen from `folder`, without "." and ".."; none when it leads above the top.
std::optional<std::string> joined(std::string_view folder, std::string_view path) {
    std::vector<std::string_view> parts;
    for (std::string_view rest : {folder, path}) {
        while (!rest.empty()) {
            const std::size_t end = std::min(rest.find('/'), rest.size());
            const std::string_view part = rest.substr(0, end);
            rest.remove_prefix(std::min(end + 1, rest.size()));
            if (part.empty() || part == ".") continue;
            if (part != "..") {
                parts.push_back(part);
                continue;
            }
            if (parts.empty()) return std::nullopt;
            parts.pop_back();
        }
    }
    std::string result;
    for (const std::string_view part : parts) {
        if (!result.empty()) result += '/';
        result += part;
    }
    return result;
}

std::string_view withoutQueryAndFragment(std::string_view address) {
    return address.substr(0, std::min(address.find_first_of("?#"), address.size()));
}

}  // namespace

LocalAddress localAddress(std::string_view address, std::string_view from) {
    address = text::trimmed(address);
    const std::string scheme = text::asciiLowercased(address.substr(0, 5));
    if (scheme == "file:") return {LocalAddress::Kind::refused};
    if (address.starts_with("//") || hasScheme(address)) return {LocalAddress::Kind::elsewhere};

    std::string path = text::sanitized(percentDecoded(withoutQueryAndFragment(address)));
    std::ranges::replace(path, '\\', '/');
    if (text::isBlank(path)) return {LocalAddress::Kind::elsewhere};
    const bool isDrive = path.size() > 1 && path[1] == ':' && isLetter(path[0]);
    if (path.starts_with('/') || path.starts_with('~') || isDrive) {
        return {LocalAddress::Kind::refused};
    }
    auto target = joined(folderOf(from), path);
    if (!target) return {LocalAddress::Kind::refused};
    return {LocalAddress::Kind::file, std::move(*target)};
}

LinkTable::LinkTable(const std::vector<SourceFile>& files, Extension extension)
    : files_(files), extension_(extension) {
    byPath_.reserve(files.size());
    byName_.reserve(files.size());
    const std::hash<std::string> hash;
    for (std::uint32_t i = 0; i < files.size(); ++i) {
        const std::string path = key(files[i].relative);
        byPath_.push_back({hash(path), i});
        byName_.push_back({hash(std::string(nameOf(path))), i});
    }
    std::ranges::stable_sort(byPath_, {}, &Entry::hash);
    std::ranges::stable_sort(byName_, {}, &Entry::hash);
}

std::string LinkTable::key(std::string_view path) const {
    if (extension_ == Extension::optional) path = withoutMarkdownExtension(path);
    return text::composed(text::caseFolded(text::sanitized(std::string(path))));
}

std::vector<std::size_t> LinkTable::candidates(
    const std::vector<Entry>& entries, std::string_view key) const {
    const std::uint64_t hash = std::hash<std::string>{}(std::string(key));
    std::vector<std::size_t> result;
    auto entry = std::ranges::lower_bound(entries, hash, {}, &Entry::hash);
    for (; entry != entries.end() && entry->hash == hash; ++entry) {
        result.push_back(entry->file);
    }
    return result;
}

std::optional<std::size_t> LinkTable::atPath(std::uint32_t root, std::string_view path) const {
    const std::string wanted = key(path);
    std::optional<std::size_t> found;
    for (const std::size_t file : candidates(byPath_, wanted)) {
        if (files_[file].root != root || key(files_[file].relative) != wanted) continue;
        // Of "plan.md" and "Plan.txt" the one that is written exactly so is meant.
        if (files_[file].relative == path) return file;
        if (!found) found = file;
    }
    return found;
}

std::optional<std::size_t> LinkTable::named(const SourceFile& from, std::string_view name) const {
    const auto beside = joined(folderOf(from.relative), name);
    if (!beside || beside->empty()) return std::nullopt;
    if (const auto file = atPath(from.root, *beside)) return file;
    const std::string wanted = key(joined({}, name).value_or(""));
    if (wanted.empty()) return std::nullopt;

    std::optional<std::size_t> found;
    for (const std::size_t file : candidates(byName_, nameOf(wanted))) {
        const std::string path = key(files_[file].relative);
        const bool isMeant = path == wanted || path.ends_with("/" + wanted);
        const bool isShorter = !found || path.size() < files_[*found].relative.size();
        if (isMeant && isShorter) found = file;
    }
    return found;
}

bool isMarkdownFile(std::string_view filename) {
    return withoutMarkdownExtension(filename).size() < filename.size();
}

std::string_view withoutMarkdownExtension(std::string_view filename) {
    for (const std::string_view extension : extensions) {
        if (filename.size() <= extension.size()) continue;
        const std::string_view end = filename.substr(filename.size() - extension.size());
        if (text::asciiLowercased(end) == extension) {
            return filename.substr(0, filename.size() - extension.size());
        }
    }
    return filename;
}

}  // namespace tesserine
