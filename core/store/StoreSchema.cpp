#include "core/store/StoreSchema.h"

#include "base/FailPoint.h"
#include "base/Random.h"
#include "base/Uuid.h"

#include <algorithm>
#include <array>
#include <set>

namespace tesserine::schema {
namespace {

/// One object of the schema: what it is called and the statement that makes it.
struct Definition {
    std::string name;
    std::string statement;
};

std::string columnType(AttributeType type) {
    switch (type) {
    case AttributeType::boolean:
    case AttributeType::int16:
    case AttributeType::int64: return "INTEGER";
    case AttributeType::real:
    case AttributeType::date: return "REAL";
    case AttributeType::string: return "TEXT";
    case AttributeType::uuid:
    case AttributeType::binary: break;
    }
    return "BLOB";
}

/// The default as SQL, so that rows older than a column read like new ones.
std::string columnDefault(const Value& value) {
    if (const auto* boolean = std::get_if<bool>(&value)) return *boolean ? "1" : "0";
    if (const auto* small = std::get_if<std::int16_t>(&value)) return std::to_string(*small);
    if (const auto* number = std::get_if<std::int64_t>(&value)) return std::to_string(*number);
    if (const auto* real = std::get_if<double>(&value)) {
        return std::to_string(static_cast<std::int64_t>(*real)) + ".0";
    }
    return {};
}

std::string columnDefinition(const AttributeDescription& attribute) {
    std::string text = attribute.column + " " + columnType(attribute.type);
    const std::string value = columnDefault(attribute.defaultValue);
    if (!value.empty()) text += " DEFAULT " + value;
    return text;
}

/// Every column but the keys: small values, then references, then the large values, so that a row's
/// dates are read without walking past its body.
std::vector<Definition> columns(const EntityDescription& entity) {
    std::vector<Definition> result;
    const auto add = [&](bool large) {
        for (const auto& attribute : entity.attributes) {
            if ((attribute.tier == Tier::large) != large) continue;
            result.push_back({attribute.column, columnDefinition(attribute)});
        }
    };
    add(false);
    for (const auto& relationship : entity.relationships) {
        if (relationship.isToMany) continue;
        result.push_back({relationship.column, relationship.column + " INTEGER"});
    }
    add(true);
    return result;
}

Definition entityTable(const EntityDescription& entity) {
    std::string text =
        "CREATE TABLE " + entity.table + " (Z_PK INTEGER PRIMARY KEY AUTOINCREMENT, Z_OPT INTEGER";
    for (const Definition& column : columns(entity)) {
        text += ", " + column.statement;
    }
    return {entity.table, text + ")"};
}

/// What a list of the newest shows, in the order in which it shows it; empty for an entity without
/// such lists. Rows of one instant follow each other by identity.
std::vector<std::string> listColumns(const EntityDescription& entity) {
    const auto updatedAt = entity.attributeNamed("updatedAt");
    if (!updatedAt || !entity.attributes[*updatedAt].isIndexed) return {};
    std::vector<std::string> names{
        entity.attributes[*updatedAt].column,
        entity.attributes[*entity.identity].column,
        "Z_PK",
        "Z_OPT",
    };
    const auto add = [&](const std::string& column) {
        if (!std::ranges::count(names, column)) names.push_back(column);
    };
    for (const auto& attribute : entity.attributes) {
        if (attribute.tier == Tier::header) add(attribute.column);
    }
    for (const auto& relationship : entity.relationships) {
        if (!relationship.isToMany) add(relationship.column);
    }
    return names;
}

/// An index that holds all of it, so that such a list neither touches the table nor sorts.
void addListIndex(const EntityDescription& entity, std::vector<Definition>& result) {
    const auto names = listColumns(entity);
    if (names.empty()) return;
    const std::string name = "list_" + entity.name;
    std::string text = "CREATE INDEX " + name + " ON " + entity.table + "(" + names[0] + " DESC";
    for (std::size_t i = 1; i < names.size(); ++i) {
        text += ", " + names[i];
    }
    result.push_back({name, text + ")"});
}

/// The orders in which tasks are listed. Open tasks have indexes of their own, because after some
/// years most tasks are done.
void addTaskListIndexes(const EntityDescription& entity, std::vector<Definition>& result) {
    struct List {
        const char* name;
        const char* columns;
        const char* condition;
    };
    static constexpr std::array lists{
        List{"open", "ZSORTINDEX, ZCREATEDAT, ZID", " WHERE ZCOMPLETEDAT IS NULL"},
        List{"due", "ZDUEDATE, ZPRIORITY, ZSORTINDEX, ZID", " WHERE ZCOMPLETEDAT IS NULL"},
        List{"done", "ZCOMPLETEDAT DESC, ZID", " WHERE ZCOMPLETEDAT IS NOT NULL"},
        List{"remind", "ZREMINDERAT, ZID", " WHERE ZREMINDERAT IS NOT NULL"},
        List{"place", "ZSORTINDEX DESC, ZID", ""},  // finds the last place
    };
    for (const auto& [name, columns, condition] : lists) {
        const std::string index = std::string(name) + "_" + entity.name;
        result.push_back(
            {index,
             "CREATE INDEX " + index + " ON " + entity.table + "(" + columns + ")" + condition});
    }
}

void addIndexes(const EntityDescription& entity, std::vector<Definition>& result) {
    const auto add = [&](const std::string& name, const std::string& column) {
        result.push_back(
            {name, "CREATE INDEX " + name + " ON " + entity.table + "(" + column + ")"});
    };
    for (const auto& attribute : entity.attributes) {
        if (attribute.isIndexed) add(fetchIndexName(entity, attribute), attribute.column);
    }
    if (entity.identity && !entity.attributes[*entity.identity].isIndexed) {
        const auto& identity = entity.attributes[*entity.identity];
        add("key_" + entity.name + "_" + identity.name, identity.column);
    }
    for (const auto& relationship : entity.relationships) {
        if (relationship.isToMany) continue;
        add("ref_" + entity.name + "_" + relationship.name, relationship.column);
    }
    addListIndex(entity, result);
    if (entity.kind == EntityKind::task) addTaskListIndexes(entity, result);
}

void addLinkTables(const EntityDescription& entity, std::vector<Definition>& result) {
    for (const auto& link : entity.relationships) {
        if (!link.ownsLinks) continue;
        result.push_back(
            {link.linkTable,
             "CREATE TABLE " + link.linkTable + " (" + link.linkSource + " INTEGER NOT NULL, "
                 + link.linkDestination + " INTEGER NOT NULL, PRIMARY KEY (" + link.linkSource
                 + ", " + link.linkDestination + ")) WITHOUT ROWID"});
        const std::string name = "ref" + link.linkTable.substr(1);
        result.push_back(
            {name,
             "CREATE INDEX " + name + " ON " + link.linkTable + "(" + link.linkDestination + ")"});
    }
}

void addDigestIndexes(const EntityDescription& entity, std::vector<Definition>& result) {
    for (const auto& attribute : entity.attributes) {
        if (!attribute.isDigested || !attribute.isExternal) continue;
        const std::string name = "digest_" + entity.name + "_" + attribute.name;
        result.push_back(
            {name,
             "CREATE INDEX " + name + " ON Z_DIGEST(SHA256) WHERE "
                 + digestsOf(entity, attribute)});
    }
}

/// Everything the file holds, in the order in which it is made.
std::vector<Definition> definitions() {
    std::vector<Definition> result;
    const Schema& model = Schema::library();
    for (const auto& entity : model.entities()) {
        result.push_back(entityTable(entity));
    }
    for (const auto& entity : model.entities()) {
        addIndexes(entity, result);
    }
    for (const auto& entity : model.entities()) {
        addLinkTables(entity, result);
    }
    result.push_back(
        {"Z_METADATA",
         "CREATE TABLE Z_METADATA (NAME TEXT PRIMARY KEY, VALUE TEXT) WITHOUT ROWID"});
    result.push_back(
        {"Z_HISTORY",
         "CREATE TABLE Z_HISTORY (ID INTEGER PRIMARY KEY AUTOINCREMENT, TIMESTAMP REAL, AUTHOR TEXT, "
         "NAME TEXT)"});
    result.push_back(
        {"Z_HISTORY_CHANGE",
         "CREATE TABLE Z_HISTORY_CHANGE (HISTORY INTEGER NOT NULL, ENTITY TEXT NOT NULL, PK INTEGER "
         "NOT NULL, UUID BLOB, KIND INTEGER NOT NULL, CHANGED TEXT, PRIMARY KEY (HISTORY, ENTITY, "
         "PK)) WITHOUT ROWID"});
    result.push_back(
        {"Z_HISTORY_MARK",
         "CREATE TABLE Z_HISTORY_MARK (NAME TEXT PRIMARY KEY, ID INTEGER NOT NULL, TIMESTAMP REAL "
         "NOT NULL) WITHOUT ROWID"});
    result.push_back(
        {"Z_DIGEST",
         "CREATE TABLE Z_DIGEST (ENTITY TEXT NOT NULL, PK INTEGER NOT NULL, ATTRIBUTE TEXT NOT NULL, "
         "SHA256 BLOB NOT NULL, PRIMARY KEY (ENTITY, PK, ATTRIBUTE)) WITHOUT ROWID"});
    for (const auto& entity : model.entities()) {
        addDigestIndexes(entity, result);
    }
    return result;
}

std::set<std::string, std::less<>> columnsOf(SQLiteDatabase& database, const std::string& table) {
    std::set<std::string, std::less<>> names;
    Statement info = database.prepare("SELECT name FROM pragma_table_info('" + table + "')");
    while (info.step()) {
        names.insert(info.text(0).value_or(""));
    }
    return names;
}

/// Whether the model lists more than the index holds, which was made by an older program.
bool lacksListColumns(SQLiteDatabase& database, const EntityDescription& entity) {
    std::set<std::string, std::less<>> held;
    Statement info =
        database.prepare("SELECT name FROM pragma_index_info('list_" + entity.name + "')");
    while (info.step()) {
        held.insert(info.text(0).value_or(""));
    }
    return !std::ranges::all_of(
        listColumns(entity), [&](const std::string& name) { return held.contains(name); });
}

/// Name and text of all that is in the file.
std::map<std::string, std::string, std::less<>> stored(SQLiteDatabase& database) {
    std::map<std::string, std::string, std::less<>> result;
    Statement rows = database.prepare("SELECT name, sql FROM sqlite_master WHERE sql IS NOT NULL");
    while (rows.step()) {
        result.emplace(rows.text(0).value_or(""), rows.text(1).value_or(""));
    }
    return result;
}

void setMetadata(SQLiteDatabase& database, const std::string& name, const std::string& value) {
    Statement row =
        database.prepare("INSERT OR REPLACE INTO Z_METADATA (NAME, VALUE) VALUES (?, ?)");
    row.bindText(1, name);
    row.bindText(2, value);
    row.step();
}

bool lacksMetadata(SQLiteDatabase& database, const std::string& name) {
    return database.integer("SELECT count(*) FROM Z_METADATA WHERE NAME = '" + name + "'") == 0;
}

}  // namespace

std::string fetchIndexName(const EntityDescription& entity, const AttributeDescription& attribute) {
    return "idx_" + entity.name + "_" + attribute.name;
}

std::string digestsOf(const EntityDescription& entity, const AttributeDescription& attribute) {
    return "ENTITY = '" + entity.name + "' AND ATTRIBUTE = '" + attribute.name + "'";
}

void create(SQLiteDatabase& database, Random& random) {
    database.transaction([&] {
        for (const Definition& definition : definitions()) {
            database.execute(definition.statement + ";");
        }
        setMetadata(database, "libraryID", Uuid::random(random).text());
        setHistoryID(database, random);
        database.execute("PRAGMA application_id = " + std::to_string(applicationID) + ";");
        database.execute("PRAGMA user_version = " + std::to_string(Schema::number) + ";");
    });
}

void setHistoryID(SQLiteDatabase& database, Random& random) {
    // An older library gets both tables, and a name, when it is migrated.
    for (const char* table : {"Z_METADATA", "Z_HISTORY"}) {
        if (columnsOf(database, table).empty()) return;
    }
    setMetadata(database, "historyID", Uuid::random(random).text());
    setMetadata(
        database, "historyStart", database.text("SELECT IFNULL(max(ID), 0) FROM Z_HISTORY"));
}

bool hasForeignJournal(SQLiteDatabase& database) {
    if (!columnsOf(database, "Z_HISTORY").contains("NAME")) return false;
    return database.integer(
               "SELECT count(*) FROM (SELECT ID, NAME FROM Z_HISTORY ORDER BY ID DESC LIMIT 1) "
               "WHERE NAME <> (SELECT VALUE FROM Z_METADATA WHERE NAME = 'historyID') AND ID > "
               "(SELECT CAST(VALUE AS INTEGER) FROM Z_METADATA WHERE NAME = 'historyStart')")
           > 0;
}

bool isLibrary(SQLiteDatabase& database) {
    const std::int64_t mark = database.integer("PRAGMA application_id");
    // A file written out and read in again by other tools has lost its mark.
    return mark == applicationID || (mark == 0 && columnsOf(database, "ZCDNOTE").contains("Z_PK"));
}

std::vector<std::string> missingStatements(SQLiteDatabase& database) {
    auto present = stored(database);
    std::vector<std::string> result;
    // Columns first: an index may stand on one of them.
    for (const auto& entity : Schema::library().entities()) {
        const auto table = present.find(entity.table);
        if (table == present.end() || table->second == entityTable(entity).statement) continue;
        const auto names = columnsOf(database, entity.table);
        if (!names.contains("Z_OPT")) {
            result.push_back("ALTER TABLE " + entity.table + " ADD COLUMN Z_OPT INTEGER");
        }
        for (const Definition& column : columns(entity)) {
            if (names.contains(column.name)) continue;
            result.push_back("ALTER TABLE " + entity.table + " ADD COLUMN " + column.statement);
        }
    }
    if (present.contains("Z_HISTORY") && !columnsOf(database, "Z_HISTORY").contains("NAME")) {
        result.emplace_back("ALTER TABLE Z_HISTORY ADD COLUMN NAME TEXT");
    }
    for (const auto& entity : Schema::library().entities()) {
        const std::string name = "list_" + entity.name;
        if (!present.contains(name) || !lacksListColumns(database, entity)) continue;
        result.push_back("DROP INDEX " + name);
        present.erase(name);
    }
    for (const Definition& definition : definitions()) {
        if (!present.contains(definition.name)) result.push_back(definition.statement);
    }
    if (database.integer("PRAGMA application_id") != applicationID) {
        result.push_back("PRAGMA application_id = " + std::to_string(applicationID));
    }
    if (database.integer("PRAGMA user_version") < Schema::number) {
        result.push_back("PRAGMA user_version = " + std::to_string(Schema::number));
    }
    return result;
}

void migrate(SQLiteDatabase& database, Random& random) {
    if (missingStatements(database).empty() && !lacksMetadata(database, "historyStart")) return;
    database.transaction([&] {
        // Read again inside the transaction: another process may have been first.
        for (const std::string& statement : missingStatements(database)) {
            database.execute(statement + ";");
            FAIL_POINT("migration.step");
        }
        if (lacksMetadata(database, "libraryID")) {
            setMetadata(database, "libraryID", Uuid::random(random).text());
        }
        if (lacksMetadata(database, "historyStart")) setHistoryID(database, random);
    });
}

void repairIndexes(const std::filesystem::path& file, const Log& log) {
    static constexpr std::array statements{
        "CREATE INDEX IF NOT EXISTS idx_CDNote_trashedAt ON ZCDNOTE(ZTRASHEDAT);",
        "CREATE INDEX IF NOT EXISTS idx_CDNote_updatedAt ON ZCDNOTE(ZUPDATEDAT);",
        "CREATE INDEX IF NOT EXISTS idx_CDNote_createdAt ON ZCDNOTE(ZCREATEDAT);",
        "CREATE INDEX IF NOT EXISTS idx_CDNote_isPinned ON ZCDNOTE(ZISPINNED);",
    };
    try {
        SQLiteDatabase direct(
            file,
            {.file = "library",
             .query = "Library query",
             .access = SQLiteDatabase::Access::readWrite,
             .journal = SQLiteDatabase::Journal::keep,
             .busyTimeoutMilliseconds = 2000});
        for (const char* statement : statements) {
            try {
                direct.execute(statement);
            } catch (const SQLiteDatabase::Error& error) {
                const std::string& message = error.message();
                log.error(
                    "index repair: " + std::string(statement)
                    + " failed: " + (message.empty() ? "unknown error" : message));
            }
        }
    } catch (const SQLiteDatabase::Error&) {
        log.error("index repair: could not open store for a direct connection");
    }
}

}  // namespace tesserine::schema
