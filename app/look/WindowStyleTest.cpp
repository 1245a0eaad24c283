#include "app/look/WindowStyle.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QStyleOptionSlider>
#include <QWheelEvent>

namespace tesserine::app {
namespace {

/// A scroll bar of 200 pixels over `range` steps, a page of 100, at `position`.
QStyleOptionSlider bar(int range, int position, Qt::LayoutDirection direction = Qt::LeftToRight) {
    QStyleOptionSlider bar;
    bar.orientation = direction == Qt::RightToLeft ? Qt::Horizontal : Qt::Vertical;
    bar.direction = direction;
    bar.rect = direction == Qt::RightToLeft ? QRect(0, 0, 200, 10) : QRect(0, 0, 10, 200);
    bar.maximum = range;
    bar.pageStep = 100;
    bar.sliderPosition = position;
    return bar;
}

QRect part(const QStyleOptionSlider& bar, QStyle::SubControl part) {
    return WindowStyle().subControlRect(QStyle::CC_ScrollBar, &bar, part, nullptr);
}

TEST(WindowStyle, TheThumbOfAScrollBarShowsPlaceAndShareWithoutArrows) {
    struct Case {
        int range;
        int position;
        int top;
        int length;
    };
    for (const auto& [range, position, top, length] : {
             Case{0, 0, 0, 200},  // nothing to scroll
             Case{100, 0, 0, 100},
             Case{100, 50, 50, 100},
             Case{100, 100, 100, 100},
             Case{1'000'000, 1'000'000, 168, 32},  // never too short to grasp
             Case{2'000'000'000, 0, 0, 32},
         }) {
        SCOPED_TRACE(range);
        const QRect thumb = part(bar(range, position), QStyle::SC_ScrollBarSlider);
        EXPECT_EQ(thumb, QRect(0, top, 10, length));
    }
    EXPECT_TRUE(part(bar(100, 0), QStyle::SC_ScrollBarAddLine).isEmpty());
}

TEST(WindowStyle, TellsTheThumbFromWhatIsBesideIt) {
    const QStyleOptionSlider middle = bar(300, 150);  // the thumb is at 75 to 124
    const WindowStyle style;
    const auto at = [&](int y) {
        return style.hitTestComplexControl(QStyle::CC_ScrollBar, &middle, QPoint(5, y), nullptr);
    };
    EXPECT_EQ(at(74), QStyle::SC_ScrollBarSubPage);
    EXPECT_EQ(at(75), QStyle::SC_ScrollBarSlider);
    EXPECT_EQ(at(124), QStyle::SC_ScrollBarSlider);
    EXPECT_EQ(at(125), QStyle::SC_ScrollBarAddPage);
}

TEST(WindowStyle, TheWheelChangesNoChoiceItPassesOver) {
    WindowStyle style;
    QComboBox choices;
    choices.setStyle(&style);
    choices.ensurePolished();
    choices.addItems({"never", "after 7 days"});
    const QPointF place(5, 5);
    QWheelEvent turn(
        place, place, {}, {0, -120}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&choices, &turn);
    EXPECT_EQ(choices.currentIndex(), 0);
    EXPECT_FALSE(turn.isAccepted()) << "it scrolls the page";
}

TEST(WindowStyle, SeveralLinesHaveTheCornersOfAField) {
    WindowStyle style;
    QWidget window;
    window.setStyle(&style);
    QLineEdit field(&window);
    QPlainTextEdit lines(&window);
    for (QWidget* part : {static_cast<QWidget*>(&field), static_cast<QWidget*>(&lines)}) {
        part->setStyle(&style);
        part->resize(100, 60);
        part->ensurePolished();
    }
    const auto corner = [](QWidget& part) { return part.grab().toImage().copy(0, 0, 6, 6); };
    EXPECT_EQ(corner(lines), corner(field));
}

TEST(WindowStyle, ReadsFromRightToLeft) {
    EXPECT_EQ(
        part(bar(100, 0, Qt::RightToLeft), QStyle::SC_ScrollBarSlider), QRect(100, 0, 100, 10));
}

}  // namespace
}  // namespace tesserine::app
