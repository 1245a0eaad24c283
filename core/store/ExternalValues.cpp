#include "core/store/ExternalValues.h"

#include "base/FailPoint.h"
#include "base/Files.h"
#include "base/Uuid.h"
#include "core/model/Schema.h"

#include <algorithm>
#include <chrono>

namespace tesserine {
namespace {

constexpr std::uint8_t inRow = 1;
constexpr std::uint8_t inFile = 2;
/// Far above the largest attachment; a bound against a damaged folder, not a promise.
constexpr std::uint64_t fileLimit = 4'000'000'000;
constexpr std::chrono::hours strayAge{24};

bool hasColumn(SQLiteDatabase& database, const std::string& table, const std::string& column) {
    return database.integer(
               "SELECT count(*) FROM pragma_table_info('" + table + "') WHERE name = '" + column
               + "'")
           > 0;
}

/// The form, then what it is about: the bytes or the file's name.
template <class Content>
Bytes columnOf(std::uint8_t form, const Content& content) {
    Bytes column;
    column.reserve(content.size() + 1);
    column.push_back(form);
    column.insert(column.end(), content.begin(), content.end());
    return column;
}

}  // namespace

ExternalValues::ExternalValues(std::optional<std::filesystem::path> library) {
    if (library) folder_ = *library / ".Tesserine_SUPPORT" / "_EXTERNAL_DATA";
}

Bytes ExternalValues::encode(std::span<const std::uint8_t> value, Random& random) const {
    if (!folder_ || value.size() <= inlineLimit) return columnOf(inRow, value);
    const std::string name = Uuid::random(random).text();
    files::createPrivateFolder(*folder_);
    files::writeNew(*folder_ / name, value);
    FAIL_POINT("external.written");
    return columnOf(inFile, name);
}

std::optional<Bytes> ExternalValues::encodeShared(
    std::span<const std::uint8_t> value, const std::string& twin, Random& random) const {
    if (!folder_) return std::nullopt;
    const auto source = *folder_ / twin;
    try {
        // A damaged file is not handed on.
        if (!std::ranges::equal(files::read(source, fileLimit, files::Links::refuse), value)) {
            return std::nullopt;
        }
        // Links share their age, and an old file that no row names yet would be swept as a stray.
        std::filesystem::last_write_time(source, std::chrono::file_clock::now());
        const std::string name = Uuid::random(random).text();
        files::linkOrCopy(source, *folder_ / name);
        FAIL_POINT("external.written");
        return columnOf(inFile, name);
    } catch (const FileError&) {
        return std::nullopt;  // the bytes are at hand: the caller writes them
    } catch (const std::filesystem::filesystem_error&) {
        return std::nullopt;
    }
}

std::optional<Bytes> ExternalValues::decode(std::span<const std::uint8_t> column) const {
    if (column.empty()) return std::nullopt;
    if (column.front() == inRow) return Bytes(column.begin() + 1, column.end());
    const auto name = fileName(column);
    if (!name || !folder_) return std::nullopt;
    FAIL_POINT("external.reading");
    try {
        return files::read(*folder_ / *name, fileLimit, files::Links::refuse);
    } catch (const FileError&) {
        return std::nullopt;  // reported by the examination of the library; the row keeps its name
    }
}

std::optional<std::string> ExternalValues::fileName(std::span<const std::uint8_t> column) {
    if (column.empty() || column.front() != inFile) return std::nullopt;
    std::string name(textOf(column.subspan(1)));
    if (!Uuid::parse(name)) return std::nullopt;  // never a path of somebody's making
    return name;
}

std::optional<std::filesystem::path> ExternalValues::folder() const { return folder_; }

void ExternalValues::remove(const std::string& fileName) const {
    if (folder_) files::removeIfPresent(*folder_ / fileName);
}

std::set<std::string> ExternalValues::namesIn(SQLiteDatabase& database) {
    std::set<std::string> names;
    for (const auto& entity : Schema::library().entities()) {
        for (const auto& attribute : entity.attributes) {
            if (!attribute.isExternal || !hasColumn(database, entity.table, attribute.column)) {
                continue;
            }
            Statement row = database.prepare(
                "SELECT " + attribute.column + " FROM " + entity.table + " WHERE length("
                + attribute.column + ") = 37 AND substr(" + attribute.column + ", 1, 1) = x'02'");
            while (row.step()) {
                if (auto name = fileName(row.blob(0))) names.insert(*name);
            }
        }
    }
    return names;
}

std::size_t ExternalValues::removeStrays(SQLiteDatabase& database) const {
    std::error_code ignored;
    if (!folder_ || !std::filesystem::is_directory(*folder_, ignored)) return 0;
    std::vector<std::string> old;
    // File times come from the machine's clock, so they are compared with it and with no other.
    for (const auto& entry : std::filesystem::directory_iterator(*folder_, ignored)) {
        const auto age = std::chrono::file_clock::now() - entry.last_write_time(ignored);
        if (age > strayAge && Uuid::parse(entry.path().filename().string())) {
            old.push_back(entry.path().filename().string());
        }
    }
    files::sweepTemporaries(*folder_);
    if (old.empty()) return 0;
    const auto used = namesIn(database);
    std::size_t count = 0;
    for (const std::string& name : old) {
        if (used.contains(name)) continue;
        remove(name);
        ++count;
    }
    return count;
}

}  // namespace tesserine
