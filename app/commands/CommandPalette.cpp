#include "app/commands/CommandPalette.h"

#include "app/commands/FuzzyMatch.h"

#include <QTimer>

#include <algorithm>

namespace tesserine::app {
namespace {

/// A command, with how well it fits.
struct Candidate {
    const Command* command;
    QString title;
    FuzzyMatch match;
};

}  // namespace

CommandPalette::CommandPalette(Commands& commands, QWidget* window)
    : QuickPicker(tr("Find a command"), window), commands_(commands) {
    setObjectName("commandPalette");
    setEmptyText(tr("No command of this name can be done now."));
    connect(this, &QuickPicker::typed, this, &CommandPalette::show);
    connect(this, &QuickPicker::picked, this, [this](int row) {
        QAction& chosen = commands_.action(shown_[static_cast<std::size_t>(row)]->id);
        // The window has its focus back by then, so that the command meets what had it before.
        QTimer::singleShot(0, &chosen, &QAction::trigger);
    });
}

void CommandPalette::show(const QString& typed) {
    std::vector<Candidate> candidates;
    for (const Command& command : commandTable()) {
        if (command.id == "go.palette" || !commands_.action(command.id).isEnabled()) continue;
        const QString title = commands_.action(command.id).text();
        if (auto match = fuzzyMatch(typed, title)) candidates.push_back({&command, title, *match});
    }
    std::ranges::stable_sort(candidates, std::ranges::greater{}, [](const Candidate& candidate) {
        return candidate.match.score;
    });

    shown_.clear();
    std::vector<PickerRow> rows;
    for (Candidate& candidate : candidates) {
        const Command& command = *candidate.command;
        shown_.push_back(&command);
        rows.push_back(
            {.icon = commands_.action(command.id).icon(),
             .title = candidate.title,
             .marks = std::move(candidate.match.positions),
             .aside = QString::fromStdString(std::string(titleOf(command.menu))),
             .detail = commands_.keysText(command.id)});
    }
    setRows(std::move(rows));
}

}  // namespace tesserine::app
