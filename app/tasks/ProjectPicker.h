#pragma once

#include "app/commands/QuickPicker.h"
#include "base/Uuid.h"

#include <vector>

namespace tesserine::app {

class AppEnvironment;

/// Asks for a project by letters of its name; a name that is not there makes a new one.
class ProjectPicker final : public QuickPicker {
    Q_OBJECT

public:
    ProjectPicker(AppEnvironment& environment, QWidget* window);

signals:
    void projectChosen(const tesserine::Uuid& project);

private:
    struct Project {
        Uuid id;
        QString name;
    };

    void look(const QString& typed);
    void take(int row);

    AppEnvironment& environment_;
    std::vector<Project> projects_;  // in their order
    std::vector<Uuid> shown_;
    QString newName_;  // offered below what is shown; empty: not offered
};

}  // namespace tesserine::app
