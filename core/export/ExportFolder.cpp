#include "core/export/ExportFolder.h"

#include "base/Calendar.h"
#include "base/Files.h"
#include "base/Text.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace tesserine {
namespace {

namespace fs = std::filesystem;

std::string folderName(const LocalTime& time) {
    // As in "2026-03-14T09:15:00", in a form that every file system takes.
    std::string text = time.iso().substr(0, 16);
    std::ranges::replace(text, 'T', ' ');
    std::ranges::replace(text, ':', '.');
    return "Tesserine Export " + text;
}

fs::path newFolder(const fs::path& parent, const std::string& name) {
    files::createPrivateFolder(parent);
    for (int number = 1;; ++number) {
        fs::path folder = parent / (number == 1 ? name : name + " " + std::to_string(number));
        std::error_code error;
        if (fs::create_directory(folder, error)) {
            fs::permissions(folder, fs::perms::owner_all);
            return folder;
        }
        if (error) throw FileError::fromErrno(folder, "made", error.value());
    }
}

bool needsNoEncoding(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
           || std::string_view("-._~/").find(c) != std::string_view::npos;
}

}  // namespace

ExportFolder::ExportFolder(const fs::path& parent, Instant now, const Calendar& calendar)
    : path_(newFolder(parent, folderName(calendar.local(now)))) {}

std::string ExportFolder::newPath(
    const std::string& folder,
    std::string_view name,
    std::initializer_list<std::string_view> extensions) {
    const std::string stem = files::safeName(name);
    const std::string prefix = folder.empty() ? "" : folder + "/";
    const auto digest = [&prefix](const std::string& component) {
        return std::hash<std::string>()(prefix + text::caseFolded(component));
    };
    std::size_t& twins = twins_[digest(stem)];
    for (;;) {
        const std::string candidate = ++twins == 1 ? stem : stem + " " + std::to_string(twins);
        std::vector<std::size_t> paths;
        for (const std::string_view extension : extensions) {
            paths.push_back(digest(candidate + std::string(extension)));
        }
        const auto isTaken = [this](std::size_t path) { return taken_.contains(path); };
        if (std::ranges::any_of(paths, isTaken)) continue;
        taken_.insert(paths.begin(), paths.end());
        return prefix + candidate;
    }
}

std::string ExportFolder::newFilePath(const std::string& folder, std::string_view filename) {
    const std::string name = files::safeName(filename);
    const fs::path path(name);
    const std::string extension = path.extension().string();
    return newPath(folder, path.stem().string(), {extension}) + extension;
}

void ExportFolder::write(const std::string& path, std::string_view text) {
    const auto bytes = bytesOf(text);
    write(path, Bytes(bytes.begin(), bytes.end()));
}

void ExportFolder::write(const std::string& path, Bytes bytes) {
    const std::size_t size = bytes.size();
    writer_.write(
        placeOf(path), size, [bytes = std::move(bytes)]() mutable { return std::move(bytes); });
}

void ExportFolder::write(
    const std::string& path, std::size_t size, std::function<std::string()> make) {
    writer_.write(placeOf(path), size, [make = std::move(make)] {
        const std::string text = make();
        const auto bytes = bytesOf(text);
        return Bytes(bytes.begin(), bytes.end());
    });
}

fs::path ExportFolder::placeOf(const std::string& path) {
    fs::path file = path_ / path;
    fs::path folder = file.parent_path();
    if (madeFolders_.insert(folder.string()).second) files::createPrivateFolder(folder);
    return file;
}

void ExportFolder::finish() {
    writer_.finish();
    std::string lines;
    for (const FileWriter::WrittenFile& file : writer_.written()) {
        const std::string path = file.path.lexically_relative(path_).generic_string();
        lines += hex(file.digest) + "  " + path + "\n";
    }
    write(checksumsName, lines);
    writer_.finish();
    files::syncFileSystem(path_);
}

std::string addressFrom(std::string_view from, std::string_view path) {
    // The folders that both stand in say nothing.
    for (std::size_t end = from.find('/'); end != std::string_view::npos; end = from.find('/')) {
        if (from.substr(0, end + 1) != path.substr(0, end + 1)) break;
        from.remove_prefix(end + 1);
        path.remove_prefix(end + 1);
    }
    std::string address;
    for (auto depth = std::ranges::count(from, '/'); depth > 0; --depth) {
        address += "../";
    }
    constexpr std::string_view digits = "0123456789ABCDEF";
    for (const char c : path) {
        if (needsNoEncoding(c)) {
            address += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        address.append("%").append(1, digits[byte >> 4]).append(1, digits[byte & 0xF]);
    }
    return address;
}

}  // namespace tesserine
