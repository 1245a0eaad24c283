#include "search/StoreQueryLibrary.h"

#include "base/Text.h"
#include "core/model/TaskEntities.h"
#include "core/services/NotebookService.h"
#include "core/store/StoreContext.h"
#include "search/SearchIndex.h"

#include <algorithm>
#include <cstdint>
#include <unordered_set>

namespace tesserine {

namespace {

using ConditionKind = LibraryCondition::Kind;

/// How a locked passage begins in a stored body; text never holds it, since "<" is escaped there.
constexpr std::string_view lockedPassage = "<div class=\"ts-encrypted\"";

template <class Entity>
void append(std::vector<std::string>& uids, StoreContext& context, const Predicate& predicate) {
    context.visitRows<Entity>({.predicate = predicate}, [&](const ListedRow& row) {
        if (const auto id = row.get(&Entity::id)) uids.push_back(id->text());
    });
}

Predicate dueWithin(const filter::TimeSpan& span) {
    if (span.begin && span.end) {
        return {"dueDate >= %@ AND dueDate < %@", *span.begin, *span.end};
    }
    if (span.begin) return {"dueDate >= %@", *span.begin};
    if (span.end) return {"dueDate != nil AND dueDate < %@", *span.end};
    return {"dueDate != nil"};
}

/// The names of a path folded, without the spaces around "/".
std::string foldedPath(std::string_view path) {
    std::string folded;
    while (true) {
        const std::size_t end = std::min(path.find('/'), path.size());
        folded += indexFold(text::trimmed(path.substr(0, end)));
        if (end == path.size()) return folded;
        folded += '/';
        path.remove_prefix(end + 1);
    }
}

}  // namespace

std::vector<std::string> StoreQueryLibrary::documents(const LibraryCondition& condition) {
    std::vector<std::string> uids;
    const auto notes = [&](const Predicate& predicate) {
        append<CDNote>(uids, context_, predicate);
    };
    const auto tasks = [&](const Predicate& predicate) {
        append<CDTask>(uids, context_, predicate);
    };
    switch (condition.kind) {
    case ConditionKind::hasReminder:
        notes({"reminderAt != nil"});
        tasks({"reminderAt != nil"});
        break;
    case ConditionKind::isTemplate: notes({"isTemplate == YES"}); break;
    case ConditionKind::isLocked: notes({"html CONTAINS[cd] %@", lockedPassage}); break;
    case ConditionKind::hasConflict: notes({"hasConflict == YES"}); break;
    case ConditionKind::isOpen: tasks({"completedAt == nil"}); break;
    case ConditionKind::isDone: tasks({"completedAt != nil"}); break;
    case ConditionKind::isOverdue: {
        // A task without a time has the whole of its day.
        const Instant now = clock_.now();
        tasks(
            {"completedAt == nil AND dueDate != nil AND (dueDate < %@ OR (dueHasTime == YES AND "
             "dueDate < %@))",
             calendar_.startOfDay(now),
             now});
        break;
    }
    case ConditionKind::isDue: tasks(dueWithin(condition.due)); break;
    case ConditionKind::isNeverDue: tasks({"dueDate == nil"}); break;
    case ConditionKind::hasPriority:
        tasks({"priority >= %@ AND priority <= %@", condition.mostUrgent, condition.leastUrgent});
        break;
    }
    return uids;
}

std::vector<CDNotebook*> StoreQueryLibrary::named(std::string_view name) {
    auto found = NotebookService(clock_).named(context_, name);
    if (!found.empty()) return found;
    const std::string wanted = "/" + foldedPath(name);
    for (CDNotebook* notebook : context_.fetch<CDNotebook>()) {
        const std::string path = "/" + foldedPath(NotebookService::pathText(*notebook));
        if (path.ends_with(wanted)) found.push_back(notebook);
    }
    return found;
}

QueryLibrary::Notebooks StoreQueryLibrary::notebooks(std::string_view name, Depth depth) {
    std::unordered_set<const CDNotebook*> meant;
    for (CDNotebook* notebook : named(name)) {
        meant.insert(notebook);
        if (depth == Depth::itself) continue;
        const auto below = tree::descendants(*notebook);
        meant.insert(below.begin(), below.end());
    }

    Notebooks found;
    for (const CDNotebook* notebook : meant) {
        found.names.push_back(notebook->name.valueOr(""));
    }
    std::ranges::sort(found.names);
    std::unordered_set<std::string> names;
    for (const std::string& own : found.names) {
        names.insert(indexFold(own));
    }
    const auto all = context_.fetch<CDNotebook>();
    const bool hasTwins = std::ranges::any_of(all, [&](const CDNotebook* notebook) {
        return !meant.contains(notebook) && names.contains(indexFold(notebook->name.valueOr("")));
    });
    if (!hasTwins) return found;
    found.notes.emplace();
    for (CDNotebook* notebook : all) {
        if (meant.contains(notebook)) {
            append<CDNote>(*found.notes, context_, {"notebook == %@", notebook});
        }
    }
    return found;
}

}  // namespace tesserine
