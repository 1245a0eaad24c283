#pragma once

#include "base/Instant.h"
#include "base/Uuid.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tesserine {

/// One passage of the user's notes, chosen for a question.
struct RetrievedChunk {
    /// The part of the note that it was cut from.
    enum class Origin { body, attachmentText, title };

    std::string id;  ///< the note's, and the passage's place in it
    Uuid noteID;
    std::string noteTitle;  ///< on one line
    std::string notebook;   ///< empty: in none
    std::vector<std::string> tags;
    std::optional<Instant> updatedAt;
    std::string text;
    Origin origin = Origin::body;
    double score = 0;  ///< higher is better
};

/// One numbered source shown under an answer.
struct NoteCitation {
    int index = 0;  ///< by which the model cites it, in square brackets
    Uuid noteID;
    std::string title;
    std::string excerpt;
    std::optional<Instant> updatedAt;
    std::string notebook;
    /// The passage is of an attachment's text; shown as " · from an attachment".
    bool fromAttachment = false;
};

}  // namespace tesserine
