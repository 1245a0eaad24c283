#pragma once

#include "core/model/Schema.h"

#include <cstdint>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

namespace tesserine {

class ObjectHost;

/// How an object comes into being; made by the store and by the schema only.
struct ObjectSeed {
    ObjectHost* host = nullptr;
    const EntityDescription* entity = nullptr;
    std::int64_t key = 0;
    EntityDescription* describing = nullptr;  ///< set while the schema reads the declarations
};

/// The entity of a class, as `entityKindOf<CDNote>`; specialised beside the classes.
template <class Entity>
inline constexpr EntityKind entityKindOf = Entity::kind;

/// The far end of a to-one relationship: a row by its key, or an object that has none yet.
struct LinkSlot {
    std::int64_t key = 0;  ///< 0: nobody
    StoreObject* object = nullptr;
};

/// What objects ask of the context they live in.
class ObjectHost {
public:
    ObjectHost() = default;
    ObjectHost(const ObjectHost&) = delete;
    ObjectHost& operator=(const ObjectHost&) = delete;
    virtual ~ObjectHost() = default;

    /// Reads an attribute that was left in the file (with its tier) into its slot.
    virtual void loadAttribute(StoreObject& object, std::size_t attribute) = 0;
    /// Called before the first and every further change of an object.
    virtual void objectChanges(StoreObject& object) = 0;
    /// The object a slot points to; none when it is gone.
    virtual StoreObject* resolve(EntityKind kind, LinkSlot& slot) = 0;
    virtual std::vector<StoreObject*> related(StoreObject& object, std::size_t relationship) = 0;
    virtual bool isRelated(
        StoreObject& object, std::size_t relationship, const StoreObject& other) = 0;
    virtual std::size_t relatedCount(StoreObject& object, std::size_t relationship) = 0;
    virtual void relate(StoreObject& object, std::size_t relationship, StoreObject& other) = 0;
    virtual void unrelate(StoreObject& object, std::size_t relationship, StoreObject& other) = 0;
};

/// A row of the library as its context knows it; the base of all entities.
///
/// One object stands for one row in its context. Belongs to its context's thread. Its address is
/// good until the context forgets it (`reset`, destruction); after its deletion was saved it only
/// answers `isDeleted`.
class StoreObject {
public:
    explicit StoreObject(const ObjectSeed& seed);
    StoreObject(const StoreObject&) = delete;
    StoreObject& operator=(const StoreObject&) = delete;
    virtual ~StoreObject();

    const EntityDescription& entity() const noexcept { return *entity_; }
    /// The row's primary key; below zero while the object was never saved.
    std::int64_t key() const noexcept { return key_; }
    /// The identity attribute.
    std::optional<Uuid> uuid();

    bool isInserted() const noexcept { return key_ < 0; }
    bool isDeleted() const noexcept { return isDeleted_; }
    /// Whether anything was changed since it was read or saved.
    bool isChanged() const noexcept { return changed_ != 0 || changedLinks_ != 0; }
    bool isChanged(std::size_t attribute) const { return (changed_ >> attribute & 1U) != 0; }
    bool isRelationshipChanged(std::size_t relationship) const {
        return (changedLinks_ >> relationship & 1U) != 0;
    }
    bool isLoaded(std::size_t attribute) const { return (loaded_ >> attribute & 1U) != 0; }

    /// The value of an attribute by its index in the entity; loads it where needed.
    Value value(std::size_t attribute);
    /// Sets it; the alternative must be the attribute's own type or null.
    void setValue(std::size_t attribute, Value value);
    /// The target of a to-one relationship by its index.
    StoreObject* target(std::size_t relationship);
    void setTarget(std::size_t relationship, StoreObject* target);
    /// The objects of a to-many relationship by its index.
    std::vector<StoreObject*> related(std::size_t relationship) {
        return host_->related(*this, relationship);
    }

private:
    friend class StoreContext;
    friend class RowMapper;
    template <class T>
    friend class Attribute;
    template <class T>
    friend class ToOne;
    template <class T>
    friend class ToMany;

    void ensureLoaded(std::size_t attribute) {
        if (!isLoaded(attribute)) host_->loadAttribute(*this, attribute);
    }
    bool isLargeAndUnread(std::size_t attribute) const {
        return !isLoaded(attribute) && entity_->attributes[attribute].tier == Tier::large;
    }
    void willChange(std::size_t attribute);
    void willChangeLink(std::size_t relationship);
    std::uint8_t declareAttribute(AttributeDescription description, const void* slot);
    std::uint8_t declareRelationship(RelationshipDescription description, const void* slot);
    template <class T>
    std::optional<T>& slot(const AttributeDescription& attribute) {
        return *reinterpret_cast<std::optional<T>*>(
            reinterpret_cast<std::byte*>(this) + attribute.offset);
    }
    LinkSlot& linkSlot(const RelationshipDescription& relationship) {
        return *reinterpret_cast<LinkSlot*>(
            reinterpret_cast<std::byte*>(this) + relationship.offset);
    }

