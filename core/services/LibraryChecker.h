#pragma once

#include "base/Clock.h"

#include <cstddef>
#include <functional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

class TesserineStore;

/// One thing that is wrong in a library, as a sentence for its owner.
struct LibraryProblem {
    enum class Kind {
        damagedFile,       ///< SQLite's own check found damage
        brokenReference,   ///< a row points to one that is gone
        duplicateID,       ///< two objects have one identifier
        missingID,         ///< an object without one
        missingFile,       ///< a large value whose file is gone
        orphanedFile,      ///< a file that no value refers to
        digestMismatch,    ///< a value is not what was written
        bodyNotCanonical,  ///< a body is not in its canonical form
        cycle,             ///< a notebook, tag or task stands below itself
        pinDisagreement,   ///< pinned without a time, or a time without pinned
    };
    Kind kind = Kind::damagedFile;
    std::string sentence;
    bool repaired = false;
};

/// The stable name of a kind, as "brokenReference".
std::string_view rawValue(LibraryProblem::Kind kind);

struct LibraryReport {
    std::vector<LibraryProblem> problems{};
    std::size_t objects = 0;
    std::size_t bodies = 0;
    std::size_t attachments = 0;
    std::size_t files = 0;  ///< that hold large values
    bool wasStopped = false;

    bool isClean() const { return problems.empty(); }
    std::size_t repairedCount() const;
};

/// Examines a library and repairs what can be repaired without losing anything.
///
/// A file that SQLite finds damaged is reported and left alone: nothing more is read or repaired.
/// Works on connections of its own and saves its repairs. Any thread; may run beside other writers.
class LibraryChecker {
public:
    enum class Repairs { none, safe };
    struct Options {
        Repairs repairs = Repairs::safe;
        std::stop_token stop{};
        /// Called now and then with what is being examined and how far it is.
        std::function<void(std::string_view step, std::size_t done, std::size_t total)> progress{};
    };

    /// `store` and `clock` outlive it.
    LibraryChecker(TesserineStore& store, const Clock& clock) : store_(store), clock_(clock) {}

    /// Throws `StoreError` when the library cannot be read at all.
    LibraryReport check(const Options& options) const;

private:
    TesserineStore& store_;
    const Clock& clock_;
};

}  // namespace tesserine
