#include "app/desktop/MachineWatch.h"

#include "app/desktop/PrivateBusFixture.h"
#include "app/state/WindowFixture.h"

#include <gtest/gtest.h>
#include <QDBusMessage>

#include <string>

namespace tesserine::app {
namespace {

using Reach = QNetworkInformation::Reachability;

/// Writes down what a watch tells: "w" for waking, "n" for a network.
class MachineWatchTest : public ::testing::Test {
public:
    void listenTo(MachineWatch& watch) {
        QObject::connect(&watch, &MachineWatch::wokeUp, &watch, [this] { told += 'w'; });
        QObject::connect(&watch, &MachineWatch::networkCameUp, &watch, [this] { told += 'n'; });
    }
    static void tellOfSleep(const QDBusConnection& bus, bool isFallingAsleep) {
        QDBusMessage signal = QDBusMessage::createSignal(
            "/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep");
        signal << isFallingAsleep;
        bus.send(signal);
    }

    std::string told;
};

TEST_F(MachineWatchTest, TellsOfWakingAndNotOfFallingAsleep) {
    test::PrivateBus bus;
    QDBusConnection manager = bus.connection("manager");
    ASSERT_TRUE(manager.registerService("org.freedesktop.login1"));
    MachineWatch watch(bus.connection("program"));
    listenTo(watch);
    tellOfSleep(bus.connection("somebody else"), false);
    tellOfSleep(manager, true);
    tellOfSleep(manager, false);
    tellOfSleep(manager, true);
    tellOfSleep(manager, false);
    EXPECT_TRUE(test::WindowFixture::waitUntil([this] { return told.size() >= 2; }));
    EXPECT_EQ(told, "ww");
}

TEST_F(MachineWatchTest, TellsOfANetworkThatReachesFurtherThanBefore) {
    MachineWatch watch(QDBusConnection("no bus at all"));
    listenTo(watch);
    for (const auto& [reach, expected] : {
             std::pair{Reach::Disconnected, ""},
             std::pair{Reach::Local, "n"},
             std::pair{Reach::Online, "nn"},
             std::pair{Reach::Online, "nn"},
             std::pair{Reach::Site, "nn"},
             std::pair{Reach::Unknown, "nn"},
             std::pair{Reach::Online, "nnn"},
         }) {
        watch.followNetwork(reach);
        EXPECT_EQ(told, expected) << "reach " << static_cast<int>(reach);
    }
}

}  // namespace
}  // namespace tesserine::app
