#include "search/StoreQueryLibrary.h"

#include "core/model/TaskEntities.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"
#include "tests/support/SeededRandom.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace tesserine {
namespace {

using Kind = LibraryCondition::Kind;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

class StoreQueryLibraryTest : public testing::Test {
protected:
    CDTask& task(const char* title, std::optional<const char*> due = {}, bool hasTime = false) {
        auto& task = context().insert<CDTask>();
        task.title = title;
        if (due) task.dueDate = *Instant::parseISO(*due);
        task.dueHasTime = hasTime;
        titles_[task.id.get()->text()] = title;
        return task;
    }
    CDNote& note(const char* title) {
        auto& note = context().insert<CDNote>();
        note.title = title;
        titles_[note.id.get()->text()] = title;
        return note;
    }
    CDNotebook& notebook(const char* name, CDNotebook* parent = nullptr) {
        auto& notebook = context().insert<CDNotebook>();
        notebook.name = name;
        notebook.parent = parent;
        return notebook;
    }
    std::vector<std::string> documents(const LibraryCondition& condition) {
        std::vector<std::string> titles;
        for (const std::string& uid : library_.documents(condition)) {
            titles.push_back(titles_.at(uid));
        }
        return titles;
    }
    StoreContext& context() { return store_.viewContext(); }

    test::TemporaryFolder folder_;
    FixedClock clock_{*Instant::parseISO("2026-03-14T09:15:00Z")};
    test::SeededRandom random_{5};
    TesserineStore store_{{.directory = folder_.path()}, {.clock = clock_, .random = random_}};
    Calendar calendar_{"UTC", 2};
    StoreQueryLibrary library_{store_.viewContext(), clock_, calendar_};
    std::map<std::string, std::string> titles_;
};

TEST_F(StoreQueryLibraryTest, KnowsWhatTheIndexHasNoColumnFor) {
    task("this morning", "2026-03-14T08:00:00Z", true);
    task("some time today", "2026-03-14T00:00:00Z");
    task("yesterday", "2026-03-13T00:00:00Z");
    task("done", "2026-03-13T00:00:00Z").completedAt = clock_.now();
    task("some day").priority = 1;
    note("reminded").reminderAt = clock_.now();
    note("locked").html = R"(<div class="ts-encrypted" data-ts-cipher="AA==">x</div>)";
    note("quoting").html = R"(<p>&lt;div class="ts-encrypted"</p>)";
    note("disputed").hasConflict = true;
    context().save();

    EXPECT_THAT(
        documents({.kind = Kind::isOverdue}), UnorderedElementsAre("this morning", "yesterday"));
    EXPECT_THAT(documents({.kind = Kind::isDone}), ElementsAre("done"));
    EXPECT_EQ(documents({.kind = Kind::isOpen}).size(), 4U);
    EXPECT_THAT(documents({.kind = Kind::isNeverDue}), ElementsAre("some day"));
    EXPECT_THAT(
        documents({.kind = Kind::isDue, .due = {.begin = calendar_.startOfDay(clock_.now())}}),
        UnorderedElementsAre("this morning", "some time today"));
    EXPECT_THAT(
        documents({.kind = Kind::hasPriority, .mostUrgent = 1, .leastUrgent = 3}),
        ElementsAre("some day"));
    EXPECT_THAT(documents({.kind = Kind::hasReminder}), ElementsAre("reminded"));
    EXPECT_THAT(documents({.kind = Kind::isLocked}), ElementsAre("locked"));
    EXPECT_THAT(documents({.kind = Kind::hasConflict}), ElementsAre("disputed"));
}

TEST_F(StoreQueryLibraryTest, ANotebookHoldsThoseBelowIt) {
    CDNotebook& work = notebook("Work");
    CDNotebook& cafe = notebook("Café", &work);
    CDNotebook& home = notebook("Home");
    CDNotebook& archive = notebook("Archive", &home);
    notebook("archive", &cafe);
    note("kept").notebook = &archive;
    context().save();
    const auto names = [&](std::string_view name, QueryLibrary::Depth depth) {
        return library_.notebooks(name, depth).names;
    };
    using Depth = QueryLibrary::Depth;
    EXPECT_THAT(names("work", Depth::descendants), ElementsAre("Café", "Work", "archive"));
    EXPECT_THAT(names("Work", Depth::itself), ElementsAre("Work"));
    EXPECT_THAT(names("cafe", Depth::itself), ElementsAre("Café"));
    EXPECT_THAT(names("work/café", Depth::itself), ElementsAre("Café"));
    notebook("Plans", &cafe);
    EXPECT_THAT(names("Cafe/plans", Depth::itself), ElementsAre("Plans"));  // the end of its path
    EXPECT_THAT(names("Nowhere", Depth::descendants), ElementsAre());

    // “Home / Archive” has a twin elsewhere, so its notes are named one by one.
    const auto found = library_.notebooks("home", Depth::descendants);
    ASSERT_TRUE(found.notes);
    ASSERT_EQ(found.notes->size(), 1U);
    EXPECT_EQ(titles_.at(found.notes->front()), "kept");
    EXPECT_FALSE(library_.notebooks("Home", Depth::itself).notes);
}

}  // namespace
}  // namespace tesserine
