#include "app/tasks/ConflictNotice.h"

#include "app/look/IconLabel.h"
#include "app/look/PageParts.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/TaskComparison.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace tesserine::app {
namespace {

constexpr int warningSide = 18;

}  // namespace

ConflictNotice::ConflictNotice(AppEnvironment& environment, QWidget* parent)
    : QFrame(parent), environment_(environment) {
    setObjectName("conflictNotice");
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::AlternateBase);
    const QString sentence =
        "Another device changed this task at the same time. The other version is kept on this device.";
    setAccessibleName(sentence);
    auto* const compare = new QPushButton("Compare…", this);
    compare->setAccessibleName("Compare both versions");
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(space::large, space::small, space::large, space::small);
    row->setSpacing(space::small);
    row->addWidget(
        new IconLabel(icon("conflict", Ink::warning), warningSide, this), 0, Qt::AlignTop);
    row->addWidget(makeText(sentence, TextRole::body, this), 1);
    row->addWidget(compare);
    connect(compare, &QPushButton::clicked, this, &ConflictNotice::compare);
    hide();
}

void ConflictNotice::showTask(const std::optional<Uuid>& task) {
    task_ = task;
    setVisible(task && TaskConflicts(environment_.context()).of(*task));
}

void ConflictNotice::compare() {
    const auto conflict = task_ ? TaskConflicts(environment_.context()).of(*task_) : std::nullopt;
    if (conflict) (new TaskComparison(environment_, *conflict, this))->open();
}

}  // namespace tesserine::app
