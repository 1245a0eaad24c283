#include "core/export/TaskList.h"

#include "base/Calendar.h"
#include "core/export/MarkdownEscapes.h"
#include "core/services/Tree.h"
#include "core/tasks/RecurrenceRule.h"
#include "core/tasks/TaskSnapshot.h"

#include <algorithm>
#include <functional>
#include <map>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

namespace tesserine {
namespace {

using Children = std::unordered_map<const CDTask*, std::vector<const CDTask*>>;

auto order(const CDTask* task) {
    return std::tuple(
        task->completedAt.get().has_value(),
        task->sortIndex.valueOr(0),
        task->createdAt.valueOr(Instant()),
        task->id.valueOr(Uuid()));
}

struct ProjectOrder {
    bool operator()(const CDProject* a, const CDProject* b) const { return key(a) < key(b); }

    static std::tuple<bool, bool, std::int64_t, Instant, Uuid> key(const CDProject* project) {
        if (project == nullptr) return {true, true, 0, Instant(), Uuid()};
        return {
            false,
            !project->isInbox.valueOr(false),
            project->sortIndex.valueOr(0),
            project->createdAt.valueOr(Instant()),
            project->id.valueOr(Uuid())};
    }
};

std::string dueText(const CDTask& task, const Calendar& calendar) {
    const LocalTime due = calendar.local(task.dueDate.valueOr(Instant()));
    std::string text = due.iso();
    text[text.find('T')] = ' ';
    return text.substr(0, task.dueHasTime ? 16 : 10);
}

std::string oneLine(std::string text) {
    std::ranges::replace(text, '\n', ' ');
    std::ranges::replace(text, '\r', ' ');
    return text;
}

std::string lineOf(const CDTask& task, const Calendar& calendar, const text::Collator& collator) {
    std::string line = task.completedAt ? "- [x] " : "- [ ] ";
    markdown::appendEscaped(line, oneLine(task.title.valueOr("")), {.hasTildes = true});
    std::string details;
    const auto add = [&details](const std::string& text) {
        details += details.empty() ? " — " : " · ";
        markdown::appendEscaped(details, oneLine(text), {.hasTildes = true});
    };
    if (task.dueDate) add("due " + dueText(task, calendar));
    const TaskPriority priority = taskPriority(task.priority.valueOr(4));
    if (priority != TaskPriority::p4) add(shortLabel(priority));
    for (const std::string& label : labelNames(task, collator)) {
        add("@" + label);
    }
    const auto rule = RecurrenceRule::fromStorageString(task.recurrenceRule.valueOr(""));
    if (rule) add(rule->description());
    return line + details;
}

/// Whether no other task stands above. One whose parents go round in a circle is listed too.
bool isTop(const CDTask& task) {
    const auto above = tree::ancestors(task);
    return above.empty() || above.back()->parent.get() != nullptr;
}

/// Writes trees of tasks, each task once, whatever a damaged library says of parents.
class TreeWriter {
public:
    TreeWriter(Children children, const Calendar& calendar, const text::Collator& collator)
        : children_(std::move(children)), calendar_(calendar), collator_(collator) {}

    void write(std::string& output, const CDTask& top) {
        std::vector<std::pair<const CDTask*, std::size_t>> open{{&top, 0}};
        while (!open.empty()) {
            const auto [task, depth] = open.back();
            open.pop_back();
            if (!written_.insert(task).second) continue;
            output.append(2 * depth, ' ').append(lineOf(*task, calendar_, collator_)).append("\n");
            std::vector<const CDTask*>& below = children_[task];
            // The last one pushed is written first.
            std::ranges::sort(below, std::ranges::greater(), order);
            for (const CDTask* const child : below) {
                open.emplace_back(child, depth + 1);
            }
        }
    }

private:
    Children children_;
    const Calendar& calendar_;
    const text::Collator& collator_;
    std::unordered_set<const CDTask*> written_;
};

}  // namespace

std::string taskListOf(
    const std::vector<CDTask*>& tasks, const Calendar& calendar, const text::Collator& collator) {
    Children children;
    std::map<const CDProject*, std::vector<const CDTask*>, ProjectOrder> byProject;
    for (const CDTask* const task : tasks) {
        const CDTask* const parent = task->parent;
        if (parent != nullptr) children[parent].push_back(task);
        byProject[task->project].push_back(task);
    }
    TreeWriter writer(std::move(children), calendar, collator);
    std::string output = "# Tasks\n";
    for (auto& [project, listed] : byProject) {
        std::string lines;
        std::ranges::sort(listed, {}, order);
        for (const CDTask* const task : listed) {
            if (isTop(*task)) writer.write(lines, *task);
        }
        if (lines.empty()) continue;
        output += "\n## ";
        markdown::appendEscaped(
            output,
            project == nullptr ? "No project" : oneLine(project->name.valueOr("")),
            {.hasTildes = true});
        output += "\n\n" + lines;
    }
    return output;
}

}  // namespace tesserine
