#pragma once

#include "core/model/StoreObject.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace tesserine {

class RowMapper;
class Statement;

/// One object of a list as its row shows it, without the object being made. Good until the visitor
/// that was handed it returns.
class ListedRow {
public:
    /// Of a row of the library, or of an object with pending changes. Made by the context.
    ListedRow(const RowMapper& mapper, const Statement& row) : mapper_(&mapper), row_(&row) {}
    explicit ListedRow(StoreObject& object) : object_(&object) {}

    /// The row's primary key; below zero while the object was never saved.
    std::int64_t key() const;
    /// The value of a header attribute: `row.get(&CDNote::title)`.
    template <class Entity, class T>
    std::optional<T> get(Attribute<T> Entity::*attribute) const {
        if (object_ != nullptr) return (static_cast<Entity&>(*object_).*attribute).get();
        std::optional<T> value;
        read((prototype<Entity>().*attribute).index(), value);
        return value;
    }
    /// The key of the target of a to-one relationship, 0 for none: `row.key(&CDNote::notebook)`.
    template <class Entity, class Target>
    std::int64_t key(ToOne<Target> Entity::*relationship) const {
        if (object_ == nullptr) return reference((prototype<Entity>().*relationship).index());
        const Target* target = (static_cast<Entity&>(*object_).*relationship).get();
        return target == nullptr ? 0 : target->key();
    }

private:
    /// An object of no library: it tells where the members stand.
    template <class Entity>
    static const Entity& prototype() {
        static const EntityDescription& entity = Schema::library()[Entity::kind];
        static const std::unique_ptr<StoreObject> made = entity.make({.entity = &entity});
        return static_cast<const Entity&>(*made);
    }
    template <class T>
    void read(std::size_t attribute, std::optional<T>& value) const;
    std::int64_t reference(std::size_t relationship) const;

    const RowMapper* mapper_ = nullptr;
    const Statement* row_ = nullptr;
    StoreObject* object_ = nullptr;
};

}  // namespace tesserine
