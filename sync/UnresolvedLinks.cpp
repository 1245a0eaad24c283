#include "sync/UnresolvedLinks.h"

#include "base/JSON.h"
#include "sync/RecordFields.h"
#include "sync/WireCoding.h"

namespace tesserine {

UnresolvedLinks::UnresolvedLinks(std::string_view text) {
    JSONValue json;
    try {
        json = JSONValue::decode(text);
    } catch (const WireError&) {
        return;
    }
    if (json.object() == nullptr) return;
    for (const auto& [name, members] : *json.object()) {
        const auto record = Uuid::parse(name);
        if (!record || members.object() == nullptr) continue;
        for (const auto& [key, targets] : *members.object()) {
            if (targets.array() == nullptr) continue;
            for (const JSONValue& target : *targets.array()) {
                if (const auto id = identifierIn(target)) add(*record, key, *id);
            }
        }
    }
}

std::string UnresolvedLinks::text() const {
    JSONObject records;
    for (const auto& [record, members] : waiting_) {
        JSONObject written;
        for (const auto& [key, targets] : members) {
            written[key] = JSONValue::Array(targets.begin(), targets.end());
        }
        records[record.wireText()] = std::move(written);
    }
    return json::write(toJSON(records));
}

void UnresolvedLinks::add(const Uuid& record, const std::string& key, const Uuid& target) {
    const std::string name = target.wireText();
    waiting_[record][key].insert(name);
    byTarget_[name].insert({record, key});
}

void UnresolvedLinks::clear(const Uuid& record, const std::string& key) {
    const auto found = waiting_.find(record);
    if (found == waiting_.end()) return;
    if (const auto member = found->second.find(key); member != found->second.end()) {
        for (const std::string& target : member->second) {
            const auto links = byTarget_.find(target);
            links->second.erase({record, key});
            if (links->second.empty()) byTarget_.erase(links);
        }
        found->second.erase(member);
    }
    if (found->second.empty()) waiting_.erase(found);
}

std::vector<UnresolvedLinks::Link> UnresolvedLinks::take(const Uuid& target) {
    const auto found = byTarget_.find(target.wireText());
    if (found == byTarget_.end()) return {};
    std::vector<Link> links(found->second.begin(), found->second.end());
    for (const auto& [record, key] : links) {
        const auto members = waiting_.find(record);
        auto& targets = members->second.at(key);
        targets.erase(found->first);
        if (targets.empty()) members->second.erase(key);
        if (members->second.empty()) waiting_.erase(members);
    }
    byTarget_.erase(found);
    return links;
}

void UnresolvedLinks::complete(const Uuid& record, JSONObject& payload) const {
    const auto found = waiting_.find(record);
    if (found == waiting_.end()) return;
    for (const auto& [key, targets] : found->second) {
        JSONValue& member = payload[key];
        if (member.array() != nullptr) {
            std::set<std::string> all = targets;
            for (const JSONValue& one : *member.array()) {
                if (one.string() != nullptr) all.insert(*one.string());
            }
            member = JSONValue::Array(all.begin(), all.end());
        } else if (member.isNull()) {
            member = *targets.begin();
        }
    }
}

}  // namespace tesserine
