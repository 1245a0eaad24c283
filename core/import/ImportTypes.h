#pragma once

#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/Log.h"
#include "base/Random.h"
#include "base/Uuid.h"
#include "core/services/MIMEType.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// What happens to a note that the library already holds.
enum class DuplicatePolicy {
    skip,      ///< it stays out
    replace,   ///< it becomes the content of the note that is there, which is kept as a revision
    keepBoth,  ///< it comes in beside the other
};
/// Reads "skip", "replace" or "keep".
std::optional<DuplicatePolicy> duplicatePolicyNamed(std::string_view name);

/// What the user chooses before an import.
struct ImportOptions {
    /// The notebook, as names from the top, below which everything is put; it is made when needed.
    /// Empty: the notebooks are made as the source has them.
    std::vector<std::string> notebook{};
    std::optional<std::string> tag{};  ///< given to every imported note
    DuplicatePolicy duplicates = DuplicatePolicy::skip;
    /// Whether pictures on other servers stay pictures; otherwise they become links.
    bool keepsRemoteImages = false;
    bool recognisesTags = false;  ///< `#tag` words in texts become tags
    /// Whether tasks of the source become tasks; otherwise they are a checklist in their note.
    bool createsTasks = true;
};

/// What importers are given by the program. Everything outlives them.
struct ImportEnvironment {
    const Clock& clock;
    Random& random;
    const Calendar& calendar;
    const mime::TypeRegistry& types;
    Log log{};
};

/// How far an import is.
struct ImportProgress {
    std::size_t done = 0;
    std::size_t total = 0;
    std::string_view current;  ///< what was dealt with last
};

/// How a running import is watched and stopped.
struct ImportControl {
    std::stop_token stop{};
    /// Called after each note, on the importing thread.
    std::function<void(const ImportProgress&)> progress{};
};

enum class ImportOutcome { imported, replaced, skipped, failed };
/// "imported", "replaced", "skipped", "failed".
std::string_view rawValue(ImportOutcome outcome);
std::optional<ImportOutcome> importOutcomeNamed(std::string_view name);

/// "1 note", "2 notes".
std::string counted(std::size_t count, const std::string& noun);

/// What became of one note of the source.
struct ImportedNote {
    std::string title{};  ///< of a note that could not be read: the name of its file
    ImportOutcome outcome = ImportOutcome::failed;
    std::optional<Uuid> noteID{};  ///< in the library; absent when nothing of it is there
    std::vector<std::string> warnings{};
    std::vector<Uuid> taskIDs{};  ///< of the tasks that were made with it
};

/// What was found when the library was read again after an import and compared with the source.
struct ImportCheck {
    std::size_t notes = 0;  ///< of the source that are in the library
    std::size_t expectedNotes = 0;
    std::size_t files = 0;  ///< of the notes that came in, every byte of which is there
    std::size_t expectedFiles = 0;

    bool isWhole() const { return notes == expectedNotes && files == expectedFiles; }
    /// "112 of 112 notes and 57 of 57 files are in the library, every byte equal."
    std::string sentence() const;
};

/// What an import did.
struct ImportReport {
    std::optional<Uuid> id{};  ///< in the library
    std::string format{};      ///< "markdown", "enex", "apple-notes"
    std::string file{};        ///< what was imported: a path, or several separated by ", "
    Instant started{};
    std::optional<Instant> finished{};  ///< absent when it was stopped, or is running
    std::optional<Instant> undone{};
    std::size_t found = 0;
    std::size_t imported = 0;
    std::size_t replaced = 0;
    std::size_t skipped = 0;
    std::size_t failed = 0;
    std::size_t attachments = 0;
    std::uint64_t attachmentBytes = 0;
    std::vector<ImportedNote> notes{};
    std::optional<ImportCheck> check{};  ///< absent when nothing was compared
    /// From which the identifiers of the notes are made, so that links between notes lead to the
    /// right ones when a stopped import is run again.
    Uuid seed{};

    /// Adds a note and counts it.
    void add(ImportedNote note);
    /// Puts another note in the place of number `index`, and counts it instead.
    void replace(std::size_t index, ImportedNote note);

private:
    std::size_t& countOf(ImportOutcome outcome);
};

/// What an import would do.
struct ImportPreview {
    std::size_t found = 0;
    std::size_t duplicates = 0;  ///< notes that the library already holds
    std::size_t unreadable = 0;
    std::uint64_t sourceBytes = 0;
    std::size_t attachments = 0;
    std::uint64_t attachmentBytes = 0;
    std::vector<std::string> notebooks{};  ///< paths such as "Work / Plans", sorted
    std::vector<std::string> tags{};       ///< sorted
    std::vector<ImportedNote> notes{};     ///< with the outcome that each would have
};

}  // namespace tesserine
