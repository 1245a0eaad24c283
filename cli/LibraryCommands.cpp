#include "base/Product.h"
#include "base/sqlite/SQLiteDatabase.h"
#include "cli/DisplayText.h"
#include "cli/Names.h"
#include "cli/ObjectJSON.h"
#include "cli/Presentation.h"
#include "cli/Session.h"
#include "cli/TaskPresentation.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <system_error>

namespace tesserine::cli {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t overviewLimit = 10;

ExitStatus makeLibrary(Session& session, const Arguments&) {
    const bool wasThere = session.hasLibrary();
    TesserineStore& store = session.store();
    if (session.output().isJSON()) {
        session.output().json(
            {{"library", session.libraryFolder().string()},
             {"libraryID", store.libraryID()},
             {"created", !wasThere}});
        return ExitStatus::done;
    }
    if (wasThere) session.remark("There is a library already.");
    session.output().line(oneLine(session.libraryFolder().string()));
    return ExitStatus::done;
}

/// What the overview shows, section by section.
struct Overview {
    std::vector<CDTask*> due;
    std::vector<CDNote*> pinned;
    std::vector<CDNote*> reminders;
    std::vector<CDNote*> conflicts;
    std::vector<CDNote*> recent;
};

Overview gatherOverview(Session& session) {
    StoreContext& context = session.context();
    const std::string live = "trashedAt == nil AND isTemplate == NO";
    const auto newest = SortDescriptor::Order::descending;
    FetchRequest due = TaskView::today().request(session.now(), session.calendar());
    due.limit = overviewLimit;
    return {
        .due = context.fetch<CDTask>(due),
        .pinned = context.fetch<CDNote>(
            {.predicate = {live + " AND isPinned == YES"},
             .sort = {{"favoritedAt", newest}},
             .limit = overviewLimit}),
        .reminders = session.notes().upcomingReminders(context, session.now(), overviewLimit),
        .conflicts = context.fetch<CDNote>(
            {.predicate = {live + " AND hasConflict == YES"},
             .sort = {{"updatedAt", newest}},
             .limit = overviewLimit}),
        .recent = context.fetch<CDNote>(
            {.predicate = {live}, .sort = {{"updatedAt", newest}}, .limit = overviewLimit})};
}

boost::json::array headersJSON(const std::vector<CDNote*>& notes) {
    boost::json::array array;
    for (CDNote* note : notes) {
        array.push_back(asJSON(*note, Detail::header));
    }
    return array;
}

void showDue(Session& session, const std::vector<CDTask*>& tasks, std::size_t count) {
    if (tasks.empty()) return;
    Output& output = session.output();
    output.line(output.styled("Due", Style::strong));
    Table table{
        .columns = {
            {.title = "", .style = Style::accent},
            {.title = "", .style = Style::faint},
            {.title = "", .mayShrink = true}}};
    for (const CDTask* task : tasks) {
        table.rows.push_back({shortID(task->id), dueText(session, *task), titleOf(*task)});
    }
    output.table(table);
    if (count > tasks.size()) {
        output.line("and " + std::to_string(count - tasks.size()) + " more");
    }
    output.line("");
}

void showSection(
    Session& session,
    std::string_view title,
    const std::vector<CDNote*>& notes,
    const Attribute<Instant> CDNote::*when) {
    if (notes.empty()) return;
    Output& output = session.output();
    output.line(output.styled(title, Style::strong));
    Table table{
        .columns = {
            {.title = "", .style = Style::accent},
            {.title = "", .style = Style::faint},
            {.title = "", .mayShrink = true}}};
    for (const CDNote* note : notes) {
        table.rows.push_back(
            {shortID(note->id), localText(session, note->*when), displayTitle(*note)});
    }
    output.table(table);
    output.line("");
}

ExitStatus showOverview(Session& session, const Arguments&) {
    const Overview overview = gatherOverview(session);
    const std::size_t count = session.notes().liveNoteCount(session.context());
    const auto tasks = [&](const TaskView& view) {
        return session.tasks().count(session.context(), view, session.calendar());
    };
    if (session.output().isJSON()) {
        session.output().json(
            {{"due", tasksJSON(session, overview.due)},
             {"pinned", headersJSON(overview.pinned)},
             {"reminders", headersJSON(overview.reminders)},
             {"conflicts", headersJSON(overview.conflicts)},
             {"recent", headersJSON(overview.recent)},
             {"noteCount", count},
             {"taskCount", tasks(TaskView::all())}});
        return ExitStatus::done;
    }
    showDue(session, overview.due, tasks(TaskView::today()));
    showSection(session, "Pinned", overview.pinned, &CDNote::favoritedAt);
    showSection(session, "Reminders", overview.reminders, &CDNote::reminderAt);
    showSection(session, "With a conflict", overview.conflicts, &CDNote::updatedAt);
    showSection(session, "Recent", overview.recent, &CDNote::updatedAt);
    const std::size_t openTasks = tasks(TaskView::all());
    const std::string tasksText = openTasks == 0 ? "" : ", " + counted(openTasks, "open task");
    session.output().line(counted(count, "note") + tasksText + ".");
    return ExitStatus::done;
}

boost::json::object counts(StoreContext& context) {
    boost::json::object result;
    for (const EntityDescription& entity : Schema::library().entities()) {
        result[entity.name] = context.countObjects(entity.kind, {});
    }
    return result;
}

std::uint64_t fileSize(const fs::path& file) {
    std::error_code error;
    const auto size = fs::file_size(file, error);
    return error ? 0 : size;
}

ExitStatus showInfo(Session& session, const Arguments&) {
    TesserineStore& store = session.store();
    const boost::json::object objects = counts(session.context());
    const boost::json::object info{
        {"version", product::version},
        {"library", session.libraryFolder().string()},
        {"libraryID", store.libraryID()},
        {"file", store.file().string()},
        {"fileBytes", fileSize(store.file())},
        {"schema", Schema::number},
        {"sqlite", sqliteVersionNumber()},
        {"lastChange", store.lastTransactionNumber()},
        {"preferences", session.preferencesFile().string()},
        {"log", session.logFile().string()},
        {"timeZone", session.calendar().zone()},
        {"counts", objects}};
    if (session.output().isJSON()) {
        session.output().json(info);
        return ExitStatus::done;
    }
    Table table{.columns = {{.title = "", .style = Style::faint}, {.title = ""}}};
    for (const auto& [key, value] : info) {
        if (value.is_string()) table.rows.push_back({key, value.as_string().c_str()});
        if (value.is_number()) {
            table.rows.push_back({key, std::to_string(value.to_number<std::int64_t>())});
        }
    }
    for (const auto& [entity, count] : objects) {
        table.rows.push_back({entity, std::to_string(count.to_number<std::int64_t>())});
    }
    session.output().table(table);
    return ExitStatus::done;
}

}  // namespace

std::vector<Command> libraryCommands() {
    return {
        {.path = "init",
         .summary = "Makes a library, if there is none, and prints its folder",
         .access = Access::writes,
         .example = "tesserine --library ~/Notes init",
         .run = makeLibrary},
        {.path = "overview",
         .summary = "Shows what is due, what is pinned, what has a reminder, and what changed last",
         .example = "tesserine overview",
         .run = showOverview},
        {.path = "info",
         .summary = "Shows paths, counts and versions",
         .example = "tesserine info --json",
         .run = showInfo}};
}

}  // namespace tesserine::cli
