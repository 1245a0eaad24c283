#include "app/lists/Pickers.h"

#include "app/commands/FuzzyMatch.h"
#include "app/commands/QuickPicker.h"
#include "app/look/Icon.h"
#include "app/state/AppEnvironment.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace tesserine::app {
namespace {

struct Choice {
    QString title;
    std::optional<Uuid> id{};
    QString icon{};
};

/// Choices narrowed down by what is typed; `picked` is given the one that was chosen.
class ChoicePicker final {
public:
    static QuickPicker* open(
        const QString& hint,
        QWidget* window,
        std::vector<Choice> choices,
        const std::function<void(const Choice&)>& picked,
        bool takesNewName = false) {
        auto* picker = new QuickPicker(hint, window);
        auto state = std::make_shared<ChoicePicker>();  // shared by the two answers below
        state->choices_ = std::move(choices);
        state->takesNewName_ = takesNewName;
        QObject::connect(picker, &QuickPicker::typed, picker, [picker, state](const QString& text) {
            picker->setRows(state->rowsFor(text));
        });
        QObject::connect(picker, &QuickPicker::picked, window, [state, picked](int row) {
            picked(state->shown_[static_cast<std::size_t>(row)]);
        });
        picker->open();
        return picker;
    }

private:
    std::vector<PickerRow> rowsFor(const QString& typed) {
        struct Found {
            const Choice* choice;
            FuzzyMatch match;
        };
        std::vector<Found> found;
        for (const Choice& choice : choices_) {
            if (auto match = fuzzyMatch(typed, choice.title)) {
                found.push_back({&choice, std::move(*match)});
            }
        }
        std::ranges::stable_sort(
            found, [](const Found& a, const Found& b) { return a.match.score > b.match.score; });
        shown_.clear();
        std::vector<PickerRow> rows;
        for (Found& one : found) {
            shown_.push_back(*one.choice);
            rows.push_back(
                {.icon = icon(one.choice->icon, Ink::secondary),
                 .title = one.choice->title,
                 .marks = std::move(one.match.positions)});
        }
        addNewName(typed.trimmed(), rows);
        return rows;
    }

    void addNewName(const QString& name, std::vector<PickerRow>& rows) {
        const bool isThere = std::ranges::any_of(choices_, [&](const Choice& choice) {
            return choice.title.compare(name, Qt::CaseInsensitive) == 0;
        });
        if (!takesNewName_ || name.isEmpty() || isThere) return;
        shown_.push_back({.title = name});
        rows.push_back({.icon = icon("plus", Ink::secondary), .title = name, .detail = "New"});
    }

    std::vector<Choice> choices_;
    std::vector<Choice> shown_;
    bool takesNewName_ = false;
};

/// All but `moved` and what stands below it.
template <class Entity>
std::vector<Choice> parentsFor(
    const Uuid& moved, const std::vector<tree::Row<Entity>>& rows, const QString& icon) {
    std::vector<Choice> choices;
    std::optional<std::size_t> depth;  // of what is moved, while its branch is passed
    for (const auto& row : rows) {
        if (depth && row.depth > *depth) continue;
        depth.reset();
        if (row.object->id == moved) {
            depth = row.depth;
        } else {
            const std::string path = tree::pathText(*row.object);
            choices.push_back({QString::fromStdString(path), *row.object->id, icon});
        }
    }
    return choices;
}

}  // namespace

void pickParent(
    AppEnvironment& environment,
    QWidget* window,
    const Place& moved,
    std::function<void(const std::optional<Uuid>& parent)> picked) {
    StoreContext& context = environment.context();
    const text::Collator& collator = environment.collator();
    const bool isNotebook = moved.kind == Place::Kind::notebook;
    auto choices =
        isNotebook
            ? parentsFor(moved.id, environment.notebooks().tree(context, collator), "notebook")
            : parentsFor(moved.id, environment.tags().tree(context, collator), "tag");
    choices.insert(choices.begin(), {"To the top", std::nullopt, "sidebar"});
    ChoicePicker::open(
        isNotebook ? "Move below which notebook" : "Move below which tag",
        window,
        std::move(choices),
        [picked = std::move(picked)](const Choice& choice) { picked(choice.id); })
        ->setEmptyText("Nothing there has these letters.");
}

void pickNotebook(
    AppEnvironment& environment,
    QWidget* window,
    std::function<void(const std::optional<Uuid>& notebook)> picked) {
    std::vector<Choice> choices;
    for (const auto& row :
         environment.notebooks().tree(environment.context(), environment.collator())) {
        choices.push_back(
            {QString::fromStdString(NotebookService::pathText(*row.object)),
             *row.object->id,
             "notebook"});
    }
    choices.push_back({"No notebook", std::nullopt, "notes"});
    ChoicePicker::open(
        "Move to which notebook",
        window,
        std::move(choices),
        [picked = std::move(picked)](const Choice& choice) { picked(choice.id); })
        ->setEmptyText("No notebook has these letters.");
}

void pickTag(
    AppEnvironment& environment,
    QWidget* window,
    std::function<void(const NoteActions::ChosenTag& tag)> picked) {
    std::vector<Choice> choices;
    for (const CDTag* tag : environment.tags().all(environment.context(), environment.collator())) {
        choices.push_back({QString::fromStdString(tag->name.valueOr("")), *tag->id, "tag"});
    }
    ChoicePicker::open(
        "Add which tag",
        window,
        std::move(choices),
        [picked = std::move(picked)](const Choice& choice) {
            picked({choice.id, choice.title});
        },
        true)
        ->setEmptyText("There are no tags yet. Type a name to make the first.");
}

void pickTemplate(
    AppEnvironment& environment,
    QWidget* window,
    std::function<void(const Uuid& noteTemplate)> picked) {
    std::vector<Choice> choices;
    for (const CDNote* note : environment.notes().templates(environment.context())) {
        const QString title = QString::fromStdString(note->title.valueOr(""));
        choices.push_back({title.isEmpty() ? QString("Untitled") : title, *note->id, "template"});
    }
    ChoicePicker::open(
        "New note from which template",
        window,
        std::move(choices),
        [picked = std::move(picked)](const Choice& choice) { picked(*choice.id); })
        ->setEmptyText("There is no such template. “Save as Template” makes one of a note.");
}

}  // namespace tesserine::app
