#include "search/IndexWriter.h"

namespace tesserine {
namespace {

double secondsOf(const std::optional<Instant>& instant) { return instant ? instant->seconds() : 0; }

/// Binds the values of one row from the first parameter on.
class RowBinder {
public:
    explicit RowBinder(Statement& statement) : statement_(statement) {}
    void text(const std::string& value) { statement_.bindText(++place_, value); }
    void integer(std::int64_t value) { statement_.bindInteger(++place_, value); }
    void real(double value) { statement_.bindDouble(++place_, value); }
    void optionalReal(const std::optional<double>& value) {
        if (value) return real(*value);
        statement_.bindNull(++place_);
    }

private:
    Statement& statement_;
    int place_ = 0;
};

}  // namespace

const char* IndexWriter::sqlOf(Use use) {
    switch (use) {
    case insertDocument:
        return "INSERT OR IGNORE INTO docs(uid, kind, title, notebook, tags, types, created, updated, "
               "has_attach, trashed, latitude, longitude, favorite, favorited, title_fold, "
               "notebook_fold, tags_fold, types_fold, sig, att_count, att_text) "
               "VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?);";
    case insertText:
        return "INSERT INTO fts(rowid, title, body, tags, notebook, attachments, keys) "
               "VALUES(?, ?, ?, ?, ?, ?, ?);";
    case insertAttachment:
        return "INSERT INTO atts(uid, note_uid, filename, mime, has_text) VALUES(?, ?, ?, ?, ?);";
    case insertAttachmentText:
        return "INSERT INTO afts(rowid, filename, body, keys) VALUES(?, ?, ?, ?);";
    case findDocument: return "SELECT rowid FROM docs WHERE uid = ?;";
    case deleteText: return "DELETE FROM fts WHERE rowid = ?;";
    case deleteDocument: return "DELETE FROM docs WHERE rowid = ?;";
    case findAttachment: return "SELECT 1 FROM atts WHERE note_uid = ? LIMIT 1;";
    case deleteAttachmentTexts:
        return "DELETE FROM afts WHERE rowid IN (SELECT rowid FROM atts WHERE note_uid = ?);";
    case deleteAttachments: return "DELETE FROM atts WHERE note_uid = ?;";
    case useCount: break;
    }
    return "";
}

Statement& IndexWriter::prepared(Use use) {
    auto& statement = statements_[use];
    if (!statement) statement = database_.prepare(sqlOf(use));
    return *statement;
}

void IndexWriter::insert(const IndexRows& rows) {
    // Another process may have indexed it while a rebuild was on its way to it.
    if (!insertRow(rows)) {
        remove(rows.uid);
        insertRow(rows);
    }
    insertWords(rows, database_.lastInsertRowID());
    for (std::size_t i = 0; i < rows.document.attachments.size(); ++i) {
        insertFile(rows, i);
    }
}

/// False when there is a row of that document already.
bool IndexWriter::insertRow(const IndexRows& rows) {
    const IndexDocument& document = rows.document;
    Statement& statement = prepared(insertDocument);
    RowBinder row(statement);
    row.text(rows.uid);
    row.text(std::string(nameOf(document.kind)));
    row.text(document.title);
    row.text(document.notebook);
    row.text(rows.tags);
    row.text(rows.types);
    row.real(secondsOf(document.createdAt));
    row.real(secondsOf(document.updatedAt));
    row.integer(document.hasAttachment ? 1 : 0);
    row.integer(document.isTrashed ? 1 : 0);
    row.optionalReal(document.latitude);
    row.optionalReal(document.longitude);
    row.integer(document.favorite ? 1 : 0);
    row.real(secondsOf(document.favoritedAt));
    row.text(rows.titleFold);
    row.text(rows.notebookFold);
    row.text(rows.tagsFold);
    row.text(rows.typesFold);
    row.text(rows.signature);
    row.integer(static_cast<std::int64_t>(rows.state.attachmentCount));
    row.integer(static_cast<std::int64_t>(rows.state.attachmentsWithText));
    statement.step();
    statement.reset();
    return database_.changes() > 0;
}

void IndexWriter::insertWords(const IndexRows& rows, std::int64_t rowID) {
    Statement& statement = prepared(insertText);
    RowBinder row(statement);
    row.integer(rowID);
    row.text(rows.document.title);
    row.text(rows.document.body);
    row.text(rows.tagWords);
    row.text(rows.document.notebook);
    row.text(rows.document.attachmentText);
    row.text(rows.keys);
    statement.step();
    statement.reset();
}

void IndexWriter::insertFile(const IndexRows& rows, std::size_t place) {
    const IndexAttachment& attachment = rows.document.attachments[place];
    Statement& statement = prepared(insertAttachment);
    RowBinder row(statement);
    row.text(attachment.id.text());
    row.text(rows.uid);
    row.text(attachment.filename);
    row.text(attachment.mimeType);
    row.integer(attachment.text.empty() ? 0 : 1);
    statement.step();
    statement.reset();

    Statement& words = prepared(insertAttachmentText);
    RowBinder wordsRow(words);
    wordsRow.integer(database_.lastInsertRowID());
    wordsRow.text(attachment.filename);
    wordsRow.text(attachment.text);
    wordsRow.text(rows.attachmentKeys[place]);
    words.step();
    words.reset();
}

bool IndexWriter::remove(const std::string& uid) {
    Statement& found = prepared(findDocument);
    found.bindText(1, uid);
    const bool isThere = found.step();
    const std::int64_t row = isThere ? found.integer(0) : 0;
    found.reset();
    if (!isThere) return false;

    run(deleteText, row);
    run(deleteDocument, row);
    // Beginning a statement for several rows has the full-text tables write what they gathered.
    if (hasAttachments(uid)) {
        run(deleteAttachmentTexts, uid);
        run(deleteAttachments, uid);
    }
    return true;
}

bool IndexWriter::hasAttachments(const std::string& uid) {
    Statement& found = prepared(findAttachment);
    found.bindText(1, uid);
    const bool isThere = found.step();
    found.reset();
    return isThere;
}

void IndexWriter::run(Use use, std::int64_t row) {
    Statement& statement = prepared(use);
    statement.bindInteger(1, row);
    statement.step();
    statement.reset();
}

void IndexWriter::run(Use use, const std::string& uid) {
    Statement& statement = prepared(use);
    statement.bindText(1, uid);
    statement.step();
    statement.reset();
}

}  // namespace tesserine
