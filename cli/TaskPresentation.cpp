#include "cli/TaskPresentation.h"

#include "base/Text.h"
#include "cli/DisplayText.h"
#include "cli/Names.h"
#include "cli/ObjectJSON.h"
#include "cli/Presentation.h"
#include "cli/Session.h"

namespace tesserine::cli {

namespace {

std::string projectName(const CDTask& task) {
    const CDProject* project = task.project;
    return project == nullptr ? std::string() : project->name.valueOr("");
}

/// "P1", or nothing for the usual priority.
std::string priorityText(const CDTask& task) {
    const TaskPriority priority = taskPriority(task.priority.valueOr(4));
    return priority == TaskPriority::p4 ? std::string() : shortLabel(priority);
}

/// "@home @urgent, Every day"
std::string remarks(Session& session, const CDTask& task) {
    std::string text;
    for (const std::string& name : labelNames(task, session.collator())) {
        text += (text.empty() ? "@" : " @") + name;
    }
    const std::string repeats = repeatText(task);
    return text + (text.empty() || repeats.empty() ? "" : ", ") + repeats;
}

std::vector<std::string> row(Session& session, const CDTask& task, std::size_t depth) {
    const std::string box = task.completedAt ? "[x] " : "[ ] ";
    return {
        shortID(task.id),
        dueText(session, task),
        priorityText(task),
        std::string(depth * 4, ' ') + box + titleOf(task),
        projectName(task),
        remarks(session, task)};
}

std::string dayOrTime(Session& session, Instant instant, bool hasTime) {
    std::string text = session.localTime(instant);
    if (!hasTime) text.resize(10);
    return text;
}

}  // namespace

boost::json::object taskJSON(Session& session, CDTask& task) {
    boost::json::object object = asJSON(task, Detail::header);
    const CDProject* project = task.project;
    object["projectName"] = project == nullptr ? nullptr : asJSON(project->name.get());
    object["labels"] = asJSON(labelNames(task, session.collator()));
    object["subtasks"] = tasksJSON(session, subtasksInOrder(task));
    return object;
}

boost::json::array tasksJSON(Session& session, const std::vector<CDTask*>& tasks) {
    boost::json::array array;
    for (CDTask* task : tasks) {
        array.push_back(taskJSON(session, *task));
    }
    return array;
}

boost::json::object sentenceJSON(const QuickAddResult& result) {
    boost::json::array tokens;
    for (const RecognisedToken& token : result.recognisedTokens) {
        tokens.push_back({{"text", token.text}, {"kind", rawValue(token.kind)}});
    }
    boost::json::object object{{"title", result.title}, {"dueDate", asJSON(result.dueDate)}};
    object["dueHasTime"] = result.dueHasTime;
    object["priority"] = nullptr;
    if (result.priority) object["priority"] = static_cast<int>(*result.priority);
    object["projectName"] = asJSON(result.projectName);
    object["labels"] = asJSON(result.labels);
    object["recurrence"] = nullptr;
    if (result.recurrence) object["recurrence"] = result.recurrence->json();
    object["recognisedTokens"] = std::move(tokens);
    return object;
}

std::string titleOf(const CDTask& task) {
    std::string title = task.title.valueOr("");
    return text::isBlank(title) ? "Untitled" : title;
}

std::string quotedTitle(const CDTask& task) { return inQuotes(titleOf(task)); }

std::string dueText(Session& session, const CDTask& task) {
    if (!task.dueDate) return {};
    return dayOrTime(session, *task.dueDate, task.dueHasTime.valueOr(false));
}

std::string repeatText(const CDTask& task) {
    const auto rule = RecurrenceRule::fromStorageString(task.recurrenceRule.valueOr(""));
    return rule ? rule->description() : std::string();
}

void showTasks(Session& session, const std::vector<CDTask*>& tasks, std::string_view nothing) {
    if (session.output().isJSON()) {
        session.output().json(tasksJSON(session, tasks));
        return;
    }
    if (tasks.empty()) session.remark(nothing);
    Table table{
        .columns = {
            {.title = "ID", .style = Style::accent},
            {.title = "DUE", .style = Style::faint},
            {.title = "", .style = Style::warning},
            {.title = "TITLE", .style = Style::strong, .mayShrink = true},
            {.title = "PROJECT", .mayShrink = true},
            {.title = "", .style = Style::faint, .mayShrink = true}}};
    for (const CDTask* task : tasks) {
        table.rows.push_back(row(session, *task, 0));
        for (const CDTask* subtask : subtasksInOrder(*task)) {
            table.rows.push_back(row(session, *subtask, 1));
        }
    }
    session.output().table(table);
}

void showTask(Session& session, CDTask& task) {
    Output& output = session.output();
    if (output.isJSON()) {
        output.json(taskJSON(session, task));
        return;
    }
    showUnderstood(session, task);
    const auto id = task.id.get();
    showField(session, "Id", id ? id->text() : std::string());
    showField(session, "Reminder", localText(session, task.reminderAt));
    if (const CDTask* parent = task.parent) {
        showField(session, "Part of", parent->title.valueOr(""));
    }
    if (const CDNote* note = task.linkedNote) showField(session, "Note", displayTitle(*note));
    showField(session, "Created", localText(session, task.createdAt));
    showField(session, "Completed", localText(session, task.completedAt));
    const auto subtasks = subtasksInOrder(task);
    if (!subtasks.empty()) {
        output.line("");
        showTasks(session, subtasks, {});
    }
    const std::string details = task.details.valueOr("");
    if (details.empty()) return;
    output.line("");
    output.text(details);
}

void showUnderstood(Session& session, const CDTask& task) {
    Output& output = session.output();
    output.line(output.styled(oneLine(titleOf(task)), Style::strong));
    showField(session, "Due", dueText(session, task));
    showField(session, "Repeats", repeatText(task));
    showField(session, "Priority", priorityText(task));
    showField(session, "Project", projectName(task));
    showField(session, "Labels", text::joined(labelNames(task, session.collator()), ", "));
}

void showSentence(Session& session, const QuickAddResult& result) {
    showField(session, "Title", result.title);
    if (result.dueDate) {
        showField(session, "Due", dayOrTime(session, *result.dueDate, result.dueHasTime));
    }
    if (result.priority) showField(session, "Priority", shortLabel(*result.priority));
    showField(session, "Project", result.projectName.value_or(""));
    showField(session, "Labels", text::joined(result.labels, ", "));
    if (result.recurrence) showField(session, "Repeats", result.recurrence->description());
    for (const RecognisedToken& token : result.recognisedTokens) {
        showField(session, "Token", inQuotes(token.text) + " " + std::string(rawValue(token.kind)));
    }
}

ExitStatus answerTask(Session& session, CDTask& task, const std::string& sentence) {
    if (session.output().isJSON()) {
        session.output().json(taskJSON(session, task));
    } else {
        session.output().line(sentence);
    }
    return ExitStatus::done;
}

}  // namespace tesserine::cli
