#include "app/lists/NoteSummary.h"

#include "core/model/NoteEntities.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"

#include <string_view>

namespace tesserine::app {
namespace {

constexpr std::size_t snippetBytes = 400;
constexpr std::size_t mostTags = 8;  // more than a line can show

QString snippetOf(std::string_view text) {
    const std::size_t size = std::min(text.size(), snippetBytes);
    QString snippet = QString::fromUtf8(text.data(), static_cast<qsizetype>(size));
    snippet.remove("[ ] ").remove("[x] ");  // of checklists
    snippet = snippet.simplified();
    while (snippet.endsWith(QChar::ReplacementCharacter)) {
        snippet.chop(1);  // a character that was cut
    }
    return snippet;
}

}  // namespace

QString shownTitle(const NoteSummary& note) {
    return note.title.isEmpty() ? QString("Untitled") : note.title;
}

NoteSummaries::NoteSummaries(TesserineStore& store) : context_(store.newBackgroundContext()) {}

NoteSummaries::~NoteSummaries() = default;

const NoteSummary& NoteSummaries::of(const Uuid& note) {
    const auto found = kept_.find(note);
    if (found != kept_.end()) return found->second;
    if (kept_.size() >= mostKept) forget();
    return kept_.emplace(note, read(note)).first->second;
}

void NoteSummaries::forget() {
    kept_.clear();
    context_->reset();
}

NoteSummary NoteSummaries::read(const Uuid& id) {
    const auto* note = context_->find<CDNote>(id);
    if (note == nullptr) return {};
    NoteSummary summary{
        .title = QString::fromStdString(note->title.valueOr("")).simplified(),
        .updatedAt = note->updatedAt,
        .createdAt = note->createdAt,
        .reminderAt = note->reminderAt,
        .trashedAt = note->trashedAt,
        .isPinned = bool(note->isPinned),
        .hasAttachments = !note->attachments.empty(),
        .hasConflict = bool(note->hasConflict),
        .isTemplate = bool(note->isTemplate)};
    if (note->plainText) summary.snippet = snippetOf(*note->plainText);
    if (const CDNotebook* notebook = note->notebook) {
        summary.notebook = QString::fromStdString(notebook->name.valueOr(""));
    }
    for (const CDTag* tag : note->tags.all()) {
        if (summary.tags.size() == mostTags) break;
        summary.tags.append(QString::fromStdString(tag->name.valueOr("")));
    }
    summary.tags.sort(Qt::CaseInsensitive);
    context_->releaseLargeValues();
    return summary;
}

}  // namespace tesserine::app
