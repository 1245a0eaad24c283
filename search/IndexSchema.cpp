#include "search/IndexSchema.h"

#include <charconv>
#include <optional>
#include <string>
#include <string_view>

namespace tesserine::indexschema {
namespace {

constexpr const char* metaTable =
    "CREATE TABLE IF NOT EXISTS meta (key TEXT PRIMARY KEY, value TEXT NOT NULL);";

constexpr const char* script = R"(
CREATE TABLE IF NOT EXISTS docs (
    rowid INTEGER PRIMARY KEY AUTOINCREMENT,
    uid TEXT NOT NULL UNIQUE,
    kind TEXT NOT NULL,
    title TEXT NOT NULL DEFAULT '',
    notebook TEXT NOT NULL DEFAULT '',
    tags TEXT NOT NULL DEFAULT '',
    types TEXT NOT NULL DEFAULT '',
    created REAL NOT NULL DEFAULT 0,
    updated REAL NOT NULL DEFAULT 0,
    has_attach INTEGER NOT NULL DEFAULT 0,
    trashed INTEGER NOT NULL DEFAULT 0,
    latitude REAL,
    longitude REAL,
    favorite INTEGER NOT NULL DEFAULT 0,
    favorited REAL NOT NULL DEFAULT 0,
    title_fold TEXT NOT NULL DEFAULT '',
    notebook_fold TEXT NOT NULL DEFAULT '',
    tags_fold TEXT NOT NULL DEFAULT '',
    types_fold TEXT NOT NULL DEFAULT '',
    sig TEXT NOT NULL DEFAULT '',
    att_count INTEGER NOT NULL DEFAULT 0,
    att_text INTEGER NOT NULL DEFAULT 0
);
CREATE INDEX IF NOT EXISTS docs_kind ON docs(kind, trashed);
CREATE INDEX IF NOT EXISTS docs_updated ON docs(updated DESC);
-- keys is unweighted (bm25 weight 0): amounts, account numbers and dates help a note match and
-- never rank it.
CREATE VIRTUAL TABLE IF NOT EXISTS fts USING fts5(
    title, body, tags, notebook, attachments, keys,
    tokenize = 'unicode61 remove_diacritics 2'
);
CREATE TABLE IF NOT EXISTS atts (
    rowid INTEGER PRIMARY KEY AUTOINCREMENT,
    uid TEXT NOT NULL,
    note_uid TEXT NOT NULL,
    filename TEXT NOT NULL DEFAULT '',
    mime TEXT NOT NULL DEFAULT '',
    has_text INTEGER NOT NULL DEFAULT 0
);
CREATE INDEX IF NOT EXISTS atts_note ON atts(note_uid);
CREATE VIRTUAL TABLE IF NOT EXISTS afts USING fts5(
    filename, body, keys,
    tokenize = 'unicode61 remove_diacritics 2'
);
CREATE VIRTUAL TABLE IF NOT EXISTS vocab USING fts5vocab(fts, 'row');
CREATE TABLE IF NOT EXISTS tag_tree (name TEXT PRIMARY KEY, parent TEXT);
)";

/// Words are gathered in up to 8 MB of memory before they become a part of a full-text table, and
/// parts are merged when `SearchIndex::tidyUp` says so; 64 are merged in any case.
constexpr const char* settings = R"(
INSERT INTO fts(fts, rank) VALUES('hashsize', 8000000);
INSERT INTO fts(fts, rank) VALUES('automerge', 0);
INSERT INTO fts(fts, rank) VALUES('crisismerge', 64);
INSERT INTO afts(afts, rank) VALUES('hashsize', 8000000);
INSERT INTO afts(afts, rank) VALUES('automerge', 0);
INSERT INTO afts(afts, rank) VALUES('crisismerge', 64);
)";

constexpr const char* dropScript =
    "DROP TABLE IF EXISTS vocab; DROP TABLE IF EXISTS fts; DROP TABLE IF EXISTS docs; "
    "DROP TABLE IF EXISTS tag_tree; DROP TABLE IF EXISTS afts; DROP TABLE IF EXISTS atts;";

std::string storedVersion(SQLiteDatabase& database) {
    return database.text("SELECT value FROM meta WHERE key = 'schema';");
}

/// A whole decimal integer with an optional sign; anything else says no version.
std::optional<std::int64_t> versionIn(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole ? std::optional(number) : std::nullopt;
}

void dropTables(SQLiteDatabase& database) {
    database.execute(dropScript);
    Statement row = database.prepare("DELETE FROM meta WHERE key = ?;");
    row.bindText(1, historyKey);
    row.step();
}

void makeTables(SQLiteDatabase& database) {
    database.execute(script);
    Statement row =
        database.prepare("INSERT OR REPLACE INTO meta(key, value) VALUES('schema', ?);");
    row.bindText(1, std::to_string(version));
    row.step();
}

}  // namespace

void setUp(SQLiteDatabase& database) {
    database.execute(metaTable);
    if (storedVersion(database) == std::to_string(version)) {
        database.execute(script);  // writes only what is missing
        return;
    }
    // Read again inside: another process may have set the file up meanwhile.
    database.transaction([&] {
        const auto stored = versionIn(storedVersion(database));
        if (stored && *stored != version) dropTables(database);
        makeTables(database);
    });
}

void remake(SQLiteDatabase& database) {
    dropTables(database);
    makeTables(database);
    database.execute(settings);
}

}  // namespace tesserine::indexschema
