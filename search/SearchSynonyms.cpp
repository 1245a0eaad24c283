#include "search/SearchSynonyms.h"

#include "base/JSON.h"
#include "base/Preferences.h"
#include "base/Text.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace tesserine {

namespace {

/// Calls `take` with each part of `text` between separators, without white space around it.
template <class Take>
void forEachPart(std::string_view text, char separator, Take take) {
    while (true) {
        const std::size_t end = std::min(text.find(separator), text.size());
        take(text::trimmed(text.substr(0, end)));
        if (end == text.size()) return;
        text.remove_prefix(end + 1);
    }
}

/// `{"groups": [["invoice", "bill"]]}`, or a text that holds it. Throws for anything else.
SearchSynonyms decoded(const std::string& written) {
    boost::json::value value = json::parse(written);
    if (value.is_string()) value = json::parse(std::string_view(value.as_string()));
    SearchSynonyms synonyms;
    for (const auto& group : value.as_object().at("groups").as_array()) {
        std::vector<std::string> members;
        for (const auto& member : group.as_array()) {
            members.emplace_back(text::trimmed(std::string_view(member.as_string())));
        }
        std::erase(members, "");
        if (members.size() > 1) synonyms.groups.push_back(std::move(members));
    }
    return synonyms;
}

}  // namespace

std::vector<std::string> SearchSynonyms::of(std::string_view word) const {
    const std::string folded = text::folded(word);
    const auto isWord = [&](const std::string& member) { return text::folded(member) == folded; };
    std::vector<std::string> others;
    for (const auto& group : groups) {
        if (std::ranges::none_of(group, isWord)) continue;
        for (const std::string& member : group) {
            const bool isKnown = std::ranges::find(others, member) != others.end();
            if (!isWord(member) && !isKnown) others.push_back(member);
        }
    }
    return others;
}

SearchSynonyms SearchSynonyms::fromLines(std::string_view lines) {
    SearchSynonyms synonyms;
    forEachPart(lines, '\n', [&](std::string_view line) {
        std::vector<std::string> members;
        forEachPart(line, ',', [&](std::string_view member) {
            if (!member.empty()) members.emplace_back(member);
        });
        if (members.size() > 1) synonyms.groups.push_back(std::move(members));
    });
    return synonyms;
}

std::string SearchSynonyms::lines() const {
    std::string all;
    for (const auto& group : groups) {
        all += text::joined(group, ", ") + "\n";
    }
    return all;
}

SearchSynonyms SearchSynonyms::load(const Preferences& preferences) {
    const auto written = preferences.json(preferenceKey);
    if (!written) return {};
    try {
        return decoded(*written);
    } catch (const std::exception&) {
        return {};  // somebody else wrote it; the search works without
    }
}

void SearchSynonyms::save(Preferences& preferences) const {
    boost::json::array written;
    for (const auto& group : groups) {
        boost::json::array members;
        for (const std::string& member : group) {
            members.emplace_back(member);
        }
        written.push_back(std::move(members));
    }
    const boost::json::object value{{"groups", std::move(written)}};
    preferences.set(preferenceKey, std::string_view(json::write(value)));
}

}  // namespace tesserine
