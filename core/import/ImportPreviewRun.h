#pragma once

#include "core/import/ImportRun.h"
#include "core/import/ImportTypes.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

namespace tesserine {

class StoreContext;

/// Tells what an import would do, note after note, as `ImportRun` would do it. Reads the library
/// and writes nothing. On the thread that owns the context; everything outlives it.
class ImportPreviewRun {
public:
    ImportPreviewRun(
        StoreContext& context, const ImportEnvironment& environment, const ImportOptions& options)
        : context_(context), notes_(environment.clock), options_(options) {}

    struct Files {
        std::size_t count = 0;
        std::uint64_t byteCount = 0;
    };
    /// Looks at the body of a note that would come in: tells its files, may add warnings.
    using Look = std::function<Files(std::vector<std::string>& warnings)>;

    void add(const ImportDraft& draft, const Look& look);
    /// Counts a note that cannot be read.
    void addFailure(std::string title, std::string sentence);

    const ImportedNote& last() const { return preview_.notes.back(); }
    ImportPreview finish();

private:
    ImportOutcome outcomeOf(bool isDuplicate) const;

    StoreContext& context_;
    const NoteService notes_;
    const ImportOptions& options_;
    ImportPreview preview_;
    std::unordered_set<std::string> fingerprints_;
    std::set<std::string> notebooks_;
    std::set<std::string> tags_;
};

}  // namespace tesserine
