#include "app/commands/NoteSwitcher.h"

#include "app/commands/NoteTitles.h"
#include "app/look/Icon.h"
#include "app/state/AppEnvironment.h"

#include <utility>

namespace tesserine::app {
namespace {

constexpr std::size_t mostNotes = 50;

}  // namespace

NoteSwitcher::NoteSwitcher(AppEnvironment& environment, QWidget* window, const QString& question)
    : QuickPicker(question, window), environment_(environment) {
    setObjectName("noteSwitcher");
    setEmptyText(tr("No title has these letters. Ctrl+Shift+F searches in the texts as well."));
    connect(this, &QuickPicker::typed, this, &NoteSwitcher::look);
    connect(this, &QuickPicker::picked, this, [this](int row) {
        emit noteChosen(shown_[static_cast<std::size_t>(row)]);
    });
}

NoteSwitcher::~NoteSwitcher() { ++*asked_; }

void NoteSwitcher::look(const QString& typed) {
    const int question = ++*asked_;
    const auto isStale = [asked = asked_, question] { return *asked != question; };
    const auto found = std::make_shared<std::vector<NoteTitle>>();
    environment_.inBackground(
        [typed, isStale, found](StoreContext& context, const std::stop_token& stop) {
            *found = notesByTitle(
                context, typed, mostNotes, [&] { return isStale() || stop.stop_requested(); });
        },
        this,
        [this, isStale, found] {
            if (!isStale()) show(std::move(*found));
        },
        [this, isStale](const std::string&) {
            if (!isStale()) show({});
        });
}

void NoteSwitcher::show(std::vector<NoteTitle> found) {
    shown_.clear();
    std::vector<PickerRow> rows;
    for (NoteTitle& note : found) {
        shown_.push_back(note.id);
        rows.push_back(
            {.icon = icon("note", Ink::secondary),
             .title = note.title,
             .marks = std::move(note.match.positions),
             .aside = note.notebook});
    }
    setRows(std::move(rows));
}

}  // namespace tesserine::app
