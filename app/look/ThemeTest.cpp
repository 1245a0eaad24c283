#include "app/look/Theme.h"

#include <gtest/gtest.h>
#include <QApplication>
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
        EXPECT_GE(contrast(colors.text, colors.highlight), 4.5);
        EXPECT_GE(contrast(colors.text, colors.code), 4.5);
        EXPECT_GE(contrast(colors.onAccent, colors.accent), 4.5);
        for (const QColor& ink : {colors.accent, colors.danger, colors.warning, colors.success}) {
            EXPECT_GE(contrast(ink, colors.surface), 4.5) << ink.name().toStdString();
            EXPECT_GE(contrast(ink, colors.window), 4.5) << ink.name().toStdString();
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
    EXPECT_EQ(changes, 2);
}

}  // namespace
}  // namespace tesserine::app
