#include "core/export/ManifestWriter.h"

#include "base/Files.h"
#include "base/JSON.h"
#include "base/Product.h"
#include "core/export/ExportTypes.h"

#include <array>
#include <cerrno>

namespace tesserine {
namespace {

/// One member of the manifest: its key and a value that is JSON already.
std::string member(std::string_view key, std::string_view json) {
    return "  " + json::quoted(key) + ": " + std::string(json);
}

std::string listMember(std::string_view key, const boost::json::array& records) {
    std::string lines;
    for (const boost::json::value& record : records) {
        lines += (lines.empty() ? "\n    " : ",\n    ") + json::write(record);
    }
    return member(key, "[" + lines + (lines.empty() ? "]" : "\n  ]"));
}

/// Puts texts into a file of the C library; what goes wrong is told at the end, by `close`.
void put(std::FILE* file, std::string_view text) { std::fwrite(text.data(), 1, text.size(), file); }

}  // namespace

ManifestWriter::ManifestWriter() : notes_(std::tmpfile()) {
    if (!notes_) throw FileError::fromErrno("manifest.json", "written", errno);
}

void ManifestWriter::addNote(const boost::json::object& record) {
    put(notes_.get(), (hasNotes_ ? ",\n    " : "\n    ") + json::write(record));
    hasNotes_ = true;
}

void ManifestWriter::write(const std::filesystem::path& path, const Content& content) {
    const auto fail = [&path] { throw FileError::fromErrno(path, "written", errno); };
    const std::filesystem::path temporary = path.native() + ".part";
    File file(std::fopen(temporary.c_str(), "wbx"));
    if (!file) fail();
    put(file.get(), "{\n" + member("formatVersion", std::to_string(exportFormatVersion)));
    put(file.get(), ",\n" + member("generator", json::quoted(product::name)));
    put(file.get(), ",\n" + member("generatorVersion", json::quoted(content.appVersion)));
    put(file.get(), ",\n" + member("exportedAt", json::quoted(content.exportedAt.iso())));
    put(file.get(), ",\n" + member("counts", json::write(content.counts.json())));
    put(file.get(), ",\n" + listMember("notebooks", content.notebooks));
    put(file.get(), ",\n" + listMember("tags", content.tags));
    put(file.get(), ",\n" + member("notes", "["));

    if (std::fflush(notes_.get()) != 0) fail();
    std::rewind(notes_.get());
    std::array<char, 65'536> piece{};
    while (const std::size_t count = std::fread(piece.data(), 1, piece.size(), notes_.get())) {
        put(file.get(), {piece.data(), count});
    }
    if (std::ferror(notes_.get()) != 0) fail();

    put(file.get(), hasNotes_ ? "\n  ]" : "]");
    put(file.get(), ",\n" + listMember("projects", content.projects));
    put(file.get(), ",\n" + listMember("tasks", content.tasks));
    put(file.get(), ",\n" + listMember("taskTemplates", content.taskTemplates) + "\n}\n");
    const bool isWhole = std::ferror(file.get()) == 0 && std::fflush(file.get()) == 0;
    if (!isWhole) fail();
    file.reset();
    files::syncFile(temporary);
    std::filesystem::rename(temporary, path);
    files::syncFolder(path.parent_path());
}

}  // namespace tesserine
