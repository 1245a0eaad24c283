#pragma once

#include "base/Calendar.h"
#include "base/Uuid.h"
#include "core/model/TaskEntities.h"
#include "core/tasks/RecurrenceRule.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

class StoreContext;

/// What a calendar file holds besides open tasks.
struct ICSExportOptions {
    bool includeCompleted = false;
};

/// A task as a calendar file shows it.
struct ICSTask {
    Uuid id{};
    std::string title{};
    std::string details{};
    std::optional<Instant> dueDate{};
    bool dueHasTime = false;
    std::optional<RecurrenceRule> rule{};
    TaskPriority priority = TaskPriority::p4;
    std::optional<Instant> createdAt{};  ///< absent: the time of the export is written
    std::optional<Instant> updatedAt{};  ///< likewise
    std::optional<Instant> completedAt{};

    static ICSTask of(const CDTask& task);
};

/// Writes tasks as an iCalendar document (RFC 5545), a VTODO each, that calendar programs read.
///
/// Lines are not folded. Nothing in a title or in details can end a line. The format is described
/// in `docs/formats/calendar.md`. Any thread.
class ICSExporter {
public:
    /// Days without a time are those of `calendar`.
    ICSExporter(Instant exportedAt, Calendar calendar)
        : exportedAt_(exportedAt), calendar_(std::move(calendar)) {}

    /// The document of the tasks that have a due date, earliest first. Lines are separated by CR
    /// LF; none follows the last one.
    std::string document(std::vector<ICSTask> tasks, const ICSExportOptions& options) const;
    /// The lines of one task, which has a due date.
    std::vector<std::string> component(const ICSTask& task) const;

    /// The value of RRULE.
    static std::string ruleText(const RecurrenceRule& rule);
    /// `text` as the value of a property: backslash, semicolon and comma get a backslash, and a
    /// line break (CR LF, CR or LF) becomes "\n".
    static std::string escaped(std::string_view text);

private:
    Instant exportedAt_;
    Calendar calendar_;
};

/// Writes the library's dated tasks to the new file `file`, whose last line ends with CR LF as
/// well, and returns how many there are. On the thread that owns `context`. Throws `ExportError`,
/// `StoreError`.
std::size_t exportCalendar(
    StoreContext& context,
    const std::filesystem::path& file,
    const ICSExportOptions& options,
    const Calendar& calendar);

}  // namespace tesserine
