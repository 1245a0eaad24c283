#include "app/account/SyncWords.h"

#include "app/state/DateWords.h"
#include "base/Calendar.h"

#include <QCoreApplication>

namespace tesserine::app {
namespace {

QString tr(const char* text) { return QCoreApplication::translate("SyncWords", text); }

QString timeOfDay(Instant instant, const Calendar& calendar) {
    const LocalTime time = calendar.local(instant);
    return QString("%1:%2").arg(time.hour, 2, 10, QChar('0')).arg(time.minute, 2, 10, QChar('0'));
}

}  // namespace

SyncWords SyncWords::of(const SyncState& state, Instant now, const Calendar& calendar) {
    using Phase = SyncState::Phase;
    const QString sentence = QString::fromStdString(state.sentence);
    const QString last = state.lastSync
                             ? tr("Last sync: %1").arg(shownTime(*state.lastSync, now, calendar))
                             : tr("Nothing has been synced yet.");
    const auto untilThen = [&](const QString& title, const QString& withTime) {
        return state.until ? withTime.arg(timeOfDay(*state.until, calendar)) : title;
    };
    switch (state.phase) {
    case Phase::off: return {tr("Not set up")};
    case Phase::starting: return {tr("Starting…"), last};
    case Phase::syncing: return {tr("Syncing…"), last, Ink::accent};
    case Phase::idle: return {tr("In step"), last};
    case Phase::offline: return {untilThen(tr("Offline"), tr("Offline until %1")), sentence};
    case Phase::waiting:
        return {untilThen(tr("Sync waits"), tr("Sync waits until %1")), sentence, Ink::warning};
    case Phase::asking: return {tr("Sync has a question"), sentence, Ink::warning};
    case Phase::signedOut: {
        if (sentence.isEmpty()) return {tr("Signed out")};
        return {tr("Signed out"), sentence, Ink::warning};
    }
    }
    return {};
}

}  // namespace tesserine::app
