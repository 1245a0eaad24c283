#include "cli/CommandError.h"
#include "cli/DisplayText.h"
#include "cli/Names.h"
#include "cli/ObjectJSON.h"
#include "cli/Presentation.h"
#include "cli/Session.h"
#include "cli/TaskPresentation.h"
#include "core/tasks/TaskSnapshot.h"
#include "sync/TaskConflicts.h"

namespace tesserine::cli {

namespace {

std::optional<std::string> orNone(const std::string& text) {
    return text.empty() ? std::nullopt : std::optional(text);
}

boost::json::object versionJSON(const TaskVersion& version) {
    return {
        {"title", version.title},
        {"details", version.notes},
        {"dueDate", asJSON(version.dueDate)},
        {"dueHasTime", version.dueHasTime},
        {"reminderAt", asJSON(version.reminderAt)},
        {"priority", version.priority},
        {"isDone", version.isDone},
        {"recurrenceRule", asJSON(orNone(version.recurrenceRule))},
        {"updatedAt", asJSON(std::optional(version.updatedAt))}};
}

std::string repeatText(const TaskVersion& version) {
    const auto rule = RecurrenceRule::fromStorageString(version.recurrenceRule);
    return rule ? rule->description() : std::string();
}

std::string dueText(Session& session, const TaskVersion& version) {
    std::string text = localText(session, version.dueDate);
    if (!text.empty() && !version.dueHasTime) text.resize(10);
    return text;
}

/// What of two versions is not the same, a row for each thing.
Table comparison(Session& session, const TaskConflict& conflict) {
    Table table{
        .columns = {
            {.title = "", .style = Style::faint},
            {.title = "THIS VERSION", .mayShrink = true},
            {.title = "OTHER VERSION", .mayShrink = true}}};
    const auto& [id, mine, other] = conflict;
    const auto add = [&](const char* name, const std::string& left, const std::string& right) {
        if (left != right) table.rows.push_back({name, oneLine(left), oneLine(right)});
    };
    const auto local = [&](const std::optional<Instant>& at) { return localText(session, at); };
    add("Title", mine.title, other.title);
    add("Details", mine.notes, other.notes);
    add("Due", dueText(session, mine), dueText(session, other));
    add("Reminder", local(mine.reminderAt), local(other.reminderAt));
    add("Priority",
        shortLabel(taskPriority(mine.priority)),
        shortLabel(taskPriority(other.priority)));
    add("Completed", mine.isDone ? "yes" : "no", other.isDone ? "yes" : "no");
    add("Repeats", repeatText(mine), repeatText(other));
    add("Changed", local(mine.updatedAt), local(other.updatedAt));
    return table;
}

ExitStatus listConflicts(Session& session, const Arguments& /*arguments*/) {
    const auto conflicts = TaskConflicts(session.context()).all();
    Output& output = session.output();
    if (output.isJSON()) {
        boost::json::array list;
        for (const TaskConflict& conflict : conflicts) {
            list.push_back(
                {{"id", asJSON(std::optional(conflict.task))},
                 {"this", versionJSON(conflict.present)},
                 {"other", versionJSON(conflict.other)}});
        }
        output.json(list);
        return ExitStatus::done;
    }
    if (conflicts.empty()) session.remark("No task was changed on two devices at once.");
    for (const TaskConflict& conflict : conflicts) {
        if (&conflict != &conflicts.front()) output.line("");
        output.line(conflict.task.text());
        output.table(comparison(session, conflict));
    }
    return ExitStatus::done;
}

ExitStatus resolveConflict(Session& session, const Arguments& arguments) {
    const auto keep = arguments.text("keep");
    if (!keep) throw UsageError::because("Say which version to keep: --keep this, other or both.");
    session.holdNames();
    CDTask& task = resolveTask(session, arguments.word(0));
    const Uuid id = task.id.valueOr({});
    TaskConflicts conflicts(session.context());
    if (!conflicts.of(id)) throw CommandError::noConflict(titleOf(task));
    if (*keep == "this") conflicts.useThisVersion(id);
    if (*keep == "other") conflicts.useOtherVersion(id, session.clock());
    if (*keep == "both") conflicts.keepBoth(id, session.clock());
    session.context().save();
    const std::string more =
        conflicts.of(id) ? " There is one more version of it to choose from." : "";
    const std::string kept = *keep == "this"    ? "this version"
                             : *keep == "other" ? "the other version"
                                                : "both versions";
    return answerTask(session, task, "Kept " + kept + " of " + quotedTitle(task) + "." + more);
}

}  // namespace

std::vector<Command> taskConflictCommands() {
    return {
        {.path = "task conflicts",
         .summary = "Lists tasks that two devices changed at once, with both versions",
         .details = "The later change stands; the other version is kept on this device until you "
                    "choose with “task resolve”.",
         .example = "tesserine task conflicts",
         .run = listConflicts},
        {.path = "task resolve",
         .summary = "Chooses between two versions of a task",
         .access = Access::writes,
         .arguments = {{.name = "TASK"}},
         .options =
             {{.name = "keep",
               .value = "VERSION",
               .summary = "The version that stays: this one, the other, or both as two tasks",
               .choices = {"this", "other", "both"}}},
         .example = "tesserine task resolve 'Send invoice' --keep other",
         .run = resolveConflict}};
}

}  // namespace tesserine::cli
