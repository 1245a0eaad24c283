#include "core/export/NoteFacts.h"

#include "base/Calendar.h"
#include "core/services/Tree.h"

namespace tesserine {

std::vector<PageFact> factsOf(
    const CDNote& note, const std::vector<std::string>& tags, const Calendar& calendar) {
    std::vector<PageFact> facts;
    const CDNotebook* const notebook = note.notebook;
    facts.push_back({notebook == nullptr ? std::string(unfiled) : tree::pathText(*notebook)});
    for (const std::string& tag : tags) {
        facts.push_back({tag});
    }
    if (note.createdAt) facts.push_back({"Created " + dateText(*note.createdAt, calendar)});
    if (note.updatedAt) facts.push_back({"Updated " + dateText(*note.updatedAt, calendar)});
    if (note.sourceURL) facts.push_back({*note.sourceURL, true});
    if (note.trashedAt) facts.push_back({"In the trash"});
    if (note.isPinned) facts.push_back({"Pinned"});
    return facts;
}

std::vector<std::string> tagNames(const CDNote& note, const text::Collator& collator) {
    std::vector<CDTag*> tags = note.tags.all();
    tree::sortByName(tags, collator);
    std::vector<std::string> names;
    names.reserve(tags.size());
    for (const CDTag* const tag : tags) {
        names.push_back(tag->name.valueOr(""));
    }
    return names;
}

std::string dateText(Instant instant, const Calendar& calendar) {
    return calendar.longDate(instant) + " at " + calendar.local(instant).iso().substr(11, 5);
}

}  // namespace tesserine
