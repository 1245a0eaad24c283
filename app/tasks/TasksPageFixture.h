#pragma once

#include "app/commands/Commands.h"
#include "app/state/WindowFixture.h"
#include "app/tasks/TaskDetail.h"
#include "app/tasks/TaskListModel.h"
#include "app/tasks/TaskListPage.h"
#include "app/tasks/TaskListView.h"
#include "app/tasks/TasksPage.h"

#include <QApplication>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>

namespace tesserine::test {

/// The page of tasks in a window of its own.
class TasksPageFixture : public WindowFixture {
public:
    TasksPageFixture() {
        environment->preferences().set("tesserine.reduceMotion", true);
        page.resize(1000, 700);
    }
    void show(app::Place::Kind kind) {
        page.showPlace({.kind = kind});
        page.show();
        QApplication::setActiveWindow(&page);
        list.setFocus();
    }
    app::TaskListModel& model() { return static_cast<app::TaskListModel&>(*list.model()); }
    std::string titles() {
        QStringList titles;
        for (int row = 0; row < model().rowCount(); ++row) {
            titles += model().data(model().index(row), Qt::DisplayRole).toString();
        }
        return titles.join(" | ").toStdString();
    }
    QPoint circleOf(const CDTask& task) {
        return list.visualRect(model().indexOf(*task.id)).topLeft() + QPoint(20, 18);
    }
    void drop(const std::vector<Uuid>& tasks, int row, bool isLowerHalf) {
        QModelIndexList indexes;
        for (const Uuid& task : tasks) {
            indexes += model().indexOf(task);
        }
        const std::unique_ptr<QMimeData> data(model().mimeData(indexes));
        const QRect line = list.visualRect(model().index(row));
        const QPoint place = isLowerHalf ? line.bottomLeft() : line.topLeft();
        QDragEnterEvent enter(place, Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(list.viewport(), &enter);
        QDropEvent event(place, Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(list.viewport(), &event);
    }

    std::string undoSentence() {
        return page.findChild<QLabel*>("undoSentence")->text().toStdString();
    }
    /// The text that a field of the task beside the list shows.
    std::string field(const char* name) const {
        return page.detail().findChild<QPushButton*>(name)->text().toStdString();
    }

    app::Commands commands{environment->preferences()};
    app::TasksPage page{*environment, commands};
    app::TaskListView& list{page.listPage().list()};
};

}  // namespace tesserine::test
