#pragma once

#include "core/model/Value.h"

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

class StoreObject;
struct ObjectSeed;

/// The entities of the library, in the order in which the model declares them.
enum class EntityKind : std::uint8_t {
    note,
    notebook,
    tag,
    savedSearch,
    taskTemplate,
    attachment,
    noteRevision,
    task,
    project,
    importReport,
    syncState,
    syncMeta,
};
inline constexpr std::size_t entityCount = 12;

/// What happens to the destinations of a relationship when their source is deleted.
enum class DeleteRule { nullify, cascade };

/// When an attribute is read: with every list, on the first touch of any detail, or alone.
enum class Tier { header, detail, large };

/// One attribute as the model declares it.
struct AttributeDescription {
    std::string name;
    std::string column{};  ///< "Z" and the name in upper case
    AttributeType type = AttributeType::string;
    Value defaultValue{};  ///< what a new object takes
    Tier tier = Tier::header;
    bool isIndexed = false;   ///< has a fetch index of its own
    bool isExternal = false;  ///< large values live in files beside the store
    bool isDigested = false;  ///< a digest is kept, so that damage can be seen
    std::size_t offset = 0;   ///< of the value in its object, in bytes
};

/// One direction of a relationship as the model declares it.
struct RelationshipDescription {
    std::string name;
    EntityKind destination = EntityKind::note;
    bool isToMany = false;
    DeleteRule deleteRule = DeleteRule::nullify;
    std::string inverseName;
    std::size_t inverse = 0;        ///< index among the destination's relationships
    bool isManyToMany = false;      ///< both directions are to-many
    bool ownsLinks = false;         ///< names the link table, for a many-to-many pair
    std::string column{};           ///< of a to-one: "Z" and the name in upper case
    std::string linkTable{};        ///< of a many-to-many, such as Z_CDNOTE_TAGS
    std::string linkSource{};       ///< its column for the source
    std::string linkDestination{};  ///< its column for the destination
    std::size_t offset = 0;         ///< of a to-one's slot in its object, in bytes
};

/// One entity: what its objects hold and how they are made.
struct EntityDescription {
    EntityKind kind = EntityKind::note;
    std::string name;   ///< such as CDNote
    std::string table;  ///< such as ZCDNOTE
    std::vector<AttributeDescription> attributes;
    std::vector<RelationshipDescription> relationships;
    std::unique_ptr<StoreObject> (*make)(const ObjectSeed& seed) = nullptr;
    /// The attribute that identifies an object across libraries: `id`, or `recordID`.
    std::optional<std::size_t> identity;

    std::optional<std::size_t> attributeNamed(std::string_view wanted) const;
    std::optional<std::size_t> relationshipNamed(std::string_view wanted) const;
};

/// The whole model, built once from the entity classes and never changed.
class Schema {
public:
    /// The library's schema number, raised when an older program must no longer write to the file.
    static constexpr int number = 1;

    /// The one schema of the program. Immutable; safe from any thread.
    static const Schema& library();

    const EntityDescription& operator[](EntityKind kind) const {
        return entities_[static_cast<std::size_t>(kind)];
    }
    const std::array<EntityDescription, entityCount>& entities() const { return entities_; }
    const EntityDescription* entityNamed(std::string_view name) const;

private:
    Schema();
    std::array<EntityDescription, entityCount> entities_;
};

}  // namespace tesserine
