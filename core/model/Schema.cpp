#include "core/model/Schema.h"

#include "base/Text.h"
#include "core/model/BookkeepingEntities.h"
#include "core/model/NoteEntities.h"
#include "core/model/TaskEntities.h"

#include <algorithm>
#include <cassert>

namespace tesserine {
namespace {

std::string uppercased(std::string_view name) {
    std::string result(name);
    for (char& c : result) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return result;
}

template <class Entity>
std::unique_ptr<StoreObject> make(const ObjectSeed& seed) {
    return std::make_unique<Entity>(seed);
}

/// Reads the declarations of `Entity` by building one object that only describes itself.
template <class Entity>
EntityDescription describe(std::string name) {
    EntityDescription entity;
    entity.kind = Entity::kind;
    entity.table = "Z" + uppercased(name);
    entity.name = std::move(name);
    entity.make = &make<Entity>;
    const Entity prototype(ObjectSeed{.entity = &entity, .describing = &entity});
    for (AttributeDescription& attribute : entity.attributes) {
        attribute.column = "Z" + uppercased(attribute.name);
    }
    for (RelationshipDescription& relationship : entity.relationships) {
        if (!relationship.isToMany) relationship.column = "Z" + uppercased(relationship.name);
    }
    for (const char* identity : {"id", "recordID"}) {
        if (!entity.identity) entity.identity = entity.attributeNamed(identity);
    }
    return entity;
}

/// "ZNOTE" for CDNote: how an entity is called in a link table.
std::string linkColumn(const EntityDescription& entity) {
    return "Z" + uppercased(std::string_view(entity.name).substr(2));
}

template <class Named>
std::optional<std::size_t> indexOf(const std::vector<Named>& list, std::string_view name) {
    const auto found =
        std::ranges::find_if(list, [&](const Named& one) { return one.name == name; });
    if (found == list.end()) return std::nullopt;
    return static_cast<std::size_t>(found - list.begin());
}

}  // namespace

std::optional<std::size_t> EntityDescription::attributeNamed(std::string_view wanted) const {
    return indexOf(attributes, wanted);
}

std::optional<std::size_t> EntityDescription::relationshipNamed(std::string_view wanted) const {
    return indexOf(relationships, wanted);
}

const Schema& Schema::library() {
    static const Schema schema;
    return schema;
}

const EntityDescription* Schema::entityNamed(std::string_view name) const {
    const auto* const found =
        std::ranges::find_if(entities_, [&](const auto& entity) { return entity.name == name; });
    return found == entities_.end() ? nullptr : &*found;
}

Schema::Schema()
    : entities_{
        describe<CDNote>("CDNote"),
        describe<CDNotebook>("CDNotebook"),
        describe<CDTag>("CDTag"),
        describe<CDSavedSearch>("CDSavedSearch"),
        describe<CDTaskTemplate>("CDTaskTemplate"),
        describe<CDAttachment>("CDAttachment"),
        describe<CDNoteRevision>("CDNoteRevision"),
        describe<CDTask>("CDTask"),
        describe<CDProject>("CDProject"),
        describe<CDImportReport>("CDImportReport"),
        describe<CDSyncState>("CDSyncState"),
        describe<CDSyncMeta>("CDSyncMeta"),
    } {
    for (EntityDescription& entity : entities_) {
        for (RelationshipDescription& relationship : entity.relationships) {
            EntityDescription& other =
                entities_[static_cast<std::size_t>(relationship.destination)];
            const auto inverse = other.relationshipNamed(relationship.inverseName);
            assert(inverse && "every relationship names an inverse that exists");
            relationship.inverse = *inverse;
            const RelationshipDescription& back = other.relationships[*inverse];
            relationship.isManyToMany = relationship.isToMany && back.isToMany;
            if (!relationship.isManyToMany) continue;
            relationship.linkTable =
                relationship.ownsLinks
                    ? "Z_" + uppercased(entity.name) + "_" + uppercased(relationship.name)
                    : "Z_" + uppercased(other.name) + "_" + uppercased(back.name);
            relationship.linkSource = linkColumn(entity);
            relationship.linkDestination = linkColumn(other);
        }
    }
}

}  // namespace tesserine
