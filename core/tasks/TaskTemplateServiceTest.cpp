#include "core/tasks/TaskTemplateService.h"

#include "core/tasks/TaskFixture.h"

namespace tesserine {
namespace {

class TaskTemplateServiceTest : public test::TaskFixture {
public:
    TaskTemplateService templates{clock};
};

TEST_F(TaskTemplateServiceTest, TheSummaryNamesWhatATemplateSets) {
    struct Case {
        TaskTemplateContent content;
        const char* summary;
    };
    for (const auto& [content, summary] : {
             Case{{}, "No due date"},
             Case{{.dueTime = TimeOfDay{9, 5}}, "No due date"},
             Case{{.dueOffsetDays = 0}, "Due the day it is created"},
             Case{
                 {.dueOffsetDays = 1, .dueTime = TimeOfDay{0, 0}},
                 "Due the day after it is created at 00:00"},
             Case{
                 {.priority = TaskPriority::p3,
            .labels = {"home", "garden"},
            .dueOffsetDays = 2,
            .dueTime = TimeOfDay{9, 5},
            .recurrence = RecurrenceRule{},
            .subtasks = {"a"}},
                 "P3 · Due 2 days after it is created at 09:05 · Repeats · home garden · 1 "
                 "subtask"},
             Case{{.subtasks = {"a", "b"}}, "No due date · 2 subtasks"},
         }) {
        EXPECT_EQ(content.summary(), summary);
    }
}

TEST_F(TaskTemplateServiceTest, ATemplateMakesTheTaskItDescribes) {
    CDProject& work = service.projects().create(context, "Work");
    CDTaskTemplate& made = templates.create(
        context,
        {.name = " Trip ",
         .title = "Pack",
         .notes = "bags",
         .priority = TaskPriority::p2,
         .labels = {"travel", " "},
         .dueOffsetDays = 15,
         .dueTime = TimeOfDay{9, 5},
         .recurrence = RecurrenceRule{.unit = RecurrenceRule::Unit::month},
         .projectID = *work.id,
         .subtasks = {"passport", "", " keys"}});
    context.save();
    EXPECT_EQ(made.name, "Trip");

    const CDTask& task = templates.use(context, *made.id, calendar);
    const auto snapshot = TaskSnapshot::of(task, collator);
    EXPECT_EQ(snapshot.title + ", " + snapshot.details, "Pack, bags");
    EXPECT_EQ(local(snapshot.dueDate), "2026-03-29T09:05");  // the clocks change that night
    EXPECT_TRUE(snapshot.dueHasTime);
    EXPECT_EQ(snapshot.priority, TaskPriority::p2);
    EXPECT_EQ(snapshot.recurrenceRule->unit, RecurrenceRule::Unit::month);
    EXPECT_EQ(snapshot.labels, std::vector<std::string>{"travel"});
    EXPECT_EQ(snapshot.projectID, work.id);
    EXPECT_EQ(titles(subtasksInOrder(task)), "passport, keys");

    service.projects().remove(context, work);
    context.save();
    EXPECT_EQ(templates.use(context, *made.id, calendar).project->isInbox, true);
}

TEST_F(TaskTemplateServiceTest, ANameIsNeededAndAMissingTemplateIsSaid) {
    const auto untitled = TaskTemplateSnapshot::of(templates.createUntitled(context));
    EXPECT_EQ(untitled.content.name, "Untitled Template");
    const Uuid id = untitled.id;

    const auto refusal = [](auto change) -> std::string {
        try {
            change();
            return {};
        } catch (const TaskTemplateError& error) {
            return error.what();
        }
    };
    const std::string needsName = "A template needs a name.";
    const std::string notFound = "That template could not be found.";
    EXPECT_EQ(refusal([&] { templates.create(context, {.name = " \n"}); }), needsName);
    EXPECT_EQ(refusal([&] { templates.update(context, id, {.title = "t"}); }), needsName);
    EXPECT_EQ(templates.all(context, collator).size(), 1U);

    templates.remove(context, id);
    context.save();
    EXPECT_EQ(refusal([&] { templates.remove(context, id); }), notFound);
    EXPECT_EQ(refusal([&] { templates.update(context, id, {.name = "n"}); }), notFound);
    EXPECT_EQ(refusal([&] { templates.use(context, id, calendar); }), notFound);
}

TEST_F(TaskTemplateServiceTest, AStoredTemplateOfAnotherProgramIsReadAsFarAsItGoes) {
    auto& stored = context.insert<CDTaskTemplate>();
    stored.labelsJSON = R"(["home", 3, null])";
    stored.subtasksJSON = "{not json";
    stored.dueTime = "25:00";
    stored.hasDueOffset = true;
    stored.dueOffsetDays = -4;
    stored.priority = std::int16_t{9};
    stored.recurrenceRule = "unit=fortnight";
    EXPECT_EQ(TaskTemplateContent::of(stored).summary(), "Due the day it is created · home");
}

TEST_F(TaskTemplateServiceTest, ATemplateOfATaskHoldsAllButItsDates) {
    CDTask& task = add(
        {.title = "Pack",
         .details = "bags",
         .due = TaskDue{.date = clock.now(), .hasTime = true},
         .priority = TaskPriority::p1,
         .labels = {"b", "A"}});
    add({.title = "keys", .parent = &task});
    const auto content = templates.contentOf(task, collator);
    EXPECT_EQ(content.name + ": " + content.title, "Untitled Template: Pack");
    EXPECT_EQ(content.summary(), "P1 · No due date · A b · 1 subtask");
}

}  // namespace
}  // namespace tesserine
