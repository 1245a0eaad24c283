#pragma once

#include "base/Digest.h"
#include "core/import/ImportTypes.h"

#include <cstddef>
#include <optional>
#include <stop_token>
#include <vector>

namespace tesserine {

class CDNote;
class StoreContext;

/// Compares what came into the library with what the source holds: reads the notes and every byte
/// of their files back, and digests them anew.
class Reconciliation {
public:
    /// A note of the source: where it is said to be, and the digests of its files.
    void expect(const std::optional<Uuid>& note, std::vector<SHA256Digest> files);

    /// Reads everything back. Forgets the context's objects now and then; none when it was stopped.
    std::optional<ImportCheck> run(StoreContext& context, const std::stop_token& stop) const;

private:
    struct Expected {
        std::optional<Uuid> note;
        std::vector<SHA256Digest> files;
    };

    std::vector<Expected> expected_;
};

}  // namespace tesserine
