#pragma once

#include "app/state/Place.h"

#include <QWidget>

namespace tesserine::app {

class AppEnvironment;
class Commands;
class TaskActions;
class TaskListPage;

/// A small window above all others with what is due today and the quick-add bar; it comes back
/// where it was left. The commands of the main window do not reach into it.
class TodayWindow final : public QWidget {
    Q_OBJECT

public:
    static constexpr const char* geometryKey = "tesserine.todayWindow.geometry";

    explicit TodayWindow(AppEnvironment& environment, QWidget* parent = nullptr);
    ~TodayWindow() override;

    /// Lets the keys of lists of tasks act on the tasks that are selected here.
    void takeKeys(const Commands& commands);

signals:
    /// A task is to be shown with all it holds.
    void chosen(const tesserine::app::Place& place);
    /// The window was shown or closed.
    void visibilityChanged(bool isVisible);

private:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

    AppEnvironment& environment_;
    TaskActions* const actions_;
    TaskListPage* const tasks_;
};

}  // namespace tesserine::app
