#pragma once

#include "base/Log.h"
#include "search/ChangedDocuments.h"
#include "search/DocumentReader.h"
#include "search/IndexRows.h"
#include "search/SearchIndex.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace tesserine {

/// Writes documents to the index in batches of at most `batchSize`, each in one transaction.
///
/// A document that SQLite refuses is logged and left out; any other failure (a full disk, a damaged
/// file) ends the work, and the batches before it stay. Belongs to one thread at a time.
class IndexUpdater {
public:
    static constexpr std::size_t batchSize = 200;

    IndexUpdater(SearchIndex& index, DocumentReader& reader, Log log)
        : index_(index), reader_(reader), log_(std::move(log)) {}

    /// Brings these documents up to what the library holds now: reads them inside of the
    /// transaction that writes them, so that nobody can have written anything newer. `finish` runs
    /// in the last batch.
    void update(const ChangedDocuments& changed, const std::function<void()>& finish);
    /// Adds documents that were read before to an emptied index, in one batch.
    void insert(const std::vector<IndexRows>& rows);

private:
    using Each = std::function<void(std::size_t)>;
    void batch(std::size_t count, const Each& each, const std::function<void()>& finish);
    void oneByOne(std::size_t count, const Each& each);

    SearchIndex& index_;
    DocumentReader& reader_;
    Log log_;
};

/// Whether an error says that the file cannot serve as an index: damaged, or without the tables and
/// columns it should have.
bool isUnusable(const SQLiteDatabase::Error& error);

}  // namespace tesserine
