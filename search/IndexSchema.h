#pragma once

#include "base/sqlite/SQLiteDatabase.h"

#include <cstdint>

/// The tables of the search index.
namespace tesserine::indexSchema {

inline constexpr std::int64_t version = 6;

/// Makes the tables that are missing and writes the version. A file of another version loses its
/// tables first, except `meta`; one that says no version keeps them.
void setUp(SQLiteDatabase& database);

}  // namespace tesserine::indexSchema
