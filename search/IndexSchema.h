#pragma once

#include "base/sqlite/SQLiteDatabase.h"

#include <cstdint>

/// The tables of the search index.
namespace tesserine::indexschema {

inline constexpr std::int64_t version = 6;

/// The key in `meta` that says how far the documents follow the library. It goes when they go.
inline constexpr const char* historyKey = "library_history";

/// Makes the tables that are missing and writes the version. A file of another version loses its
/// tables first, except `meta`; one that says no version keeps them.
void setUp(SQLiteDatabase& database);
/// Drops the tables, except `meta`, and makes them afresh, inside the caller's transaction: quicker
/// than deleting rows, and whatever was wrong in the full-text tables goes with them.
void remake(SQLiteDatabase& database);

}  // namespace tesserine::indexschema
