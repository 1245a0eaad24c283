#pragma once

#include "base/Uuid.h"
#include "core/tasks/TaskService.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

class QWidget;

namespace tesserine::app {

class AppEnvironment;

/// What was done last to tasks, in whichever window, so that it can be taken back: completing and
/// reopening, dates, reminders, priorities, projects and the order. Belongs to the main thread.
class TaskHistory final : public QObject {
    Q_OBJECT

public:
    using Tasks = std::vector<Uuid>;
    static constexpr std::size_t mostKept = 20;

    struct Affected {
        Tasks tasks;
        Tasks along{};  ///< subtasks that are changed with them
    };

    /// That of the environment, which owns it.
    static TaskHistory& of(AppEnvironment& environment);

    /// Saves what `act` does to the tasks, none of which it deletes, and remembers it. `act`
    /// returns the completed copies that it has made. A failure to save is shown over `parent`.
    void record(const Affected& affected, QWidget* parent, const std::function<Tasks()>& act);
    /// Takes back what was done last; what has been changed again since then stays as it is.
    void undo(QWidget* parent);
    /// Saves what cannot be taken back, such as words or a new task. What was done before that is
    /// not taken back in its place.
    bool saveForGood(QWidget* parent);

signals:
    /// What can be taken back now, as a sentence: "Completed “Plan”", "3 tasks are due tomorrow".
    /// Empty where no words are needed, or where it cannot be taken back.
    void lastChanged(const QString& sentence);
    /// What was taken back, for where the tasks are not seen.
    void takenBack(const QString& sentence, const std::vector<tesserine::Uuid>& tasks);

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
        Due due;
        Place place;
        std::optional<Instant> reminderAt;
        std::optional<Instant> completedAt;
        std::optional<std::string> recurrenceRule;
        std::optional<std::int16_t> priority;
        std::optional<std::int64_t> sortIndex;
        friend bool operator==(const State&, const State&) = default;
    };
    struct Entry {
        Uuid task;
        bool isAlong;
        State before;
        State after;
    };
    struct Change {
        std::vector<Entry> entries;
        Tasks completedCopies;
    };

    explicit TaskHistory(AppEnvironment& environment);
    CDTask* find(const Uuid& task) const;
    static State stateOf(const CDTask& task);
    std::vector<Entry> entriesOf(const Affected& affected) const;
    void putBack(CDTask& task, const State& before, const State& after) const;
    void putBack(CDTask& task, const Place& place) const;
    QString sentenceOf(const Change& change) const;
    QString dueSentence(const QString& what, bool isOne, const Due& due) const;

    AppEnvironment& environment_;
    std::deque<Change> changes_;  // the last one at the end
};

}  // namespace tesserine::app
