#include "core/model/StoreObject.h"

#include <cassert>

namespace tesserine {
namespace {

/// Calls `visit` with a null pointer of the C++ type that `type` stands for.
template <class Visit>
auto dispatch(AttributeType type, Visit visit) {
    switch (type) {
    case AttributeType::boolean: return visit(static_cast<bool*>(nullptr));
    case AttributeType::int16: return visit(static_cast<std::int16_t*>(nullptr));
    case AttributeType::int64: return visit(static_cast<std::int64_t*>(nullptr));
    case AttributeType::real: return visit(static_cast<double*>(nullptr));
    case AttributeType::string: return visit(static_cast<std::string*>(nullptr));
    case AttributeType::date: return visit(static_cast<Instant*>(nullptr));
    case AttributeType::uuid: return visit(static_cast<Uuid*>(nullptr));
    case AttributeType::binary: break;
    }
    return visit(static_cast<Bytes*>(nullptr));
}

}  // namespace

StoreObject::StoreObject(const ObjectSeed& seed)
    : host_(seed.host), entity_(seed.entity), describing_(seed.describing), key_(seed.key) {}

StoreObject::~StoreObject() = default;

std::optional<Uuid> StoreObject::uuid() {
    if (!entity_->identity) return std::nullopt;
    ensureLoaded(*entity_->identity);
    return slot<Uuid>(entity_->attributes[*entity_->identity]);
}

Value StoreObject::value(std::size_t attribute) {
    ensureLoaded(attribute);
    const AttributeDescription& description = entity_->attributes[attribute];
    return dispatch(description.type, [&]<class T>(T*) -> Value {
        const std::optional<T>& held = slot<T>(description);
        return held ? Value(*held) : Value();
    });
}

void StoreObject::setValue(std::size_t attribute, Value value) {
    ensureLoaded(attribute);
    const AttributeDescription& description = entity_->attributes[attribute];
    dispatch(description.type, [&]<class T>(T*) {
        std::optional<T>& held = slot<T>(description);
        std::optional<T> wanted;
        if (!isNull(value)) wanted = std::get<T>(std::move(value));
        if (held == wanted) return;
        willChange(attribute);
        held = std::move(wanted);
    });
}

StoreObject* StoreObject::target(std::size_t relationship) {
    const RelationshipDescription& description = entity_->relationships[relationship];
    return host_->resolve(description.destination, linkSlot(description));
}

void StoreObject::setTarget(std::size_t relationship, StoreObject* target) {
    if (this->target(relationship) == target) return;
    LinkSlot& slot = linkSlot(entity_->relationships[relationship]);
    willChangeLink(relationship);
    slot = {.key = target == nullptr ? 0 : target->key_, .object = target};
}

void StoreObject::willChange(std::size_t attribute) {
    assert(!isDeleted_ && "a deleted object cannot be changed");
    host_->objectChanges(*this);
    changed_ |= std::uint64_t{1} << attribute;
    loaded_ |= std::uint64_t{1} << attribute;
}

void StoreObject::willChangeLink(std::size_t relationship) {
    assert(!isDeleted_ && "a deleted object cannot be changed");
    host_->objectChanges(*this);
    changedLinks_ |= std::uint32_t{1} << relationship;
}

std::uint8_t StoreObject::declareAttribute(AttributeDescription description, const void* slot) {
    assert(describing_->attributes.size() < 64 && "one bit per attribute");
    description.offset = static_cast<std::size_t>(
        static_cast<const std::byte*>(slot) - reinterpret_cast<const std::byte*>(this));
    describing_->attributes.push_back(std::move(description));
    return static_cast<std::uint8_t>(describing_->attributes.size() - 1);
}

std::uint8_t StoreObject::declareRelationship(
    RelationshipDescription description, const void* slot) {
    assert(describing_->relationships.size() < 32 && "one bit per relationship");
    description.offset = static_cast<std::size_t>(
        static_cast<const std::byte*>(slot) - reinterpret_cast<const std::byte*>(this));
    describing_->relationships.push_back(std::move(description));
    return static_cast<std::uint8_t>(describing_->relationships.size() - 1);
}

}  // namespace tesserine
