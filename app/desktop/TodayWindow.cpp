#include "app/desktop/TodayWindow.h"

#include "app/state/AppEnvironment.h"
#include "app/tasks/TaskListPage.h"
#include "base/Files.h"

#include <QVBoxLayout>

namespace tesserine::app {
namespace {

constexpr QSize firstSize(360, 460);

}  // namespace

TodayWindow::TodayWindow(AppEnvironment& environment, QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::WindowStaysOnTopHint),
      environment_(environment),
      tasks_(new TaskListPage(environment, this)) {
    setObjectName("todayWindow");
    setWindowTitle(tr("Today"));
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(tasks_);
    tasks_->showPlace({.kind = Place::Kind::today});
    connect(tasks_, &TaskListPage::opened, this, [this](const Uuid& task) {
        emit chosen({.kind = Place::Kind::task, .id = task});
    });
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
