#pragma once

#include "app/commands/QuickPicker.h"
#include "base/Uuid.h"

#include <atomic>
#include <memory>
#include <vector>

namespace tesserine::app {

class AppEnvironment;
struct NoteTitle;

/// Finds a note by a few letters of its title; until something is typed, to one of those changed
/// last. It reads on a thread of its own, so that typing never waits; only the answer to what was
/// typed last is shown.
class NoteSwitcher final : public QuickPicker {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(NoteSwitcher)

public:
    /// `open` shows it. `question` stands in the empty field: what becomes of the note.
    NoteSwitcher(AppEnvironment& environment, QWidget* window, const QString& question);
    ~NoteSwitcher() override;

signals:
    void noteChosen(const tesserine::Uuid& note);

private:
    void look(const QString& typed);
    void show(std::vector<NoteTitle> found);

    AppEnvironment& environment_;
    /// Counts the questions. Shared with the threads that answer: they give up older ones.
    std::shared_ptr<std::atomic<int>> asked_ = std::make_shared<std::atomic<int>>(0);
    std::vector<Uuid> shown_;
};

}  // namespace tesserine::app
