#include "app/commands/CommandPalette.h"

#include "app/commands/FuzzyMatch.h"
#include "app/look/QtText.h"

#include <QTimer>

#include <algorithm>
#include <optional>
#include <vector>

namespace tesserine::app {
namespace {

/// A command, with how well it fits.
struct Candidate {
    const Command* command;
    QString title;
    FuzzyMatch match;
};

/// By its title; after all such, by its menu and what else people call it: "go inbox" names "Inbox"
/// of the menu "Go", and "delete note" the trash.
std::optional<FuzzyMatch> matchOf(
    const QString& typed, const Command& command, const QString& title) {
    constexpr int behindTitles = -10'000;
    if (auto match = fuzzyMatch(typed, title)) return match;
    auto match = wordsMatch(
        typed,
        QString("%1 %2 %3").arg(title, qt(titleOf(command.menu)), qt(otherWordsFor(command.id))));
    if (!match) return std::nullopt;
    match->score += behindTitles;
    std::erase_if(match->positions, [&](int at) { return at >= title.size(); });
    return match;
}

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
        if (auto match = matchOf(typed, command, title))
            candidates.push_back({&command, title, *match});
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
             .aside = qt(titleOf(command.menu)),
             .detail = commands_.keysText(command.id)});
    }
    setRows(std::move(rows));
}

}  // namespace tesserine::app
