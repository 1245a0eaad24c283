#include "app/editor/ConflictResolution.h"

#include "app/editor/ComparisonView.h"
#include "app/editor/OpenNote.h"
#include "app/look/Notice.h"
#include "app/state/AppEnvironment.h"
#include "app/state/DateWords.h"
#include "core/model/NoteEntities.h"

#include <utility>

namespace tesserine::app {
namespace {

/// The newest version that was kept because it met another one; null when there is none.
CDNoteRevision* conflicting(const NoteService& notes, const CDNote& note) {
    for (CDNoteRevision* revision : notes.revisions(note)) {
        if (revision->reason == "conflict") return revision;
    }
    return nullptr;
}

}  // namespace

ConflictResolution::ConflictResolution(Parts parts, QWidget* window)
    : QObject(window), parts_(std::move(parts)), window_(window) {}

/// The other version at the left, that of the note at the right.
void ConflictResolution::compare() {
    if (!parts_.save()) return;
    const AppEnvironment& environment = parts_.environment;
    CDNote* const note = parts_.open.note();
    const CDNoteRevision* const theirs =
        note == nullptr ? nullptr : conflicting(environment.notes(), *note);
    if (note == nullptr) return;
    if (theirs == nullptr) return resolve({}, keepMine);
    auto* const view = new ComparisonView(
        {.heading =
             "The other version, "
             + shownTime(theirs->createdAt.valueOr({}), environment.now(), environment.calendar()),
         .title = QString::fromStdString(theirs->title.valueOr("")),
         .html = theirs->html.valueOr("")},
        {.heading = "My version",
         .title = QString::fromStdString(note->title.valueOr("")),
         .html = note->html.valueOr("")},
        parts_.pictures,
        window_);
    view->setAttribute(Qt::WA_DeleteOnClose);
    view->addChoice("Use this version", useTheirs);
    view->addChoice("Keep both", keepBoth);
    view->addChoice("Keep my version", keepMine);
    connect(view, &QDialog::finished, this, [this, compared = *theirs->id](int choice) {
        resolve(compared, choice);
    });
    view->open();
}

void ConflictResolution::resolve(const std::optional<Uuid>& compared, int choice) {
    CDNote* const note = parts_.open.note();
    if (choice == QDialog::Rejected || note == nullptr) return;
    const NoteService& notes = parts_.environment.notes();
    StoreContext& context = parts_.environment.context();
    CDNoteRevision* const theirs = compared ? context.find<CDNoteRevision>(*compared) : nullptr;
    try {
        if (choice == useTheirs && theirs != nullptr) {
            notes.useConflictVersion(context, *note, *theirs);
        } else {
            if (choice == keepBoth && theirs != nullptr) makeCopy(*theirs);
            notes.keepPresentVersion(*note);
        }
    } catch (const UserError& error) {
        return showNotice(window_, error.what());
    }
    if (parts_.environment.save(window_)) emit resolved();
}

/// The other version as a note of its own, in the same notebook.
void ConflictResolution::makeCopy(const CDNoteRevision& theirs) {
    CDNote* const note = parts_.open.note();
    StoreContext& context = parts_.environment.context();
    CDNote& copy = parts_.environment.notes().createNote(
        context,
        {.title = NoteService::duplicateTitle(theirs.title.get()),
         .html = theirs.html.valueOr(""),
         .notebook = note->notebook.get(),
         .tags = note->tags.all()});
    parts_.environment.attachments().cloneReferenced(context, copy);
}

}  // namespace tesserine::app
