#include "app/look/Icon.h"

#include "app/look/IconButton.h"
#include "app/look/Theme.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QDir>
#include <QImage>
#include <QPainter>

#include <cstdlib>
#include <string>

namespace tesserine::app {
namespace {

/// The strongest ink of a picture; transparent when nothing was drawn.
QColor strongestInk(const QIcon& icon, QIcon::Mode mode = QIcon::Normal) {
    const QImage image =
        icon.pixmap(QSize(40, 40), 1, mode).toImage().convertToFormat(QImage::Format_ARGB32);
    QColor strongest(Qt::transparent);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor color = image.pixelColor(x, y);
            if (color.alpha() > strongest.alpha()) strongest = color;
        }
    }
    return strongest;
}

TEST(Icon, EveryDrawingCanBeReadAndTakesTheColourOfTheTheme) {
    Theme theme(*qApp);
    EXPECT_EQ(strongestInk(programIcon()).alpha(), 255) << "the picture of the program";
    ASSERT_GT(QDir(":/icons").count(), 60U);
    for (const auto scheme : {Theme::Scheme::light, Theme::Scheme::dark}) {
        theme.setScheme(scheme);
        for (const QString& file : QDir(":/icons").entryList({"*.svg"})) {
            if (file == "tesserine.svg") continue;
            const QString name = file.chopped(4);
            EXPECT_EQ(strongestInk(icon(name)).name(), Theme::colors().text.name())
                << name.toStdString();
        }
    }
}

TEST(Icon, FollowsAThemeThatChangesAfterItWasMade) {
    Theme theme(*qApp);
    theme.setScheme(Theme::Scheme::light);
    const QIcon trash = icon("trash", Ink::danger);
    const QColor light = strongestInk(trash);
    theme.setScheme(Theme::Scheme::dark);
    EXPECT_NE(strongestInk(trash).name(), light.name());
    EXPECT_LT(strongestInk(trash, QIcon::Disabled).alpha(), 160) << "disabled icons are faded";
}

/// What `icon` paints into 20 x 20 points of a screen with `ratio` pixels to the point.
QImage painted(const QIcon& icon, qreal ratio) {
    QImage screen(QSizeF(20 * ratio, 20 * ratio).toSize(), QImage::Format_ARGB32);
    screen.setDevicePixelRatio(ratio);
    screen.fill(Qt::transparent);
    QPainter painter(&screen);
    icon.paint(&painter, QRect(1, 1, 18, 18));
    return screen;
}

TEST(Icon, IsNotStretchedWhereAPointIsNoWholeNumberOfPixels) {
    // From 1.25 to 23.75: whole pixels from 1, 23 of them.
    const QImage whole =
        icon("pin").pixmap(QSize(23, 23), 1.0).toImage().convertToFormat(QImage::Format_ARGB32);
    const QImage shown = painted(icon("pin"), 1.25).copy(1, 1, 23, 23);
    EXPECT_EQ(shown.convertToFormat(QImage::Format_ARGB32), whole);
}

/// Pixels that are clearly not the same.
int differences(const QImage& one, const QImage& other) {
    int count = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const int alpha = one.pixelColor(x, y).alpha() - other.pixelColor(x, y).alpha();
            if (std::abs(alpha) > 64) ++count;
        }
    }
    return count;
}

TEST(Icon, TurnsRoundWithTheDirectionOfReadingOnlyWhenItShowsIt) {
    const auto turned = [](const char* name) {
        QGuiApplication::setLayoutDirection(Qt::RightToLeft);
        const QImage image = painted(icon(name), 1);
        QGuiApplication::setLayoutDirection(Qt::LeftToRight);
        return image;
    };
    const QImage forward = painted(icon("forward"), 1);
    EXPECT_GT(differences(turned("forward"), forward), 20);
    EXPECT_EQ(differences(turned("forward"), forward.mirrored(true, false)), 0);
    EXPECT_EQ(turned("search"), painted(icon("search"), 1));
}

TEST(IconButton, TellsItsMeaningToEyesAndScreenReaders) {
    IconButton button("pin", "Pin note");
    button.setMeaning("close", "Unpin note");
    EXPECT_EQ(button.accessibleName(), "Unpin note");
    EXPECT_EQ(button.toolTip(), "Unpin note");
}

}  // namespace
}  // namespace tesserine::app
