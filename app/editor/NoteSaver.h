#pragma once

#include "app/editor/Autosave.h"
#include "app/editor/BackgroundTask.h"
#include "app/editor/OpenNote.h"

#include <QObject>

#include <optional>
#include <string>

class QLineEdit;
class QWidget;

namespace tesserine::app {

class AppEnvironment;
class BodyEdit;

/// Writes the open note to the library: a second after it was changed, and before it is left.
///
/// While writing goes on a long note is written by another thread, as it is at that moment; what is
/// typed meanwhile waits for the next second. Belongs to the main thread.
class NoteSaver final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        AppEnvironment& environment;
        OpenNote& open;
        QLineEdit& title;
        BodyEdit& body;
    };
    /// Why the note could not be left is shown over `parent`.
    NoteSaver(const Parts& parts, QWidget* parent);

    /// Something was changed.
    void schedule() { autosave_.schedule(); }
    /// Writes at once what is not written yet. False when that failed: the user was told, and
    /// nothing is lost.
    bool save();
    /// Nothing is to be saved any more.
    void forget() { autosave_.cancel(); }
    bool isPending() const { return autosave_.isPending(); }
    bool isWriting() const { return writing_.isRunning(); }

signals:
    void saved(tesserine::NoteService::EditOutcome outcome);
    /// What is typed could not be written meanwhile; nothing is lost, and it is tried again.
    void failed(const QString& sentence);
    /// What was changed was taken back before it was written.
    void nothingToSave();
    /// Another thread has ended; only now can it be told what others made of the note.
    void ended();

private:
    bool write(Autosave::Occasion occasion);
    bool keepAsNew();
    void beginWriting(OpenNote::Edit edit);
    std::optional<std::string> endWriting();

    Parts parts_;
    QWidget& window_;
    Autosave autosave_;
    BackgroundTask<OpenNote::Written> writing_;
};

}  // namespace tesserine::app
