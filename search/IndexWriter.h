#pragma once

#include "base/sqlite/SQLiteDatabase.h"
#include "search/IndexRows.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace tesserine {

/// Writes documents as rows. Prepares each statement when it is first needed and keeps it for its
/// own life: one writer for each document, or one for a batch.
class IndexWriter {
public:
    explicit IndexWriter(SQLiteDatabase& database) : database_(database) {}

    /// Adds the rows of a document. One that is in the index is taken out first; to expect none is
    /// quicker than to look.
    void insert(const IndexRows& rows);
    /// Deletes the rows of a document and tells whether there were any.
    bool remove(const std::string& uid);

private:
    enum Use : std::size_t {
        insertDocument,
        insertText,
        insertAttachment,
        insertAttachmentText,
        findDocument,
        deleteText,
        deleteDocument,
        findAttachment,
        deleteAttachmentTexts,
        deleteAttachments,
        useCount,
    };
    static const char* sqlOf(Use use);
    Statement& prepared(Use use);
    bool insertRow(const IndexRows& rows);
    void insertWords(const IndexRows& rows, std::int64_t row);
    void insertFile(const IndexRows& rows, std::size_t place);
    bool hasAttachments(const std::string& uid);
    void run(Use use, std::int64_t row);
    void run(Use use, const std::string& uid);

    SQLiteDatabase& database_;
    std::array<std::optional<Statement>, useCount> statements_;
};

}  // namespace tesserine
