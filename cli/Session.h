#pragma once

#include "base/Calendar.h"
#include "base/Files.h"
#include "base/Log.h"
#include "base/Preferences.h"
#include "base/Text.h"
#include "base/UserError.h"
#include "cli/Arguments.h"
#include "cli/Environment.h"
#include "cli/Output.h"
#include "core/services/AttachmentService.h"
#include "core/services/LibraryCare.h"
#include "core/services/MIMEType.h"
#include "core/services/NotebookService.h"
#include "core/services/NoteService.h"
#include "core/services/SavedSearchService.h"
#include "core/services/TagService.h"
#include "core/store/LibraryFolder.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"
#include "core/tasks/TaskService.h"
#include "core/tasks/TaskTemplateService.h"

#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

namespace tesserine::cli {

class LibrarySearch;

/// There is no library to read.
class NoLibrary final : public UserError {
public:
    explicit NoLibrary(const std::filesystem::path& folder)
        : UserError(
            "There is no library in “" + folder.string() + "”; “tesserine init” makes one.") {}
};

/// Ctrl-C was pressed and the command stopped where nothing is half done.
class Interrupted final : public std::exception {
public:
    const char* what() const noexcept override { return "Interrupted."; }
};

/// One run of one command: what it was given, and what it opens when it needs it.
///
/// Belongs to the main thread.
class Session {
public:
    /// Throws `UsageError` for an instant, zone or weekday that is none. Opens nothing yet.
    Session(Environment& environment, const Arguments& arguments, Access access);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session();

    Environment& environment() { return environment_; }
    Output& output() { return output_; }
    const Clock& clock() const { return fixedClock_ ? *fixedClock_ : environment_.clock; }
    Instant now() const { return clock().now(); }
    const Calendar& calendar() const { return calendar_; }
    const text::Collator& collator() const { return collator_; }
    Preferences& preferences() { return preferences_; }
    const Log& log() const { return log_; }
    std::filesystem::path logFile() const;
    std::filesystem::path preferencesFile() const;

    /// Where the library is or would be; throws `LibraryFolderError`.
    std::filesystem::path libraryFolder() const;
    bool hasLibrary() const;
    /// Opens the library the first time. Throws `NoLibrary`, `LibraryFolderError` and `StoreError`.
    TesserineStore& store();
    /// The store's main context.
    StoreContext& context() { return store().viewContext(); }
    /// Keeps other processes from looking for a name, and making what they do not find, at the same
    /// time: without it two of them make two notebooks of one name. Held until `releaseNames`, the
    /// closing of the library, or the end. Throws `StoreError` when another holds it for too long.
    void holdNames();
    void releaseNames() { names_.reset(); }
    /// Backups and the purge; opens the library the first time.
    LibraryCare& care();
    /// From now on the command only reads, so that nothing is made or written by opening.
    void onlyRead() { access_ = Access::reads; }
    /// Closes the library; the next use opens it again.
    void closeLibrary();

    const NoteService& notes() const { return notes_; }
    const NotebookService& notebooks() const { return notebooks_; }
    const TagService& tags() const { return tags_; }
    const SavedSearchService& savedSearches() const { return savedSearches_; }
    const TaskService& tasks() const { return tasks_; }
    const TaskTemplateService& taskTemplates() const { return taskTemplates_; }
    /// Reads the registry of file types the first time.
    const mime::TypeRegistry& types();
    const AttachmentService& attachments();
    /// Opens the library's search the first time.
    LibrarySearch& search();

    std::stop_token stop() const { return environment_.stop; }
    /// Throws `Interrupted` after Ctrl-C.
    void throwIfStopped() const;
    /// A remark for people, on standard error; nothing with `--json`.
    void remark(std::string_view sentence);
    /// "14 Mar 2026 09:15" would depend on a language: "2026-03-14 09:15" in the session's zone.
    std::string localTime(Instant instant) const;

private:
    void openStore();

    Environment& environment_;
    Access access_;
    std::optional<std::filesystem::path> libraryOption_;
    Output output_;
    std::unique_ptr<FixedClock> fixedClock_;  // of --now
    Preferences preferences_;
    Calendar calendar_;
    text::Collator collator_;
    Log log_;

    NoteService notes_;
    NotebookService notebooks_;
    TagService tags_;
    SavedSearchService savedSearches_;
    TaskService tasks_;
    TaskTemplateService taskTemplates_;
    std::unique_ptr<mime::TypeRegistry> types_;
    std::unique_ptr<AttachmentService> attachments_;
    std::unique_ptr<TesserineStore> store_;
    std::unique_ptr<LibraryCare> care_;
    std::unique_ptr<LibrarySearch> search_;
    std::optional<files::FolderLock> names_;
};

}  // namespace tesserine::cli
