#include "app/desktop/BusService.h"

#include "app/desktop/PrivateBusFixture.h"
#include "app/state/WindowFixture.h"

#include <gtest/gtest.h>
#include <QDBusMessage>
#include <QDBusPendingCall>

#include <string>
#include <vector>

namespace tesserine::app {
namespace {

class BusServiceTest : public test::WindowFixture {
public:
    BusServiceTest() {
        QObject::connect(&service, &BusService::asked, &service, [this](const Request& request) {
            asked.push_back(request.argument().toStdString());
        });
    }

    /// What another program is answered; an error by its sentence.
    std::string call(const char* method, const QVariantList& arguments = {}) {
        QDBusMessage message = QDBusMessage::createMethodCall(
            BusService::name, BusService::path, BusService::name, method);
        message.setArguments(arguments);
        const QDBusPendingCall pending = other.asyncCall(message);
        if (!waitUntil([&] { return pending.isFinished(); })) return "no answer";
        const QDBusMessage reply = pending.reply();
        if (reply.type() == QDBusMessage::ErrorMessage) return reply.errorMessage().toStdString();
        return reply.arguments().value(0).toString().toStdString();
    }

    test::PrivateBus bus;
    QDBusConnection other = bus.connection("other");
    BusService service{*environment, bus.connection("program")};
    std::vector<std::string> asked;
};

TEST_F(BusServiceTest, AnswersOtherPrograms) {
    ASSERT_TRUE(service.isReachable());
    CDNote& note = addNote("Plan");
    CDTask& task = addTask("Call Ann");
    call("NewNote");
    call("Search", {"tag:work ann"});
    call("Show", {QString::fromStdString(note.id->wireText())});
    call("Show", {QString::fromStdString(task.id->text())});
    EXPECT_EQ(
        asked,
        (std::vector<std::string>{
            "new-note",
            "tesserine://search/tag%3Awork%20ann",
            "tesserine://note/" + note.id->text(),
            "tesserine://task/" + task.id->text()}));
    for (const char* wrong : {"", "no identifier", "6A4D0DF2-1FD6-4A35-8C67-9D6C9E4BE5D2"}) {
        EXPECT_EQ(call("Show", {wrong}), "There is no note and no task of this identifier.");
    }
}

TEST_F(BusServiceTest, MakesTasksWithoutSavingWhatWaitsInTheWindow) {
    CDNote& unsaved = environment->notes().createNote(context(), {.title = "Being written"});
    const auto id = Uuid::parse(call("NewTask", {"Send invoice tomorrow 9am p1"}));
    ASSERT_TRUE(id);
    const CDTask& task = context().get<CDTask>(*id, "task");
    EXPECT_EQ(*task.title, "Send invoice");
    EXPECT_EQ(*task.priority, 1);
    EXPECT_FALSE(environment->store().newBackgroundContext()->find<CDNote>(*unsaved.id));
    EXPECT_EQ(call("NewTask", {"  "}), "A task needs a few words.");
    context().rollback();
}

TEST_F(BusServiceTest, OneWindowHasTheNameAndNoBusIsNoTrouble) {
    const BusService second(*environment, bus.connection("second"));
    EXPECT_FALSE(second.isReachable());
    const BusService alone(*environment, QDBusConnection("nowhere"));
    EXPECT_FALSE(alone.isReachable());
}

}  // namespace
}  // namespace tesserine::app
