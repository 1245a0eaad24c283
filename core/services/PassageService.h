#pragma once

#include "base/Random.h"
#include "base/UserError.h"
#include "core/model/NoteEntities.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

class NoteService;
class StoreContext;

/// Why a passage could not be locked. The note is as it was.
class PassageError final : public UserError {
public:
    enum class Kind : std::uint8_t { notLockable, tooManyPlaces };

    static PassageError notLockable() {
        return {
            Kind::notLockable,
            "Couldn't encrypt the selection. Make sure some text is selected outside any other "
            "protected block."};
    }
    static PassageError tooManyPlaces() {
        return {
            Kind::tooManyPlaces,
            "This text stands in so many places of the note that it cannot be locked. Choose a "
            "longer passage."};
    }

    Kind kind() const noexcept { return kind_; }

private:
    PassageError(Kind kind, const char* sentence) : UserError(sentence), kind_(kind) {}

    Kind kind_;
};

/// Locks passages of notes with a passphrase, unlocks them, and finds what still holds their text.
///
/// Works in the context it is handed and never saves. Once the change is saved,
/// `TesserineStore::emptyJournal` takes the text out of the library's files; whoever keeps an index
/// of the library takes it out of that. Not synchronised: call it on the thread that owns the
/// context.
class PassageService {
public:
    /// Places of one passage that are locked at once.
    static constexpr std::size_t mostPlaces = 100;

    PassageService(const NoteService& notes, Random& random) : notes_(notes), random_(random) {}

    /// Puts a locked passage in every place where `passage` stands, by an update of the note. Takes
    /// about 0.1 s. Throws `PassageError` and `SelectiveEncryptionError`.
    void lock(
        StoreContext& context,
        CDNote& note,
        std::string_view passage,
        std::string_view passphrase) const;

    /// The blobs of the note's locked passages, in order.
    static std::vector<std::string> blobs(const CDNote& note);
    /// Puts plain paragraphs with `text` in the place of the locked passage at `index` of `blobs`,
    /// by an update of the note.
    void removeLock(
        StoreContext& context, CDNote& note, std::size_t index, std::string_view text) const;

    /// What of a note still holds the text of a passage.
    struct Copies {
        std::vector<CDNoteRevision*> revisions{};
        bool isInSource = false;  ///< the file the note was imported from
        bool isInNote = false;    ///< its title, or a place of its body that cannot be locked
        bool canBeRemoved() const { return isInSource || !revisions.empty(); }
    };
    static Copies copiesOf(const CDNote& note, std::string_view passage);
    /// Removes the revisions and the source.
    static void remove(StoreContext& context, CDNote& note, const Copies& copies);

private:
    const NoteService& notes_;
    Random& random_;
};

}  // namespace tesserine
