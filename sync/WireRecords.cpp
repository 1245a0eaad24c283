#include "sync/WireRecords.h"

#include "sync/WireCoding.h"
#include "sync/WireDate.h"

#include <cmath>

namespace tesserine {
namespace {

std::optional<std::string> textMember(const JSONValue& object, std::string_view key) {
    const JSONValue* const member = object.member(key);
    if (member == nullptr || member->string() == nullptr) return std::nullopt;
    return *member->string();
}

std::optional<Instant> dateMember(const JSONValue& object, std::string_view key) {
    const auto text = textMember(object, key);
    return text ? wire::parseDate(*text) : std::nullopt;
}

}  // namespace

ProblemBody ProblemBody::read(std::string_view body) {
    ProblemBody problem;
    JSONValue json;
    try {
        json = JSONValue::decode(body);
    } catch (const WireError&) {
        return problem;
    }
    problem.detail = textMember(json, "detail");
    const JSONValue* const error = json.member("error");
    if (error == nullptr) return problem;
    problem.code = textMember(*error, "code");
    problem.message = textMember(*error, "message");
    const JSONValue* const references = error->member("references");
    if (references == nullptr || references->array() == nullptr) return problem;
    for (const JSONValue& reference : *references->array()) {
        if (reference.string() != nullptr) problem.references.push_back(*reference.string());
    }
    return problem;
}

std::optional<DeviceSessionInfo> DeviceSessionInfo::from(const JSONValue& session) {
    const auto id = textMember(session, "id");
    if (!id) return std::nullopt;
    const JSONValue* const current = session.member("is_current_device");
    return DeviceSessionInfo{
        .id = *id,
        .kind = textMember(session, "kind").value_or(""),
        .label = textMember(session, "label").value_or(""),
        .lastUsed = dateMember(session, "last_used_at"),
        .isCurrentDevice =
            current != nullptr && current->boolean() != nullptr && *current->boolean()};
}

TaskVersion TaskVersion::from(const SyncRecord& record) {
    const JSONValue payload(record.payload);
    const JSONValue* const hasTime = payload.member("due_has_time");
    TaskVersion version{
        .title = textMember(payload, "title").value_or(""),
        .notes = textMember(payload, "details").value_or(""),
        .isDone = dateMember(payload, "completed_at").has_value(),
        .dueDate = dateMember(payload, "due_date"),
        .dueHasTime = hasTime != nullptr && hasTime->boolean() != nullptr && *hasTime->boolean(),
        .reminderAt = dateMember(payload, "reminder_at"),
        .recurrenceRule = textMember(payload, "recurrence_rule").value_or(""),
        .updatedAt = record.updatedAt};
    const JSONValue* const priority = payload.member("priority");
    const bool isNumber = priority != nullptr && priority->number() != nullptr;
    if (isNumber && *priority->number() >= 1 && *priority->number() <= 4) {
        version.priority = static_cast<int>(*priority->number());
    }
    return version;
}

}  // namespace tesserine
