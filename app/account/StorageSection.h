#pragma once

#include "app/account/Section.h"

#include <optional>

class QProgressBar;

namespace tesserine::app {

class InfoRow;

/// How much the account holds at the service, and how much it may hold.
class StorageSection final : public Section {
    Q_OBJECT

public:
    StorageSection(AppEnvironment& environment, QWidget* parent);

    void refresh();

private:
    /// One amount: its name, its figure, and a bar where there is a limit.
    struct Meter {
        InfoRow* words;
        QProgressBar* bar;
    };
    Meter addMeter(const QString& name);
    void showUse(const Meter& meter, std::optional<qint64> used, std::optional<qint64> limit);

    const Meter notes_;
    const Meter files_;
};

}  // namespace tesserine::app
