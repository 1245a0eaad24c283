#include "core/store/History.h"

#include "base/Text.h"

#include <algorithm>

namespace tesserine::history {
namespace {

std::vector<std::string> split(std::string_view text) {
    std::vector<std::string> names;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        names.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return names;
}

std::vector<ObjectChange> changesOf(SQLiteDatabase& database, std::int64_t number) {
    Statement& rows = database.cached(
        "SELECT ENTITY, PK, UUID, KIND, CHANGED FROM Z_HISTORY_CHANGE WHERE HISTORY = ?");
    rows.bindInteger(1, number);
    std::vector<ObjectChange> changes;
    while (rows.step()) {
        const EntityDescription* entity = Schema::library().entityNamed(rows.textView(0));
        if (entity == nullptr) continue;  // written by a newer program
        const auto kind = std::clamp<std::int64_t>(rows.integer(3), 0, 2);
        changes.push_back({
            .kind = static_cast<ChangeKind>(kind),
            .entity = entity->kind,
            .key = rows.integer(1),
            .uuid = Uuid::fromBytes(rows.blob(2)),
            .changed = split(rows.textView(4)),
        });
    }
    rows.reset();
    return changes;
}

}  // namespace

std::int64_t record(
    SQLiteDatabase& database,
    Instant timestamp,
    const std::string& author,
    const std::vector<ObjectChange>& changes) {
    Statement& transaction = database.cached(
        "INSERT INTO Z_HISTORY (TIMESTAMP, AUTHOR, NAME) VALUES (?, ?, (SELECT VALUE FROM "
        "Z_METADATA WHERE NAME = 'historyID'))");
    transaction.bindDouble(1, timestamp.referenceSeconds());
    transaction.bindText(2, author);
    transaction.step();
    transaction.reset();
    const std::int64_t number = database.lastInsertRowID();
    Statement& row = database.cached(
        "INSERT OR REPLACE INTO Z_HISTORY_CHANGE (HISTORY, ENTITY, PK, UUID, KIND, CHANGED) VALUES "
        "(?, ?, ?, ?, ?, ?)");
    for (const ObjectChange& change : changes) {
        row.bindInteger(1, number);
        row.bindText(2, Schema::library()[change.entity].name);
        row.bindInteger(3, change.key);
        if (change.uuid) {
            row.bindBlob(4, change.uuid->bytes());
        } else {
            row.bindNull(4);
        }
        row.bindInteger(5, static_cast<std::int64_t>(change.kind));
        row.bindText(6, text::joined(change.changed, " "));
        row.step();
        row.reset();
    }
    return number;
}

std::vector<StoreTransaction> after(
    SQLiteDatabase& database, std::int64_t number, std::size_t limit) {
    Statement& rows = database.cached(
        "SELECT ID, TIMESTAMP, AUTHOR FROM Z_HISTORY WHERE ID > ? ORDER BY ID LIMIT ?");
    rows.bindInteger(1, number);
    rows.bindInteger(2, limit == 0 ? -1 : static_cast<std::int64_t>(limit));
    std::vector<StoreTransaction> result;
    while (rows.step()) {
        result.push_back({
            .number = rows.integer(0),
            .timestamp = Instant::fromReferenceSeconds(rows.real(1)),
            .author = rows.text(2).value_or(""),
            .changes = {},
        });
    }
    rows.reset();
    for (StoreTransaction& transaction : result) {
        transaction.changes = changesOf(database, transaction.number);
    }
    return result;
}

std::int64_t lastNumber(SQLiteDatabase& database) {
    // The sequence remembers the number also when its row was dropped.
    Statement& row = database.cached(
        "SELECT IFNULL((SELECT seq FROM sqlite_sequence WHERE name = 'Z_HISTORY'), 0)");
    const std::int64_t number = row.step() ? row.integer(0) : 0;
    row.reset();
    return number;
}

bool isCompleteAfter(SQLiteDatabase& database, std::int64_t number) {
    Statement& row = database.cached("SELECT min(ID) FROM Z_HISTORY");
    const bool hasRows = row.step() && !row.isNull(0);
    const std::int64_t first = hasRows ? row.integer(0) : lastNumber(database) + 1;
    row.reset();
    return first <= number + 1;
}

void setMark(
    SQLiteDatabase& database, const std::string& name, std::int64_t number, Instant timestamp) {
    Statement& row = database.cached(
        "INSERT OR REPLACE INTO Z_HISTORY_MARK (NAME, ID, TIMESTAMP) VALUES (?, ?, ?)");
    row.bindText(1, name);
    row.bindInteger(2, number);
    row.bindDouble(3, timestamp.referenceSeconds());
    row.step();
    row.reset();
}

std::optional<std::int64_t> mark(SQLiteDatabase& database, const std::string& name) {
    Statement& row = database.cached("SELECT ID FROM Z_HISTORY_MARK WHERE NAME = ?");
    row.bindText(1, name);
    std::optional<std::int64_t> result;
    if (row.step()) result = row.integer(0);
    row.reset();
    return result;
}

std::int64_t lastPrunable(SQLiteDatabase& database, Instant now) {
    // Up to the first young one: a clock that was wrong for a while does not take those before it
    // along. An instant far ahead is the work of such a clock as well.
    Statement& row = database.cached(
        "SELECT min(IFNULL((SELECT min(ID) - 1 FROM Z_HISTORY WHERE TIMESTAMP BETWEEN ?1 AND ?2), "
        "IFNULL((SELECT max(ID) FROM Z_HISTORY), 0)), "
        "IFNULL((SELECT min(ID) FROM Z_HISTORY_MARK WHERE TIMESTAMP >= ?3), 9223372036854775807))");
    row.bindDouble(1, (now - lifetime).referenceSeconds());
    row.bindDouble(2, (now + lifetime).referenceSeconds());
    row.bindDouble(3, (now - markLifetime).referenceSeconds());
    const std::int64_t number = row.step() ? row.integer(0) : 0;
    row.reset();
    return number;
}

void prune(SQLiteDatabase& database, std::int64_t number) {
    for (const char* sql :
         {"DELETE FROM Z_HISTORY_CHANGE WHERE HISTORY <= ?",
          "DELETE FROM Z_HISTORY WHERE ID <= ?"}) {
        Statement& statement = database.cached(sql);
        statement.bindInteger(1, number);
        statement.step();
        statement.reset();
    }
}

}  // namespace tesserine::history
