#pragma once

#include "base/Log.h"
#include "base/sqlite/SQLiteDatabase.h"
#include "core/model/Schema.h"

#include <filesystem>
#include <string>
#include <vector>

namespace tesserine {

class Random;

/// The tables and indexes of the library file, all derived from the model.
namespace schema {

/// Marks the file as a Tesserine library ("TSSR", in the file's header).
inline constexpr std::int64_t applicationID = 0x54535352;

/// Makes every table, index and the library's identifier in an empty file, in one transaction.
void create(SQLiteDatabase& database, Random& random);

/// Gives the history a new name: its numbers no longer follow those that were read before, and a
/// journal of the file it was copied from no longer belongs to it.
void setHistoryID(SQLiteDatabase& database, Random& random);

/// Whether the last entry of the history was made in another file than this one: its journal does
/// not belong to it.
bool hasForeignJournal(SQLiteDatabase& database);
/// Whether the file was made for a library of ours, of any version.
bool isLibrary(SQLiteDatabase& database);

/// What a file lacks compared with the model, as statements; empty when it is up to date. Additions
/// only: what the file has beyond the model is left alone.
std::vector<std::string> missingStatements(SQLiteDatabase& database);
/// Adds what is missing in one transaction. A file that lacks nothing is not written to.
void migrate(SQLiteDatabase& database, Random& random);

/// "idx_CDNote_updatedAt": the name of the fetch index of an attribute.
std::string fetchIndexName(const EntityDescription& entity, const AttributeDescription& attribute);

/// The condition for the rows of `Z_DIGEST` that belong to an attribute. Those of an external one
/// have an index on their digests, by which equal values share a file.
std::string digestsOf(const EntityDescription& entity, const AttributeDescription& attribute);

/// Makes the four note indexes that every list relies on, each regardless of the others' outcome,
/// over a direct connection. Never fails; it only logs.
void repairIndexes(const std::filesystem::path& file, const Log& log);

}  // namespace schema
}  // namespace tesserine
