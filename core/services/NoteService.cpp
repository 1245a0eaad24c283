#include "core/services/NoteService.h"

#include "base/Text.h"
#include "core/body/CanonicalBody.h"
#include "core/services/Limits.h"
#include "core/store/StoreContext.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tesserine {
namespace {

struct DefaultTemplate {
    const char* title;
    const char* html;
};
constexpr std::array defaultTemplates{
    DefaultTemplate{
        "Meeting Notes",
        R"(<h2>Attendees</h2><p></p><h2>Agenda</h2><p></p><h2>Action Items</h2>)"
        R"(<ul class="ts-checklist"><li data-checked="false"></li></ul>)"},
    DefaultTemplate{
        "To-Do List", R"(<ul class="ts-checklist"><li data-checked="false"></li></ul>)"},
};

constexpr const char* liveTemplates = "isTemplate == YES AND trashedAt == nil";

void requireTitle(const std::string& title) {
    if (title.size() <= limits::titleCharacters) return;  // no character has less than a byte
    if (text::prefix(title, limits::titleCharacters).size() < title.size()) {
        throw NoteError::titleTooLong();
    }
}

bool isConflict(const CDNoteRevision& revision) {
    return revision.reason == std::string(rawValue(NoteRevisionReason::conflict));
}

std::vector<CDNoteRevision*> newestFirst(const CDNote& note) {
    auto revisions = note.revisions.all();
    std::ranges::reverse(revisions);  // of two made at one instant the later one comes first
    std::ranges::stable_sort(revisions, [](const CDNoteRevision* a, const CDNoteRevision* b) {
        return a->createdAt.get() > b->createdAt.get();
    });
    return revisions;
}

bool hasBody(const CDNote& note) { return note.html && !note.html->empty(); }

bool isRetention(std::int64_t days) { return days > 0 && days <= limits::retentionDays; }

Predicate expired(Instant now, std::int64_t days) {
    const Instant::Duration age(static_cast<double>(days) * 86'400);
    return {"trashedAt != nil AND trashedAt < %@", now - age};
}

std::size_t removeAll(StoreContext& context, const std::vector<CDNote*>& notes) {
    for (CDNote* note : notes) {
        context.remove(*note);
    }
    return notes.size();
}

}  // namespace

struct NoteService::RevisionContent {
    explicit RevisionContent(const CDNoteRevision& revision)
        : title(revision.title), html(revision.html), plainText(revision.plainText) {
        // Every revision has a body: this one was pruned elsewhere after it was listed here.
        if (!html) throw StoreError::notFound("The earlier version");
        // What an older program or another device kept passes the same door as everything else.
        CanonicalBody body = canonicalBody(*html);
        if (*html == body.html) return;
        html = std::move(body.html);
        plainText = std::move(body.plainText);
    }

