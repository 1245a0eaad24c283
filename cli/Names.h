#pragma once

#include "base/UserError.h"
#include "base/Uuid.h"
#include "core/model/NoteEntities.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tesserine {
class CDImportReport;
class CDProject;
class CDTask;
class CDTaskTemplate;
}  // namespace tesserine

/// How people name things on the command line: by UUID, by a unique beginning of it, or by title.
namespace tesserine::cli {

class Session;

/// A name that fits several things; `what()` is a sentence followed by one line for each of them.
class AmbiguousName final : public UserError {
public:
    static AmbiguousName of(const std::string& name, const std::vector<std::string>& candidates);

private:
    using UserError::UserError;
};

/// Which notes a name means when it fits several.
enum class NoteScope {
    live,       ///< those outside the trash, if any
    trash,      ///< those in the trash, if any
    templates,  ///< templates only
};

/// Which tasks a name means when it fits several: the open ones, if any, or the completed ones. A
/// task that repeats leaves completed copies of its name behind.
enum class TaskScope { open, completed };

/// These throw `StoreError::notFound` ("The note “Plan” could not be found.") and `AmbiguousName`.
CDNote& resolveNote(Session& session, const std::string& name, NoteScope scope = NoteScope::live);
CDNotebook& resolveNotebook(Session& session, const std::string& name);
CDTag& resolveTag(Session& session, const std::string& name);
CDSavedSearch& resolveSavedSearch(Session& session, const std::string& name);
CDTask& resolveTask(Session& session, const std::string& name, TaskScope scope = TaskScope::open);
CDProject& resolveProject(Session& session, const std::string& name);
CDTaskTemplate& resolveTaskTemplate(Session& session, const std::string& name);
CDAttachment& resolveAttachment(Session& session, const std::string& name);
CDImportReport& resolveImport(Session& session, const std::string& name);
/// One of the note's revisions, also by its place in the list: 1 is the newest.
CDNoteRevision& resolveRevision(Session& session, CDNote& note, const std::string& name);

/// The notebook that is meant, made when there is none: a path such as "Work / Plans" makes each
/// level. A UUID is never a new name.
CDNotebook& notebookToFill(Session& session, const std::string& name);
/// The project that is meant; the Inbox is made when there is none yet.
CDProject& projectToChange(Session& session, const std::string& name);
/// The names of a path such as "Work / Plans", trimmed, without empty ones.
std::vector<std::string> pathNames(std::string_view path);
/// The tag that is meant, made when there is none. Throws `UsageError` for an empty name.
CDTag& tagToUse(Session& session, const std::string& name);

/// The identifiers that begin with `text`: at least four hexadecimal digits, with the hyphens of a
/// UUID where they belong. None when `text` is no such beginning.
std::optional<std::pair<Uuid, Uuid>> idsBeginningWith(std::string_view text);

/// What is shown for an identifier in lists: its first eight digits.
std::string shortID(const std::optional<Uuid>& id);
/// The title a note is shown by: its own, else the first line of its text, else "Untitled".
std::string displayTitle(const CDNote& note);

}  // namespace tesserine::cli
