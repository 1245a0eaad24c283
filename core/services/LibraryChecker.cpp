#include "core/services/LibraryChecker.h"

#include "core/services/LibraryExamination.h"

#include <algorithm>

namespace tesserine {

std::string_view rawValue(LibraryProblem::Kind kind) {
    using Kind = LibraryProblem::Kind;
    switch (kind) {
    case Kind::damagedFile: return "damagedFile";
    case Kind::brokenReference: return "brokenReference";
    case Kind::duplicateID: return "duplicateID";
    case Kind::missingID: return "missingID";
    case Kind::missingFile: return "missingFile";
    case Kind::orphanedFile: return "orphanedFile";
    case Kind::digestMismatch: return "digestMismatch";
    case Kind::bodyNotCanonical: return "bodyNotCanonical";
    case Kind::cycle: return "cycle";
    case Kind::pinDisagreement: return "pinDisagreement";
    }
    return {};
}

std::size_t LibraryReport::repairedCount() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(problems, [](const auto& problem) { return problem.repaired; }));
}

LibraryReport LibraryChecker::check(const Options& options) const {
    return LibraryExamination(store_, clock_, options).run();
}

}  // namespace tesserine
