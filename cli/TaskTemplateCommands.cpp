#include "cli/Names.h"
#include "cli/ObjectJSON.h"
#include "cli/Presentation.h"
#include "cli/Session.h"
#include "cli/TaskInput.h"
#include "cli/TaskPresentation.h"

#include <boost/json/array.hpp>

#include <charconv>

namespace tesserine::cli {

namespace {

constexpr std::string_view nothing = "none";

/// The header with, besides, what its texts hold: `labels`, `subtasks` and the `summary` line.
boost::json::object templateJSON(CDTaskTemplate& stored) {
    const auto content = TaskTemplateContent::of(stored);
    boost::json::object object = asJSON(stored, Detail::header);
    object["labels"] = asJSON(content.labels);
    object["subtasks"] = asJSON(content.subtasks);
    object["summary"] = content.summary();
    return object;
}

ExitStatus answerTemplate(Session& session, CDTaskTemplate& stored, const std::string& sentence) {
    if (session.output().isJSON()) {
        session.output().json(templateJSON(stored));
    } else {
        session.output().line(sentence);
    }
    return ExitStatus::done;
}

std::optional<std::int64_t> parseOffset(const std::string& typed) {
    if (typed == nothing) return std::nullopt;
    std::int64_t days = 0;
    const auto [end, error] = std::from_chars(typed.data(), typed.data() + typed.size(), days);
    const bool isWhole = error == std::errc{} && end == typed.data() + typed.size();
    if (isWhole && days >= 0 && days <= TaskTemplateService::mostDueOffsetDays) return days;
    throw UsageError::badValue("--due-offset", "a number of days up to 36500, or “none”");
}

std::optional<TimeOfDay> parseTime(const std::string& typed) {
    if (typed == nothing) return std::nullopt;
    if (const auto time = timeOfDay(typed)) return time;
    throw UsageError::badValue("--due-time", "a time such as 09:05, or “none”");
}

/// Puts what the options say over `content`.
void edit(Session& session, TaskTemplateContent& content, const Arguments& arguments) {
    if (const auto title = arguments.text("title")) content.title = *title;
    if (const auto notes = arguments.text("notes")) content.notes = *notes;
    if (const auto text = arguments.text("priority")) content.priority = parsePriority(*text);
    if (const auto text = arguments.text("due-offset")) content.dueOffsetDays = parseOffset(*text);
    if (const auto text = arguments.text("due-time")) content.dueTime = parseTime(*text);
    if (const auto words = arguments.text("repeat")) {
        content.recurrence = parseRepeat(session, *words);
    }
    if (const auto name = arguments.text("project")) {
        content.projectID.reset();
        if (*name != nothing) content.projectID = resolveProject(session, *name).id;
    }
    if (arguments.has("label")) content.labels = arguments.texts("label");
    if (arguments.has("subtask")) content.subtasks = arguments.texts("subtask");
}

ExitStatus addTemplate(Session& session, const Arguments& arguments) {
    StoreContext& context = session.context();
    TaskTemplateContent content{.name = TaskTemplateService::untitledName};
    if (const auto name = arguments.text("from")) {
        content =
            session.taskTemplates().contentOf(resolveTask(session, *name), session.collator());
    }
    if (const auto name = arguments.wordIfAny(0)) content.name = *name;
    edit(session, content, arguments);
    CDTaskTemplate& made = session.taskTemplates().create(context, std::move(content));
    context.save();
    const auto id = made.id.get();
    return answerTemplate(session, made, id ? id->text() : std::string("-"));
}

ExitStatus listTaskTemplates(Session& session, const Arguments&) {
    const auto templates = session.taskTemplates().all(session.context(), session.collator());
    if (session.output().isJSON()) {
        boost::json::array array;
        for (CDTaskTemplate* stored : templates) {
            array.push_back(templateJSON(*stored));
        }
        session.output().json(array);
        return ExitStatus::done;
    }
    if (templates.empty()) session.remark("There are no task templates.");
    Table table{
        .columns = {
            {.title = "ID", .style = Style::accent},
            {.title = "NAME", .style = Style::strong, .mayShrink = true},
            {.title = "MAKES", .mayShrink = true}}};
    for (const CDTaskTemplate* stored : templates) {
        const auto content = TaskTemplateContent::of(*stored);
        table.rows.push_back({shortID(stored->id), content.name, content.summary()});
    }
    session.output().table(table);
    return ExitStatus::done;
}

ExitStatus showTemplate(Session& session, const Arguments& arguments) {
    CDTaskTemplate& stored = resolveTaskTemplate(session, arguments.word(0));
    if (session.output().isJSON()) return answerTemplate(session, stored, {});
    const auto content = TaskTemplateContent::of(stored);
    showField(session, "Name", content.name);
    showField(session, "Summary", content.summary());
    showField(session, "Title", content.title);
    if (content.recurrence) showField(session, "Repeats", content.recurrence->description());
    if (content.projectID) {
        const auto* project = session.context().find<CDProject>(*content.projectID);
        if (project != nullptr) showField(session, "Project", project->name.valueOr(""));
    }
    for (const std::string& title : content.subtasks) {
        showField(session, "Subtask", title);
    }
    if (content.notes.empty()) return ExitStatus::done;
    session.output().line("");
    session.output().text(content.notes);
    return ExitStatus::done;
}

ExitStatus useTaskTemplate(Session& session, const Arguments& arguments) {
    session.holdNames();
    StoreContext& context = session.context();
    const CDTaskTemplate& used = resolveTaskTemplate(session, arguments.word(0));
    CDTask& task = session.taskTemplates().use(context, *used.id, session.calendar());
    context.save();
    const auto id = task.id.get();
    return answerTask(session, task, id ? id->text() : std::string("-"));
}

ExitStatus editTemplate(Session& session, const Arguments& arguments) {
    if (!arguments.hasOwnOptions()) throw UsageError::because("There is nothing to change.");
    StoreContext& context = session.context();
    CDTaskTemplate& stored = resolveTaskTemplate(session, arguments.word(0));
    TaskTemplateContent content = TaskTemplateContent::of(stored);
    if (const auto name = arguments.text("name")) content.name = *name;
    edit(session, content, arguments);
    session.taskTemplates().update(context, *stored.id, std::move(content));
    context.save();
    return answerTemplate(session, stored, "Changed " + inQuotes(stored.name.valueOr("")) + ".");
}

ExitStatus deleteTemplate(Session& session, const Arguments& arguments) {
    CDTaskTemplate& stored = resolveTaskTemplate(session, arguments.word(0));
    const std::string name = inQuotes(stored.name.valueOr(""));
    session.taskTemplates().remove(session.context(), *stored.id);
    session.context().save();
    return answerCount(session, "deleted", 1, "Deleted " + name + ".");
}

/// What a template holds, as options of `add` and `edit`.
std::vector<Option> contentOptions(Option first) {
    return {
        std::move(first),
        {.name = "title", .value = "TITLE", .summary = "The title of the task it makes"},
        {.name = "notes", .value = "TEXT", .summary = "The details of the task"},
        {.name = "priority", .value = "N", .summary = "From 1, the most urgent, to 4"},
        {.name = "label", .value = "NAME", .summary = "A label of the task", .isRepeatable = true},
        {.name = "due-offset",
         .value = "DAYS",
         .summary = "When it is due, in days after it is created, or “none”"},
        {.name = "due-time", .value = "TIME", .summary = "The time of that day, or “none”"},
        {.name = "repeat", .value = "RULE", .summary = "How it repeats, or “none”"},
        {.name = "project", .value = "PROJECT", .summary = "The project it goes to, or “none”"},
        {.name = "subtask",
         .value = "TITLE",
         .summary = "The title of a subtask",
         .isRepeatable = true}};
}

}  // namespace

std::vector<Command> taskTemplateCommands() {
    const Argument used{.name = "TEMPLATE"};
    return {
        {.path = "task-template add",
         .summary = "Makes a task template and prints its id",
         .access = Access::writes,
         .arguments = {{.name = "NAME", .isOptional = true}},
         .options = contentOptions(
             {.name = "from", .value = "TASK", .summary = "Starts from what this task holds"}),
         .details = "Without NAME it is called “Untitled Template”.",
         .example =
             "tesserine task-template add Trip --title 'Pack' --due-offset 2 --due-time 9:05 "
             "--subtask Passport --subtask Keys",
         .run = addTemplate},
        {.path = "task-template list",
         .summary = "Lists the task templates",
         .example = "tesserine task-template list",
         .run = listTaskTemplates},
        {.path = "task-template show",
         .summary = "Shows a task template",
         .arguments = {used},
         .example = "tesserine task-template show Trip",
         .run = showTemplate},
        {.path = "task-template use",
         .summary = "Makes a task, with its subtasks, from a template and prints its id",
         .access = Access::writes,
         .arguments = {used},
         .example = "tesserine task-template use Trip",
         .run = useTaskTemplate},
        {.path = "task-template edit",
         .summary = "Changes a task template",
         .access = Access::writes,
         .arguments = {used},
         .options = contentOptions({.name = "name", .value = "NAME", .summary = "A new name"}),
         .details = "Labels and subtasks that are given take the place of those it has.",
         .example = "tesserine task-template edit Trip --due-time none --priority 2",
         .run = editTemplate},
        {.path = "task-template delete",
         .summary = "Deletes a task template; tasks made from it stay",
         .access = Access::writes,
         .arguments = {used},
         .example = "tesserine task-template delete Trip",
         .run = deleteTemplate}};
}

}  // namespace tesserine::cli
