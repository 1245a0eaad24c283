#include "core/tasks/TaskFixture.h"

namespace tesserine {
namespace {

class ProjectServiceTest : public test::TaskFixture {
public:
    const ProjectService& projects = service.projects();

    std::string names() {
        std::string text;
        for (const CDProject* project : projects.all(context)) {
            text += (text.empty() ? "" : ", ") + project->name.valueOr("-");
        }
        return text;
    }
    /// The sentence with which a change is refused; empty when it is not.
    template <class Change>
    static std::string refusal(Change change) {
        try {
            change();
            return {};
        } catch (const ProjectError& error) {
            return error.what();
        }
    }
};

TEST_F(ProjectServiceTest, NamesAreTrimmedCutAndUnique) {
    CDProject& work = projects.create(context, " Work\n");
    EXPECT_EQ(work.name, "Work");
    EXPECT_EQ(projects.find(context, "wORK "), &work);
    EXPECT_EQ(projects.find(context, "Wor"), nullptr);
    CDProject& home = projects.create(context, std::string(300, 'h'));
    EXPECT_EQ(home.name->size(), ProjectService::maximumNameCharacters);

    const auto create = [&](const char* name) {
        return refusal([&] { projects.create(context, name); });
    };
    EXPECT_EQ(create("WORK"), "A project called “WORK” already exists.");
    EXPECT_EQ(create(" inbox "), "A project called “inbox” already exists.");
    EXPECT_EQ(create(" \t "), "A project needs a name.");
    const auto rename = [&](const char* name) {
        return refusal([&] { projects.rename(context, home, name); });
    };
    EXPECT_EQ(rename("work"), "A project called “work” already exists.");
    EXPECT_EQ(rename("Inbox"), "A project called “Inbox” already exists.");
    EXPECT_EQ(rename(""), "A project needs a name.");
    EXPECT_EQ(rename("Home"), "");
    EXPECT_EQ(rename("HOME"), "");
    EXPECT_EQ(names(), "Work, HOME");
}

TEST_F(ProjectServiceTest, TheInboxIsMadeOnceAndProtected) {
    CDProject& inbox = projects.inbox(context);
    EXPECT_EQ(projects.find(context, " inBOX "), &inbox);
    EXPECT_EQ(&projects.findOrCreate(context, ""), &inbox);
    context.save();
    EXPECT_EQ(&projects.inbox(context), &inbox);

    const std::string sentence = "The Inbox cannot be renamed or deleted.";
    EXPECT_EQ(refusal([&] { projects.rename(context, inbox, ""); }), sentence);
    EXPECT_EQ(refusal([&] { projects.remove(context, inbox); }), sentence);
    EXPECT_EQ(names(), "Inbox");
}

TEST_F(ProjectServiceTest, TasksOfADeletedProjectComeToTheInbox) {
    CDProject& work = projects.create(context, "Work");
    CDTask& plan = add({.title = "plan", .project = &work});
    CDTask& step = add({.title = "step", .parent = &plan});
    context.save();
    clock.advance(std::chrono::seconds(60));

    projects.remove(context, work);
    context.save();
    EXPECT_EQ(titles(TaskView::inbox()), "plan");
    EXPECT_EQ(step.project->isInbox, true);
    EXPECT_EQ(plan.updatedAt, clock.now());
    EXPECT_EQ(names(), "Inbox");
}

TEST_F(ProjectServiceTest, TwoInboxesBecomeTheOlderOne) {
    const auto addInbox = [&](const char* id, const char* createdAt, const char* task) {
        auto& inbox = context.insert<CDProject>();
        inbox.id = *Uuid::parse(std::string(id) + "000000-0000-4000-8000-000000000000");
        inbox.name = "Inbox";
        inbox.isInbox = true;
        inbox.createdAt = at(createdAt);
        add({.title = task, .project = &inbox});
    };
    addInbox("CC", "2026-01-02T00:00", "first");
    addInbox("BB", "2026-01-01T00:00", "second");
    addInbox("AA", "2026-01-01T00:00", "third");
    context.save();

    EXPECT_EQ(projects.mergeInboxes(context), 2U);
    context.save();
    EXPECT_EQ(projects.inbox(context).id->text().substr(0, 2), "AA");
    EXPECT_EQ(titles(TaskView::inbox()), "first, second, third");
    EXPECT_EQ(names(), "Inbox");
    EXPECT_EQ(projects.mergeInboxes(context), 0U);
}

}  // namespace
}  // namespace tesserine
