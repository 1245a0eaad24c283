#include "app/look/Icon.h"

#include "app/look/IconButton.h"
#include "app/look/Theme.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QDir>
#include <QImage>

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

TEST(IconButton, TellsItsMeaningToEyesAndScreenReaders) {
    IconButton button("pin", "Pin note");
    button.setMeaning("close", "Unpin note");
    EXPECT_EQ(button.accessibleName(), "Unpin note");
    EXPECT_EQ(button.toolTip(), "Unpin note");
}

}  // namespace
}  // namespace tesserine::app
