#pragma once

#include "app/desktop/Notifier.h"
#include "app/state/Place.h"
#include "base/Instant.h"
#include "core/tasks/ReminderPlanner.h"

#include <QObject>
#include <QTimer>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tesserine {
struct ObjectChange;
}

namespace tesserine::app {

class AppEnvironment;

/// Shows the library's reminders when their time comes, and takes back those whose note or task no
/// longer wants them. It plans anew when the library or the calendar changes and looks at the clock
/// twice a minute, so that a machine that slept or a clock that was set is noticed.
///
/// Belongs to the main thread.
class Reminders final : public QObject {
    Q_OBJECT

public:
    /// Until when reminders were shown, so that those missed while no program ran can be told from
    /// those seen: ISO 8601.
    static constexpr const char* shownUntilKey = "tesserine.reminders.shownUntil";

    /// Both outlive it.
    Reminders(AppEnvironment& environment, Notifier& notifier, QObject* parent = nullptr);

    /// Shows what was missed since the last run, as one notification when there is more than one,
    /// and begins.
    void start();

public slots:
    /// Shows what is due now and plans anew. Called by the timer; also when the machine wakes up.
    void wake();

signals:
    /// The user wants to see this.
    void chosen(const tesserine::app::Place& place);

private:
    struct Planned {
        ReminderPlan plan;
        Instant showAt;
    };

    void plan();
    void showDue();
    void follow(const std::vector<ObjectChange>& changes);
    void show(const ReminderPlan& plan);
    void showMissed(const std::vector<ReminderPlan>& missed);
    void withdrawOutdated();
    std::optional<Instant> reminderOf(const DeliveredReminder& delivered) const;
    void act(const std::string& identifier, const std::string& action);
    void complete(const Uuid& id);
    void rememberShown(Instant until);

    AppEnvironment& environment_;
    Notifier& notifier_;
    QTimer timer_;
    std::map<std::string, Planned> planned_;              // by identifier
    std::map<std::string, DeliveredReminder> delivered_;  // in this run
};

}  // namespace tesserine::app
