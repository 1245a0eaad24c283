#pragma once

#include "search/IndexDocument.h"

#include <string>
#include <vector>

namespace tesserine {

/// A document with everything its rows in the index hold, worked out: what takes time and no
/// database can be done on another thread than the writing. Texts are made fit.
struct IndexRows {
    explicit IndexRows(IndexDocument from);

    IndexDocument document;
    DocumentState state;

    std::string uid;
    std::string tags;   ///< joined by `tagSeparator`
    std::string types;  ///< joined by spaces
    std::string titleFold;
    std::string notebookFold;
    std::string tagsFold;
    std::string typesFold;
    std::string signature;

    std::string tagWords;  ///< joined by spaces
    std::string keys;
    std::vector<std::string> attachmentKeys;  ///< of each attachment
};

}  // namespace tesserine
