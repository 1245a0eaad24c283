#include "sync/RecordMerge.h"

#include "sync/BodyMerge.h"
#include "sync/RecordFields.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <set>
#include <string>

namespace tesserine {
namespace {

constexpr const char* body = "html";

/// Texts that a person typed: losing one is a conflict to be seen.
constexpr std::array typedKeys = {"title", body, "details"};

bool isTyped(std::string_view key) { return std::ranges::find(typedKeys, key) != typedKeys.end(); }

const JSONValue* find(const JSONObject& object, const std::string& key) {
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &found->second;
}

JSONValue valueIn(const JSONObject& object, const std::string& key) {
    const JSONValue* const found = find(object, key);
    return found == nullptr ? JSONValue() : *found;
}

std::set<std::string> textsIn(const JSONValue& list) {
    std::set<std::string> texts;
    if (list.array() == nullptr) return texts;
    for (const JSONValue& one : *list.array()) {
        if (one.string() != nullptr) texts.insert(*one.string());
    }
    return texts;
}

/// What is in both stays, what either side added comes, what either side took away goes.
JSONValue mergedSet(const JSONValue& base, const JSONValue& mine, const JSONValue& theirs) {
    const auto old = textsIn(base);
    const auto left = textsIn(mine);
    const auto right = textsIn(theirs);
    std::set<std::string> merged;
    std::ranges::set_union(left, right, std::inserter(merged, merged.end()));
    std::erase_if(merged, [&](const std::string& one) {
        return old.contains(one) && !(left.contains(one) && right.contains(one));
    });
    return JSONValue::Array(merged.begin(), merged.end());
}

std::set<std::string> linkSetKeys(EntityKind entity) {
    std::set<std::string> keys;
    for (const RecordField& field : recordFields(entity)) {
        if (field.form == RecordField::Form::linkSet) keys.insert(field.key);
    }
    return keys;
}

std::set<std::string> keysOf(const JSONObject& mine, const JSONObject& theirs) {
    std::set<std::string> keys;
    for (const auto* side : {&mine, &theirs}) {
        for (const auto& member : *side) {
            keys.insert(member.first);
        }
    }
    return keys;
}

JSONValue larger(const JSONValue& a, const JSONValue& b) {
    if (a.number() == nullptr) return b;
    if (b.number() == nullptr) return a;
    return *a.number() > *b.number() ? a : b;
}

std::optional<std::string> joinedBody(
    const JSONValue& base, const JSONValue& mine, const JSONValue& theirs) {
    const bool areTexts =
        base.string() != nullptr && mine.string() != nullptr && theirs.string() != nullptr;
    if (!areTexts) return std::nullopt;
    return mergedBody(*base.string(), *mine.string(), *theirs.string());
}

}  // namespace

RecordMerge mergeRecords(
    EntityKind entity,
    const std::optional<JSONObject>& base,
    const RecordSide& mine,
    const RecordSide& theirs) {
    const JSONObject old = base.value_or(JSONObject());
    const bool mineWins = mine.updatedAt > theirs.updatedAt;
    const auto sets = linkSetKeys(entity);
    bool isJoined = false;
    RecordMerge result;
    for (const std::string& key : keysOf(mine.payload, theirs.payload)) {
        const JSONValue left = valueIn(mine.payload, key);
        const JSONValue right = valueIn(theirs.payload, key);
        const JSONValue before = valueIn(old, key);
        JSONValue& member = result.merged[key];
        if (left == right || (base && right == before)) {
            member = left;
        } else if (base && left == before) {
            member = right;
        } else if (sets.contains(key)) {
            member = mergedSet(before, left, right);
        } else if (key == "content_version") {
            member = larger(left, right);
        } else if (
            const auto joined = key == body ? joinedBody(before, left, right) : std::nullopt) {
            member = *joined;
            isJoined = true;
        } else {
            member = mineWins ? left : right;
            const JSONValue& loser = mineWins ? right : left;
            const bool saysSomething = loser.string() != nullptr && !loser.string()->empty();
            if (isTyped(key) && saysSomething) result.isConflict = true;
        }
    }
    if (isJoined) {
        result.replaced = {mine.payload, theirs.payload};
    } else if (result.isConflict) {
        result.replaced = {mineWins ? theirs.payload : mine.payload};
    }
    return result;
}

}  // namespace tesserine
