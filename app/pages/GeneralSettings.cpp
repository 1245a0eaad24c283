#include "app/pages/GeneralSettings.h"

#include "app/state/AppEnvironment.h"
#include "base/FirstWeekday.h"

#include <QPushButton>
#include <QSystemTrayIcon>

namespace tesserine::app {

GeneralSettings::GeneralSettings(AppEnvironment& environment, QWidget* parent)
    : SettingsForm(tr("General"), environment.preferences(), parent) {
    addChoice(
        appearanceKey,
        {tr("Appearance")},
        std::vector<WordOption>{
            {tr("As the desktop"), "system"}, {tr("Light"), "light"}, {tr("Dark"), "dark"}});
    addSwitch(
        reduceMotionKey,
        {tr("Reduce motion"), tr("Leave out movements that only please the eye.")},
        false);
    // Without a tray nothing would bring a closed window back.
    if (QSystemTrayIcon::isSystemTrayAvailable()) {
        addSwitch(
            "tesserine.menuBarOnly",
            {tr("Live in the tray"),
             tr("Closing the window keeps Tesserine running: quick add, a quick note and the "
                "tasks of today are one click away.")},
            false);
    }
    addHeading(tr("Tasks"));
    addChoice(
        std::string(firstWeekdayKey),
        {tr("First day of the week")},
        std::vector<Option>{
            {tr("As the language has it")},
            {tr("Monday"), 2},
            {tr("Saturday"), 7},
            {tr("Sunday"), 1}});
    addSwitch(
        "tesserine.quickAddNumberIsPriority",
        {tr("A number alone sets the priority"),
         tr("In the quick-add bar “Call Ann 1” is then urgent, without the “p”.")},
        false);
    addHeading(tr("Keys"));
    QPushButton& keys = addButton(
        {tr("Keyboard shortcuts"), tr("See all of them, and change those you like otherwise.")},
        tr("Show…"));
    connect(&keys, &QPushButton::clicked, this, &GeneralSettings::keysAsked);
}

}  // namespace tesserine::app
