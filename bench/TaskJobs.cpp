#include "bench/TaskJobs.h"

#include "base/Calendar.h"
#include "bench/Dice.h"
#include "bench/SampleLibrary.h"
#include "core/model/TaskEntities.h"
#include "core/tasks/TaskView.h"

#include <array>
#include <stdexcept>

namespace tesserine::bench {
namespace {

constexpr std::size_t page = 200;
constexpr std::size_t tasksPerSave = 2000;
constexpr std::size_t groupCount = 20;
constexpr const char* columns =
    "SELECT Z_PK, Z_OPT, ZID, ZTITLE, ZDETAILS, ZDUEDATE, ZDUEHASTIME, ZREMINDERAT, ZPRIORITY, "
    "ZCOMPLETEDAT, ZRECURRENCERULE, ZCREATEDAT, ZUPDATEDAT, ZSORTINDEX, ZLINKEDNOTE, ZPARENT, "
    "ZPROJECT FROM ZCDTASK WHERE ";

/// The least that any program keeps of a row of a list of tasks.
struct TaskRow {
    std::int64_t key;
    std::string id;
    std::string title;
    std::string details;
    double dueDate;
    double completedAt;
    double createdAt;
    double updatedAt;
    std::string rule;
    std::int64_t priority;
    std::int64_t place;
    std::int64_t parent;
    std::int64_t project;
};

std::vector<TaskRow> readTasks(RawStatement& rows) {
    std::vector<TaskRow> result;
    while (rows.step()) {
        const auto id = rows.blob(2);
        result.push_back(
            {.key = rows.integer(0),
             .id = std::string(id.begin(), id.end()),
             .title = std::string(rows.text(3)),
             .details = std::string(rows.text(4)),
             .dueDate = rows.real(5),
             .completedAt = rows.real(9),
             .createdAt = rows.real(11),
             .updatedAt = rows.real(12),
             .rule = std::string(rows.text(10)),
             .priority = rows.integer(8),
             .place = rows.integer(13),
             .parent = rows.integer(15),
             .project = rows.integer(16)});
    }
    rows.reset();
    return result;
}

/// Where the tasks of the sample belong.
struct Groups {
    std::vector<CDProject*> projects;  // the first is the Inbox
    std::vector<CDTag*> labels;
};

Groups addGroups(StoreContext& context) {
    Groups groups;
    for (std::size_t i = 0; i < groupCount; ++i) {
        CDProject& project = context.insert<CDProject>();
        project.name = i == 0 ? "Inbox" : "Project " + std::to_string(i);
        project.isInbox = i == 0;
        groups.projects.push_back(&project);
        CDTag& label = context.insert<CDTag>();
        label.name = "Label " + std::to_string(i);
        groups.labels.push_back(&label);
    }
    return groups;
}

/// A library some years old: two of three tasks are done, every second is due, one of ten is a
/// subtask, one of three has a label.
Groups addTasks(StoreContext& context, std::size_t count, Instant now) {
    const Groups groups = addGroups(context);
    Dice dice(8);
    CDTask* latest = nullptr;
    for (std::size_t i = 0; i < count; ++i) {
        CDTask& task = context.insert<CDTask>();
        task.title = "Task " + std::to_string(i) + " of a library that is some years old";
        task.details = "";
        task.sortIndex = static_cast<std::int64_t>(i);
        task.createdAt = now - std::chrono::hours(count - i);
        task.updatedAt = task.createdAt;
        task.priority = static_cast<std::int16_t>(1 + dice.below(4));
        if (i % 3 != 0) task.completedAt = now - std::chrono::minutes(dice.below(1'000'000));
        if (i % 2 == 0) {
            task.dueDate = now - std::chrono::hours(1000) + std::chrono::hours(dice.below(2000));
        }
        const std::size_t place = dice.below(2) == 0 ? 0 : dice.below(groupCount);
        task.project = groups.projects[place];
        if (i % 10 == 9) {
            task.parent = latest;
        } else {
            latest = &task;
        }
        if (dice.below(3) == 0) task.labels.add(*groups.labels[dice.below(groupCount)]);
        if (i % tasksPerSave == tasksPerSave - 1) context.save();
    }
    context.save();
    return groups;
}

std::string hex(const Uuid& id) {
    std::string text = "x'";
    for (const char c : id.text()) {
        if (c != '-') text += c;
    }
    return text + "'";
}

struct Case {
    const char* name;
    TaskView view;
    std::string sql;
};

std::vector<Case> cases(const Groups& groups, Instant tomorrow) {
    const std::string open = "ZCOMPLETEDAT IS NULL AND +ZPARENT IS NULL";
    const std::string byPlace = " ORDER BY ZSORTINDEX, ZCREATEDAT, ZID";
    const std::string byDue = " ORDER BY ZDUEDATE, ZPRIORITY, ZSORTINDEX, ZID";
    const std::string midnight = std::to_string(tomorrow.referenceSeconds());
    const Uuid project = *groups.projects[1]->id;
    return {
        {"inbox",
         TaskView::inbox(),
         open + " AND ZPROJECT IN (SELECT Z_PK FROM ZCDPROJECT WHERE ZISINBOX = 1)" + byPlace},
        {"today", TaskView::today(), open + " AND ZDUEDATE < " + midnight + byDue},
        {"upcoming", TaskView::upcoming(), open + " AND ZDUEDATE >= " + midnight + byDue},
        {"all", TaskView::all(), open + byPlace},
        {"completed",
         TaskView::completed(),
         "ZCOMPLETEDAT IS NOT NULL ORDER BY ZCOMPLETEDAT DESC, ZID"},
        {"project",
         TaskView::project(project),
         open + " AND ZPROJECT IN (SELECT Z_PK FROM ZCDPROJECT WHERE ZID = " + hex(project) + ")"
             + byPlace},
        {"label",
         TaskView::label("label 1"),
         open
             + " AND Z_PK IN (SELECT ZTASK FROM Z_CDTASK_LABELS WHERE ZTAG IN (SELECT Z_PK FROM ZCDTAG WHERE "
               "ZNAME = 'Label 1'))"
             + byPlace},
    };
}

}  // namespace

std::vector<Row> taskJobs(
    const std::filesystem::path& folder, std::size_t taskCount, std::size_t rounds) {
    const ScratchFolder scratch(folder);
    OurLibrary library(scratch.path());
    StoreContext& context = library.context();
    const Calendar calendar("Europe/Berlin");
    const Instant now = SystemClock().now();
    const Groups groups = addTasks(context, taskCount, now);
    const Instant tomorrow = calendar.startOfDay(calendar.addDays(now, 1));
    library.store().checkpoint();
    RawDatabase raw(library.store().file());

    std::vector<Row> result;
    for (const auto& [name, view, sql] : cases(groups, tomorrow)) {
        RawStatement rows = raw.prepare(columns + sql + " LIMIT " + std::to_string(page));
        FetchRequest request = view.request(now, calendar);
        request.limit = page;
        std::size_t rawCount = 0;
        std::size_t ourCount = 0;
        const Comparison times = alternate(
            rounds * 10 + 1,
            [&] { return secondsOf([&] { rawCount = readTasks(rows).size(); }); },
            [&] {
                context.reset();
                return secondsOf([&] { ourCount = context.fetch<CDTask>(request).size(); });
            });
        if (rawCount != ourCount) throw std::runtime_error(std::string(name) + ": not the same");
        result.push_back(rowOf(
            "tasks of “" + std::string(name) + "”, first " + std::to_string(rawCount) + " of "
                + grouped(taskCount),
            times,
            milliseconds));
    }
    return result;
}

}  // namespace tesserine::bench
