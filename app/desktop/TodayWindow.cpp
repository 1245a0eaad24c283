#include "app/desktop/TodayWindow.h"

#include "app/state/AppEnvironment.h"
#include "app/tasks/TaskActions.h"
#include "app/tasks/TaskListPage.h"
#include "app/tasks/UndoBar.h"
#include "base/Files.h"

#include <QVBoxLayout>

namespace tesserine::app {
namespace {

constexpr QSize firstSize(360, 460);

}  // namespace

TodayWindow::TodayWindow(AppEnvironment& environment, QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::WindowStaysOnTopHint),
      environment_(environment),
      actions_(new TaskActions(environment, this)),
      tasks_(new TaskListPage(environment, *actions_, this)) {
    setObjectName("todayWindow");
    setWindowTitle(tr("Today"));
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(tasks_, 1);
    auto* const undo = new UndoBar(this, *this);
    column->addWidget(undo);
    connect(actions_, &TaskActions::completed, undo, &UndoBar::offer);
    connect(actions_, &TaskActions::addedElsewhere, undo, &UndoBar::tell);
    connect(undo, &UndoBar::undone, actions_, &TaskActions::undo);
    tasks_->showPlace({.kind = Place::Kind::today});
    const auto tell = [this](const Uuid& task) {
        emit chosen({.kind = Place::Kind::task, .id = task});
    };
    connect(tasks_, &TaskListPage::opened, this, tell);
    connect(actions_, &TaskActions::opened, this, tell);
    const auto kept = environment_.preferences().string(geometryKey);
    if (!kept || !restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(*kept)))) {
        resize(firstSize);
    }
}

void TodayWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    emit visibilityChanged(true);
}

void TodayWindow::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    try {
        environment_.preferences().set(geometryKey, saveGeometry().toBase64().toStdString());
    } catch (const FileError& error) {
        environment_.log().warning(std::string("today window: ") + error.what());
    }
    emit visibilityChanged(false);
}

}  // namespace tesserine::app
