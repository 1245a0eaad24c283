#include "search/IndexWriter.h"

#include "base/Text.h"
#include "search/SearchAnalyzer.h"
#include "search/SearchIndex.h"

#include <functional>
#include <utility>
#include <vector>

namespace tesserine {
namespace {

double secondsOf(const std::optional<Instant>& instant) { return instant ? instant->seconds() : 0; }

std::string joined(const std::vector<std::string>& words, char separator) {
    std::string text;
    for (const std::string& word : words) {
        if (&word != &words.front()) text += separator;
        text += word;
    }
    return text;
}

template <class Fold>
std::string foldedAndJoined(std::vector<std::string> words, char separator, Fold fold) {
    for (std::string& word : words) {
        word = fold(word);
    }
    return joined(words, separator);
}

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
        return "INSERT INTO docs(uid, kind, title, notebook, tags, types, created, updated, "
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

void IndexWriter::insert(const IndexDocument& document) {
    if (!isFit(document)) {
        insert(fitted(document));
        return;
    }
    insertRow(document);
    insertWords(document, database_.lastInsertRowID());
    for (const IndexAttachment& attachment : document.attachments) {
        insertFile(attachment, document.id.text());
    }
}

void IndexWriter::insertRow(const IndexDocument& document) {
    const DocumentState state = stateOf(document);
    Statement& statement = prepared(insertDocument);
    RowBinder row(statement);
    row.text(document.id.text());
    row.text(std::string(nameOf(document.kind)));
    row.text(document.title);
    row.text(document.notebook);
    row.text(joined(document.tags, tagSeparator));
    row.text(joined(document.attachmentTypes, ' '));
    row.real(secondsOf(document.createdAt));
    row.real(secondsOf(document.updatedAt));
    row.integer(document.hasAttachment ? 1 : 0);
    row.integer(document.isTrashed ? 1 : 0);
    row.optionalReal(document.latitude);
    row.optionalReal(document.longitude);
    row.integer(document.favorite ? 1 : 0);
    row.real(secondsOf(document.favoritedAt));
    row.text(indexFold(document.title));
    row.text(indexFold(document.notebook));
    row.text(foldedAndJoined(document.tags, tagSeparator, indexFold));
    row.text(foldedAndJoined(document.attachmentTypes, ' ', text::lowercased));
    row.text(signature(state));
    row.integer(static_cast<std::int64_t>(state.attachmentCount));
    row.integer(static_cast<std::int64_t>(state.attachmentsWithText));
    statement.step();
    statement.reset();
}

void IndexWriter::insertWords(const IndexDocument& document, std::int64_t rowID) {
    Statement& statement = prepared(insertText);
    RowBinder row(statement);
    row.integer(rowID);
    row.text(document.title);
    row.text(document.body);
    row.text(joined(document.tags, ' '));
    row.text(document.notebook);
    row.text(document.attachmentText);
    row.text(SearchAnalyzer::keyText({{document.title, document.body, document.attachmentText}}));
    statement.step();
    statement.reset();
}

void IndexWriter::insertFile(const IndexAttachment& attachment, const std::string& note) {
    Statement& statement = prepared(insertAttachment);
    RowBinder row(statement);
    row.text(attachment.id.text());
    row.text(note);
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
    wordsRow.text(SearchAnalyzer::keyText({{attachment.text}}));
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
    run(deleteAttachmentTexts, uid);
    run(deleteAttachments, uid);
    return true;
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
