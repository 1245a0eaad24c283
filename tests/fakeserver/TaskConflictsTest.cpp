#include "sync/TaskConflicts.h"

#include "tests/fakeserver/SyncFixture.h"

namespace tesserine::test {
namespace {

class TaskConflictsTest : public Sync {
protected:
    Uuid sharedTask(const std::string& title) {
        auto& task = a.context().insert<CDTask>();
        task.title = title;
        task.createdAt = a.clock.now();
        task.updatedAt = a.clock.now();
        const Uuid id = *task.id;
        a.save();
        settle();
        return id;
    }
    /// Changes the task and saves, a second later than whatever was before.
    static void edit(SyncDevice& device, const Uuid& id, const std::function<void(CDTask&)>& how) {
        device.clock.advance(std::chrono::seconds(1));
        CDTask& task = *device.context().find<CDTask>(id);
        how(task);
        task.updatedAt = device.clock.now();
        device.save();
    }
    static void rename(SyncDevice& device, const Uuid& id, const std::string& title) {
        edit(device, id, [&](CDTask& task) { task.title = title; });
    }
    /// "present|other" of every choice that waits.
    static std::string waiting(SyncDevice& device) {
        std::string text;
        for (const TaskConflict& conflict : TaskConflicts(device.context()).all()) {
            text += conflict.present.title + "|" + conflict.other.title + " ";
        }
        return text;
    }
    static std::string title(SyncDevice& device, const Uuid& id) {
        return device.context().find<CDTask>(id)->title.valueOr("");
    }
};

TEST_F(TaskConflictsTest, TheOtherVersionWaitsWhicheverSideWinsUnderBothPolicies) {
    for (const auto policy :
         {FakeSyncServer::Stale::superseded, FakeSyncServer::Stale::laterWins}) {
        for (const int lead : {0, 60}) {
            SCOPED_TRACE(lead);
            service.stale = policy;
            const Uuid id = sharedTask("Call");
            rename(a, id, "Call Ada");
            b.clock.advance(std::chrono::seconds(lead));
            rename(b, id, "Call Bob");
            settle();
            const std::string shown = waiting(a) + waiting(b);
            const bool adaStands = title(a, id) == "Call Ada";
            EXPECT_EQ(shown, adaStands ? "Call Ada|Call Bob " : "Call Bob|Call Ada ");
            for (SyncDevice* const device : {&a, &b}) {
                TaskConflicts(device->context()).useThisVersion(id);
                device->save();
            }
            EXPECT_EQ(waiting(a) + waiting(b), "");
            a.clock.advance(std::chrono::seconds(lead));
        }
    }
}

TEST_F(TaskConflictsTest, TheOtherVersionMayBeTakenAndTravels) {
    const Uuid id = sharedTask("Call");
    edit(a, id, [&](CDTask& task) {
        task.title = "Call Ada";
        task.details = "On the phone";
        task.dueDate = a.clock.now();
    });
    rename(b, id, "Call Bob");
    rename(b, id, "Call Bob again");  // the later one
    settle();
    SyncDevice& holder = waiting(a).empty() ? b : a;
    ASSERT_EQ(waiting(holder), "Call Bob again|Call Ada ");

    StoreContext& context = holder.context();
    TaskConflicts(context).useOtherVersion(id, holder.clock);
    context.save();
    EXPECT_EQ(waiting(holder), "");
    settle();
    for (SyncDevice* const device : {&a, &b}) {
        const CDTask& task = *device->context().find<CDTask>(id);
        EXPECT_EQ(task.title, "Call Ada");
        EXPECT_EQ(task.details, "On the phone");
        EXPECT_TRUE(static_cast<bool>(task.dueDate));
    }
    EXPECT_EQ(waiting(a) + waiting(b), "");
}

TEST_F(TaskConflictsTest, BothVersionsMayBeKeptAsTwoTasksOfEveryDevice) {
    const Uuid id = sharedTask("Call");
    edit(a, id, [](CDTask& task) {
        task.title = "Call Ada";
        task.details = "On the phone";
    });
    b.clock.advance(std::chrono::seconds(1));  // the later one
    rename(b, id, "Call Bob");
    settle();
    SyncDevice& holder = waiting(a).empty() ? b : a;
    ASSERT_EQ(waiting(holder), "Call Bob|Call Ada ");
    TaskConflicts(holder.context()).keepBoth(id, holder.clock);
    holder.save();
    settle();
    for (SyncDevice* const device : {&a, &b}) {
        std::string tasks;
        for (const CDTask* task : device->context().fetch<CDTask>({.sort = {{"title"}}})) {
            tasks += task->title.valueOr("") + " (" + task->details.valueOr("") + ") ";
        }
        EXPECT_EQ(tasks, "Call Ada (On the phone) Call Bob (On the phone) ");
    }
    EXPECT_EQ(waiting(a) + waiting(b), "");
}

TEST_F(TaskConflictsTest, SeveralVersionsAreSettledOneAfterAnotherAndASameOneIsNotKept) {
    const Uuid id = sharedTask("Call");
    const auto keep = [&](const char* title) {
        StoreContext& context = a.context();
        TaskConflicts(context).keep(*context.find<CDTask>(id), {{"title", title}});
        context.save();
    };
    keep("Call");  // what the task says
    EXPECT_EQ(waiting(a), "");
    keep("First");
    keep("Second");
    keep("First");  // again, as after an answer that was lost
    EXPECT_EQ(waiting(a), "Call|First ");
    StoreContext& context = a.context();
    TaskConflicts(context).useOtherVersion(id, a.clock);
    context.save();
    EXPECT_EQ(waiting(a), "First|Second ");

    context.remove(*context.find<CDTask>(id));
    context.save();
    EXPECT_EQ(waiting(a), "") << "nothing to choose for a task that is gone";
}

TEST_F(TaskConflictsTest, VersionsStayWhenTheLibraryGoesToAnotherAccount) {
    const Uuid id = sharedTask("Call");
    StoreContext& context = a.context();
    TaskConflicts(context).keep(*context.find<CDTask>(id), {{"title", "Call Ada"}});
    context.save();
    service.accountID = "other";
    a.signIn();
    EXPECT_EQ(a.sync({.anotherAccount = true}), "");
    EXPECT_EQ(waiting(a), "Call|Call Ada ");
}

}  // namespace
}  // namespace tesserine::test
