#pragma once

#include "base/Uuid.h"
#include "core/tasks/TaskService.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

class QWidget;

namespace tesserine::app {

class AppEnvironment;

/// What was done last to tasks, in whichever window, so that it can be taken back and done again:
/// completing and reopening, words, dates, reminders, priorities, labels, places, new tasks and
/// deletions. Belongs to the main thread.
class TaskHistory final : public QObject {
    Q_OBJECT

public:
    using Tasks = std::vector<Uuid>;
    static constexpr std::size_t mostKept = 50;

    struct Affected {
        Tasks tasks{};
        Tasks along{};            ///< subtasks that are changed with them
        bool withLabels = false;  ///< labels are looked at too, as where tasks may be deleted
        /// A text is put back as it was before it was typed: neither is a step.
        bool endsTyping = false;
    };
    struct Made {
        Tasks tasks{};            ///< new ones
        Tasks completedCopies{};  ///< of tasks that repeat
    };
    enum class Seen { inLists, inPanel };

    /// That of the environment, which owns it.
    static TaskHistory& of(AppEnvironment& environment);

    /// Saves what `act` does to the tasks, and what it makes, and remembers it. A failure to save
    /// is shown over `parent`; false then.
    bool record(const Affected& affected, QWidget* parent, const std::function<Made()>& act);
    bool canUndo() const { return !changes_.empty(); }
    bool canRedo() const { return !undone_.empty(); }
    /// Takes back what was done last; what has been changed again since then stays as it is. A new
    /// task goes unless it was changed since.
    void undo(QWidget* parent);
    /// Does again what was taken back last, unless anything else was done since. Where that cannot
    /// be done, nothing later is done again either.
    void redo(QWidget* parent);

signals:
    /// What can be taken back now, as a sentence: "Completed “Plan”", "3 tasks are due tomorrow".
    /// Empty where no words are needed, or where it cannot be taken back.
    void lastChanged(const QString& sentence);
    /// How the tasks are now that something was taken back or done again, for where they are not
    /// seen. No tasks: it is to be told in any case. What lists do not show of a task, such as its
    /// notes, is seen in the panel of that task only.
    void takenBack(
        const QString& sentence,
        const std::vector<tesserine::Uuid>& tasks,
        tesserine::app::TaskHistory::Seen seen);
    /// Something else can be taken back or done again.
    void turned();

private:
    struct Due {
        std::optional<Instant> date;
        std::optional<bool> hasTime;
        friend bool operator==(const Due&, const Due&) = default;
    };
    struct Place {
        std::optional<Uuid> project;
        std::optional<Uuid> parent;
        friend bool operator==(const Place&, const Place&) = default;
    };
    struct State {
        std::optional<std::string> title;
        std::optional<std::string> details;
        Due due;
        Place place;
        std::optional<Uuid> linkedNote;
        std::set<Uuid> labels;  // empty where they are not looked at
        std::optional<Instant> reminderAt;
        std::optional<Instant> completedAt;
        std::optional<Instant> createdAt;
        std::optional<std::string> recurrenceRule;
        std::optional<std::int16_t> priority;
        std::optional<std::int64_t> sortIndex;
        friend bool operator==(const State&, const State&) = default;
    };
    struct Entry {
        Uuid task;
        bool isAlong;
        std::optional<State> before;  // none: it was made
        std::optional<State> after;   // none: it was deleted
    };
    struct Change {
        std::vector<Entry> entries;
        Tasks completedCopies;
    };
    enum class Labels { read, unread };

    explicit TaskHistory(AppEnvironment& environment);
    CDTask* find(const Uuid& task) const;
    static State stateOf(const CDTask& task, Labels labels);
    std::vector<Entry> entriesOf(const Affected& affected, Labels labels) const;
    void lookAgain(Change& change, const Made& made, Labels labels) const;
    bool endTyping(const Change& change);
    static Change reversed(Change change);
    std::optional<Change> completedAgain(const Change& change) const;
    Tasks takeBack(const Change& change) const;
    bool isAsMade(const CDTask& task, const Change& change) const;
    void bringBack(const Entry& entry) const;
    void putBack(CDTask& task, const State& before, const State& after) const;
    void putBack(CDTask& task, const Place& place) const;
    void putBackLabels(CDTask& task, const State& before, const State& after) const;
    void tellTakenBack(const Change& change, const Tasks& stayed, bool isAnything);
    void tellTurned(const Change& change, const QString& sentence);
    static bool isOfText(const Change& change);
    static bool isOfNotes(const Change& change);
    static Seen whereSeen(const Change& change);
    QString subjectOf(const Change& change) const;
    QString sentenceOf(const Change& change) const;
    QString sentenceAfterUndo(const Change& change) const;
    QString sentenceAfterRedo(const Change& change) const;
    QString dueSentence(const QString& what, bool isOne, const Due& due) const;

    AppEnvironment& environment_;
    std::deque<Change> changes_;  // the last one at the end
    std::vector<Change> undone_;  // likewise
};

}  // namespace tesserine::app
