#include "app/desktop/MachineWatch.h"

#include "app/desktop/PrivateBusFixture.h"
#include "app/state/WindowFixture.h"

#include <gtest/gtest.h>
#include <QDBusMessage>

#include <string>

namespace tesserine::app {
namespace {

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
    static void tellOfNetwork(const QDBusConnection& bus, uint state) {
        QDBusMessage signal = QDBusMessage::createSignal(
            "/org/freedesktop/NetworkManager", "org.freedesktop.NetworkManager", "StateChanged");
        signal << state;
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
    test::PrivateBus bus;
    QDBusConnection manager = bus.connection("manager");
    ASSERT_TRUE(manager.registerService("org.freedesktop.NetworkManager"));
    ASSERT_TRUE(manager.registerService("org.freedesktop.login1"));
    MachineWatch watch(bus.connection("program"));
    listenTo(watch);
    constexpr uint disconnected = 20;
    constexpr uint connecting = 40;
    constexpr uint local = 50;
    constexpr uint site = 60;
    constexpr uint global = 70;
    for (const uint state :
         {disconnected,
          connecting,
          local,
          global,
          global,
          site,
          disconnected,
          connecting,
          global}) {
        tellOfNetwork(manager, state);
    }
    tellOfSleep(manager, false);  // comes after all of them
    EXPECT_TRUE(test::WindowFixture::waitUntil([this] { return told.ends_with('w'); }));
    EXPECT_EQ(told, "nnnw");
}

}  // namespace
}  // namespace tesserine::app
