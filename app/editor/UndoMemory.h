#pragma once

#include "base/Uuid.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tesserine::app {

/// The saved bodies of a note, in the order in which undo goes through them.
struct UndoHistory {
    struct State {
        std::string html;
        int steps = 0;         ///< that the document could undo then
        bool wasLeft = false;  ///< the note was left, and opened again
    };

    /// The oldest first; those behind `now` can be done again. Empty when nothing is known.
    std::vector<State> states{};
    std::size_t now = 0;

    /// What stands behind `now` was undone, and cannot be done again any more.
    void cutAfterNow() { states.resize(states.empty() ? 0 : now + 1); }
};

/// What the bodies of notes said before they were changed, so that one can undo in a note that one
/// comes back to. Kept in memory only, for the notes that were changed last.
class UndoMemory {
public:
    static constexpr std::size_t mostNotes = 20;       ///< besides the open one
    static constexpr std::size_t mostBytes = 100'000;  ///< of one note, in all its states
    /// Bytes that are typed before there is another state to go back to.
    static constexpr std::size_t longestStep = 200;

    /// The note is opened, which says `html` now. It begins anew when it says something else than
    /// when it was left. Whoever goes through the states puts in their steps.
    UndoHistory& open(const Uuid& id, const std::string& html);
    /// The open note was written. `canRedo` tells whether this was after something was undone.
    void add(UndoHistory::State state, bool canRedo);
    /// Nothing that the open note said is to come back.
    void forget() { open_.history = {}; }

private:
    struct Kept {
        Uuid id;
        UndoHistory history{};
    };

    void append(UndoHistory::State state);
    void trim();

    Kept open_;
    std::vector<Kept> others_;  // the one that was left last is the last
};

}  // namespace tesserine::app
