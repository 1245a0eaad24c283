#pragma once

#include "base/Uuid.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tesserine::app {

/// What the bodies of notes said before they were changed, so that one can undo in a note that one
/// comes back to. Kept in memory only, for the notes that were changed last.
class UndoMemory {
public:
    static constexpr std::size_t mostNotes = 20;       ///< besides the open one
    static constexpr std::size_t mostBytes = 100'000;  ///< of one note, in all its states
    /// Bytes that are typed before there is another state to go back to.
    static constexpr std::size_t longestStep = 200;

    /// The note is opened, which says `html` now: the states that led to it, the oldest first and
    /// none of them `html`. The note begins anew when it says something else than when it was left.
    const std::vector<std::string>& open(const Uuid& id, const std::string& html);
    /// The open note was written.
    void add(const std::string& html);
    /// Nothing that the open note said is to come back.
    void forget();

private:
    struct Kept {
        Uuid id;
        std::vector<std::string> before{};
        std::optional<std::string> now{};
    };

    void trim();

    Kept open_;
    std::vector<Kept> others_;  // the one that was left last is the last
};

}  // namespace tesserine::app
