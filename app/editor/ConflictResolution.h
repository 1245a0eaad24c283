#pragma once

#include "base/Uuid.h"

#include <QObject>

#include <functional>
#include <optional>

class QWidget;

namespace tesserine {
class CDNoteRevision;
}

namespace tesserine::app {

class AppEnvironment;
class OpenNote;
class Pictures;

/// Shows the two versions of a note that was changed in two places, and ends that as the reader
/// says.
class ConflictResolution final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        AppEnvironment& environment;
        OpenNote& open;
        Pictures& pictures;
        std::function<bool()> save;
    };
    ConflictResolution(Parts parts, QWidget* window);

    void compare();

signals:
    /// The note is another one now, or no longer in conflict.
    void resolved();

private:
    enum Choice { useTheirs = 1, keepMine, keepBoth };
    /// `compared`: the other version that was shown; none when it is gone.
    void resolve(const std::optional<Uuid>& compared, int choice);
    void makeCopy(const CDNoteRevision& theirs);

    Parts parts_;
    QWidget* const window_;
};

}  // namespace tesserine::app
