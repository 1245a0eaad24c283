#pragma once

namespace tesserine::app {

class AppEnvironment;
class Commands;
class MainWindow;
class SettingsPage;

/// Puts the account, the assistant and updates into the window, with their commands. Once, after
/// the window was seen: none of it is needed for its first moment.
void addRooms(MainWindow& window, Commands& commands, AppEnvironment& environment);

/// Their areas of the settings, and that of the editor.
void addRoomSettings(SettingsPage& page, AppEnvironment& environment);

}  // namespace tesserine::app
