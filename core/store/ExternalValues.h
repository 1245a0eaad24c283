#pragma once

#include "base/Encoding.h"
#include "base/Random.h"
#include "base/sqlite/SQLiteDatabase.h"

#include <filesystem>
#include <optional>
#include <set>
#include <span>
#include <string>

namespace tesserine {

/// Large binary values of the library. Up to `inlineLimit` they stand in their row; larger ones are
/// files in ".Tesserine_SUPPORT/_EXTERNAL_DATA" beside the store, written and synced before the row
/// that names them commits, never changed, and removed after the row is gone.
///
/// A column holds one byte that tells the form, then the bytes themselves (1) or the file's name
/// (2).
class ExternalValues {
public:
    static constexpr std::size_t inlineLimit = std::size_t{100} * 1024;

    /// `library`: the folder of the store; none keeps every value in its row.
    explicit ExternalValues(std::optional<std::filesystem::path> library);

    /// The column for `value`; may write a file, whose name is then `fileName` of the result.
    /// Throws `FileError`.
    Bytes encode(std::span<const std::uint8_t> value, Random& random) const;
    /// The same without a second copy on the disk: the new file is another link to `twin`, which
    /// holds the same bytes. Removing one leaves the other. None when `twin` does not hold `value`
    /// or cannot be linked.
    std::optional<Bytes> encodeShared(
        std::span<const std::uint8_t> value, const std::string& twin, Random& random) const;
    /// The value of a column; none when its file is missing or the column is damaged.
    std::optional<Bytes> decode(std::span<const std::uint8_t> column) const;
    /// The name of the file that a column points to; none for a value in its row.
    static std::optional<std::string> fileName(std::span<const std::uint8_t> column);

    /// The folder of the files; it need not exist.
    std::optional<std::filesystem::path> folder() const;
    void remove(const std::string& fileName) const;
    /// The names of all files that the rows of a library, of any version, name.
    static std::set<std::string> namesIn(SQLiteDatabase& database);
    /// Removes files that no row names and that are older than a day: a younger one may belong to a
    /// save that another process is about to commit. Unfinished ones go as well. Returns how many.
    std::size_t removeStrays(SQLiteDatabase& database) const;

private:
    std::optional<std::filesystem::path> folder_;
};

}  // namespace tesserine
