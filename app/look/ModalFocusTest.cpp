#include "app/look/ModalFocus.h"

#include <gtest/gtest.h>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QTest>

namespace tesserine::app {
namespace {

TEST(ModalFocus, ADialogKeepsTheKeysOfTheWindowItBlocks) {
    const ModalFocus focus(*qApp);
    QWidget window;
    QLineEdit field(&window);
    int shortcuts = 0;
    QAction action(&window);
    action.setShortcut(QKeySequence("Ctrl+K"));
    action.setShortcutContext(Qt::WidgetWithChildrenShortcut);
    window.addAction(&action);
    QObject::connect(&action, &QAction::triggered, [&shortcuts] { ++shortcuts; });
    QWidget other;
    window.show();
    other.show();
    QDialog dialog(&window);
    dialog.open();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));

    // A desktop gives the keys to the window behind; a key comes before they are given back.
    QApplication::setActiveWindow(&window);
    field.setFocus();
    ASSERT_TRUE(field.hasFocus());
    QTest::keyClick(&field, Qt::Key_K, Qt::ControlModifier);
    EXPECT_EQ(shortcuts, 0);
    QCoreApplication::processEvents();
    EXPECT_EQ(QApplication::activeWindow(), &dialog);

    // It blocks neither what belongs to it nor another window.
    QWidget help(&dialog, Qt::Window);
    help.show();
    QApplication::setActiveWindow(&help);
    QCoreApplication::processEvents();
    EXPECT_EQ(QApplication::activeWindow(), &help);
    QApplication::setActiveWindow(&other);
    QCoreApplication::processEvents();
    EXPECT_EQ(QApplication::activeWindow(), &other);

    dialog.reject();
    QApplication::setActiveWindow(&window);
    QTest::keyClick(&field, Qt::Key_K, Qt::ControlModifier);
    EXPECT_EQ(shortcuts, 1);
}

}  // namespace
}  // namespace tesserine::app
