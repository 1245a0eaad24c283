#include "core/store/SaveOperation.h"

#include "base/FailPoint.h"
#include "core/model/NoteEntities.h"
#include "core/store/History.h"

#include <algorithm>
#include <cassert>

namespace tesserine {
namespace {

bool existsRow(SQLiteDatabase& database, const EntityDescription& entity, std::int64_t key) {
    Statement& row = database.cached("SELECT 1 FROM " + entity.table + " WHERE Z_PK = ?");
    row.bindInteger(1, key);
    const bool isThere = row.step();
    row.reset();
    return isThere;
}

}  // namespace

StoreContext::SaveOperation::SaveOperation(State& state) : state_(state) {}

void StoreContext::SaveOperation::run() {
    try {
        prepareExternalValues();
        const StoreCore::Writing writing = state_.core->beginWriting();
        try {
            writing.database().transaction([&] { write(writing.database()); });
            FAIL_POINT("save.committed");
        } catch (const SQLiteDatabase::Error& error) {
            // After an error of the disk the connection's cache may not be what the file holds.
            isUncertain_ = error.isIOError();
            if (isUncertain_) state_.core->discardWriter();
            throw;
        }
    } catch (const SQLiteDatabase::Error& error) {
        undo();
        throw StoreError::saveFailed(
            StoreCore::explain(error) + " They are still here and not in the library yet.");
    } catch (const FileError& error) {
        undo();
        throw StoreError::saveFailed(
            StoreCore::explain(error) + " They are still here and not in the library yet.");
    } catch (...) {
        undo();
        throw;
    }
    succeed();
}

void StoreContext::SaveOperation::write(SQLiteDatabase& database) {
    FAIL_POINT("save.begun");
    settleConflicts(database);
    deleteWhatRefers(database);
    assignKeys(database);
    // NOLINTNEXTLINE(modernize-loop-convert): resolving a reference may still add to the list
    for (std::size_t i = 0; i < state_.pending.size(); ++i) {
        writeObject(database, *state_.pending[i]);
    }
    writeLinks(database);
    FAIL_POINT("save.written");
    record(database);
    FAIL_POINT("save.recorded");
}

void StoreContext::SaveOperation::settleConflicts(SQLiteDatabase& database) {
    std::vector<SaveConflict> conflicts;
    for (StoreObject* object : state_.pending) {
        if (!object->isInserted()) collectConflict(database, *object, conflicts);
    }
    for (StoreObject* object : vanished_) {
        state_.forgetPending(*object);
    }
    if (conflicts.empty()) return;
    for (const SaveConflict& conflict : conflicts) {
        if (conflict.object->entity().kind != EntityKind::note) continue;
        auto* note = static_cast<CDNote*>(conflict.object);
        if (!note->isDeleted() && !note->isChanged(note->hasConflict.index())) {
            marked_.emplace_back(note, note->hasConflict.get());
        }
    }
    const std::size_t before = state_.pending.size();
    state_.policy->resolve(conflicts, state_.context);
    kept_.assign(
        state_.pending.begin() + static_cast<std::ptrdiff_t>(before), state_.pending.end());
    for (SaveConflict& conflict : conflicts) {
        takeStoredValues(database, conflict);
    }
}

void StoreContext::SaveOperation::collectConflict(
    SQLiteDatabase& database, StoreObject& object, std::vector<SaveConflict>& conflicts) {
    const auto version = storedVersion(database, object);
    if (!version) {
        meetDeletion(object);
        return;
    }
    versions_[&object] = *version + 1;
    if (*version == object.version_ || object.isDeleted()) return;
    if (object.changed_ == 0 && object.changedLinks_ == 0) return;
    conflicts.push_back({&object, storedValues(database, object)});
}

/// Somebody else deleted the row. Typed text is never lost: a changed note comes back.
void StoreContext::SaveOperation::meetDeletion(StoreObject& object) {
    if (!object.isDeleted() && object.entity().kind == EntityKind::note) {
        const auto& note = static_cast<const CDNote&>(object);
        if (object.isChanged(note.html.index()) || object.isChanged(note.title.index())) {
            // What was never read went with the row.
            for (std::size_t i = 0; i < object.entity().attributes.size(); ++i) {
                object.ensureLoaded(i);
            }
            reinserted_.push_back(&object);
            return;
        }
    }
    vanished_.push_back(&object);
}

std::vector<Value> StoreContext::SaveOperation::storedValues(
    SQLiteDatabase& database, StoreObject& object) {
    const EntityDescription& entity = object.entity();
    std::string sql = "SELECT Z_PK";
    for (const auto& attribute : entity.attributes) {
        sql += ", " + attribute.column;
    }
    Statement& row = database.cached(sql + " FROM " + entity.table + " WHERE Z_PK = ?");
    row.bindInteger(1, object.key());
    row.step();
    std::vector<Value> values;
    for (std::size_t i = 0; i < entity.attributes.size(); ++i) {
        values.push_back(RowMapper::readValue(row, static_cast<int>(i) + 1, entity.attributes[i]));
    }
    row.reset();
    return values;
}

/// What was not changed here is taken from the file. The version it was read at is left until the
/// commit.
void StoreContext::SaveOperation::takeStoredValues(
    SQLiteDatabase& database, SaveConflict& conflict) {
    StoreObject& object = *conflict.object;
    const std::int64_t version = object.version_;
    readRowAgain(database, object);
    object.version_ = version;
}

void StoreContext::SaveOperation::readRowAgain(SQLiteDatabase& database, StoreObject& object) {
    const RowMapper& mapper = state_.core->mapper(object.entity().kind);
    Statement& row = database.cached(
        "SELECT " + mapper.headerColumns() + " FROM " + object.entity().table + " WHERE Z_PK = ?");
    row.bindInteger(1, object.key());
    if (row.step()) mapper.readHeader(row, object);
    row.reset();
}

/// Rows that another process attached to what is deleted here, and that this context never saw.
void StoreContext::SaveOperation::deleteWhatRefers(SQLiteDatabase& database) {
    // NOLINTNEXTLINE(modernize-loop-convert): the list grows on the way
    for (std::size_t n = 0; n < state_.pending.size(); ++n) {
        const StoreObject& object = *state_.pending[n];
        if (!object.isDeleted() || object.isInserted()) continue;
        for (const RelationshipDescription& relationship : object.entity().relationships) {
            if (!relationship.isToMany || relationship.isManyToMany) continue;
            dragAlong(database, relationship, object.key());
        }
    }
}

void StoreContext::SaveOperation::dragAlong(
    SQLiteDatabase& database, const RelationshipDescription& relationship, std::int64_t key) {
    const EntityDescription& far = Schema::library()[relationship.destination];
    Statement& row = database.cached(
        "SELECT Z_PK FROM " + far.table + " WHERE " + far.relationships[relationship.inverse].column
        + " = ?");
    row.bindInteger(1, key);
    std::vector<std::int64_t> keys;
    while (row.step()) {
        keys.push_back(row.integer(0));
    }
    row.reset();
    for (const std::int64_t farKey : keys) {
        StoreObject* other = state_.objectWithKey(far.kind, farKey);
        if (other == nullptr || other->isRelationshipChanged(relationship.inverse)) continue;
        const bool wasPending = other->isPending_;
        if (!wasPending) readRowAgain(database, *other);
        versions_[other] = storedVersion(database, *other).value_or(0) + 1;
        if (relationship.deleteRule == DeleteRule::cascade) {
            state_.context.objectChanges(*other);
            other->isDeleted_ = true;
            dragged_.emplace_back(other, wasPending);
        } else {
            other->willChangeLink(relationship.inverse);
            other->linkSlot(far.relationships[relationship.inverse]) = {};
        }
    }
}

std::optional<std::int64_t> StoreContext::SaveOperation::storedVersion(
    SQLiteDatabase& database, const StoreObject& object) {
    Statement& row =
        database.cached("SELECT Z_OPT FROM " + object.entity().table + " WHERE Z_PK = ?");
    row.bindInteger(1, object.key());
    std::optional<std::int64_t> version;
    if (row.step()) version = row.integer(0);
    row.reset();
    return version;
}

void StoreContext::SaveOperation::assignKeys(SQLiteDatabase& database) {
    std::array<std::int64_t, entityCount> next{};
    for (const StoreObject* object : state_.pending) {
        if (!object->isInserted()) continue;
        const EntityDescription& entity = object->entity();
        std::int64_t& key = next[static_cast<std::size_t>(entity.kind)];
        if (key == 0) {
            // A table made elsewhere may not count its keys.
            Statement& row = database.cached(
                "SELECT max(IFNULL((SELECT seq FROM sqlite_sequence WHERE name = ?), 0), "
                "IFNULL((SELECT max(Z_PK) FROM "
                + entity.table + "), 0))");
            row.bindText(1, entity.table);
            key = row.step() ? row.integer(0) : 0;
            row.reset();
        }
        keys_[object] = ++key;
    }
}

std::int64_t StoreContext::SaveOperation::keyOf(const StoreObject& object) const {
    if (!object.isInserted()) return object.key();
    const auto found = keys_.find(&object);
    return found == keys_.end() ? 0 : found->second;
}

void StoreContext::SaveOperation::writeObject(SQLiteDatabase& database, StoreObject& object) {
    const bool isNew = object.isInserted() || std::ranges::count(reinserted_, &object) > 0;
    if (object.isDeleted()) {
        deleteRow(database, object);
    } else if (isNew) {
        insertRow(database, object);
    } else if (object.isChanged()) {
        updateRow(database, object);
    } else {
        return;
    }
    ObjectChange change{
        .kind = object.isDeleted() ? ChangeKind::deleted
                : isNew            ? ChangeKind::inserted
                                   : ChangeKind::updated,
        .entity = object.entity().kind,
        .key = keyOf(object),
        .uuid = object.uuid(),
    };
    if (change.kind == ChangeKind::updated) {
        for (std::size_t i = 0; i < object.entity().attributes.size(); ++i) {
            if (object.isChanged(i)) change.changed.push_back(object.entity().attributes[i].name);
        }
        for (std::size_t i = 0; i < object.entity().relationships.size(); ++i) {
            if (!object.isRelationshipChanged(i)) continue;
            change.changed.push_back(object.entity().relationships[i].name);
        }
    }
    changes_.push_back(std::move(change));
}

void StoreContext::SaveOperation::insertRow(SQLiteDatabase& database, StoreObject& object) {
    const RowMapper& mapper = state_.core->mapper(object.entity().kind);
    Statement& row = database.cached(mapper.insertStatement());
    versions_[&object] = 1;
    row.bindInteger(1, keyOf(object));
    row.bindInteger(2, 1);
    int place = 3;
    for (const std::size_t attribute : mapper.insertOrder()) {
        bindAttribute(row, place++, object, attribute);
    }
    for (const std::size_t reference : mapper.references()) {
        bindReference(database, row, place++, object, reference);
    }
    row.step();
    row.reset();
    for (const std::size_t attribute : mapper.insertOrder()) {
        writeDigest(database, object, attribute);
    }
}

void StoreContext::SaveOperation::updateRow(SQLiteDatabase& database, StoreObject& object) {
    const EntityDescription& entity = object.entity();
    std::string columns;
    for (std::size_t i = 0; i < entity.attributes.size(); ++i) {
        if (object.isChanged(i)) columns += entity.attributes[i].column + " = ?, ";
    }
    for (std::size_t i = 0; i < entity.relationships.size(); ++i) {
        if (entity.relationships[i].isToMany || !object.isRelationshipChanged(i)) continue;
        columns += entity.relationships[i].column + " = ?, ";
    }
    if (columns.empty()) {  // only links changed, and they stand in their own table
        --versions_.at(&object);
        return;
    }
    rememberExternalFiles(database, object, false);
    Statement& row =
        database.cached("UPDATE " + entity.table + " SET " + columns + "Z_OPT = ? WHERE Z_PK = ?");
    int place = 1;
    for (std::size_t i = 0; i < entity.attributes.size(); ++i) {
        if (object.isChanged(i)) bindAttribute(row, place++, object, i);
    }
    for (std::size_t i = 0; i < entity.relationships.size(); ++i) {
        if (entity.relationships[i].isToMany || !object.isRelationshipChanged(i)) continue;
        bindReference(database, row, place++, object, i);
    }
    row.bindInteger(place++, versions_.at(&object));
    row.bindInteger(place, object.key());
    row.step();
    row.reset();
    for (std::size_t i = 0; i < entity.attributes.size(); ++i) {
        if (object.isChanged(i)) writeDigest(database, object, i);
    }
}

void StoreContext::SaveOperation::deleteRow(SQLiteDatabase& database, StoreObject& object) {
    const EntityDescription& entity = object.entity();
    rememberExternalFiles(database, object, true);
    const auto run = [&](const std::string& sql) {
        Statement& statement = database.cached(sql);
        statement.bindInteger(1, object.key());
        statement.step();
        statement.reset();
    };
    run("DELETE FROM " + entity.table + " WHERE Z_PK = ?");
    run("DELETE FROM Z_DIGEST WHERE ENTITY = '" + entity.name + "' AND PK = ?");
    for (const RelationshipDescription& relationship : entity.relationships) {
        if (!relationship.isManyToMany) continue;
        run("DELETE FROM " + relationship.linkTable + " WHERE " + relationship.linkSource + " = ?");
    }
}

void StoreContext::SaveOperation::bindAttribute(
    Statement& statement, int place, StoreObject& object, std::size_t attribute) {
    const AttributeDescription& description = object.entity().attributes[attribute];
    if (!description.isExternal || !object.slot<Bytes>(description)) {
        RowMapper::bind(statement, place, object, attribute);
        return;
    }
    if (const Encoded* prepared = encoded(object, attribute)) {
        statement.bindBlob(place, prepared->column);
        return;
    }
    // Unchanged, but its row is made anew.
    const Bytes column =
        state_.core->external().encode(*object.slot<Bytes>(description), state_.core->random());
    if (auto name = ExternalValues::fileName(column)) newFiles_.push_back(*name);
    statement.bindBlob(place, column);
}

/// A target that somebody else deleted meanwhile leaves the reference empty.
void StoreContext::SaveOperation::bindReference(
    SQLiteDatabase& database,
    Statement& statement,
    int place,
    StoreObject& object,
    std::size_t reference) {
    const RelationshipDescription& relationship = object.entity().relationships[reference];
    const LinkSlot& slot = object.linkSlot(relationship);
    std::int64_t key = slot.key;
    if (slot.object != nullptr) key = slot.object->isDeleted() ? 0 : keyOf(*slot.object);
    const bool isPending = slot.object != nullptr && slot.object->isPending_;
    if (key > 0 && !isPending
        && !existsRow(database, Schema::library()[relationship.destination], key)) {
        key = 0;
    }
    if (key > 0) {
        statement.bindInteger(place, key);
    } else {
        statement.bindNull(place);
    }
}

void StoreContext::SaveOperation::writeLinks(SQLiteDatabase& database) {
    for (const auto& [id, pending] : state_.links) {
        const EntityDescription& owner = Schema::library()[id.first];
        const RelationshipDescription& link = owner.relationships[id.second];
        const EntityDescription& other = Schema::library()[link.destination];
        const auto run = [&](const std::string& sql, const PendingLinks::Pair& pair) {
            Statement& row = database.cached(sql);
            row.bindInteger(1, keyOf(*pair.first));
            row.bindInteger(2, keyOf(*pair.second));
            row.step();
            row.reset();
        };
        for (const auto& pair : pending.removed) {
            run("DELETE FROM " + link.linkTable + " WHERE " + link.linkSource + " = ? AND "
                    + link.linkDestination + " = ?",
                pair);
        }
        for (const auto& pair : pending.added) {
            // Either end may have been deleted by somebody else.
            run("INSERT OR IGNORE INTO " + link.linkTable + " (" + link.linkSource + ", "
                    + link.linkDestination + ") SELECT ?1, ?2 WHERE EXISTS (SELECT 1 FROM "
                    + owner.table + " WHERE Z_PK = ?1) AND EXISTS (SELECT 1 FROM " + other.table
                    + " WHERE Z_PK = ?2)",
                pair);
        }
    }
}

void StoreContext::SaveOperation::record(SQLiteDatabase& database) {
    if (changes_.empty()) return;
    history::record(database, state_.core->clock().now(), state_.core->author(), changes_);
}

/// The commit is on disk: memory follows it. Nothing here throws except for want of memory.
void StoreContext::SaveOperation::succeed() {
    auto& state = state_;
    const auto pending = std::move(state.pending);
    state.pending.clear();
    state.links.clear();
    for (StoreObject* object : pending) {
        object->isPending_ = false;
        object->changed_ = 0;
        object->changedLinks_ = 0;
        if (object->isDeleted()) {
            state.retire(*object);
            continue;
        }
        if (const auto version = versions_.find(object); version != versions_.end()) {
            object->version_ = version->second;
        }
        if (!object->isInserted()) continue;
        auto& rows = state.rowsOf(object->entity().kind);
        auto node = rows.extract(object->key());
        object->key_ = keys_.at(object);
        node.key() = object->key_;
        rows.insert(std::move(node));
    }
    for (StoreObject* object : pending) {
        if (object->isDeleted()) continue;
        for (const auto& relationship : object->entity().relationships) {
            if (relationship.isToMany) continue;
            LinkSlot& slot = object->linkSlot(relationship);
            if (slot.object != nullptr) slot.key = slot.object->key();
        }
    }
    for (StoreObject* object : vanished_) {
        object->changed_ = 0;
        object->changedLinks_ = 0;
        state.retire(*object);
    }
    removeFiles(oldFiles_);
}

/// Takes back what this attempt did to memory and to the folder.
void StoreContext::SaveOperation::undo() {
    auto& state = state_;
    for (StoreObject* object : kept_) {
        if (object->isInserted()) state.retire(*object);
    }
    for (const auto& [object, wasPending] : dragged_) {
        object->isDeleted_ = false;
        if (!wasPending) state.forgetPending(*object);
    }
    for (StoreObject* object : vanished_) {
        state.context.objectChanges(*object);
    }
    for (const auto& [note, before] : marked_) {
        note->hasConflict = before;
        note->changed_ &= ~(std::uint64_t{1} << note->hasConflict.index());
    }
    if (isUncertain_) return;  // a row may name the files after all; strays are swept later
    removeFiles(newFiles_);
}

void StoreContext::save() {
    if (!hasChanges()) return;
    const auto guard = state_->core->reading();
    SaveOperation operation(*state_);
    operation.run();
    if (operation.changes().empty()) return;
    state_->core->publish(operation.changes(), this);
    if (observer_) observer_(operation.changes());
}

}  // namespace tesserine
