#pragma once

namespace tesserine::app {

class AppEnvironment;
class Commands;
class MainWindow;

/// Connects the commands of the table with what the window does. Once, after the window is made:
/// what a part of it handles itself is left to that part.
void handleWindowCommands(MainWindow& window, Commands& commands, AppEnvironment& environment);

}  // namespace tesserine::app
