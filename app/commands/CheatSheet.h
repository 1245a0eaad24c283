#pragma once

#include "app/commands/Commands.h"

#include <QDialog>

#include <vector>

class QLabel;
class QWidget;

namespace tesserine::app {

/// Every command with its keys, by the place where they act; a click on one changes its keys.
class CheatSheet final : public QDialog {
    Q_OBJECT

public:
    CheatSheet(Commands& commands, QWidget* parent);

private:
    QWidget* makeGroup(CommandContext context);
    QWidget* makeRow(const Command& command);
    void filter(const QString& typed);

    struct Row {
        QWidget* widget;
        QWidget* group;
        QString text;
    };

    Commands& commands_;
    QLabel* const hint_;  // what can be done here, or that nothing fits
    std::vector<Row> rows_;
};

}  // namespace tesserine::app
