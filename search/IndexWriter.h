#pragma once

#include "base/sqlite/SQLiteDatabase.h"
#include "search/IndexDocument.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace tesserine {

/// Writes documents as rows. Prepares each statement when it is first needed and keeps it for its
/// own life: one writer for each document, or one for a batch.
class IndexWriter {
public:
    explicit IndexWriter(SQLiteDatabase& database) : database_(database) {}

    /// Adds the rows of a document that is not in the index, with its texts made fit.
    void insert(const IndexDocument& document);
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
        deleteAttachmentTexts,
        deleteAttachments,
        useCount,
    };
    static const char* sqlOf(Use use);
    Statement& prepared(Use use);
    void insertRow(const IndexDocument& document);
    void insertWords(const IndexDocument& document, std::int64_t row);
    void insertFile(const IndexAttachment& attachment, const std::string& note);
    void run(Use use, std::int64_t row);
    void run(Use use, const std::string& uid);

    SQLiteDatabase& database_;
    std::array<std::optional<Statement>, useCount> statements_;
};

}  // namespace tesserine
