#pragma once

#include "app/state/Place.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace tesserine::app {

/// What somebody outside the window asks of it: a second start of the program, another program over
/// the bus, the tray, a notification.
struct Request {
    enum class Kind {
        activate,  ///< only come to the front
        newNote,   ///< write a new note
        newTask,   ///< begin a task: `text` is the sentence, may be empty
        go,        ///< to `place`
        openFile,  ///< import or show the file `text`, an absolute path
        signedIn,  ///< the browser came back from a sign-in: `text` is the whole address
    };

    Kind kind = Kind::activate;
    QString text{};
    Place place{};

    /// Reads one argument of the command line: "tesserine://…", "new-note", "new-task", or the
    /// path of a file, relative to `folder`. None for what is no such thing.
    static std::optional<Request> fromArgument(const QString& argument, const QString& folder);
    /// The same request as an argument.
    QString argument() const;

    friend bool operator==(const Request&, const Request&) = default;
};

}  // namespace tesserine::app