    ObjectHost* host_;
    const EntityDescription* entity_;
    EntityDescription* describing_;
    std::int64_t key_;
    std::int64_t version_ = 0;        // of the row as it was read (Z_OPT)
    std::uint64_t loaded_ = 0;        // one bit per attribute
    std::uint64_t changed_ = 0;       // one bit per attribute
    std::uint32_t changedLinks_ = 0;  // one bit per relationship
    std::uint8_t attributeCount_ = 0;
    std::uint8_t relationshipCount_ = 0;
    bool isDeleted_ = false;
    bool isPending_ = false;  // stands in its context's list of changed objects
};

/// How an attribute departs from a plain optional column.
template <class T>
struct AttributeOptions {
    std::optional<T> defaultValue{};
    bool isIndexed = false;
    bool isExternal = false;
    bool isDigested = false;
    Tier tier = Tier::header;
};

/// One attribute of an entity, declared as a member: `Attribute<Instant> updatedAt{*this,
/// "updatedAt"};`
///
/// Reads like an optional, loads itself when it was left in the file, and tells its context when a
/// different value is assigned; a large value is not read for that, so replacing one that was left
/// in the file always is a change. As a condition it asks whether there is a value; an
/// `Attribute<bool>` asks whether it is true, and null counts as false.
template <class T>
class Attribute {
public:
    Attribute(StoreObject& owner, const char* name, AttributeOptions<T> options = {})
        : owner_(&owner) {
        if (owner.describing_ == nullptr) {
            index_ = owner.attributeCount_++;
            return;
        }
        AttributeDescription described{.name = name, .type = attributeTypeOf<T>};
        if (options.defaultValue) described.defaultValue = *options.defaultValue;
        described.isIndexed = options.isIndexed;
        described.isExternal = options.isExternal;
        described.isDigested = options.isDigested;
        described.tier = options.tier;
        index_ = owner.declareAttribute(std::move(described), &value_);
    }
    Attribute(const Attribute&) = delete;
    ~Attribute() = default;

    Attribute& operator=(const Attribute& other) {
        if (this != &other) *this = other.get();
        return *this;
    }
    Attribute& operator=(std::optional<T> value) {
        if (!owner_->isLargeAndUnread(index_)) {
            owner_->ensureLoaded(index_);
            if (value_ == value) return *this;
        }
        owner_->willChange(index_);
        value_ = std::move(value);
        return *this;
    }

    const std::optional<T>& get() const {
        owner_->ensureLoaded(index_);
        return value_;
    }
    T valueOr(T fallback) const { return get().value_or(std::move(fallback)); }
    // NOLINTNEXTLINE(google-explicit-constructor): it stands for its value.
    operator const std::optional<T>&() const { return get(); }
    explicit operator bool() const {
        if constexpr (std::is_same_v<T, bool>) {
            return get().value_or(false);
        } else {
            return get().has_value();
        }
    }
    const T& operator*() const { return *get(); }
    const T* operator->() const { return &*get(); }
    friend bool operator==(const Attribute& a, const std::optional<T>& b) { return a.get() == b; }
    friend bool operator==(const Attribute& a, const Attribute& b) { return a.get() == b.get(); }

    /// Its place among the entity's attributes.
    std::size_t index() const noexcept { return index_; }

private:
    StoreObject* owner_;
    std::optional<T> value_;
    std::uint8_t index_;
};

/// A to-one relationship, declared as a member with the name of its inverse. Holds the target or
/// null.
template <class T>
class ToOne {
public:
    ToOne(StoreObject& owner, const char* name, const char* inverse) : owner_(&owner) {
        if (owner.describing_ == nullptr) {
            index_ = owner.relationshipCount_++;
            return;
        }
        index_ = owner.declareRelationship(
            {.name = name, .destination = entityKindOf<T>, .inverseName = inverse}, &slot_);
    }
    ToOne(const ToOne&) = delete;
    ~ToOne() = default;
    ToOne& operator=(const ToOne& other) {
        if (this != &other) *this = other.get();
        return *this;
    }
    ToOne& operator=(T* target) {
        owner_->setTarget(index_, target);
        return *this;
    }

    T* get() const { return static_cast<T*>(owner_->target(index_)); }
    // NOLINTNEXTLINE(google-explicit-constructor): it stands for its target.
    operator T*() const { return get(); }
    T* operator->() const { return get(); }
    std::size_t index() const noexcept { return index_; }

private:
    StoreObject* owner_;
    LinkSlot slot_;
    std::uint8_t index_;
};

/// A to-many relationship, declared as a member. Keeps nothing itself: it asks the context, so it
/// always shows the state with all pending changes. Order is that of the rows' keys, unsaved ones
/// last.
template <class T>
class ToMany {
public:
    struct Options {
        DeleteRule deleteRule = DeleteRule::nullify;
        bool ownsLinks = false;
    };

    ToMany(StoreObject& owner, const char* name, const char* inverse, Options options)
        : owner_(&owner) {
        if (owner.describing_ == nullptr) {
            index_ = owner.relationshipCount_++;
            return;
        }
        index_ = owner.declareRelationship(
            {.name = name,
             .destination = entityKindOf<T>,
             .isToMany = true,
             .deleteRule = options.deleteRule,
             .inverseName = inverse,
             .ownsLinks = options.ownsLinks},
            this);
    }
    ToMany(StoreObject& owner, const char* name, const char* inverse)
        : ToMany(owner, name, inverse, Options{}) {}
    ToMany(const ToMany&) = delete;
    ToMany& operator=(const ToMany&) = delete;
    ~ToMany() = default;

    std::vector<T*> all() const {
        std::vector<T*> result;
        for (StoreObject* object : owner_->host_->related(*owner_, index_)) {
            result.push_back(static_cast<T*>(object));
        }
        return result;
    }
    std::size_t count() const { return owner_->host_->relatedCount(*owner_, index_); }
    bool empty() const { return count() == 0; }
    bool contains(const T& other) const { return owner_->host_->isRelated(*owner_, index_, other); }
    /// Adding twice, or removing what is not there, changes nothing.
    void add(T& other) { owner_->host_->relate(*owner_, index_, other); }
    void remove(T& other) { owner_->host_->unrelate(*owner_, index_, other); }
    std::size_t index() const noexcept { return index_; }

private:
    StoreObject* owner_;
    std::uint8_t index_;
};

}  // namespace tesserine
