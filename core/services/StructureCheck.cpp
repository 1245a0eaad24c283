#include "core/services/LibraryExamination.h"
#include "core/store/StoreCore.h"
#include "core/store/TesserineStore.h"

#include <algorithm>
#include <unordered_map>

namespace tesserine {
namespace {

using Kind = LibraryProblem::Kind;

std::string idColumn(const EntityDescription& entity) {
    return entity.identity ? entity.attributes[*entity.identity].column : "NULL";
}

/// What a relationship leads to, to a person: "parent", "note".
std::string targetName(const RelationshipDescription& relationship) {
    return relationship.name == "linkedNote" ? "note" : relationship.name;
}

void execute(SQLiteDatabase& database, const std::string& sql, std::int64_t key) {
    Statement& statement = database.cached(sql);
    statement.bindInteger(1, key);
    statement.step();
    statement.reset();
}

/// A row of a tree as its table holds it.
struct Node {
    std::int64_t parent = 0;
    std::optional<Uuid> id;
    std::size_t walk = 0;  ///< the walk that came by; 0: none yet
};
using Nodes = std::unordered_map<std::int64_t, Node>;

/// One row of each cycle: that with the smallest identifier, so that every device breaks a cycle at
/// the same place.
std::vector<std::int64_t> cycleBreakers(Nodes& nodes, const std::vector<std::int64_t>& order) {
    std::vector<std::int64_t> result;
    std::size_t walk = 0;
    for (const std::int64_t start : order) {
        ++walk;
        auto at = nodes.find(start);
        while (at != nodes.end() && at->second.walk == 0) {
            at->second.walk = walk;
            at = nodes.find(at->second.parent);
        }
        if (at == nodes.end() || at->second.walk != walk) continue;  // ended, or met an older walk
        const auto isBefore = [](const auto& a, const auto& b) {
            return std::pair(a.second.id, a.first) < std::pair(b.second.id, b.first);
        };
        auto smallest = at;
        for (auto next = nodes.find(at->second.parent); next != at;
             next = nodes.find(next->second.parent)) {
            if (isBefore(*next, *smallest)) smallest = next;
        }
        result.push_back(smallest->first);
    }
    return result;
}

}  // namespace

void LibraryExamination::checkReferences() {
    for (const EntityDescription& entity : Schema::library().entities()) {
        checkIdentities(entity);
        for (const RelationshipDescription& relationship : entity.relationships) {
            if (isStopped()) return;
            if (!relationship.isToMany) checkReference(entity, relationship);
            if (relationship.ownsLinks) checkLinks(entity, relationship);
        }
    }
}

void LibraryExamination::checkReference(
    const EntityDescription& entity, const RelationshipDescription& relationship) {
    const std::string& target = Schema::library()[relationship.destination].table;
    const std::string isBroken = relationship.column + " IS NOT NULL AND " + relationship.column
                                 + " NOT IN (SELECT Z_PK FROM " + target + ")";
    const auto broken =
        rows("SELECT Z_PK, " + idColumn(entity) + " FROM " + entity.table + " WHERE " + isBroken);
    changeRows(entity, broken, relationship.name, [&](SQLiteDatabase& database, const RowID& row) {
        execute(
            database,
            "UPDATE " + entity.table + " SET " + relationship.column
                + " = NULL, Z_OPT = IFNULL(Z_OPT, 0) + 1 WHERE Z_PK = ? AND " + isBroken,
            row.key);
    });
    for (const RowID& row : broken) {
        add(Kind::brokenReference,
            "The " + nameOf(entity, row) + " pointed to a " + targetName(relationship)
                + " that is gone",
            "the reference was removed");
    }
}

/// Link rows one of whose ends is gone. The owner's history tells of the change where there is one.
void LibraryExamination::checkLinks(
    const EntityDescription& entity, const RelationshipDescription& link) {
    const std::string& target = Schema::library()[link.destination].table;
    const std::string isBroken = "(" + link.linkSource + " NOT IN (SELECT Z_PK FROM " + entity.table
                                 + ") OR " + link.linkDestination + " NOT IN (SELECT Z_PK FROM "
                                 + target + "))";
    const auto broken = rows(
        "SELECT DISTINCT " + link.linkSource + ", (SELECT " + idColumn(entity) + " FROM "
        + entity.table + " WHERE Z_PK = " + link.linkSource + ") FROM " + link.linkTable + " WHERE "
        + isBroken);
    changeRows(entity, broken, link.name, [&](SQLiteDatabase& database, const RowID& row) {
        execute(
            database,
            "DELETE FROM " + link.linkTable + " WHERE " + link.linkSource + " = ? AND " + isBroken,
            row.key);
    });
    for (const RowID& row : broken) {
        add(Kind::brokenReference,
            "The " + nameOf(entity, row) + " had a link among its " + link.name
                + " with one end gone",
            "the link was removed");
    }
}

void LibraryExamination::checkIdentities(const EntityDescription& entity) {
    if (!entity.identity) return;
    const AttributeDescription& identity = entity.attributes[*entity.identity];
    const std::string from = " FROM " + entity.table + " WHERE ";
    const std::string isMissing = "IFNULL(length(" + identity.column + "), 0) != 16";
    const auto missing = rows("SELECT Z_PK, NULL" + from + isMissing);
    changeRows(entity, missing, identity.name, [&](SQLiteDatabase& database, const RowID& row) {
        Statement& statement = database.cached(
            "UPDATE " + entity.table + " SET " + identity.column
            + " = ?2, Z_OPT = IFNULL(Z_OPT, 0) + 1 WHERE Z_PK = ?1 AND " + isMissing);
        statement.bindInteger(1, row.key);
        statement.bindBlob(2, Uuid::random(store_.core().random()).bytes());
        statement.step();
        statement.reset();
    });
    for (const RowID& row : missing) {
        add(Kind::missingID,
            "The " + nameOf(entity, row) + " had no identifier",
            "it has a new one");
    }
    // Which of two to rename is a choice: links and other devices know them by this name.
    for (const RowID& row : rows(
             "SELECT max(Z_PK), " + identity.column + from + "length(" + identity.column
             + ") = 16 GROUP BY " + identity.column + " HAVING count(*) > 1")) {
        add(Kind::duplicateID, "There is more than one " + nameOf(entity, row));
    }
}

void LibraryExamination::checkTree(EntityKind kind) {
    const EntityDescription& entity = Schema::library()[kind];
    const auto relationship = entity.relationshipNamed("parent");
    const std::string& column = entity.relationships[*relationship].column;
    Nodes nodes;
    std::vector<std::int64_t> order;
    {
        Statement row = context_->reader().prepare(
            "SELECT Z_PK, " + idColumn(entity) + ", IFNULL(" + column + ", 0) FROM " + entity.table
            + " ORDER BY Z_PK");
        while (row.step()) {
            order.push_back(row.integer(0));
            nodes[row.integer(0)] = {row.integer(2), Uuid::fromBytes(row.blob(1))};
        }
    }
    std::vector<RowID> breakers;
    for (const std::int64_t key : cycleBreakers(nodes, order)) {
        breakers.push_back({key, nodes[key].id});
    }
    changeRows(entity, breakers, "parent", [&](SQLiteDatabase& database, const RowID& row) {
        execute(
            database,
            "UPDATE " + entity.table + " SET " + column
                + " = NULL, Z_OPT = IFNULL(Z_OPT, 0) + 1 WHERE Z_PK = ?",
            row.key);
    });
    for (const RowID& row : breakers) {
        add(Kind::cycle,
            "The " + nameOf(entity, row) + " stood below itself",
            "it stands at the top now");
    }
}

}  // namespace tesserine
