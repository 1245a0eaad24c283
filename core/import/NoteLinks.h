#pragma once

#include "base/Uuid.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tesserine {

/// The identifier that a note of an import gets: the same for the same seed and name, so that links
/// can be written before the note they lead to is in.
Uuid importedNoteID(const Uuid& seed, std::string_view name);

/// Knows where the links between the notes of an import lead.
///
/// A link to a note that is not in yet names the identifier which that note is expected to get.
/// Where it turns out to be another one (because the library holds the note already) or none
/// (because it failed), the notes that link to it are listed for repair. Memory grows with the
/// links to notes that are still to come, not with all links.
class NoteLinks {
public:
    /// Where a link leads instead; none: nowhere.
    struct Repair {
        Uuid expected;
        std::optional<Uuid> actual;
    };

    explicit NoteLinks(std::vector<Uuid> expected) : expected_(std::move(expected)) {}

    const Uuid& expected(std::size_t note) const { return expected_[note]; }
    /// The identifier a link to `note` has to name when it is written now in the body of `from`;
    /// none when that note failed.
    std::optional<Uuid> address(std::size_t note, const Uuid& from);
    /// The body of `from`, written by an earlier run, names the expected identifier of `note`.
    void foundLink(std::size_t note, const Uuid& from);
    /// What became of `note`.
    void settle(std::size_t note, const std::optional<Uuid>& actual);

    /// The notes whose bodies must be repaired; emptied by the call.
    std::map<Uuid, std::vector<Repair>> takeRepairs();

private:
    struct Settled {
        std::optional<Uuid> actual;
    };

    std::vector<Uuid> expected_;
    std::size_t settledUpTo_ = 0;                         // notes are settled in their order
    std::unordered_map<std::size_t, Settled> otherwise_;  // settled, but not as expected
    std::unordered_map<std::size_t, std::vector<Uuid>> waiting_;  // for a note that is to come
    std::map<Uuid, std::vector<Repair>> repairs_;
};

}  // namespace tesserine
