#pragma once

#include "app/commands/Commands.h"
#include "app/editor/BodyEdit.h"
#include "app/editor/NoteEditor.h"
#include "app/lists/NoteList.h"
#include "app/lists/NoteListView.h"
#include "app/lists/Sidebar.h"
#include "app/lists/SidebarModel.h"
#include "app/shell/FirstPaint.h"
#include "app/shell/MainWindow.h"
#include "app/shell/NotesPane.h"
#include "app/shell/WindowCommands.h"
#include "app/state/WindowFixture.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>

#include <memory>
#include <string>

namespace tesserine::test {

/// A window on a fresh library, for whoever presses keys and clicks.
class ShellFixture : public WindowFixture {
public:
    /// Opened when it is first asked for, so that a test may fill the library before.
    app::MainWindow& window() {
        if (!window_) {
            commands_ = std::make_unique<app::Commands>(environment->preferences());
            window_ = std::make_unique<app::MainWindow>(*environment, *commands_);
            app::handleWindowCommands(*window_, *commands_, *environment);
            bool isSeen = false;
            app::afterFirstPaint(*window_, [&isSeen] { isSeen = true; });
            window_->show();
            window_->activateWindow();
            EXPECT_TRUE(QTest::qWaitForWindowActive(window_.get()));
            EXPECT_TRUE(waitUntil([&] { return isSeen; }));
            settle();
            environment->startWork();
        }
        return *window_;
    }
    /// Of the window, which is open.
    app::Commands& commands() { return *commands_; }
    void closeWindow() {
        window_.reset();
        commands_.reset();
    }
    void TearDown() override { closeWindow(); }

    app::NoteList& list() { return window().notes().list(); }
    app::NoteEditor& editor() { return window().notes().editor(); }

    /// Presses keys wherever the focus is.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        window();
        QWidget* target = QApplication::focusWidget();
        QTest::keyClick(target != nullptr ? target : &window(), key, modifiers);
    }
    void type(const QString& text) {
        window();
        QTest::keyClicks(QApplication::focusWidget(), text);
    }
    void clickPlace(const app::Place& place) {
        app::Sidebar& sidebar = window().sidebar();
        const QModelIndex index = sidebar.places().indexOf(place);
        sidebar.scrollTo(index);
        QTest::mouseClick(
            sidebar.viewport(), Qt::LeftButton, {}, sidebar.visualRect(index).center());
    }
    void clickNote(int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        app::NoteListView& view = list().view();
        QTest::mouseClick(
            view.viewport(),
            Qt::LeftButton,
            modifiers,
            view.visualRect(view.model()->index(row, 0)).center());
    }
    /// Presses a button of the question that is open.
    void answer(const QString& button) {
        auto* question = window().findChild<QMessageBox*>("question");
        ASSERT_NE(question, nullptr);
        for (QAbstractButton* one : question->buttons()) {
            if (one->text().remove('&') == button) return one->click();
        }
        ADD_FAILURE() << "no button " << button.toStdString();
    }

    std::string titles() {
        std::string text;
        for (int row = 0; row < list().model().rowCount(); ++row) {
            text += list().model().summary(row).title.toStdString() + ";";
        }
        return text;
    }
    std::string openTitle() { return editor().title().text().toStdString(); }

private:
    std::unique_ptr<app::Commands> commands_;
    std::unique_ptr<app::MainWindow> window_;
};

}  // namespace tesserine::test
