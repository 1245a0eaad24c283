#include "base/Files.h"
#include "core/store/SaveOperation.h"
#include "core/store/StoreSchema.h"

#include <algorithm>

// What a save does with large values: their files, and the digests by which equal ones share one.

namespace tesserine {
namespace {

/// The bytes whose digest is kept.
std::optional<SHA256Digest> digestOf(const Value& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return sha256(bytesOf(*text));
    if (const auto* bytes = std::get_if<Bytes>(&value)) return sha256(*bytes);
    return std::nullopt;
}

}  // namespace

/// Large values go to their files before the transaction begins: they are slow to sync.
void StoreContext::SaveOperation::prepareExternalValues() {
    for (StoreObject* object : state_.pending) {
        if (object->isDeleted()) continue;
        const auto& attributes = object->entity().attributes;
        for (std::size_t i = 0; i < attributes.size(); ++i) {
            if (!attributes[i].isExternal || !object->isChanged(i)) continue;
            const auto& value = object->slot<Bytes>(attributes[i]);
            if (!value) continue;
            encoded_.push_back(encode(*object, i, *value));
            const auto name = ExternalValues::fileName(encoded_.back().column);
            if (name) newFiles_.push_back(*name);
        }
    }
}

StoreContext::SaveOperation::Encoded StoreContext::SaveOperation::encode(
    const StoreObject& object, std::size_t attribute, const Bytes& value) {
    const AttributeDescription& description = object.entity().attributes[attribute];
    Encoded result{&object, attribute, {}, std::nullopt};
    if (description.isDigested) result.digest = sha256(value);
    const ExternalValues& external = state_.core->external();
    std::optional<Bytes> shared;
    if (result.digest && value.size() > ExternalValues::inlineLimit) {
        const auto twin = fileHolding(object.entity(), description, *result.digest);
        if (twin) shared = external.encodeShared(value, *twin, state_.core->random());
    }
    result.column = shared ? std::move(*shared) : external.encode(value, state_.core->random());
    return result;
}

/// A file of the same bytes, of this save or of another row.
std::optional<std::string> StoreContext::SaveOperation::fileHolding(
    const EntityDescription& entity,
    const AttributeDescription& attribute,
    const SHA256Digest& digest) {
    const auto sameBytes = std::ranges::find(encoded_, digest, &Encoded::digest);
    if (sameBytes != encoded_.end()) return ExternalValues::fileName(sameBytes->column);
    // The newest: when an older one was found damaged, the next save wrote the bytes anew.
    Statement& row = state_.reader().cached(
        "SELECT " + attribute.column + " FROM Z_DIGEST JOIN " + entity.table
        + " ON Z_PK = PK WHERE SHA256 = ? AND " + schema::digestsOf(entity, attribute)
        + " AND length(" + attribute.column + ") = 37 ORDER BY PK DESC LIMIT 1");
    row.bindBlob(1, digest);
    std::optional<std::string> name;
    if (row.step()) name = ExternalValues::fileName(row.blob(0));
    row.reset();
    return name;
}

const StoreContext::SaveOperation::Encoded* StoreContext::SaveOperation::encoded(
    const StoreObject& object, std::size_t attribute) const {
    const auto found = std::ranges::find_if(encoded_, [&](const Encoded& one) {
        return one.object == &object && one.attribute == attribute;
    });
    return found == encoded_.end() ? nullptr : &*found;
}

/// Notes the files that the row names and that its new state no longer will.
void StoreContext::SaveOperation::rememberExternalFiles(
    SQLiteDatabase& database, StoreObject& object, bool all) {
    const EntityDescription& entity = object.entity();
    for (std::size_t i = 0; i < entity.attributes.size(); ++i) {
        const AttributeDescription& attribute = entity.attributes[i];
        if (!attribute.isExternal || (!all && !object.isChanged(i))) continue;
        Statement& row = database.cached(
            "SELECT " + attribute.column + " FROM " + entity.table + " WHERE Z_PK = ? AND length("
            + attribute.column + ") = 37");
        row.bindInteger(1, object.key());
        if (row.step()) {
            if (auto name = ExternalValues::fileName(row.blob(0))) oldFiles_.push_back(*name);
        }
        row.reset();
    }
}

void StoreContext::SaveOperation::removeFiles(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        try {
            state_.core->external().remove(name);
        } catch (const FileError&) {
            // A stray file costs space only; the examination of the library removes it.
            state_.core->log().warning("a file that no row names could not be removed");
        }
    }
}

void StoreContext::SaveOperation::writeDigest(
    SQLiteDatabase& database, StoreObject& object, std::size_t attribute) {
    const AttributeDescription& description = object.entity().attributes[attribute];
    if (!description.isDigested) return;
    const Encoded* prepared = encoded(object, attribute);
    const auto digest = prepared != nullptr ? prepared->digest : digestOf(object.value(attribute));
    Statement& row = database.cached(
        digest
            ? "INSERT OR REPLACE INTO Z_DIGEST (ENTITY, PK, ATTRIBUTE, SHA256) VALUES (?, ?, ?, ?)"
            : "DELETE FROM Z_DIGEST WHERE ENTITY = ? AND PK = ? AND ATTRIBUTE = ?");
    row.bindText(1, object.entity().name);
    row.bindInteger(2, keyOf(object));
    row.bindText(3, description.name);
    if (digest) row.bindBlob(4, *digest);
    row.step();
    row.reset();
}

}  // namespace tesserine
