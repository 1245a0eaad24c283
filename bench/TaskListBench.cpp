// How long the thread of the window is busy at a time while long lists of tasks are shown, scrolled
// and changed. What a person waits for is the longest of these times, not their sum.
//
// The second column is the time that the thread had a processor.
//
// Usage: tesserine-task-list-bench [TASKS]    so many open ones, and as many completed ones

#include "app/commands/Commands.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/CalendarPage.h"
#include "app/tasks/TaskCommands.h"
#include "app/tasks/TaskListModel.h"
#include "app/tasks/TaskListPage.h"
#include "app/tasks/TaskListView.h"
#include "app/tasks/TasksPage.h"
#include "base/Clock.h"
#include "base/Random.h"
#include "bench/EventWatch.h"

#include <QScrollBar>
#include <QTemporaryDir>

#include <chrono>
#include <string>
#include <vector>

namespace {

using namespace tesserine;
using namespace tesserine::bench;

constexpr std::size_t tasksPerSave = 2000;
constexpr std::size_t tasksPerDay = 20;

class TaskListBench {
public:
    TaskListBench(WatchedApplication& application, const std::string& folder, std::size_t tasks)
        : application_(application),
          environment_(
              {.clock = clock_,
               .random = random_,
               .zone = "Europe/Berlin",
               .locale = "en_GB",
               .library = folder + "/Library",
               .preferencesFile = folder + "/preferences.json"}) {
        environment_.preferences().set("tesserine.reduceMotion", true);
        environment_.inBackground(
            [this, tasks](StoreContext& context, const std::stop_token& /*stop*/) {
                fill(context, tasks);
            },
            &page_,
            {},
            [](const std::string& sentence) { std::cerr << sentence << "\n"; });
        environment_.waitForBackground();
        environment_.startWork();  // it follows what is saved beside it
        environment_.waitForBackground();
        page_.resize(1000, 800);
        page_.show();
        QApplication::setActiveWindow(&page_);
        runFor(2);
    }

    void measure(const std::string& name, app::Place::Kind kind, std::size_t tasks) {
        application_.takeLongest();
        const Spent called = spentIn([&] { page_.showPlace({.kind = kind}); });
        tell(name + ": shown, call returns", called);
        runUntil([&] { return model().taskCount() >= tasks; });
        runFor(0.3);
        tell(name + ": all of it listed, longest event", application_.takeLongest());

        QScrollBar& bar = *list().verticalScrollBar();
        for (int step = 0; step <= 50; ++step) {
            bar.setValue(bar.maximum() / 50 * step);
            runFor(0.01);
        }
        tell(name + ": scrolled to the end, longest event", application_.takeLongest());

        int row = model().rowCount() / 2;
        while (!model().at(row).isTask()) {
            ++row;
        }
        const Uuid middle = model().at(row).id;
        list().selectTask(middle);
        runFor(0.3);
        application_.takeLongest();
        const auto one = [&](const std::string& what, auto&& change) {
            const Spent changed = spentIn(change);
            runFor(0.3);
            tell(name + ": " + what, longer(changed, application_.takeLongest()));
        };
        const app::TaskCommands commands(environment_, &page_);
        one("one changed", [&] { commands.setPriority({middle}, TaskPriority::p1); });
        one("one moved far",
            [&] { commands.setDue({middle}, TaskDue{.date = environment_.now()}); });
        if (kind == app::Place::Kind::completed) {
            one("one reopened", [&] { commands.reopen({middle}); });
        } else {
            one("one completed", [&] { commands.complete({middle}); });
        }
        changeMany(name);
    }

    void showCalendar() {
        application_.takeLongest();
        const Spent called =
            spentIn([&] { page_.showPlace({.kind = app::Place::Kind::calendar}); });
        runFor(0.5);
        tell("calendar: shown", longer(called, application_.takeLongest()));
        const app::TaskCommands commands(environment_, &page_);
        const auto* task = environment_.context().fetchFirst<CDTask>(
            {.predicate = {"dueDate != nil AND completedAt == nil"}});
        const Spent changed = spentIn([&] { commands.setPriority({*task->id}, TaskPriority::p1); });
        runFor(0.5);
        tell("calendar: one changed", longer(changed, application_.takeLongest()));
    }

private:
    void fill(StoreContext& context, std::size_t tasks) {
        const TaskService service(clock_);
        const Calendar& calendar = environment_.calendar();
        const Instant today = calendar.startOfDay(environment_.now());
        for (std::size_t i = 0; i < 2 * tasks; ++i) {
            CDTask& task = context.insert<CDTask>();
            const bool isOpen = i % 2 == 0;
            const auto days = static_cast<int>(i / 2 / tasksPerDay) + 1;
            task.title = "Task number " + std::to_string(i);
            task.dueDate = calendar.addDays(today, isOpen ? days : -days);
            task.sortIndex = static_cast<std::int64_t>(i);
            task.priority = static_cast<std::int16_t>(1 + i % 4);
            if (i % 3 == 0) service.addLabel(context, task, "label" + std::to_string(i % 7));
            if (!isOpen) task.completedAt = *task.dueDate + std::chrono::hours(9);
            if (i % tasksPerSave == tasksPerSave - 1) {
                context.save();
                context.reset();
            }
        }
        context.save();
    }

    /// Another process, or a sync, changes very many at once.
    void changeMany(const std::string& name) {
        application_.takeLongest();
        bool isDone = false;
        environment_.inBackground(
            [](StoreContext& context, const std::stop_token& /*stop*/) {
                for (CDTask* task : context.fetch<CDTask>({.limit = 1000})) {
                    task->title = "Changed " + task->title.valueOr("");
                    task->sortIndex = -task->sortIndex.valueOr(0);
                }
                context.save();
            },
            &page_,
            [&] { isDone = true; });
        runUntil([&] { return isDone && model().taskCount().has_value(); });
        runFor(0.5);
        tell(name + ": 1,000 changed beside, longest event", application_.takeLongest());
    }

    app::TaskListView& list() { return page_.listPage().list(); }
    app::TaskListModel& model() { return static_cast<app::TaskListModel&>(*list().model()); }

    WatchedApplication& application_;
    SystemClock clock_;
    SecureRandom random_;
    app::AppEnvironment environment_;
    app::Commands commands_{environment_.preferences()};
    app::TasksPage page_{environment_, commands_};
};

}  // namespace

int main(int count, char** words) {
    WatchedApplication application(count, words);
    const app::Theme theme(application);
    const QTemporaryDir folder;
    const auto tasks = QApplication::arguments().value(1, "20000").toULongLong();
    TaskListBench bench(application, folder.path().toStdString(), tasks);
    using Kind = app::Place::Kind;
    bench.measure("upcoming", Kind::upcoming, tasks);
    bench.measure("completed", Kind::completed, tasks);
    bench.measure("all", Kind::allTasks, tasks - 2);
    bench.showCalendar();
    return 0;
}
