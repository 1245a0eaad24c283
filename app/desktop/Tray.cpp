#include "app/desktop/Tray.h"

#include "app/look/Icon.h"
#include "app/state/AppEnvironment.h"
#include "core/model/TaskEntities.h"

#include <QApplication>
#include <QMenu>
#include <QSystemTrayIcon>

namespace tesserine::app {
namespace {

constexpr int longestTitle = 40;  // characters of a task in the menu

QString titleOf(const CDTask& task) {
    QString title = QString::fromStdString(task.title.valueOr("")).simplified();
    if (title.isEmpty()) title = Tray::tr("Task");
    if (title.size() > longestTitle) title = title.left(longestTitle - 1) + QChar(0x2026);
    return title.replace('&', "&&");
}

}  // namespace

Tray::Tray(AppEnvironment& environment, QObject* parent)
    : QObject(parent), environment_(environment), menu_(std::make_unique<QMenu>()) {
    connect(menu_.get(), &QMenu::aboutToShow, this, &Tray::fill);
}

Tray::~Tray() = default;

bool Tray::isPossible() { return QSystemTrayIcon::isSystemTrayAvailable(); }

void Tray::refresh() {
    const bool isWanted =
        isPossible() && environment_.preferences().boolean(preferenceKey).value_or(false);
    QApplication::setQuitOnLastWindowClosed(!isWanted);
    if (isWanted == isOn()) return;
    if (!isWanted) {
        icon_.reset();
        return;
    }
    icon_ = std::make_unique<QSystemTrayIcon>(programIcon());
    icon_->setToolTip("Tesserine");
    icon_->setContextMenu(menu_.get());
    connect(icon_.get(), &QSystemTrayIcon::activated, this, [this](auto reason) {
        if (reason == QSystemTrayIcon::Trigger) emit asked({});
    });
    fill();
    icon_->show();
}

QMenu& Tray::menu() {
    fill();
    return *menu_;
}

void Tray::fill() {
    menu_->clear();
    const auto add = [this](const char* picture, const QString& title, const Request& request) {
        QAction* const action = menu_->addAction(icon(picture), title);
        connect(action, &QAction::triggered, this, [this, request] { emit asked(request); });
    };
    add("task-add", tr("New Task…"), {.kind = Request::Kind::newTask});
    add("note-add", tr("New Note"), {.kind = Request::Kind::newNote});
    add("search",
        tr("Search…"),
        {.kind = Request::Kind::go, .place = {.kind = Place::Kind::search}});
    addTasks();
    menu_->addSeparator();
    add("library", tr("Open Tesserine"), {});
    connect(menu_->addAction(tr("Quit")), &QAction::triggered, this, &Tray::quitAsked);
}

void Tray::addTasks() {
    FetchRequest request = TaskView::today().request(environment_.now(), environment_.calendar());
    request.limit = mostTasks;
    const auto tasks = environment_.context().fetch<CDTask>(request);
    menu_->addSection(tasks.empty() ? tr("Nothing is due today") : tr("Today"));
    for (const CDTask* task : tasks) {
        QAction* const action = menu_->addAction(icon("task"), titleOf(*task));
        const Request show{
            .kind = Request::Kind::go, .place = {.kind = Place::Kind::task, .id = *task->id}};
        connect(action, &QAction::triggered, this, [this, show] { emit asked(show); });
    }
}

}  // namespace tesserine::app
