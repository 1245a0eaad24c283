#include "app/commands/NoteTitles.h"

#include "core/body/PlainText.h"
#include "core/model/NoteEntities.h"
#include "core/store/StoreContext.h"

#include <algorithm>
#include <cstdint>
#include <unordered_map>

namespace tesserine::app {
namespace {

constexpr const char* shownNotes = "trashedAt == nil AND isTemplate == NO";
const std::vector<SortDescriptor> lastChangedFirst{
    {"updatedAt", SortDescriptor::Order::descending}};

bool isBetter(const NoteTitle& one, const NoteTitle& other) {
    return one.match.score > other.match.score;
}

std::unordered_map<std::int64_t, QString> notebookNames(StoreContext& context) {
    std::unordered_map<std::int64_t, QString> names;
    context.visitRows<CDNotebook>({}, [&](const ListedRow& row) {
        names[row.key()] = QString::fromStdString(row.get(&CDNotebook::name).value_or(""));
    });
    return names;
}

std::vector<NoteTitle> lastChanged(StoreContext& context, std::size_t limit) {
    std::vector<NoteTitle> titles;
    const FetchRequest request{.predicate = {shownNotes}, .sort = lastChangedFirst, .limit = limit};
    for (const CDNote* note : context.fetch<CDNote>(request)) {
        const std::string title = displayTitle(
            note->title.valueOr(""),
            note->title.valueOr("").empty() ? note->plainText.valueOr("") : "");
        const CDNotebook* const notebook = note->notebook.get();
        titles.push_back(
            {.id = *note->id,
             .title = QString::fromStdString(title),
             .notebook =
                 notebook ? QString::fromStdString(notebook->name.valueOr("")) : QString()});
    }
    return titles;
}

}  // namespace

std::vector<NoteTitle> notesByTitle(
    StoreContext& context,
    const QString& typed,
    std::size_t limit,
    const std::function<bool()>& isStale) {
    if (typed.trimmed().isEmpty()) return lastChanged(context, limit);

    const auto notebooks = notebookNames(context);
    std::vector<NoteTitle> best;
    const FetchRequest request{.predicate = {shownNotes}, .sort = lastChangedFirst};
    context.visitRows<CDNote>(request, [&](const ListedRow& row) {
        const auto id = row.get(&CDNote::id);
        if (!id || isStale()) return;
        const QString title = QString::fromStdString(row.get(&CDNote::title).value_or(""));
        auto match = fuzzyMatch(typed, title);
        if (!match) return;
        NoteTitle found{.id = *id, .title = title, .match = std::move(*match)};
        if (best.size() == limit && !isBetter(found, best.back())) return;

        const auto notebook = notebooks.find(row.key(&CDNote::notebook));
        if (notebook != notebooks.end()) found.notebook = notebook->second;
        best.insert(std::ranges::upper_bound(best, found, isBetter), std::move(found));
        if (best.size() > limit) best.pop_back();
    });
    return best;
}

}  // namespace tesserine::app
