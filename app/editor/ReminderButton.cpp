#include "app/editor/ReminderButton.h"

#include "app/editor/OpenNote.h"
#include "app/look/Icon.h"
#include "app/state/AppEnvironment.h"
#include "app/state/DateWords.h"
#include "core/model/NoteEntities.h"

#include <QDateTimeEdit>
#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace tesserine::app {
namespace {

constexpr int removed = 2;  // a result of the dialog

/// What clocks show in the zone of the calendar; the zone of the machine plays no part.
QDateTime shownBy(const Calendar& calendar, Instant instant) {
    const LocalTime local = calendar.local(instant);
    return {QDate(local.year, local.month, local.day), QTime(local.hour, local.minute), Qt::UTC};
}

Instant instantOf(const Calendar& calendar, const QDateTime& shown) {
    return calendar.instant(
        {.year = shown.date().year(),
         .month = shown.date().month(),
         .day = shown.date().day(),
         .hour = shown.time().hour(),
         .minute = shown.time().minute()});
}

}  // namespace

ReminderButton::ReminderButton(AppEnvironment& environment, OpenNote& open, QWidget* parent)
    : QToolButton(parent), environment_(environment), open_(open) {
    setObjectName("reminder");
    setAutoRaise(true);
    setIcon(app::icon("bell", Ink::secondary));
    connect(this, &QToolButton::clicked, this, &ReminderButton::ask);
    connect(&environment, &AppEnvironment::calendarChanged, this, &ReminderButton::refresh);
}

void ReminderButton::refresh() {
    const CDNote* const note = open_.note();
    const bool hasReminder = note != nullptr && note->reminderAt.get().has_value();
    setEnabled(note != nullptr && !note->trashedAt);
    setText(
        hasReminder ? shownTime(*note->reminderAt, environment_.now(), environment_.calendar())
                    : QString());
    setToolButtonStyle(hasReminder ? Qt::ToolButtonTextBesideIcon : Qt::ToolButtonIconOnly);
    setToolTip(hasReminder ? "Change reminder" : "Add reminder");
    setAccessibleName(hasReminder ? "Reminder, " + text() : "Add reminder");
}

void ReminderButton::ask() {
    CDNote* const note = open_.note();
    if (note == nullptr) return;
    const Calendar& calendar = environment_.calendar();
    const Instant tomorrow = calendar.addDays(calendar.startOfDay(environment_.now()), 1);
    const bool hasReminder = note->reminderAt.get().has_value();
    const QDateTime usual = shownBy(calendar, tomorrow).addSecs(9LL * 3'600);

    auto* const dialog = new QDialog(this);
    dialog->setObjectName("reminderDialog");
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle("Remind Me");
    auto* const when =
        new QDateTimeEdit(hasReminder ? shownBy(calendar, *note->reminderAt) : usual, dialog);
    when->setTimeSpec(Qt::UTC);
    when->setAccessibleName("When to remind");
    when->setDisplayFormat("ddd d MMM yyyy  HH:mm");
    when->setCalendarPopup(true);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, dialog);
    buttons->addButton("Set Reminder", QDialogButtonBox::AcceptRole);
    if (hasReminder) {
        auto* const removal =
            buttons->addButton("Remove Reminder", QDialogButtonBox::DestructiveRole);
        connect(removal, &QPushButton::clicked, dialog, [dialog] { dialog->done(removed); });
    }
    auto* const column = new QVBoxLayout(dialog);
    column->addWidget(when);
    column->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    connect(dialog, &QDialog::finished, this, [this, when](int result) {
        CDNote* const present = open_.note();
        if (result == QDialog::Rejected || present == nullptr) return;
        std::optional<Instant> chosen;
        if (result != removed) chosen = instantOf(environment_.calendar(), when->dateTime());
        environment_.notes().setReminder(*present, chosen);
        environment_.save(this);
        refresh();
    });
    dialog->open();
}

}  // namespace tesserine::app
