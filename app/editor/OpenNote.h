#pragma once

#include "base/Clock.h"
#include "base/Uuid.h"
#include "core/services/NoteService.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace tesserine {
class StoreContext;
}

namespace tesserine::app {

/// The note that an editor shows, as it was when it was read, and how it is written back.
///
/// Never saves the context. What others wrote meanwhile becomes a conflict and is not lost. Belongs
/// to the main thread.
class OpenNote {
public:
    /// A revision is kept whenever a note was edited for so long without a pause.
    static constexpr std::chrono::minutes revisionInterval{10};
    /// After so long without a change the next one begins anew.
    static constexpr std::chrono::minutes longestPause{5};

    OpenNote(StoreContext& context, const NoteService& notes, const Clock& clock)
        : context_(context), notes_(notes), clock_(clock) {}

    /// Reads the note; false when it is not there.
    bool open(const Uuid& id);
    void close() { id_.reset(); }
    const std::optional<Uuid>& id() const { return id_; }
    /// None when no note is open, or when it was deleted meanwhile.
    CDNote* note() const;

    const std::string& title() const { return title_; }
    const std::string& html() const { return html_; }

    enum class State { current, changedElsewhere, deleted };
    /// Whether the note still is what was read or written last.
    State state() const;

    struct Edit {
        std::optional<std::string> title{};
        std::optional<std::string> html{};
    };
    /// Writes what was changed. Throws as `NoteService::saveEdit`, `StoreError::notFound` when the
    /// note was deleted.
    NoteService::EditOutcome write(Edit edit);

    /// The same in three steps, of which another thread can do the second, with a context of its
    /// own. The first and the last belong to this thread, and in between nothing else is written.
    struct Writing {
        Uuid id;
        Edit edit{};
        std::string loadedHTML{};
        std::int64_t loadedVersion = 0;
        bool keepsRevision = false;
    };
    /// What is known of the note by now. What others wrote meanwhile into a part that was not
    /// written is none: it is still to be shown.
    struct Written {
        std::optional<std::string> title{};
        std::optional<std::string> html{};
        std::int64_t version = 0;  // of that body
        NoteService::EditOutcome outcome = NoteService::EditOutcome::saved;
    };
    Writing beginWriting(Edit edit);
    static Written perform(Writing writing, StoreContext& context, const NoteService& notes);
    void endWriting(const Written& written);

private:
    bool isRevisionDue();

    StoreContext& context_;
    const NoteService& notes_;
    const Clock& clock_;
    std::optional<Uuid> id_;
    std::string title_;
    std::string html_;
    std::int64_t version_ = 0;
    std::optional<Instant> editedSince_;
    std::optional<Instant> writtenAt_;
};

}  // namespace tesserine::app
