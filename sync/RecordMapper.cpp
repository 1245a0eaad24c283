#include "sync/RecordMapper.h"

#include "core/body/CanonicalBody.h"
#include "core/model/TaskEntities.h"
#include "core/store/StoreContext.h"
#include "sync/RecordFields.h"
#include "sync/RecordKinds.h"

#include <set>

namespace tesserine {
namespace {

JSONValue linksOf(StoreObject& object, const RecordField& field) {
    std::set<std::string> ids;
    for (StoreObject* const one : object.related(field.index)) {
        if (const auto id = one->uuid()) ids.insert(id->wireText());
    }
    return JSONValue::Array(ids.begin(), ids.end());
}

JSONValue memberOf(StoreObject& object, const RecordField& field) {
    switch (field.form) {
    case RecordField::Form::attribute: return jsonOf(object.value(field.index));
    case RecordField::Form::link: {
        StoreObject* const target = object.target(field.index);
        const auto id = target == nullptr ? std::nullopt : target->uuid();
        return id ? JSONValue(id->wireText()) : JSONValue();
    }
    case RecordField::Form::linkSet: return linksOf(object, field);
    }
    return {};
}

/// What is derived from a member that was written.
void followUp(StoreObject& object, const RecordField& field) {
    if (auto* const note = dynamic_cast<CDNote*>(&object); note != nullptr && field.key == "html") {
        if (note->html) {
            note->plainText = canonicalBody(*note->html).plainText;
        } else {
            note->plainText = std::nullopt;
        }
    }
    auto* const attachment = dynamic_cast<CDAttachment*>(&object);
    if (attachment != nullptr && field.key == "sha256") {
        attachment->fileData = std::nullopt;  // another file: it is fetched again
        attachment->thumbnailData = std::nullopt;
        attachment->integrityVerified = false;
    }
}

}  // namespace

JSONObject RecordMapper::payload(StoreObject& object, const JSONObject& agreed) const {
    JSONObject payload = agreed;
    for (const RecordField& field : recordFields(object.entity().kind)) {
        payload[field.key] = memberOf(object, field);
    }
    const bool isSetting = object.entity().kind == EntityKind::taskTemplate;
    if (isSetting) payload[settingKey] = taskTemplateSetting;
    if (const auto id = object.uuid()) unresolved_.complete(*id, payload);
    return payload;
}

void RecordMapper::write(StoreObject& object, const JSONObject& present, const JSONObject& wanted) {
    for (const RecordField& field : recordFields(object.entity().kind)) {
        const auto member = wanted.find(field.key);
        const auto old = present.find(field.key);
        const bool isSame =
            member == wanted.end() || (old != present.end() && old->second == member->second);
        if (isSame) continue;
        switch (field.form) {
        case RecordField::Form::attribute:
            if (auto value = valueOf(member->second, field.type)) {
                object.setValue(field.index, *std::move(value));
                followUp(object, field);
            }
            break;
        case RecordField::Form::link: writeLink(object, field, member->second); break;
        case RecordField::Form::linkSet: writeLinks(object, field, member->second); break;
        }
    }
}

void RecordMapper::writeLink(
    StoreObject& object, const RecordField& field, const JSONValue& target) {
    const Uuid record = object.uuid().value_or(Uuid());
    unresolved_.clear(record, field.key);
    const auto id = identifierIn(target);
    StoreObject* const found = id ? context_.findObject(field.destination, *id) : nullptr;
    object.setTarget(field.index, found);
    if (id && found == nullptr) unresolved_.add(record, field.key, *id);
}

void RecordMapper::writeLinks(
    StoreObject& object, const RecordField& field, const JSONValue& targets) {
    const Uuid record = object.uuid().value_or(Uuid());
    unresolved_.clear(record, field.key);
    std::set<StoreObject*> wanted;
    if (targets.array() == nullptr) return;
    for (const JSONValue& target : *targets.array()) {
        const auto id = identifierIn(target);
        if (!id) continue;
        StoreObject* const found = context_.findObject(field.destination, *id);
        if (found != nullptr) {
            wanted.insert(found);
        } else {
            unresolved_.add(record, field.key, *id);
        }
    }
    for (StoreObject* const one : object.related(field.index)) {
        if (wanted.erase(one) == 0) context_.unrelate(object, field.index, *one);
    }
    for (StoreObject* const one : wanted) {
        context_.relate(object, field.index, *one);
    }
}

void RecordMapper::resolve(const std::vector<StoreObject*>& arrived) {
    // All are found before any is changed: a search looks through everything that waits to be
    // saved.
    std::vector<Drawn> links;
    for (StoreObject* const target : arrived) {
        const auto id = target->uuid();
        if (!id) continue;
        for (const UnresolvedLinks::Link& link : unresolved_.take(*id)) {
            find(link, *target, links);
        }
    }
    for (const auto& [object, field, target] : links) {
        const bool isFree =
            field->form == RecordField::Form::link && object->target(field->index) == nullptr;
        if (isFree) object->setTarget(field->index, target);
        if (field->form == RecordField::Form::linkSet) {
            context_.relate(*object, field->index, *target);
        }
    }
}

void RecordMapper::find(
    const UnresolvedLinks::Link& link, StoreObject& target, std::vector<Drawn>& links) {
    for (const RecordKind& kind : recordKinds) {
        StoreObject* const object = context_.findObject(kind.entity, link.record);
        if (object == nullptr) continue;
        for (const RecordField& field : recordFields(kind.entity)) {
            const bool isMeant = field.key == link.key && field.destination == target.entity().kind;
            if (isMeant) links.push_back({object, &field, &target});
        }
        return;
    }
}

}  // namespace tesserine
