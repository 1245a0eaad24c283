#include "cli/CommandError.h"
#include "cli/Names.h"
#include "cli/Presentation.h"
#include "cli/Session.h"
#include "cli/TaskInput.h"
#include "cli/TaskPresentation.h"

#include <algorithm>

namespace tesserine::cli {

namespace {

std::string sentenceOf(const Arguments& arguments) {
    std::string sentence;
    for (const std::string& word : arguments.wordsFrom(0)) {
        sentence += (sentence.empty() ? "" : " ") + word;
    }
    return sentence;
}

ExitStatus answerWithID(Session& session, CDTask& task) {
    const auto id = task.id.get();
    return answerTask(session, task, id ? id->text() : std::string("-"));
}

ExitStatus addTask(Session& session, const Arguments& arguments) {
    const std::string sentence = sentenceOf(arguments);
    if (text::isBlank(sentence)) throw UsageError::because("A task needs a title.");
    session.holdNames();
    StoreContext& context = session.context();
    TaskDraft draft = arguments.has("plain")
                          ? TaskDraft{.title = sentence}
                          : session.tasks().draftOf(sentence, session.calendar());
    draft.details = arguments.text("details").value_or("");
    if (const auto when = arguments.text("remind")) {
        draft.reminderAt = parseReminder(session, *when);
    }
    CDTask& task = session.tasks().create(context, std::move(draft));
    context.save();
    answerWithID(session, task);
    if (text::isBlank(task.title.valueOr(""))) session.remark("The task has no title.");
    if (session.output().isTerminal() && !session.output().isJSON()) {
        showUnderstood(session, task);
    }
    return ExitStatus::done;
}

ExitStatus parseSentence(Session& session, const Arguments& arguments) {
    const QuickAddParser parser(session.now(), session.calendar());
    const QuickAddResult result = parser.parse(sentenceOf(arguments));
    if (session.output().isJSON()) {
        session.output().json(sentenceJSON(result));
    } else {
        showSentence(session, result);
    }
    return ExitStatus::done;
}

/// The view that the words name. Throws `UsageError`.
TaskView viewNamed(Session& session, const Arguments& arguments) {
    const std::string view = arguments.wordIfAny(0).value_or("all");
    const auto name = arguments.wordIfAny(1);
    const bool takesName = view == "project" || view == "label";
    if (takesName && !name) throw UsageError::missingArgument("task list " + view, "a name");
    if (!takesName && name) throw UsageError::extraArgument(*name);
    if (view == "project") return TaskView::project(resolveProject(session, *name).id.valueOr({}));
    if (view == "label") return TaskView::label(resolveTag(session, *name).name.valueOr(""));
    if (view == "inbox") return TaskView::inbox();
    if (view == "today") return TaskView::today();
    if (view == "upcoming") return TaskView::upcoming();
    return view == "completed" ? TaskView::completed() : TaskView::all();
}

ExitStatus listTasks(Session& session, const Arguments& arguments) {
    FetchRequest request = viewNamed(session, arguments).request(session.now(), session.calendar());
    const auto limit = arguments.integer("limit", 1, 1'000'000'000);
    request.limit = static_cast<std::size_t>(limit.value_or(0));
    showTasks(session, session.context().fetch<CDTask>(request), "There are no such tasks.");
    return ExitStatus::done;
}

ExitStatus showOneTask(Session& session, const Arguments& arguments) {
    showTask(session, resolveTask(session, arguments.word(0)));
    return ExitStatus::done;
}

ExitStatus completeTask(Session& session, const Arguments& arguments) {
    StoreContext& context = session.context();
    CDTask& task = resolveTask(session, arguments.word(0));
    session.tasks().complete(context, task, session.calendar());
    context.save();
    std::string sentence = "Completed " + quotedTitle(task);
    if (!task.completedAt) sentence += "; it is due again on " + dueText(session, task);
    return answerTask(session, task, sentence + ".");
}

ExitStatus reopenTask(Session& session, const Arguments& arguments) {
    CDTask& task = resolveTask(session, arguments.word(0), TaskScope::completed);
    session.tasks().reopen(task);
    session.context().save();
    return answerTask(session, task, quotedTitle(task) + " is open again.");
}

void editLabels(Session& session, CDTask& task, const Arguments& arguments) {
    for (const std::string& name : arguments.texts("add-label")) {
        session.tasks().addLabel(session.context(), task, tagToUse(session, name).name.valueOr(""));
    }
    for (const std::string& name : arguments.texts("remove-label")) {
        session.tasks().removeLabel(task, resolveTag(session, name));
    }
}

ExitStatus editTask(Session& session, const Arguments& arguments) {
    if (!arguments.hasOwnOptions()) throw UsageError::because("There is nothing to change.");
    session.holdNames();
    StoreContext& context = session.context();
    const TaskService& tasks = session.tasks();
    CDTask& task = resolveTask(session, arguments.word(0));

    if (const auto title = arguments.text("title")) {
        if (text::isBlank(*title)) throw UsageError::because("A task needs a title.");
        tasks.setTitle(task, *title);
    }
    if (const auto details = arguments.text("details")) tasks.setDetails(task, *details);
    if (const auto due = arguments.text("due")) {
        tasks.setDue(task, parseDue(session, *due), session.calendar());
    }
    if (const auto when = arguments.text("remind")) {
        tasks.setReminder(task, parseReminder(session, *when));
    }
    if (const auto priority = arguments.text("priority")) {
        tasks.setPriority(task, parsePriority(*priority));
    }
    if (const auto words = arguments.text("repeat")) {
        if (const auto rule = parseRepeat(session, *words)) {
            tasks.repeat(task, *rule, session.calendar());
        } else {
            tasks.setRecurrence(task, std::nullopt);
        }
    }
    if (const auto name = arguments.text("project")) {
        tasks.moveToProject(context, task, tasks.projects().findOrCreate(context, *name));
    }
    editLabels(session, task, arguments);
    context.save();
    return answerTask(session, task, "Changed " + quotedTitle(task) + ".");
}

ExitStatus duplicateTask(Session& session, const Arguments& arguments) {
    StoreContext& context = session.context();
    CDTask& copy = session.tasks().duplicate(context, resolveTask(session, arguments.word(0)));
    context.save();
    return answerWithID(session, copy);
}

void moveBelow(Session& session, CDTask& task, CDTask* parent) {
    if (session.tasks().setParent(session.context(), task, parent)) return;
    throw CommandError::cannotBeSubtask(task.title.valueOr(""));
}

/// The open and completed tasks among which `task` has its place.
std::vector<CDTask*> levelOf(Session& session, CDTask& task) {
    if (const CDTask* parent = task.parent) return subtasksInOrder(*parent);
    return session.context().fetch<CDTask>(
        {.predicate = {"parent == nil AND project == %@", task.project.get()},
         .sort = {{"sortIndex"}, {"createdAt"}}});
}

/// Puts the task before or behind another one, in its project and below its parent.
void moveBeside(Session& session, CDTask& task, CDTask& other, std::string_view side) {
    if (&task == &other) return;
    moveBelow(session, task, other.parent);
    CDProject* project = other.project;
    if (task.parent == nullptr && project != nullptr && task.project != project) {
        session.tasks().moveToProject(session.context(), task, *project);
    }
    auto level = levelOf(session, task);
    std::erase(level, &task);
    const auto place = std::ranges::find(level, &other);
    if (place == level.end()) return;  // two tasks without a common level stay where they are
    level.insert(side == "after" ? place + 1 : place, &task);
    session.tasks().reorder(level);
}

ExitStatus moveTask(Session& session, const Arguments& arguments) {
    const std::string_view target = arguments.oneOf({"parent", "before", "after"});
    const auto project = arguments.wordIfAny(1);
    if (target.empty() == !project) {
        throw UsageError::because("Say where to: a project, --parent, --before or --after.");
    }
    session.holdNames();
    StoreContext& context = session.context();
    CDTask& task = resolveTask(session, arguments.word(0));
    const std::string name = project ? *project : *arguments.text(target);
    if (project) {
        session.tasks().moveToProject(context, task, projectToChange(session, name));
    } else if (target != "parent") {
        moveBeside(session, task, resolveTask(session, name), target);
    } else {
        moveBelow(session, task, name == "none" ? nullptr : &resolveTask(session, name));
    }
    context.save();
    return answerTask(session, task, "Moved " + quotedTitle(task) + ".");
}

ExitStatus deleteTask(Session& session, const Arguments& arguments) {
    CDTask& task = resolveTask(session, arguments.word(0));
    const std::string title = quotedTitle(task);
    const std::size_t count = 1 + task.subtasks.count();
    session.tasks().remove(session.context(), task);
    session.context().save();
    const std::string subtasks =
        count == 1 ? std::string() : " and " + counted(count - 1, "subtask");
    return answerCount(session, "deleted", count, "Deleted " + title + subtasks + ".");
}

ExitStatus addSubtask(Session& session, const Arguments& arguments) {
    const std::string title(text::trimmed(arguments.word(1)));
    if (title.empty()) throw UsageError::because("A task needs a title.");
    StoreContext& context = session.context();
    CDTask& parent = resolveTask(session, arguments.word(0));
    CDTask& made = session.tasks().create(context, {.title = title, .parent = &parent});
    context.save();
    return answerWithID(session, made);
}

ExitStatus addFromNote(Session& session, const Arguments& arguments) {
    session.holdNames();
    StoreContext& context = session.context();
    CDNote& note = resolveNote(session, arguments.word(0));
    CDTask& made = session.tasks().createFromNote(context, note, arguments.text("title"));
    context.save();
    return answerWithID(session, made);
}

Command addTaskCommand() {
    return {
        .path = "task add",
        .summary = "Creates a task from a sentence and prints its id",
        .access = Access::writes,
        .arguments = {{.name = "SENTENCE", .isRepeatable = true}},
        .options =
            {{.name = "details", .value = "TEXT", .summary = "Its details"},
             {.name = "remind", .value = "WHEN", .summary = "When to remind of it"},
             {.name = "plain", .summary = "Takes the sentence as the title, as it stands"}},
        .details =
            "Dates (tomorrow, friday, 5 march, in 3 weeks), times (9am, at 17:30), priorities (p1, "
            "!2), a #project, @labels and rules (every 2 weeks, daily) are understood and leave the "
            "title. A project and labels that are not there are made. On a terminal it shows what "
            "was understood; “task parse” shows it without making a task.",
        .example = "tesserine task add 'Send invoice tomorrow 9am #Work p1'",
        .run = addTask};
}

Command editTaskCommand() {
    return {
        .path = "task edit",
        .summary = "Changes a task",
        .access = Access::writes,
        .arguments = {{.name = "TASK"}},
        .options =
            {{.name = "title", .value = "TITLE", .summary = "A new title"},
             {.name = "details", .value = "TEXT", .summary = "New details"},
             {.name = "due", .value = "WHEN", .summary = "When it is due, or “none”"},
             {.name = "remind", .value = "WHEN", .summary = "When to remind of it, or “none”"},
             {.name = "priority", .value = "N", .summary = "From 1, the most urgent, to 4"},
             {.name = "repeat", .value = "RULE", .summary = "How it repeats, or “none”"},
             {.name = "project",
              .value = "NAME",
              .summary = "The project it moves to; made when there is none"},
             {.name = "add-label",
              .value = "NAME",
              .summary = "A label to add; made when there is none",
              .isRepeatable = true},
             {.name = "remove-label",
              .value = "NAME",
              .summary = "A label to take away",
              .isRepeatable = true}},
        .details = "WHEN is a day, a time such as “2026-03-14 09:15”, or words such as “tomorrow "
                   "9am”; RULE is such as “every 2 weeks mon, thu”.",
        .example = "tesserine task edit 'Send invoice' --due 'friday 9am' --add-label urgent",
        .run = editTask};
}

}  // namespace

std::vector<Command> taskCommands() {
    const Argument task{.name = "TASK"};
    return {
        addTaskCommand(),
        {.path = "task parse",
         .summary = "Shows how a sentence is understood",
         .access = Access::none,
         .arguments = {{.name = "SENTENCE", .isRepeatable = true}},
         .example = "tesserine task parse 'Water plants every 3 days @home'",
         .run = parseSentence},
        {.path = "task list",
         .summary = "Lists tasks with their subtasks: all open ones, or those of a view",
         .arguments =
             {{.name = "VIEW",
               .isOptional = true,
               .choices = {"inbox", "today", "upcoming", "all", "completed", "project", "label"}},
              {.name = "NAME", .isOptional = true}},
         .options = {{.name = "limit", .value = "N", .summary = "At most so many"}},
         .details = "“today” holds what is overdue as well. “project” and “label” take a NAME.",
         .example = "tesserine task list project Work",
         .run = listTasks},
        {.path = "task show",
         .summary = "Shows a task",
         .arguments = {task},
         .example = "tesserine task show 'Send invoice'",
         .run = showOneTask},
        editTaskCommand(),
        {.path = "task done",
         .summary = "Completes a task; one that repeats moves on to its next date",
         .access = Access::writes,
         .arguments = {task},
         .example = "tesserine task done 'Send invoice'",
         .run = completeTask},
        {.path = "task reopen",
         .summary = "Opens a completed task again",
         .access = Access::writes,
         .arguments = {task},
         .example = "tesserine task reopen 'Send invoice'",
         .run = reopenTask},
        {.path = "task duplicate",
         .summary = "Copies a task without its labels and subtasks and prints the id of the copy",
         .access = Access::writes,
         .arguments = {task},
         .example = "tesserine task duplicate 'Send invoice'",
         .run = duplicateTask},
        {.path = "task move",
         .summary = "Moves a task to a project, below another task, or to another place",
         .access = Access::writes,
         .arguments = {task, {.name = "PROJECT", .isOptional = true}},
         .options =
             {{.name = "parent",
               .value = "TASK",
               .summary = "Makes it a subtask, or with “none” a task of its own"},
              {.name = "before", .value = "TASK", .summary = "Puts it before this task"},
              {.name = "after", .value = "TASK", .summary = "Puts it behind this task"}},
         .example = "tesserine task move 'Send invoice' Work",
         .run = moveTask},
        {.path = "task delete",
         .summary = "Deletes a task and its subtasks",
         .access = Access::writes,
         .arguments = {task},
         .example = "tesserine task delete 'Send invoice'",
         .run = deleteTask},
        {.path = "task add-subtask",
         .summary = "Adds a subtask and prints its id",
         .access = Access::writes,
         .arguments = {task, {.name = "TITLE"}},
         .example = "tesserine task add-subtask 'Send invoice' 'Look up the address'",
         .run = addSubtask},
        {.path = "task from-note",
         .summary = "Creates a task that is linked to a note and prints its id",
         .access = Access::writes,
         .arguments = {{.name = "NOTE"}},
         .options =
             {{.name = "title", .value = "TITLE", .summary = "Its title, in place of the note's"}},
         .example = "tesserine task from-note Plan",
         .run = addFromNote}};
}

}  // namespace tesserine::cli
