#pragma once

#include "base/Clock.h"
#include "core/model/NoteEntities.h"
#include "core/model/NoteRevisionReason.h"
#include "core/services/ServiceErrors.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tesserine {

class StoreContext;

/// What a new note holds. `html` is any note-body HTML; it is sanitised on the way in.
struct NoteDraft {
    std::string title{};
    std::string html{};
    CDNotebook* notebook = nullptr;
    std::vector<CDTag*> tags{};
    std::optional<std::string> sourceURL{};
    std::optional<Uuid> id{};  ///< none: a new one
};

/// What an update changes; what is none stays.
struct NoteChange {
    std::optional<std::string> title{};
    std::optional<std::string> html{};
};

/// A change made on a state of the note that was read earlier, as editors and scripts make it. The
/// state is named by the body it had or by its `contentVersion`; with neither it is the present
/// one. When both are given the body decides.
struct NoteEdit {
    std::optional<std::string> title{};
    std::optional<std::string> html{};
    std::optional<std::string> loadedHTML{};
    std::optional<std::int64_t> loadedVersion{};
};

/// A place on the globe, in degrees.
struct NoteLocation {
    double latitude = 0;
    double longitude = 0;
};

/// Creates, edits, trashes and deletes notes, and keeps their revisions.
///
/// Works in the context it is handed and never saves, so that a caller can put several changes into
/// one save. Every body that goes in is sanitised and stored in its canonical form, together with
/// its plain text. Every change stamps `updatedAt`; only updates and restored revisions raise
/// `contentVersion`. Holds no library state. Not synchronised: call it on the thread that owns the
/// context.
class NoteService {
public:
    /// Editing takes at most one `preEdit` revision in this time.
    static constexpr std::chrono::seconds preEditInterval{300};
    /// Revisions kept per note, newest first; `conflict` revisions neither count nor expire.
    static constexpr std::size_t maximumRevisions = 25;

    explicit NoteService(const Clock& clock) : clock_(clock) {}

    // Writing

    /// Inserts a note that holds `draft`. Throws `NoteError::titleTooLong` and
    /// `BodyError::tooLarge`.
    CDNote& createNote(StoreContext& context, NoteDraft draft) const;
    /// Changes title, body or both. A body that differs from the stored one is preceded by a
    /// `preEdit` revision. Raises `contentVersion` by one per call. Throws as `createNote`.
    void updateNote(StoreContext& context, CDNote& note, NoteChange change) const;
    /// What `saveEdit` did with the state it found.
    enum class EditOutcome {
        saved,             ///< the note was as the edit had read it
        savedWithConflict  ///< it had moved on: its other body is now a `conflict` revision
    };
    /// Updates the note like `updateNote`; when the note is no longer what the edit was made on and
    /// a new body would replace another one, the present title and body are kept as a `conflict`
    /// revision first and `hasConflict` is set. Throws as `createNote`.
    EditOutcome saveEdit(StoreContext& context, CDNote& note, NoteEdit edit) const;

    /// Makes a note that holds the same title (with " copy"), body, source, notebook and tags.
    /// Pictures and files in the copy still belong to the source: call
    /// `AttachmentService::cloneReferenced` on the copy.
    CDNote& duplicateNote(StoreContext& context, CDNote& note) const;
    /// `title` followed by " copy"; "Copy" when it holds nothing but white space.
    static std::string duplicateTitle(const std::optional<std::string>& title);

    // Everyday changes

    /// None takes it out of its notebook. These three stamp nothing when nothing changes.
    void moveToNotebook(CDNote& note, CDNotebook* notebook) const;
    void addTag(CDNote& note, CDTag& tag) const;
    void removeTag(CDNote& note, CDTag& tag) const;
    /// Pinned and favourite are one: `favoritedAt` is when the note was pinned.
    void togglePin(CDNote& note) const;
    void pin(CDNote& note) const;    ///< changes nothing when it is pinned already
    void unpin(CDNote& note) const;  ///< changes nothing when it is not pinned
    /// None takes the reminder away.
    void setReminder(CDNote& note, std::optional<Instant> reminderAt) const;
    /// None takes the place away. Throws `NoteError::badLocation` outside ±90°, ±180°.
    void setLocation(CDNote& note, std::optional<NoteLocation> location) const;
    void setSourceURL(CDNote& note, std::optional<std::string> sourceURL) const;
    /// Makes pinned and favourite agree in a note that came from elsewhere with only one of them: a
    /// pinned note without a time takes its `updatedAt`, a time without the flag sets the flag.
    /// Stamps nothing. Tells whether anything was changed.
    static bool reconcilePin(CDNote& note);

