#include "app/desktop/DesktopScheme.h"

#include "app/desktop/PrivateBusFixture.h"
#include "app/desktop/SettingsPortalFixture.h"

#include <gtest/gtest.h>
#include <QTest>

#include <vector>

namespace tesserine::app {
namespace {

using Scheme = Theme::Scheme;
using Schemes = std::vector<Scheme>;

/// What is told within a moment to somebody who listens from now on.
class Listener {
public:
    explicit Listener(const QDBusConnection& bus) : scheme_(bus) {
        QObject::connect(&scheme_, &DesktopScheme::told, &scheme_, [this](Scheme scheme) {
            told.push_back(scheme);
        });
    }
    bool hears(const Schemes& expected) {
        return QTest::qWaitFor([&] { return told == expected; }, 10'000);
    }

    Schemes told;

private:
    DesktopScheme scheme_;
};

TEST(DesktopScheme, TellsWhatThePortalAnswersAndWhatChangesLater) {
    test::PrivateBus bus;
    test::SettingsPortal portal(bus.connection("portal"));
    portal.colorScheme = 1;
    Listener listener(bus.connection("program"));
    ASSERT_TRUE(listener.hears({Scheme::dark}));

    const auto change = [&](const char* group, const char* key, uint value) {
        emit portal.SettingChanged(group, key, QDBusVariant(value));
    };
    change("org.freedesktop.appearance", "contrast", 2);
    change("org.gnome.desktop.interface", "color-scheme", 2);
    change("org.freedesktop.appearance", "color-scheme", 2);
    change("org.freedesktop.appearance", "color-scheme", 0);
    EXPECT_TRUE(listener.hears({Scheme::dark, Scheme::light, Scheme::system}))
        << ::testing::PrintToString(listener.told);
}

TEST(DesktopScheme, SaysNothingWhereThereIsNoPortalOrNoBus) {
    test::PrivateBus bus;
    Listener alone(bus.connection("program"));
    Listener unconnected(QDBusConnection("nowhere"));
    QTest::qWait(200);
    EXPECT_TRUE(alone.told.empty());
    EXPECT_TRUE(unconnected.told.empty());
}

}  // namespace
}  // namespace tesserine::app
