#pragma once

#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/Random.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"
#include "core/tasks/TaskService.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tesserine::test {

/// A fresh library in memory at ten in the morning of Saturday, 14 March 2026, in Berlin.
class TaskFixture : public ::testing::Test {
public:
    /// A moment in Berlin, such as "2026-03-14T10:00".
    Instant at(const char* local) const { return calendar.instant(*LocalTime::parseISO(local)); }
    std::string local(const std::optional<Instant>& instant) const {
        return instant ? calendar.local(*instant).iso().substr(0, 16) : "-";
    }

    CDTask& add(TaskDraft draft) { return service.create(context, std::move(draft)); }
    CDTask& addDue(const char* title, const char* due, bool hasTime = true) {
        return add({.title = title, .due = TaskDue{.date = at(due), .hasTime = hasTime}});
    }

    static std::string titles(const std::vector<CDTask*>& tasks) {
        std::string text;
        for (const CDTask* task : tasks) {
            text += (text.empty() ? "" : ", ") + task->title.valueOr("-");
        }
        return text;
    }
    std::string titles(const TaskView& view) {
        return titles(service.tasks(context, view, calendar));
    }

    Calendar calendar{"Europe/Berlin", 2};
    FixedClock clock{calendar.instant({.year = 2026, .month = 3, .day = 14, .hour = 10})};
    SecureRandom random;
    TesserineStore store{{.inMemory = true}, {.clock = clock, .random = random}};
    StoreContext& context{store.viewContext()};
    TaskService service{clock};
    text::Collator collator{"en"};
};

}  // namespace tesserine::test