    std::optional<std::string> title;
    std::optional<std::string> html;
    std::optional<std::string> plainText;
};

CDNote& NoteService::createNote(StoreContext& context, NoteDraft draft) const {
    requireTitle(draft.title);
    CanonicalBody body = canonicalBody(draft.html);

    auto& note = context.insert<CDNote>();
    if (draft.id) note.id = *draft.id;
    note.title = std::move(draft.title);
    note.html = std::move(body.html);
    note.plainText = std::move(body.plainText);
    note.notebook = draft.notebook;
    note.sourceURL = std::move(draft.sourceURL);
    note.createdAt = clock_.now();
    note.updatedAt = note.createdAt;
    note.contentVersion = 1;
    for (CDTag* tag : draft.tags) {
        note.tags.add(*tag);
    }
    return note;
}

void NoteService::updateNote(StoreContext& context, CDNote& note, NoteChange change) const {
    if (change.title) requireTitle(*change.title);
    std::optional<CanonicalBody> body;
    if (change.html) body = canonicalBody(*change.html);

    if (body && note.html != body->html) {
        takeRevision(context, note, NoteRevisionReason::preEdit);
    }
    if (change.title) note.title = std::move(*change.title);
    if (body) {
        note.html = std::move(body->html);
        note.plainText = std::move(body->plainText);
    }
    touch(note);
    note.contentVersion = note.contentVersion.valueOr(1) + 1;
}

NoteService::EditOutcome NoteService::saveEdit(
    StoreContext& context, CDNote& note, NoteEdit edit) const {
    const bool movedOn =
        edit.loadedHTML
            ? note.html.valueOr("") != *edit.loadedHTML
            : edit.loadedVersion && note.contentVersion.valueOr(1) != *edit.loadedVersion;
    const bool replacesAnotherBody =
        movedOn && edit.html && hasBody(note) && *note.html != canonicalBody(*edit.html).html;
    if (edit.title) requireTitle(*edit.title);

    if (replacesAnotherBody) keepConflict(context, note);
    updateNote(context, note, {.title = std::move(edit.title), .html = std::move(edit.html)});
    return replacesAnotherBody ? EditOutcome::savedWithConflict : EditOutcome::saved;
}

CDNote& NoteService::duplicateNote(StoreContext& context, CDNote& note) const {
    auto& copy = context.insert<CDNote>();
    copy.title = duplicateTitle(note.title);
    copy.html = note.html;
    copy.plainText = note.plainText;
    copy.notebook = note.notebook;
    copy.sourceURL = note.sourceURL;
    copy.originalFormat = note.originalFormat;
    copy.originalSource = note.originalSource;
    copy.importMetadata = note.importMetadata;
    copy.importedFrom = note.importedFrom;
    copy.createdAt = clock_.now();
    copy.updatedAt = copy.createdAt;
    copy.isPinned = false;
    for (CDTag* tag : note.tags.all()) {
        copy.tags.add(*tag);
    }
    return copy;
}

std::string NoteService::duplicateTitle(const std::optional<std::string>& title) {
    if (!title || text::isBlank(*title)) return "Copy";
    return *title + " copy";
}

void NoteService::moveToNotebook(CDNote& note, CDNotebook* notebook) const {
    if (note.notebook.get() == notebook) return;
    note.notebook = notebook;
    touch(note);
}

void NoteService::addTag(CDNote& note, CDTag& tag) const {
    if (note.tags.contains(tag)) return;
    note.tags.add(tag);
    touch(note);
}

void NoteService::removeTag(CDNote& note, CDTag& tag) const {
    if (!note.tags.contains(tag)) return;
    note.tags.remove(tag);
    touch(note);
}

void NoteService::togglePin(CDNote& note) const {
    const bool isPinned = !note.isPinned;
    const Instant now = clock_.now();
    note.isPinned = isPinned;
    note.favoritedAt = isPinned ? std::optional(now) : std::nullopt;
    note.updatedAt = now;
}

void NoteService::pin(CDNote& note) const {
    if (!note.isPinned) togglePin(note);
}

void NoteService::unpin(CDNote& note) const {
    if (note.isPinned) togglePin(note);
}

void NoteService::setReminder(CDNote& note, std::optional<Instant> reminderAt) const {
    note.reminderAt = reminderAt;
    touch(note);
}

void NoteService::setLocation(CDNote& note, std::optional<NoteLocation> location) const {
    const NoteLocation place = location.value_or(NoteLocation{});
    // Written so that a place that is no number is refused as well.
    const bool isOnGlobe = std::abs(place.latitude) <= 90 && std::abs(place.longitude) <= 180;
    if (!isOnGlobe) throw NoteError::badLocation();
    note.latitude = place.latitude;
    note.longitude = place.longitude;
    note.hasLocation = location.has_value();
    touch(note);
}

void NoteService::setSourceURL(CDNote& note, std::optional<std::string> sourceURL) const {
    note.sourceURL = std::move(sourceURL);
    touch(note);
}

bool NoteService::reconcilePin(CDNote& note) {
    const bool isPinned{note.isPinned};
    const bool hasTime{note.favoritedAt};
    if (isPinned == hasTime) return false;
    if (isPinned) {
        note.favoritedAt = note.updatedAt ? note.updatedAt.get() : note.createdAt.get();
        return true;
    }
    note.isPinned = true;
    return true;
}

void NoteService::moveToTrash(CDNote& note) const {
    note.trashedAt = clock_.now();
    note.updatedAt = note.trashedAt;
}

void NoteService::restoreFromTrash(CDNote& note) const {
    note.trashedAt = std::nullopt;
    touch(note);
}

std::size_t NoteService::emptyTrash(StoreContext& context) const {
    return removeAll(context, context.fetch<CDNote>({.predicate = {"trashedAt != nil"}}));
}

std::size_t NoteService::purgeTrash(
    StoreContext& context, std::int64_t days, std::size_t limit) const {
    if (!isRetention(days)) return 0;
    return removeAll(
        context,
        context.fetch<CDNote>(
            {.predicate = expired(clock_.now(), days), .sort = {{"trashedAt"}}, .limit = limit}));
}

std::size_t NoteService::expiredCount(StoreContext& context, std::int64_t days) const {
    return isRetention(days) ? context.count<CDNote>(expired(clock_.now(), days)) : 0;
}

void NoteService::deleteNote(StoreContext& context, CDNote& note) const { context.remove(note); }

std::vector<CDNote*> NoteService::templates(StoreContext& context) const {
    return context.fetch<CDNote>(
        {.predicate = {liveTemplates}, .sort = {{"updatedAt", SortDescriptor::Order::descending}}});
}

CDNote& NoteService::saveAsTemplate(StoreContext& context, CDNote& note) const {
    CDNote& made =
        createNote(context, {.title = note.title.valueOr(""), .html = note.html.valueOr("")});
    made.isTemplate = true;
    return made;
}

CDNote& NoteService::createFromTemplate(
    StoreContext& context, CDNote& noteTemplate, CDNotebook* notebook) const {
    return createNote(
        context,
        {.title = noteTemplate.title.valueOr(""),
         .html = noteTemplate.html.valueOr(""),
         .notebook = notebook});
}

std::size_t NoteService::seedDefaultTemplates(StoreContext& context) const {
    if (context.count<CDNote>({liveTemplates}) > 0) return 0;
    for (const auto& [title, html] : defaultTemplates) {
        createNote(context, {.title = title, .html = html}).isTemplate = true;
    }
    return defaultTemplates.size();
}

bool NoteService::takeRevision(
    StoreContext& context, CDNote& note, NoteRevisionReason reason) const {
    if (!hasBody(note)) return false;

    const Instant now = clock_.now();
    const auto existing = newestFirst(note);
    const auto latest = existing.empty() ? std::nullopt : existing.front()->createdAt.get();
    // A revision from the future, made before the clock was set back, must not end all copying.
    const bool isRecent = latest && *latest <= now && now - *latest < preEditInterval;
    if (reason == NoteRevisionReason::preEdit && isRecent) return false;

    auto& taken = context.insert<CDNoteRevision>();
    taken.createdAt = now;
    taken.title = note.title;
    taken.html = note.html;
    taken.plainText = note.plainText;
    taken.reason = std::string(rawValue(reason));
    taken.note = &note;
    pruneRevisions(context, note, taken);
    return true;
}

std::vector<CDNoteRevision*> NoteService::revisions(const CDNote& note) const {
    return newestFirst(note);
}

void NoteService::restoreRevision(
    StoreContext& context, CDNote& note, CDNoteRevision& revision) const {
    // Read first: the copy of the present state may prune the very revision that is restored.
    RevisionContent content(revision);
    takeRevision(context, note, NoteRevisionReason::preEdit);
    putBack(note, revision, std::move(content));
}

void NoteService::revertTo(StoreContext& context, CDNote& note, CDNoteRevision& revision) const {
    RevisionContent content(revision);
    const auto existing = newestFirst(note);
    const bool isKept = !existing.empty() && existing.front()->html == note.html;
    if (!isKept) takeRevision(context, note, NoteRevisionReason::autosave);
    takeRevision(context, note, NoteRevisionReason::preEdit);
    putBack(note, revision, std::move(content));
}

void NoteService::useConflictVersion(
    StoreContext& context, CDNote& note, CDNoteRevision& revision) const {
    revertTo(context, note, revision);
    revision.reason = std::string(rawValue(NoteRevisionReason::autosave));
}

void NoteService::keepPresentVersion(CDNote& note) const {
    for (CDNoteRevision* revision : note.revisions.all()) {
        if (!isConflict(*revision)) continue;
        revision->reason = std::string(rawValue(NoteRevisionReason::autosave));
    }
    note.hasConflict = false;
    touch(note);
}

CDNote* NoteService::findNote(StoreContext& context, const Uuid& id) const {
    return context.find<CDNote>(id);
}

CDNote& NoteService::getNote(StoreContext& context, const Uuid& id) const {
    return context.get<CDNote>(id, "The note");
}

CDNote* NoteService::findByImportFingerprint(
    StoreContext& context, const std::string& fingerprint) const {
    return context.fetchFirst<CDNote>(
        {.predicate = {"importFingerprint == %@ AND trashedAt == nil", fingerprint}});
}

std::size_t NoteService::noteCount(StoreContext& context) const {
    return context.count<CDNote>({"isTemplate == NO"});
}

std::size_t NoteService::liveNoteCount(StoreContext& context) const {
    return context.count<CDNote>({"trashedAt == nil AND isTemplate == NO"});
}

std::vector<CDNote*> NoteService::upcomingReminders(
    StoreContext& context, Instant from, std::size_t limit) const {
    if (limit == 0) return {};
    return context.fetch<CDNote>(
        {.predicate =
             {"trashedAt == nil AND isTemplate == NO AND reminderAt != nil AND reminderAt >= %@",
              from},
         .sort = {{"reminderAt"}},
         .limit = limit});
}

std::vector<CDNote*> NoteService::backlinks(StoreContext& context, const CDNote& note) const {
    if (!note.id) return {};
    return context.fetch<CDNote>(
        {.predicate = {
             "id != %@ AND isTemplate == NO AND trashedAt == nil AND html CONTAINS[cd] %@",
             *note.id,
             noteURL(*note.id)}});
}

std::string NoteService::noteURL(const Uuid& id) { return "tesserine://note/" + id.text(); }

void NoteService::keepConflict(StoreContext& context, CDNote& note) const {
    auto& revision = context.insert<CDNoteRevision>();
    revision.createdAt = clock_.now();
    revision.title = note.title;
    revision.html = note.html;
    revision.plainText = note.plainText;
    revision.reason = std::string(rawValue(NoteRevisionReason::conflict));
    revision.note = &note;
    note.hasConflict = true;
}

void NoteService::putBack(
    CDNote& note, const CDNoteRevision& revision, RevisionContent content) const {
    note.title = std::move(content.title);
    note.html = std::move(content.html);
    note.plainText = std::move(content.plainText);
    touch(note);
    note.contentVersion = note.contentVersion.valueOr(1) + 1;
    const auto kept = note.revisions.all();
    note.hasConflict = std::ranges::any_of(kept, [&](const CDNoteRevision* other) {
        return other != &revision && isConflict(*other);
    });
}

void NoteService::pruneRevisions(
    StoreContext& context, CDNote& note, const CDNoteRevision& taken) const {
    auto revisions = newestFirst(note);
    // A conflict revision may be the only copy of what another device wrote: it never expires.
    // The one just taken stays whatever the clock says about the others.
    std::erase_if(revisions, [&](const CDNoteRevision* revision) {
        return revision == &taken || isConflict(*revision);
    });
    for (std::size_t i = maximumRevisions - 1; i < revisions.size(); ++i) {
        context.remove(*revisions[i]);
    }
}

}  // namespace tesserine
