#include "core/import/ImportTypes.h"

#include <utility>

namespace tesserine {

std::optional<DuplicatePolicy> duplicatePolicyNamed(std::string_view name) {
    if (name == "skip") return DuplicatePolicy::skip;
    if (name == "replace") return DuplicatePolicy::replace;
    if (name == "keep") return DuplicatePolicy::keepBoth;
    return std::nullopt;
}

std::string_view rawValue(ImportOutcome outcome) {
    switch (outcome) {
    case ImportOutcome::imported: return "imported";
    case ImportOutcome::replaced: return "replaced";
    case ImportOutcome::skipped: return "skipped";
    case ImportOutcome::failed: return "failed";
    }
    return {};
}

std::optional<ImportOutcome> importOutcomeNamed(std::string_view name) {
    for (const auto outcome :
         {ImportOutcome::imported,
          ImportOutcome::replaced,
          ImportOutcome::skipped,
          ImportOutcome::failed}) {
        if (rawValue(outcome) == name) return outcome;
    }
    return std::nullopt;
}

std::string ImportCheck::sentence() const {
    const auto ofAll = [](std::size_t count, std::size_t all, const std::string& noun) {
        return std::to_string(count) + " of " + std::to_string(all) + " " + noun
               + (all == 1 ? "" : "s");
    };
    return ofAll(notes, expectedNotes, "note") + " and " + ofAll(files, expectedFiles, "file")
           + " are in the library, every byte equal.";
}

std::string counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

void ImportReport::add(ImportedNote note) {
    ++countOf(note.outcome);
    notes.push_back(std::move(note));
}

void ImportReport::replace(std::size_t index, ImportedNote note) {
    --countOf(notes[index].outcome);
    ++countOf(note.outcome);
    notes[index] = std::move(note);
}

std::size_t& ImportReport::countOf(ImportOutcome outcome) {
    switch (outcome) {
    case ImportOutcome::imported: return imported;
    case ImportOutcome::replaced: return replaced;
    case ImportOutcome::skipped: return skipped;
    case ImportOutcome::failed: break;
    }
    return failed;
}

}  // namespace tesserine
