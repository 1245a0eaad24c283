#include "app/account/RowList.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <vector>

namespace tesserine::app {
namespace {

TEST(RowList, TheSecondOfTwoClicksDoesNotPressTheRowThatCameIntoThePlace) {
    RowList list("Devices", nullptr);
    std::vector<RowList::Row> rows;
    for (const char* id : {"desk", "phone", "tablet"}) {
        rows.push_back({.title = id, .button = "Sign Out", .id = id});
    }
    list.setRows(rows);
    list.show();
    QSignalSpy pressed(&list, &RowList::pressed);
    QObject::connect(&list, &RowList::pressed, &list, [&](const QString&) {
        rows.erase(rows.begin());
        list.setRows(rows);
    });
    const auto pressFirst = [&list] {
        for (QPushButton* const button : list.findChildren<QPushButton*>()) {
            if (button->isVisible()) return button->click();
        }
    };
    pressFirst();
    pressFirst();
    ASSERT_EQ(pressed.size(), 1);
    EXPECT_EQ(pressed.at(0).at(0), "desk");

    QTest::qWait(QApplication::doubleClickInterval() + 50);
    pressFirst();
    ASSERT_EQ(pressed.size(), 2);
    EXPECT_EQ(pressed.at(1).at(0), "phone");
}

}  // namespace
}  // namespace tesserine::app
