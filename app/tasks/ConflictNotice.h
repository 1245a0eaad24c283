#pragma once

#include "base/Uuid.h"

#include <QFrame>

#include <optional>

namespace tesserine::app {

class AppEnvironment;

/// A line above a task that another device changed at the same time; absent where nothing waits for
/// a choice. Leads to the comparison.
class ConflictNotice final : public QFrame {
    Q_OBJECT

public:
    explicit ConflictNotice(AppEnvironment& environment, QWidget* parent = nullptr);

    /// Looks whether a choice about `task` waits.
    void showTask(const std::optional<Uuid>& task);

private:
    void compare();

    AppEnvironment& environment_;
    std::optional<Uuid> task_;
};

}  // namespace tesserine::app
