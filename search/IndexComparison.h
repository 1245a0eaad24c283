#pragma once

#include "search/ChangedDocuments.h"
#include "search/DocumentReader.h"
#include "search/IndexCoverage.h"
#include "search/SearchIndex.h"

#include <string>
#include <vector>

namespace tesserine {

/// How an index differs from a library, by identities and signatures.
struct IndexDifferences {
    /// Documents that are missing in the index or out of date.
    ChangedDocuments toWrite;
    /// Uids that the library does not have.
    std::vector<std::string> leftover;
    IndexCoverage coverage;
};

/// Compares all documents; takes time with the size of the library, and changes nothing. Throws
/// `SQLiteDatabase::Error` for the index and `StoreError` for the library.
IndexDifferences compare(SearchIndex& index, DocumentReader& reader);

/// Whether the file is sound, its full-text tables agree with themselves, and its tables with each
/// other: no row is without its words and no words are without their row.
bool isSound(SearchIndex& index);

}  // namespace tesserine
