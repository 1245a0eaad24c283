#include "app/look/ScreenFit.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QDialog>
#include <QScreen>

namespace tesserine::app {
namespace {

TEST(ScreenFit, NoWindowOpensLargerThanItsScreen) {
    const ScreenFit fit(*qApp);
    const QSize screen = QGuiApplication::primaryScreen()->availableSize();
    QDialog large;
    large.resize(screen.width() + 100, 300);
    large.show();
    EXPECT_LT(large.width(), screen.width());
    EXPECT_EQ(large.height(), 300);

    QDialog small;
    small.resize(200, 100);
    small.show();
    EXPECT_EQ(small.size(), QSize(200, 100));
}

}  // namespace
}  // namespace tesserine::app
