#include "app/tasks/ProjectPicker.h"

#include "app/commands/FuzzyMatch.h"
#include "app/look/Icon.h"
#include "app/look/Notice.h"
#include "app/state/AppEnvironment.h"

#include <algorithm>

namespace tesserine::app {

ProjectPicker::ProjectPicker(AppEnvironment& environment, QWidget* window)
    : QuickPicker("Move to a project", window), environment_(environment) {
    setObjectName("projectPicker");
    for (const CDProject* project : environment.projects().all(environment.context())) {
        projects_.push_back({*project->id, QString::fromStdString(project->name.valueOr(""))});
    }
    connect(this, &QuickPicker::typed, this, &ProjectPicker::look);
    connect(this, &QuickPicker::picked, this, &ProjectPicker::take);
}

void ProjectPicker::look(const QString& typed) {
    struct Found {
        const Project* project;
        FuzzyMatch match;
    };
    std::vector<Found> found;
    for (const Project& project : projects_) {
        if (auto match = fuzzyMatch(typed, project.name)) {
            found.push_back({&project, std::move(*match)});
        }
    }
    std::ranges::stable_sort(
        found, std::ranges::greater(), [](const Found& each) { return each.match.score; });

    shown_.clear();
    std::vector<PickerRow> rows;
    for (Found& each : found) {
        shown_.push_back(each.project->id);
        rows.push_back(
            {.icon = icon("project", Ink::secondary),
             .title = each.project->name,
             .marks = std::move(each.match.positions)});
    }
    const QString name = typed.trimmed();
    const bool isThere = std::ranges::any_of(projects_, [&](const Project& project) {
        return project.name.compare(name, Qt::CaseInsensitive) == 0;
    });
    newName_ = isThere ? QString() : name;
    if (!newName_.isEmpty()) {
        rows.push_back(
            {.icon = icon("plus", Ink::accent), .title = QString("New project “%1”").arg(name)});
    }
    setRows(std::move(rows));
}

void ProjectPicker::take(int row) {
    const auto place = static_cast<std::size_t>(row);
    if (place < shown_.size()) {
        emit projectChosen(shown_[place]);
        return;
    }
    try {
        const CDProject& made =
            environment_.projects().create(environment_.context(), newName_.toStdString());
        emit projectChosen(*made.id);
    } catch (const ProjectError& error) {
        showNotice(parentWidget(), error.what());
    }
}

}  // namespace tesserine::app
