#include "app/look/EmptyState.h"
#include "app/look/SettingsForm.h"
#include "app/look/Theme.h"
#include "app/testing/WidgetFaultsFixture.h"
#include "base/Preferences.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QImage>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>

#include <memory>
#include <string>
#include <vector>

namespace tesserine::app {
namespace {

/// One control of each kind in a window that has the keys, as the theme draws them.
class ControlsTest : public ::testing::Test {
public:
    ControlsTest() {
        auto* const column = new QVBoxLayout(&window);
        toggles = {new QCheckBox("Check"), new QRadioButton("One"), new QToolButton};
        for (QAbstractButton* toggle : toggles) {
            toggle->setCheckable(true);
            toggle->setAutoExclusive(false);
        }
        auto* const flat = new QPushButton("Press");
        flat->setFlat(true);
        auto* const box = new QComboBox;
        box->addItems({"One", "Two"});
        controls = {
            new QPushButton("Press"), flat, new QLineEdit("Text"), box, new QPlainTextEdit("Text")};
        controls.insert(controls.end(), toggles.begin(), toggles.end());
        column->addWidget(other);
        for (QWidget* control : controls) {
            control->setFocusPolicy(Qt::StrongFocus);
            column->addWidget(control);
        }
        window.show();
        QApplication::setActiveWindow(&window);
    }

    static QImage picture(QWidget& control) {
        QCoreApplication::processEvents();
        return control.grab().toImage();
    }
    static std::string nameOf(const QWidget& control) { return control.metaObject()->className(); }

    Theme theme{*qApp};
    QWidget window;
    QLineEdit* other = new QLineEdit;
    std::vector<QAbstractButton*> toggles;
    std::vector<QWidget*> controls;
};

TEST_F(ControlsTest, FocusAndWhatCannotBeUsedAreSeenInBothSchemes) {
    for (const auto scheme : {Theme::Scheme::light, Theme::Scheme::dark}) {
        theme.setScheme(scheme);
        for (QWidget* control : controls) {
            SCOPED_TRACE(nameOf(*control));
            other->setFocus(Qt::TabFocusReason);
            const QImage usual = picture(*control);
            control->setFocus(Qt::TabFocusReason);
            ASSERT_TRUE(control->hasFocus());
            EXPECT_NE(picture(*control), usual) << "with the keys";
            control->setEnabled(false);
            EXPECT_NE(picture(*control), usual) << "disabled";
            control->setEnabled(true);
        }
    }
}

TEST_F(ControlsTest, WhatIsOnIsTold) {
    other->setFocus();
    for (QAbstractButton* toggle : toggles) {
        SCOPED_TRACE(nameOf(*toggle));
        const QImage off = picture(*toggle);
        toggle->setChecked(true);
        const QImage on = picture(*toggle);
        EXPECT_NE(on, off);
        toggle->setEnabled(false);
        EXPECT_NE(picture(*toggle), on);
    }
}

TEST_F(ControlsTest, AnotherSchemeIsTakenByWhatIsShownAlready) {
    theme.setScheme(Theme::Scheme::light);
    std::vector<QImage> light;
    for (QWidget* control : controls)
        light.push_back(picture(*control));
    theme.setScheme(Theme::Scheme::dark);
    for (std::size_t i = 0; i < controls.size(); ++i) {
        EXPECT_NE(picture(*controls[i]), light[i]) << nameOf(*controls[i]);
    }
    theme.setScheme(Theme::Scheme::light);
    for (std::size_t i = 0; i < controls.size(); ++i) {
        EXPECT_EQ(picture(*controls[i]), light[i]) << nameOf(*controls[i]) << " and back";
    }
}

TEST(EmptyState, CanBeReadInANarrowPane) {
    EmptyState state(
        {"notes",
         "No notes yet, and no other thing that could be listed here",
         "Write down what is on your mind. It is saved as you type, in the library on this disk.",
         "New Note"});
    for (const int width : {180, 240, 600}) {
        SCOPED_TRACE(width);
        state.resize(width, 600);
        state.show();
        QCoreApplication::processEvents();
        EXPECT_EQ(test::layoutFaults(state), "");
    }
    state.setContent({"notes", "Short", "", ""});
    QCoreApplication::processEvents();
    EXPECT_EQ(state.findChild<QPushButton*>()->isVisible(), false) << "nothing to be done";
}

TEST(EmptyState, ReturnDoesTheObviousNextThing) {
    EmptyState state({"notes", "No notes yet", "Write down what is on your mind.", "New Note"});
    state.show();
    state.setFocus();
    int acts = 0;
    QObject::connect(&state, &EmptyState::acted, &state, [&] { ++acts; });
    QTest::keyClick(state.focusWidget(), Qt::Key_Return);
    EXPECT_EQ(acts, 1);
}

}  // namespace
}  // namespace tesserine::app
