#pragma once

#include "core/store/StoreChanges.h"
#include "search/DocumentReader.h"
#include "search/SearchIndex.h"

#include <map>
#include <optional>
#include <set>
#include <vector>

namespace tesserine {

/// What a stretch of the library's history asks of the index.
///
/// A document is named by its row, so that its present state can be read, and by its identity where
/// the history told it, so that it can be taken out when the row is gone.
struct ChangedDocuments {
    std::map<DocumentKey, std::optional<Uuid>> documents;
    bool isTagTreeChanged = false;
};

/// The notes and tasks that are searched differently after these transactions: changed ones, those
/// in a renamed notebook, with a renamed tag, with a changed attachment. `index` tells whose an
/// attachment was that is gone.
ChangedDocuments changedDocuments(
    const std::vector<StoreTransaction>& transactions, DocumentReader& reader, SearchIndex& index);

}  // namespace tesserine
