#pragma once

#include "base/Uuid.h"

#include <optional>
#include <string>

namespace tesserine::app {

/// Somewhere to go in the window: a list, a note, a page. What back and forward, tabs, links and
/// the programs of the desktop name.
struct Place {
    enum class Kind {
        allNotes,
        pinned,
        reminders,
        templates,
        notebook,     ///< `id`
        tag,          ///< `id`
        savedSearch,  ///< `id`
        note,         ///< `id`
        inbox,
        today,
        upcoming,
        allTasks,
        completed,
        calendar,
        project,  ///< `id`
        label,    ///< `id`, of the tag
        task,     ///< `id`
        taskTemplates,
        trash,
        search,    ///< `text`, the query
        settings,  ///< `text`, an area such as "sync", or none
        welcome,
    };

    Kind kind = Kind::allNotes;
    Uuid id{};
    std::string text{};

    /// Reads "tesserine://note/<uuid>", "tesserine://search/<query>", "tesserine://today" and the
    /// like; the beginning "tesserine://" may be left out. Anything else is none.
    static std::optional<Place> fromAddress(const std::string& address);
    std::string address() const;

    friend bool operator==(const Place&, const Place&) = default;
};

}  // namespace tesserine::app