    // Trash

    void moveToTrash(CDNote& note) const;
    void restoreFromTrash(CDNote& note) const;
    /// These delete for good, with attachments and revisions, and tell how many notes went.
    std::size_t emptyTrash(StoreContext& context) const;
    /// Notes that went to the trash more than `days` days ago; the oldest `limit` of them, 0 for
    /// all. Days that are not between 1 and 36,499 delete nothing.
    std::size_t purgeTrash(StoreContext& context, std::int64_t days, std::size_t limit = 0) const;
    /// How many notes `purgeTrash` would delete.
    std::size_t expiredCount(StoreContext& context, std::int64_t days) const;
    void deleteNote(StoreContext& context, CDNote& note) const;

    // Templates

    /// Templates that are not in the trash, newest `updatedAt` first.
    std::vector<CDNote*> templates(StoreContext& context) const;
    /// A new template with the note's title and body; as for a duplicate, call
    /// `AttachmentService::cloneReferenced` on it.
    CDNote& saveAsTemplate(StoreContext& context, CDNote& note) const;
    /// A new note with the template's title and body; as for a duplicate, call
    /// `AttachmentService::cloneReferenced` on it.
    CDNote& createFromTemplate(
        StoreContext& context, CDNote& noteTemplate, CDNotebook* notebook) const;
    /// Inserts the two default templates into a library that has none outside the trash; tells how
    /// many were inserted.
    std::size_t seedDefaultTemplates(StoreContext& context) const;

    // Revisions

    /// Keeps the note's present state as a revision, then drops the oldest beyond
    /// `maximumRevisions`. Does nothing for a note without a body, nor for a `preEdit` revision
    /// that follows another revision within `preEditInterval` (a revision dated in the future
    /// counts as old). Tells whether a revision was taken.
    bool takeRevision(StoreContext& context, CDNote& note, NoteRevisionReason reason) const;
    /// Newest first; revisions of one instant in the reverse order of their making.
    std::vector<CDNoteRevision*> revisions(const CDNote& note) const;
    /// Takes a `preEdit` revision of the present state (under its rule), then copies title and body
    /// of `revision`, which must be one of the note's. `hasConflict` then tells whether another
    /// `conflict` revision waits. Throws `StoreError::notFound` when the revision was pruned
    /// elsewhere meanwhile.
    void restoreRevision(StoreContext& context, CDNote& note, CDNoteRevision& revision) const;
    /// What a person's "Restore" does: the same, but a present body that no newest revision holds
    /// is kept as an `autosave` revision first, however recent the last one is.
    void revertTo(StoreContext& context, CDNote& note, CDNoteRevision& revision) const;
    /// Ends a conflict with the other version: reverts to the `conflict` revision and relabels it
    /// `autosave`.
    void useConflictVersion(StoreContext& context, CDNote& note, CDNoteRevision& revision) const;
    /// Ends a conflict with the present version: relabels every `conflict` revision `autosave`.
    void keepPresentVersion(CDNote& note) const;

    // Finding

    CDNote* findNote(StoreContext& context, const Uuid& id) const;
    /// Throws `StoreError::notFound` ("The note could not be found.").
    CDNote& getNote(StoreContext& context, const Uuid& id) const;
    /// A note outside the trash that was imported with this fingerprint.
    CDNote* findByImportFingerprint(StoreContext& context, const std::string& fingerprint) const;
    /// Notes in and outside the trash, without templates.
    std::size_t noteCount(StoreContext& context) const;
    /// Notes outside the trash, without templates.
    std::size_t liveNoteCount(StoreContext& context) const;
    /// Notes with a reminder at `from` or later, soonest first, at most `limit`.
    std::vector<CDNote*> upcomingReminders(
        StoreContext& context, Instant from, std::size_t limit) const;
    /// Notes whose body holds this note's address.
    std::vector<CDNote*> backlinks(StoreContext& context, const CDNote& note) const;
    /// The address of a note inside bodies: "tesserine://note/" and the identifier.
    static std::string noteURL(const Uuid& id);

private:
    struct RevisionContent;

    void keepConflict(StoreContext& context, CDNote& note) const;
    void putBack(CDNote& note, const CDNoteRevision& revision, RevisionContent content) const;
    void pruneRevisions(StoreContext& context, CDNote& note, const CDNoteRevision& taken) const;
    void touch(CDNote& note) const { note.updatedAt = clock_.now(); }

    const Clock& clock_;
};

}  // namespace tesserine
