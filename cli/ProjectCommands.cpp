#include "cli/Names.h"
#include "cli/ObjectJSON.h"
#include "cli/Presentation.h"
#include "cli/Session.h"

#include <boost/json/array.hpp>

namespace tesserine::cli {

namespace {

std::size_t openTasksIn(Session& session, const CDProject& project) {
    const auto view = TaskView::project(project.id.valueOr({}));
    return session.tasks().count(session.context(), view, session.calendar());
}

ExitStatus addProject(Session& session, const Arguments& arguments) {
    session.holdNames();
    StoreContext& context = session.context();
    CDProject& made = session.tasks().projects().create(context, arguments.word(0));
    context.save();
    return answerWithID(session, made);
}

ExitStatus listProjects(Session& session, const Arguments&) {
    const auto projects = session.tasks().projects().all(session.context());
    if (session.output().isJSON()) {
        boost::json::array array;
        for (CDProject* project : projects) {
            boost::json::object object = asJSON(*project, Detail::header);
            object["taskCount"] = openTasksIn(session, *project);
            array.push_back(std::move(object));
        }
        session.output().json(array);
        return ExitStatus::done;
    }
    if (projects.empty()) session.remark("There are no projects.");
    Table table{
        .columns = {
            {.title = "ID", .style = Style::accent},
            {.title = "TASKS", .isNumber = true},
            {.title = "NAME", .style = Style::strong, .mayShrink = true}}};
    for (const CDProject* project : projects) {
        table.rows.push_back(
            {shortID(project->id),
             std::to_string(openTasksIn(session, *project)),
             project->name.valueOr("")});
    }
    session.output().table(table);
    return ExitStatus::done;
}

ExitStatus renameProject(Session& session, const Arguments& arguments) {
    session.holdNames();
    StoreContext& context = session.context();
    CDProject& project = projectToChange(session, arguments.word(0));
    session.tasks().projects().rename(context, project, arguments.word(1));
    context.save();
    return answer(session, project, "It is called " + inQuotes(project.name.valueOr("")) + ".");
}

ExitStatus deleteProject(Session& session, const Arguments& arguments) {
    session.holdNames();
    StoreContext& context = session.context();
    CDProject& project = projectToChange(session, arguments.word(0));
    const std::string name = inQuotes(project.name.valueOr(""));
    session.tasks().projects().remove(context, project);
    context.save();
    return answerCount(session, "deleted", 1, "Deleted " + name + "; its tasks are in the Inbox.");
}

}  // namespace

std::vector<Command> projectCommands() {
    const Argument project{.name = "PROJECT"};
    return {
        {.path = "project add",
         .summary = "Makes a project and prints its id",
         .access = Access::writes,
         .arguments = {{.name = "NAME"}},
         .example = "tesserine project add Work",
         .run = addProject},
        {.path = "project list",
         .summary = "Lists the projects with how many open tasks they hold",
         .example = "tesserine project list",
         .run = listProjects},
        {.path = "project rename",
         .summary = "Gives a project another name",
         .access = Access::writes,
         .arguments = {project, {.name = "NAME"}},
         .example = "tesserine project rename Work Office",
         .run = renameProject},
        {.path = "project delete",
         .summary = "Deletes a project; its tasks go to the Inbox",
         .access = Access::writes,
         .arguments = {project},
         .example = "tesserine project delete Work",
         .run = deleteProject}};
}

}  // namespace tesserine::cli
