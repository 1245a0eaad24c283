#include "app/look/Theme.h"

#include "app/look/PageParts.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QLabel>
#include <QPalette>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace tesserine::app {
namespace {

double luminance(const QColor& color) {
    const auto channel = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(color.redF()) + 0.7152 * channel(color.greenF())
           + 0.0722 * channel(color.blueF());
}

/// As the accessibility guidelines for the web count it, 1 to 21.
double contrast(const QColor& one, const QColor& other) {
    const double light = std::max(luminance(one), luminance(other));
    const double dark = std::min(luminance(one), luminance(other));
    return (light + 0.05) / (dark + 0.05);
}

/// What `ink` looks like when it lies thinly over `ground`.
QColor tinted(const QColor& ink, const QColor& ground) {
    constexpr float share = 0.12F;
    const auto part = [](float one, float other) { return one * share + other * (1 - share); };
    return QColor::fromRgbF(
        part(ink.redF(), ground.redF()),
        part(ink.greenF(), ground.greenF()),
        part(ink.blueF(), ground.blueF()));
}

TEST(Theme, TextCanBeReadOnEveryGroundInBothSchemes) {
    Theme theme(*qApp);
    for (const auto scheme : {Theme::Scheme::light, Theme::Scheme::dark}) {
        theme.setScheme(scheme);
        const Colors& colors = Theme::colors();
        for (const QColor& ground :
             {colors.window, colors.surface, colors.raised, colors.hover, colors.selection}) {
            EXPECT_GE(contrast(colors.text, ground), 4.5) << ground.name().toStdString();
            EXPECT_GE(contrast(colors.secondaryText, ground), 4.5) << ground.name().toStdString();
        }
        for (const QColor& ink : {colors.text, colors.secondaryText, colors.accent}) {
            EXPECT_GE(contrast(ink, colors.highlight), 4.5) << ink.name().toStdString();
        }
        EXPECT_GE(contrast(colors.text, colors.code), 4.5);
        EXPECT_GE(contrast(colors.onAccent, colors.accent), 4.5);
        for (const QColor& ink : {colors.accent, colors.danger, colors.warning, colors.success}) {
            for (const QColor& ground : {colors.surface, colors.window, colors.selection}) {
                EXPECT_GE(contrast(ink, ground), 4.5) << ink.name().toStdString();
            }
        }
    }
}

TEST(Theme, UrgencyCanBeReadInListsTokensAndTheCalendar) {
    Theme theme(*qApp);
    for (const auto scheme : {Theme::Scheme::light, Theme::Scheme::dark}) {
        theme.setScheme(scheme);
        const Colors& colors = Theme::colors();
        for (const QColor& mark : {colors.priority[0], colors.priority[1], colors.priority[2]}) {
            SCOPED_TRACE(mark.name().toStdString());
            EXPECT_GE(contrast(mark, colors.selection), 4.5);
            EXPECT_GE(contrast(mark, tinted(mark, colors.surface)), 4.5);
            for (const QColor& ground : {colors.surface, colors.window}) {
                EXPECT_GE(contrast(colors.secondaryText, tinted(mark, ground)), 4.5);
            }
        }
    }
}

TEST(Theme, FollowsTheDesktopUnlessAskedOtherwise) {
    Theme theme(*qApp);
    int changes = 0;
    QObject::connect(&theme, &Theme::changed, qApp, [&changes] { ++changes; });
    theme.setScheme(Theme::Scheme::dark);
    EXPECT_TRUE(Theme::colors().isDark);
    EXPECT_EQ(QApplication::palette().color(QPalette::Text), Theme::colors().text);
    theme.setScheme(Theme::Scheme::system);
    EXPECT_FALSE(Theme::colors().isDark) << "an offscreen desktop is light";
    theme.setDesktopScheme(Theme::Scheme::dark);
    EXPECT_TRUE(Theme::colors().isDark);
    EXPECT_EQ(changes, 3);
    theme.setScheme(Theme::Scheme::light);
    EXPECT_FALSE(Theme::colors().isDark);
}

TEST(Theme, TextOfEveryToneFollowsIt) {
    Theme theme(*qApp);
    theme.setScheme(Theme::Scheme::light);
    QWidget window;
    const QLabel* const hint = makeHint("Kept for a day", &window);
    window.show();
    theme.setScheme(Theme::Scheme::dark);
    QCoreApplication::processEvents();
    EXPECT_EQ(hint->palette().color(QPalette::WindowText), Theme::colors().secondaryText);
    EXPECT_EQ(window.palette().color(QPalette::Window), Theme::colors().window);
}

}  // namespace
}  // namespace tesserine::app
